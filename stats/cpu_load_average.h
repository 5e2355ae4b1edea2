#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

/// System times in units of 100 ns. Kernel includes idle.
struct CpuTimes {
    std::int64_t idle = 0;
    std::int64_t kernel = 0;
    std::int64_t user = 0;
};

/// Everything that one measurement reads. Times in units of 100 ns.
struct CpuReading {
    /// Time of day; not 0.
    std::int64_t wall = 0;
    CpuTimes system;
    std::int64_t processKernel = 0;
    std::int64_t processUser = 0;
};

/// One processor's record as NtQuerySystemInformation gives it (class 8).
struct ProcessorPerformanceRecord {
    std::int64_t idle;
    std::int64_t kernel;
    std::int64_t user;
    std::int64_t unread[3];
};

static_assert(sizeof(ProcessorPerformanceRecord) == 48);
static_assert(offsetof(ProcessorPerformanceRecord, kernel) == 8);
static_assert(offsetof(ProcessorPerformanceRecord, user) == 16);

/// The processors' average times, each truncated; zeros for no processors.
CpuTimes averageCpuTimes(std::span<const ProcessorPerformanceRecord> processors);

/// Whether a new measurement is due at `tickMs` when the last one was at `lastTickMs`: after more than 200
/// ms. The ticks may wrap; a tick somewhat before the last one counts as long after it.
bool cpuSampleIsDue(std::uint32_t tickMs, std::uint32_t lastTickMs);

/// Turns consecutive readings into the machine's load averaged over five of them.
class CpuLoadAverage {
public:
    /// The new average in percent, slightly below 0 when the system counts more idle time than there was. The
    /// first reading gives 0 and is only the reference of the next; while the history of five fills, the
    /// average includes slots that are still 0: a steady load of 50 % reads 50, 25, 33, 37 and then 50.
    std::int32_t add(const CpuReading& reading);

private:
    static constexpr std::size_t kHistoryLength = 5;
    using History = std::array<std::int32_t, kHistoryLength>;

    void record(std::int64_t systemPercent, std::int64_t processPercent);
    std::int32_t average() const;

    CpuReading last_;
    History systemHistory_{};
    std::size_t historyCount_ = 0;
    /// Load of this process alone, in percent of one processor; recorded beside the system's and not shown.
    History processHistory_{};
    std::size_t historyIndex_ = 0;
};
