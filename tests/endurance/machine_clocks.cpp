#include "tests/endurance/machine_clocks.h"

#include <cstring>

namespace {

constexpr std::int64_t kTicksPerMs = 10'000;
constexpr std::int64_t kTicksPerSecond = 1'000 * kTicksPerMs;
/// From 1601, where file times begin, to 1970.
constexpr std::int64_t kSecondsBefore1970 = 11'644'473'600;
constexpr DWORDLONG kPhysicalMemory = 16'000'000'000;

void store(std::int64_t ticks, FILETIME* out) {
    out->dwHighDateTime = static_cast<DWORD>(static_cast<std::uint64_t>(ticks) >> 32);
    out->dwLowDateTime = static_cast<DWORD>(ticks);
}

}  // namespace

MachineClocks* MachineClocks::current = nullptr;

MachineClocks::MachineClocks() : idleCountedAtMs_(time.awakeMs()) {
    current = this;
}

MachineClocks::~MachineClocks() {
    current = nullptr;
}

void MachineClocks::setTimeOfDay(std::int64_t seconds) {
    timeOfDayOffsetMs_ = seconds * 1000 - time.sinceStartMs();
}

void MachineClocks::standByUntilTicks(std::uint32_t value) {
    const std::uint32_t rest = value - static_cast<std::uint32_t>(ticks());
    time.standBy(std::chrono::milliseconds(rest));
}

void MachineClocks::setProcessorLoad(int percent) {
    countIdleTime();
    processorLoad_ = percent;
}

void MachineClocks::countIdleTime() {
    const std::int64_t nowMs = time.awakeMs();
    idleHundredths_ += (nowMs - idleCountedAtMs_) * (100 - processorLoad_);
    idleCountedAtMs_ = nowMs;
}

DWORD WINAPI MachineClocks::readTicks() {
    return static_cast<DWORD>(current->ticks());
}

__time64_t MachineClocks::readTimeOfDay(__time64_t* out) {
    const __time64_t now = current->timeOfDay();
    if (out != nullptr) {
        *out = now;
    }
    return now;
}

void WINAPI MachineClocks::readFileTime(FILETIME* out) {
    store((current->timeOfDay() + kSecondsBefore1970) * kTicksPerSecond, out);
}

FARPROC WINAPI MachineClocks::findFunction(HMODULE module, LPCSTR name) {
    // A name may also be a number.
    if (reinterpret_cast<std::uintptr_t>(name) > 0xFFFF && std::strcmp(name, "GetSystemTimes") == 0) {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&readProcessorTimes));
    }
    return current->lookUpOverride_.original<decltype(findFunction)>()(module, name);
}

BOOL WINAPI MachineClocks::readProcessorTimes(FILETIME* idle, FILETIME* kernel, FILETIME* user) {
    current->countIdleTime();
    store(current->idleHundredths_ * (kTicksPerMs / 100), idle);
    // Idle time is kernel time, too.
    store(current->time.awakeMs() * kTicksPerMs, kernel);
    store(0, user);
    return TRUE;
}

BOOL WINAPI MachineClocks::readMemory(MEMORYSTATUSEX* status) {
    status->ullTotalPhys = kPhysicalMemory;
    status->ullAvailPhys = kPhysicalMemory / 100 * static_cast<DWORDLONG>(100 - current->memoryLoad_);
    return TRUE;
}
