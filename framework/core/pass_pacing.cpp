#include "framework/core/pass_pacing.h"

#include <algorithm>

namespace Panelix {

std::int64_t passWaitMs(const PassTiming& timing) {
    const std::int64_t start = timing.resetPacing ? timing.endMs : timing.startMs;
    const std::uint64_t period = timing.slideRunning ? kSlidePeriodMs : timing.framePeriodMs;
    return std::max<std::int64_t>(0, start - timing.endMs + static_cast<std::int64_t>(period));
}

}  // namespace Panelix
