#include "framework/core/awake_time.h"

#ifdef _WIN32
#include <windows.h>

#include <realtimeapiset.h>
#else
#include <chrono>
#endif

namespace Panelix {

#ifdef _WIN32
std::int64_t awakeMs() noexcept {
    constexpr ULONGLONG kHundredNanosecondsPerMs = 10'000;
    ULONGLONG awake = 0;
    QueryUnbiasedInterruptTime(&awake);
    return static_cast<std::int64_t>(awake / kHundredNanosecondsPerMs);
}
#else
std::int64_t awakeMs() noexcept {
    // Linux leaves standby out of its monotonic clock.
    const auto awake = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(awake).count();
}
#endif

}  // namespace Panelix
