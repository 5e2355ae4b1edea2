#include "stats/cpu_load_average.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

constexpr std::int64_t kSecond = 10'000'000;

// The reading one second later, with so many percent of the processor time used; half of that is kernel time.
CpuReading afterSecond(const CpuReading& last, std::int64_t percent) {
    CpuReading reading = last;
    const std::int64_t busy = kSecond * percent / 100;
    const std::int64_t idle = kSecond - busy;
    reading.wall += kSecond;
    reading.system.idle += idle;
    reading.system.kernel += idle + busy / 2;
    reading.system.user += busy - busy / 2;
    return reading;
}

std::vector<std::int32_t> averagesOf(const std::vector<int>& percents) {
    CpuLoadAverage average;
    CpuReading reading;
    reading.wall = 132'000'000'000'000'000;
    reading.system = {7 * kSecond, 9 * kSecond, 5 * kSecond};
    std::vector<std::int32_t> results = {average.add(reading)};
    for (const int percent : percents) {
        reading = afterSecond(reading, percent);
        results.push_back(average.add(reading));
    }
    return results;
}

TEST(CpuLoadAverage, FirstReadingIsZero) {
    EXPECT_THAT(averagesOf({}), testing::ElementsAre(0));
}

TEST(CpuLoadAverage, SteadyLoadRampsUpOverSlotsNotYetWritten) {
    EXPECT_THAT(averagesOf({50, 50, 50, 50, 50, 50, 50}),
                testing::ElementsAre(0, 50, 25, 33, 37, 50, 50, 50));
}

TEST(CpuLoadAverage, SlotsAreWrittenInStepsOfTwo) {
    // Slots 0, 2, 4, 1, 3 and again; the first averages see slots 0 to 1, 2, 3 only.
    EXPECT_THAT(averagesOf({100, 80, 60, 40, 20, 0, 10}),
                testing::ElementsAre(0,
                                     100,                            // slot 0
                                     100 / 2,                        // slots 0, 1
                                     (100 + 80) / 3,                 // slots 0, 1, 2
                                     (100 + 40 + 80) / 4,            // slots 0 to 3
                                     (100 + 40 + 80 + 20 + 60) / 5,  // all
                                     (0 + 40 + 80 + 20 + 60) / 5,    // slot 0 again
                                     (0 + 40 + 10 + 20 + 60) / 5));  // slot 2 again
}

TEST(CpuLoadAverage, PercentagesAreTruncated) {
    CpuLoadAverage average;
    CpuReading reading;
    reading.wall = kSecond;
    average.add(reading);
    reading.wall += kSecond;
    reading.system = {1, 1, 2};  // two thirds
    EXPECT_EQ(average.add(reading), 66);
}

TEST(CpuLoadAverage, MoreIdleTimeThanThereWasCountsBelowZero) {
    // The slot keeps it, so that the averages that follow are lower, too.
    EXPECT_THAT(averagesOf({-8, 50, 50}), testing::ElementsAre(0, -8, -8 / 2, (-8 + 50) / 3));
}

TEST(CpuLoadAverage, StandingClockIsZero) {
    CpuLoadAverage average;
    CpuReading reading;
    reading.wall = kSecond;
    EXPECT_EQ(average.add(reading), 0);
    reading.wall += kSecond;
    EXPECT_EQ(average.add(reading), 0);
    // The time of day may be set back to what it was.
    EXPECT_EQ(average.add(reading), 0);
}

TEST(CpuLoadAverage, AverageOfProcessorsIsTruncated) {
    const std::vector<ProcessorPerformanceRecord> processors = {
        {10, 20, 30, {1, 2, 3}},
        {11, 21, 31, {4, 5, 6}},
        {12, 24, 31, {7, 8, 9}},
    };
    const CpuTimes times = averageCpuTimes(processors);
    EXPECT_EQ(times.idle, 11);
    EXPECT_EQ(times.kernel, 21);
    EXPECT_EQ(times.user, 30);
}

TEST(CpuLoadAverage, NoProcessorsHaveNoTimes) {
    const CpuTimes times = averageCpuTimes({});
    EXPECT_EQ(times.idle, 0);
    EXPECT_EQ(times.kernel, 0);
    EXPECT_EQ(times.user, 0);
}

TEST(CpuLoadAverage, SampleIsDueAfterMoreThan200Ms) {
    EXPECT_FALSE(cpuSampleIsDue(1000, 1000));
    EXPECT_FALSE(cpuSampleIsDue(1100, 1000));
    EXPECT_FALSE(cpuSampleIsDue(1200, 1000));
    EXPECT_TRUE(cpuSampleIsDue(1201, 1000));
}

TEST(CpuLoadAverage, TickWrapIsMaskedToThirtyOneBits) {
    constexpr std::uint32_t kLast = std::numeric_limits<std::uint32_t>::max();
    EXPECT_FALSE(cpuSampleIsDue(199, kLast));
    EXPECT_TRUE(cpuSampleIsDue(200, kLast));
    // A difference of 2^31 + 200 has its top bit set and counts as 200.
    EXPECT_FALSE(cpuSampleIsDue(0x8000'00C8, 0));
    EXPECT_TRUE(cpuSampleIsDue(0x8000'00C9, 0));
    // A tick just before the last one is nearly 2^31 away.
    EXPECT_TRUE(cpuSampleIsDue(999, 1000));
}

}  // namespace
