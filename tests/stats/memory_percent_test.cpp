#include "stats/memory_percent.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr std::uint64_t kGiB = 1ULL << 30;

TEST(MemoryPercent, PhysicalMemoryIsTruncated) {
    EXPECT_EQ(physicalMemoryPercent(16 * kGiB, 16 * kGiB), 0);
    EXPECT_EQ(physicalMemoryPercent(16 * kGiB, 4 * kGiB), 75);
    EXPECT_EQ(physicalMemoryPercent(16 * kGiB, 0), 100);
    EXPECT_EQ(physicalMemoryPercent(3, 1), 66);
    EXPECT_EQ(physicalMemoryPercent(1000, 11), 98);
}

TEST(MemoryPercent, TotalIsRoundedToSinglePrecision) {
    // 2^24 + 1 is 2^24 in single precision, so that all of it in use is a little more than 100 %, and 99 % of
    // it less one byte in use reaches 99 %.
    constexpr std::uint64_t kTotal = (1ULL << 24) + 1;
    constexpr std::uint64_t kUsed = 16'609'444;
    ASSERT_LT(static_cast<double>(kUsed) / static_cast<double>(kTotal) * 100.0, 99.0);
    EXPECT_EQ(physicalMemoryPercent(kTotal, kTotal - kUsed), 99);
    EXPECT_EQ(physicalMemoryPercent(kTotal, 0), 100);
}

TEST(MemoryPercent, NothingKnownIsZero) {
    EXPECT_EQ(physicalMemoryPercent(0, 0), 0);
    EXPECT_EQ(physicalMemoryPercent(0, kGiB), 0);
    EXPECT_EQ(physicalMemoryPercent(kGiB, kGiB + 1), 0);
    EXPECT_EQ(videoMemoryPercent(0, 0), 0);
    EXPECT_EQ(videoMemoryPercent(0, 1), 0);
    EXPECT_EQ(videoMemoryPercent(8'388'608, 8'388'609), 0);
}

TEST(MemoryPercent, LargestSizesHaveAPercentage) {
    constexpr auto kLargest = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(physicalMemoryPercent(kLargest, 0), 100);
    EXPECT_EQ(physicalMemoryPercent(kLargest, kLargest), 0);
    EXPECT_EQ(videoMemoryPercent(std::numeric_limits<std::uint32_t>::max(), 0), 100);
}

TEST(MemoryPercent, VideoMemoryIsTruncated) {
    EXPECT_EQ(videoMemoryPercent(8'388'608, 2'097'152), 75);
    EXPECT_EQ(videoMemoryPercent(8'388'608, 8'388'608), 0);
    EXPECT_EQ(videoMemoryPercent(3, 1), 66);
}

}  // namespace
