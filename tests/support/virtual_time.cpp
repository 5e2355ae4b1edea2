#include "tests/support/virtual_time.h"

#include <realtimeapiset.h>

namespace {

constexpr std::int64_t kTicksPerMs = 10'000;
constexpr std::int64_t kTicksPerSecond = 1'000 * kTicksPerMs;

/// A machine that was started a week ago and has never slept.
constexpr std::int64_t kWeek = 7 * 24 * 3600 * kTicksPerSecond;

std::int64_t counterFrequency() {
    LARGE_INTEGER frequency{};
    QueryPerformanceFrequency(&frequency);
    return frequency.QuadPart;
}

// The program that is linked with this imports all that is replaced, whether the tested code calls it or not.
[[maybe_unused]] const auto kImports = [] {
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    ULONGLONG awake = 0;
    QueryUnbiasedInterruptTime(&awake);
    SetWaitableTimer(nullptr, &counter, 0, nullptr, nullptr, FALSE);
    return true;
}();

}  // namespace

VirtualTime* VirtualTime::current = nullptr;

VirtualTime::VirtualTime()
    : sinceStart_(kWeek),
      awake_(kWeek),
      counterFrequency_(counterFrequency()),
      counterOverride_("KERNEL32.dll", "QueryPerformanceCounter", queryCounter),
      awakeTimeOverride_("KERNEL32.dll", "QueryUnbiasedInterruptTime", queryAwakeTime),
      timerOverride_("KERNEL32.dll", "SetWaitableTimer", setTimer) {
    current = this;
}

VirtualTime::~VirtualTime() {
    current = nullptr;
}

void VirtualTime::pass(Milliseconds time) {
    sinceStart_ += time.count() * kTicksPerMs;
    awake_ += time.count() * kTicksPerMs;
}

void VirtualTime::standBy(Milliseconds time) {
    sinceStart_ += time.count() * kTicksPerMs;
}

BOOL WINAPI VirtualTime::queryCounter(LARGE_INTEGER* counter) noexcept {
    // Whole seconds on their own: the product of both would not fit after a few days.
    const std::int64_t seconds = current->sinceStart_ / kTicksPerSecond;
    const std::int64_t rest = current->sinceStart_ % kTicksPerSecond;
    counter->QuadPart =
        seconds * current->counterFrequency_ + rest * current->counterFrequency_ / kTicksPerSecond;
    return TRUE;
}

BOOL WINAPI VirtualTime::queryAwakeTime(ULONGLONG* time) noexcept {
    *time = static_cast<ULONGLONG>(current->awake_);
    return TRUE;
}

BOOL WINAPI VirtualTime::setTimer(HANDLE timer,
                                  const LARGE_INTEGER* due,
                                  LONG period,
                                  PTIMERAPCROUTINE routine,
                                  LPVOID argument,
                                  BOOL resume) {
    // A negative due time counts from now.
    const std::int64_t ticks = -due->QuadPart;
    current->sleptMs.push_back(static_cast<double>(ticks) / kTicksPerMs);
    current->sinceStart_ += ticks;
    current->awake_ += ticks;
    if (current->onSleep) {
        current->onSleep();
    }
    LARGE_INTEGER atOnce{};
    return current->timerOverride_.original<decltype(setTimer)>()(
        timer, &atOnce, period, routine, argument, resume);
}
