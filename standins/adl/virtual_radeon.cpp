#include "standins/adl/virtual_radeon.h"

#include <array>
#include <atomic>

#include "standins/shared_text.h"

namespace Standins {

namespace {

// "KADL" and the version of the layout below: raise it with every change.
constexpr std::uint64_t kIdentity = 0x4B41'444C'0000'0003;

struct AdapterSlot {
    std::atomic<std::int32_t> activityPercent;
    std::atomic<std::int32_t> engineClock;
    std::atomic<std::int32_t> temperatureMillidegrees;
    SharedText<char, VirtualRadeon::kNameLength> name;
};

}  // namespace

struct VirtualRadeon::Record {
    std::atomic<std::uint64_t> identity;
    std::atomic<std::int32_t> adapterCount;
    std::atomic<std::uint32_t> writesBeforeItFails;
    std::array<AdapterSlot, kMaxAdapters> adapters;
    std::array<std::atomic<std::int32_t>, kAdlCallCount> statuses;
    CallLog log;
};

VirtualRadeon::VirtualRadeon() : shared_(openRecord()) {}

SharedRecord VirtualRadeon::openRecord() {
    return SharedRecord(sectionName(L"VirtualRadeon"), kIdentity, sizeof(Record));
}

VirtualRadeon::Record& VirtualRadeon::record() const noexcept {
    return *static_cast<Record*>(shared_.data());
}

void VirtualRadeon::setAdapterCount(std::int32_t count) noexcept {
    record().adapterCount = count;
}

void VirtualRadeon::setName(std::size_t adapter, std::string_view name) noexcept {
    record().adapters[adapter].name.set(name);
}

void VirtualRadeon::setFigures(std::size_t adapter, const RadeonFigures& figures) noexcept {
    AdapterSlot& slot = record().adapters[adapter];
    slot.activityPercent = figures.activityPercent;
    slot.engineClock = figures.engineClock;
    slot.temperatureMillidegrees = figures.temperatureMillidegrees;
}

void VirtualRadeon::setStatus(AdlCall call, std::int32_t status) noexcept {
    record().statuses[static_cast<std::size_t>(call)] = status;
}

void VirtualRadeon::setWritesBeforeItFails(bool writes) noexcept {
    record().writesBeforeItFails = writes ? 1 : 0;
}

CallLog& VirtualRadeon::log() noexcept {
    return record().log;
}

std::uint64_t VirtualRadeon::callCount(AdlCall call) noexcept {
    return log().count(static_cast<std::uint32_t>(call));
}

std::int32_t VirtualRadeon::status(AdlCall call) const noexcept {
    return record().statuses[static_cast<std::size_t>(call)];
}

bool VirtualRadeon::writesBeforeItFails() const noexcept {
    return record().writesBeforeItFails != 0;
}

std::int32_t VirtualRadeon::adapterCount() const noexcept {
    return record().adapterCount;
}

RadeonFigures VirtualRadeon::figures(std::size_t adapter) const noexcept {
    const AdapterSlot& slot = record().adapters[adapter];
    return {slot.activityPercent, slot.engineClock, slot.temperatureMillidegrees};
}

void VirtualRadeon::copyName(std::size_t adapter, char* name) const noexcept {
    record().adapters[adapter].name.copyTo(name);
}

}  // namespace Standins
