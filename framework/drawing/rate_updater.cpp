#include "framework/drawing/rate_updater.h"

#ifdef _WIN32
#include <windows.h>

#include <realtimeapiset.h>
#else
#include <chrono>
#endif

namespace Panelix {

namespace {

/// Milliseconds for which the machine was awake.
#ifdef _WIN32
std::int64_t awakeMs() {
    constexpr ULONGLONG kHundredNanosecondsPerMs = 10'000;
    ULONGLONG awake = 0;
    QueryUnbiasedInterruptTime(&awake);
    return static_cast<std::int64_t>(awake / kHundredNanosecondsPerMs);
}
#else
std::int64_t awakeMs() {
    // Linux leaves standby out of its monotonic clock.
    const auto awake = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(awake).count();
}
#endif

}  // namespace

RateUpdater::RateUpdater(std::int64_t periodMs) : periodMs_(periodMs) {}

void RateUpdater::tick() {
    tickAt(awakeMs());
}

void RateUpdater::tickAt(std::int64_t nowMs) {
    if (lastUpdateMs_ == kNever) {
        lastUpdateMs_ = nowMs;
    } else if (nowMs - lastUpdateMs_ < periodMs_) {
        return;
    } else {
        lastUpdateMs_ += periodMs_;
    }
    update();
}

}  // namespace Panelix
