#pragma once

#include <cstdint>

namespace Panelix {

/// Duration of a pass while a slide runs, in milliseconds.
inline constexpr std::uint64_t kSlidePeriodMs = 16;

/// How one pass went; times in milliseconds of one monotonic clock.
struct PassTiming {
    std::int64_t startMs;
    std::int64_t endMs;
    /// Something modal ran inside the pass: its time does not count.
    bool resetPacing;
    bool slideRunning;
    std::uint64_t framePeriodMs;
};

/// Milliseconds to sleep after the pass; 0 for a pass that took its whole period or longer. Nothing is
/// caught up later: a pass in which the machine was in standby, whose hours the clock counts, is followed by
/// the next one at once, and that one is paced as usual.
std::int64_t passWaitMs(const PassTiming& timing);

}  // namespace Panelix
