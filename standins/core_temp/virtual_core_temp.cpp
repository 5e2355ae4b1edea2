#include "standins/core_temp/virtual_core_temp.h"

#include <algorithm>
#include <atomic>

#include "standins/shared_text.h"

namespace Standins {

namespace {

// "KCTM" and the version of the layout below: raise it with every change.
constexpr std::uint64_t kIdentity = 0x4B43'544D'0000'0002;

}  // namespace

struct VirtualCoreTemp::Record {
    std::atomic<std::uint64_t> identity;
    std::atomic<std::uint32_t> running;
    std::atomic<std::uint32_t> nameIsNull;
    std::atomic<std::uint32_t> fahrenheit;
    std::atomic<std::uint32_t> cpuCount;
    std::atomic<std::uint32_t> coreCount;
    std::atomic<float> speedMHz;
    std::atomic<float> busSpeedMHz;
    std::atomic<float> multiplier;
    std::atomic<float> vidVolts;
    std::array<std::atomic<float>, CoreTempFigures::kMaxCores> temperatures;
    SharedText<char, kNameLength> name;
    CallLog log;
};

VirtualCoreTemp::VirtualCoreTemp() : shared_(openRecord()) {}

SharedRecord VirtualCoreTemp::openRecord() {
    return SharedRecord(sectionName(L"VirtualCoreTemp"), kIdentity, sizeof(Record));
}

VirtualCoreTemp::Record& VirtualCoreTemp::record() const noexcept {
    return *static_cast<Record*>(shared_.data());
}

void VirtualCoreTemp::setRunning(bool running) noexcept {
    record().running = running ? 1 : 0;
}

void VirtualCoreTemp::setName(std::string_view name) noexcept {
    record().name.set(name);
}

void VirtualCoreTemp::setNameIsNull(bool isNull) noexcept {
    record().nameIsNull = isNull ? 1 : 0;
}

void VirtualCoreTemp::setFigures(const CoreTempFigures& figures) noexcept {
    Record& r = record();
    r.fahrenheit = figures.fahrenheit ? 1 : 0;
    r.cpuCount = figures.cpuCount;
    r.coreCount = figures.coreCount;
    r.speedMHz = figures.speedMHz;
    r.busSpeedMHz = figures.busSpeedMHz;
    r.multiplier = figures.multiplier;
    r.vidVolts = figures.vidVolts;
    std::copy(figures.temperatures.begin(), figures.temperatures.end(), r.temperatures.begin());
}

CallLog& VirtualCoreTemp::log() noexcept {
    return record().log;
}

std::uint64_t VirtualCoreTemp::callCount(CoreTempCall call) noexcept {
    return log().count(static_cast<std::uint32_t>(call));
}

bool VirtualCoreTemp::isRunning() const noexcept {
    return record().running != 0;
}

bool VirtualCoreTemp::nameIsNull() const noexcept {
    return record().nameIsNull != 0;
}

bool VirtualCoreTemp::isFahrenheit() const noexcept {
    return record().fahrenheit != 0;
}

float VirtualCoreTemp::speedMHz() const noexcept {
    return record().speedMHz;
}

float VirtualCoreTemp::busSpeedMHz() const noexcept {
    return record().busSpeedMHz;
}

float VirtualCoreTemp::multiplier() const noexcept {
    return record().multiplier;
}

float VirtualCoreTemp::vidVolts() const noexcept {
    return record().vidVolts;
}

std::uint32_t VirtualCoreTemp::cpuCount() const noexcept {
    return record().cpuCount;
}

std::uint32_t VirtualCoreTemp::coreCount() const noexcept {
    return record().coreCount;
}

float VirtualCoreTemp::temperature(int index) const noexcept {
    const auto& temperatures = record().temperatures;
    return index >= 0 && static_cast<std::size_t>(index) < temperatures.size()
               ? temperatures[static_cast<std::size_t>(index)].load()
               : 0.0F;
}

void VirtualCoreTemp::copyName(char* name) const noexcept {
    record().name.copyTo(name);
}

}  // namespace Standins
