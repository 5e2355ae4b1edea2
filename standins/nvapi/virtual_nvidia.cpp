#include "standins/nvapi/virtual_nvidia.h"

#include <algorithm>
#include <array>
#include <atomic>

#include "standins/shared_text.h"

namespace Standins {

namespace {

// "KNVA" and the version of the layout below: raise it with every change.
constexpr std::uint64_t kIdentity = 0x4B4E'5641'0000'0004;

// Anything but null, and different for each card and each enumeration after a change.
constexpr std::int64_t kFirstHandle = 0x4E56'0000;
constexpr std::int64_t kHandlesPerChange = 0x100;

struct GpuSlot {
    std::atomic<std::uint32_t> loadPercent;
    std::atomic<std::int32_t> temperature;
    std::atomic<std::uint32_t> memoryKB;
    std::atomic<std::uint32_t> freeMemoryKB;
    std::atomic<std::uint32_t> coreClockKHz;
    SharedText<char, VirtualNvidia::kTextLength> name;
};

}  // namespace

struct VirtualNvidia::Record {
    std::atomic<std::uint64_t> identity;
    std::atomic<std::uint32_t> gpuCount;
    std::atomic<std::uint32_t> changes;
    std::atomic<std::uint32_t> enumeratedChanges;
    std::atomic<std::uint32_t> changesBeforeThisLife;
    std::atomic<std::uint32_t> driverLife;
    std::atomic<std::int32_t> formerLifeStatus;
    std::atomic<std::uint32_t> writesBeforeItFails;
    std::array<GpuSlot, kMaxGpus> gpus;
    std::array<std::atomic<std::uint32_t>, kNvapiCallCount> missing;
    std::array<std::atomic<std::int32_t>, kNvapiCallCount> statuses;
    SharedText<char, kTextLength> errorText;
    CallLog log;
};

VirtualNvidia::VirtualNvidia() : shared_(openRecord()) {}

SharedRecord VirtualNvidia::openRecord() {
    return SharedRecord(sectionName(L"VirtualNvidia"), kIdentity, sizeof(Record));
}

VirtualNvidia::Record& VirtualNvidia::record() const noexcept {
    return *static_cast<Record*>(shared_.data());
}

void VirtualNvidia::setGpuCount(std::size_t count) noexcept {
    record().gpuCount = static_cast<std::uint32_t>(std::min(count, kMaxGpus));
}

std::int64_t VirtualNvidia::gpuHandle(std::size_t gpu) const noexcept {
    return kFirstHandle + record().enumeratedChanges * kHandlesPerChange + static_cast<std::int64_t>(gpu);
}

void VirtualNvidia::invalidateHandles() noexcept {
    ++record().changes;
}

void VirtualNvidia::replaceDriver(std::int32_t status) noexcept {
    record().formerLifeStatus = status;
    record().changesBeforeThisLife = ++record().changes;
    ++record().driverLife;
}

std::uint32_t VirtualNvidia::driverLife() const noexcept {
    return record().driverLife;
}

std::int32_t VirtualNvidia::formerLifeStatus() const noexcept {
    return record().formerLifeStatus;
}

void VirtualNvidia::enumerate() noexcept {
    record().enumeratedChanges = record().changes.load();
}

std::optional<std::size_t> VirtualNvidia::gpuOf(std::int64_t handle) const noexcept {
    const std::int64_t gpu = handle - gpuHandle(0);
    if (record().enumeratedChanges != record().changes || gpu < 0 ||
        gpu >= static_cast<std::int64_t>(gpuCount())) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(gpu);
}

bool VirtualNvidia::isStale(std::int64_t handle) const noexcept {
    return handle >= kFirstHandle + record().changesBeforeThisLife * kHandlesPerChange &&
           handle < kFirstHandle + record().changes * kHandlesPerChange;
}

void VirtualNvidia::setName(std::size_t gpu, std::string_view name) noexcept {
    record().gpus[gpu].name.set(name);
}

void VirtualNvidia::setFigures(std::size_t gpu, const NvidiaFigures& figures) noexcept {
    GpuSlot& slot = record().gpus[gpu];
    slot.loadPercent = figures.loadPercent;
    slot.temperature = figures.temperature;
    slot.memoryKB = figures.memoryKB;
    slot.freeMemoryKB = figures.freeMemoryKB;
    slot.coreClockKHz = figures.coreClockKHz;
}

void VirtualNvidia::setMissing(NvapiCall call, bool missing) noexcept {
    record().missing[static_cast<std::size_t>(call)] = missing ? 1 : 0;
}

void VirtualNvidia::setStatus(NvapiCall call, std::int32_t status) noexcept {
    record().statuses[static_cast<std::size_t>(call)] = status;
}

void VirtualNvidia::setWritesBeforeItFails(bool writes) noexcept {
    record().writesBeforeItFails = writes ? 1 : 0;
}

void VirtualNvidia::setErrorText(std::string_view text) noexcept {
    record().errorText.set(text);
}

CallLog& VirtualNvidia::log() noexcept {
    return record().log;
}

std::uint64_t VirtualNvidia::callCount(NvapiCall call) noexcept {
    return log().count(static_cast<std::uint32_t>(call));
}

bool VirtualNvidia::isMissing(NvapiCall call) const noexcept {
    return record().missing[static_cast<std::size_t>(call)] != 0;
}

std::int32_t VirtualNvidia::status(NvapiCall call) const noexcept {
    return record().statuses[static_cast<std::size_t>(call)];
}

bool VirtualNvidia::writesBeforeItFails() const noexcept {
    return record().writesBeforeItFails != 0;
}

std::size_t VirtualNvidia::gpuCount() const noexcept {
    return record().gpuCount;
}

NvidiaFigures VirtualNvidia::figures(std::size_t gpu) const noexcept {
    const GpuSlot& slot = record().gpus[gpu];
    return {slot.loadPercent, slot.temperature, slot.memoryKB, slot.freeMemoryKB, slot.coreClockKHz};
}

void VirtualNvidia::copyName(std::size_t gpu, char* name) const noexcept {
    record().gpus[gpu].name.copyTo(name);
}

void VirtualNvidia::copyErrorText(char* text) const noexcept {
    record().errorText.copyTo(text);
}

}  // namespace Standins
