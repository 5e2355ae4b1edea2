#include "stats/volume_percent.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kHuge = std::numeric_limits<float>::max();

struct Conversion {
    float scalar;
    std::int32_t truncated;
    std::int32_t rounded;
};

constexpr Conversion kConversions[] = {
    {0.0F, 0, 0},
    {0.004F, 0, 0},
    {0.005F, 0, 1},
    {0.494F, 49, 49},
    {0.495F, 49, 50},
    {0.5F, 50, 50},
    {0.994F, 99, 99},
    {0.995F, 99, 100},
    {0.999F, 99, 100},
    {1.0F, 100, 100},
};

constexpr Conversion kOutside[] = {
    {-0.0F, 0, 0},
    {-0.004F, 0, 0},
    {-1.0F, 0, 0},
    {1.004F, 100, 100},
    {2.0F, 100, 100},
    {kHuge, 100, 100},
    {-kHuge, 0, 0},
    {kInfinity, 100, 100},
    {-kInfinity, 0, 0},
    {kNan, 0, 0},
    {-kNan, 0, 0},
};

TEST(VolumePercent, IsTruncatedWhenReadAndRoundedInNotices) {
    for (const Conversion& conversion : kConversions) {
        EXPECT_EQ(truncatedPercent(conversion.scalar), conversion.truncated) << conversion.scalar;
        EXPECT_EQ(roundedPercent(conversion.scalar), conversion.rounded) << conversion.scalar;
    }
}

TEST(VolumePercent, StaysBetweenZeroAndHundredForAnyScalar) {
    for (const Conversion& conversion : kOutside) {
        EXPECT_EQ(truncatedPercent(conversion.scalar), conversion.truncated) << conversion.scalar;
        EXPECT_EQ(roundedPercent(conversion.scalar), conversion.rounded) << conversion.scalar;
    }
}

TEST(VolumePercent, ScalarIsClamped) {
    EXPECT_EQ(volumeScalar(150), 1.0F);
    EXPECT_EQ(volumeScalar(-5), 0.0F);
    EXPECT_EQ(volumeScalar(std::numeric_limits<int>::max()), 1.0F);
    EXPECT_EQ(volumeScalar(std::numeric_limits<int>::min()), 0.0F);
    EXPECT_EQ(volumeScalar(0), 0.0F);
    EXPECT_EQ(volumeScalar(100), 1.0F);
    EXPECT_FLOAT_EQ(volumeScalar(29), 0.29F);
}

TEST(VolumePercent, NoticeBringsEverySetPercentageBack) {
    for (int percent = 0; percent <= 100; ++percent) {
        EXPECT_EQ(roundedPercent(volumeScalar(percent)), percent);
    }
}

}  // namespace
