#include "stats/cpu_load_average.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr std::uint32_t kLongestReuseMs = 200;
constexpr std::uint32_t kTickMask = 0x7FFF'FFFF;
// Shares no factor with the history's length, so all slots come round: 0, 2, 4, 1, 3.
constexpr std::size_t kHistoryStep = 2;

std::int64_t percentOf(std::int64_t part, std::int64_t whole) {
    return whole == 0 ? 0 : part * 100 / whole;
}

}  // namespace

CpuTimes averageCpuTimes(std::span<const ProcessorPerformanceRecord> processors) {
    CpuTimes average;
    if (processors.empty()) {
        return average;
    }
    for (const ProcessorPerformanceRecord& processor : processors) {
        average.idle += processor.idle;
        average.kernel += processor.kernel;
        average.user += processor.user;
    }
    const auto count = static_cast<std::int64_t>(processors.size());
    average.idle /= count;
    average.kernel /= count;
    average.user /= count;
    return average;
}

bool cpuSampleIsDue(std::uint32_t tickMs, std::uint32_t lastTickMs) {
    return ((tickMs - lastTickMs) & kTickMask) > kLongestReuseMs;
}

std::int32_t CpuLoadAverage::add(const CpuReading& reading) {
    const CpuReading last = last_;
    last_ = reading;
    if (last.wall == 0) {
        return 0;
    }
    const std::int64_t busyBase =
        (reading.system.kernel - last.system.kernel) + (reading.system.user - last.system.user);
    const std::int64_t idle = reading.system.idle - last.system.idle;
    const std::int64_t process =
        (reading.processKernel - last.processKernel) + (reading.processUser - last.processUser);
    record(percentOf(busyBase - idle, busyBase), percentOf(process, reading.wall - last.wall));
    return average();
}

void CpuLoadAverage::record(std::int64_t systemPercent, std::int64_t processPercent) {
    systemHistory_[historyIndex_ % kHistoryLength] = static_cast<std::int32_t>(systemPercent);
    processHistory_[(historyIndex_ + 1) % kHistoryLength] = static_cast<std::int32_t>(processPercent);
    historyIndex_ += kHistoryStep;
    historyCount_ = std::min(historyCount_ + 1, kHistoryLength);
}

// Over the first slots, not over the ones written so far: that is what ramps the figure up after the start.
std::int32_t CpuLoadAverage::average() const {
    const auto end = systemHistory_.begin() + static_cast<std::ptrdiff_t>(historyCount_);
    const auto sum = std::accumulate(systemHistory_.begin(), end, std::int64_t{0});
    return static_cast<std::int32_t>(sum / static_cast<std::int64_t>(historyCount_));
}
