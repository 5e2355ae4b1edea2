#include "framework/core/precise_sleeper.h"

#include <windows.h>

#include <timeapi.h>

#include <algorithm>

namespace Panelix {

namespace {

/// Documented since Windows 10 1803; the toolchain's headers may be older.
constexpr DWORD kCreateWaitableTimerHighResolution = 0x2;
constexpr std::int64_t kHundredNanosecondsPerMs = 10'000;
constexpr UINT kRaisedTickMs = 1;

void sleepWithRaisedTick(std::int64_t ms) {
    const bool raised = timeBeginPeriod(kRaisedTickMs) == TIMERR_NOERROR;
    Sleep(static_cast<DWORD>(std::min<std::int64_t>(ms, INFINITE - 1)));
    if (raised) {
        timeEndPeriod(kRaisedTickMs);
    }
}

}  // namespace

PreciseSleeper::PreciseSleeper()
    : timer_(CreateWaitableTimerExW(
          nullptr, nullptr, kCreateWaitableTimerHighResolution, TIMER_MODIFY_STATE | SYNCHRONIZE)) {}

void PreciseSleeper::sleepFor(std::int64_t ms) const {
    if (ms <= 0) {
        return;
    }
    LARGE_INTEGER due;
    // A negative due time counts from now.
    due.QuadPart = -ms * kHundredNanosecondsPerMs;
    if (timer_ && SetWaitableTimer(timer_.get(), &due, 0, nullptr, nullptr, FALSE) != FALSE &&
        WaitForSingleObject(timer_.get(), INFINITE) == WAIT_OBJECT_0) {
        return;
    }
    sleepWithRaisedTick(ms);
}

}  // namespace Panelix
