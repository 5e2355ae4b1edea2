#include "tests/pages/contrast.h"

#include <gtest/gtest.h>

namespace {

TEST(Contrast, RunsFromOneToTwentyOneWhicheverColourComesFirst) {
    EXPECT_DOUBLE_EQ(contrastRatio(0xFF000000, 0xFFFFFFFF), 21.0);
    EXPECT_DOUBLE_EQ(contrastRatio(0xFFFFFFFF, 0xFF000000), 21.0);
    EXPECT_DOUBLE_EQ(contrastRatio(0xFF336699, 0xFF336699), 1.0);
}

TEST(Contrast, AgreesWithPublishedValues) {
    EXPECT_NEAR(contrastRatio(0xFF767676, 0xFFFFFFFF), 4.54, 0.005);
    EXPECT_NEAR(contrastRatio(0xFF777777, 0xFFFFFFFF), 4.48, 0.005);
    EXPECT_NEAR(contrastRatio(0xFFFF0000, 0xFFFFFFFF), 4.00, 0.005);
    EXPECT_NEAR(contrastRatio(0xFF0000FF, 0xFFFFFFFF), 8.59, 0.005);
}

TEST(Contrast, ATranslucentColourTakesItsShareOfTheGround) {
    EXPECT_EQ(drawnOver(0xFF123456, 0xFFFFFFFF), 0xFF123456U);
    EXPECT_EQ(drawnOver(0x00123456, 0xFFABCDEF), 0xFFABCDEFU);
    EXPECT_EQ(drawnOver(0x64FF0000, 0xFF000000), 0xFF640000U);
    EXPECT_EQ(drawnOver(0x64FF0000, 0xFF808080), 0xFFB24E4EU);
}

TEST(Contrast, APercentileIsOneOfTheValues) {
    const std::vector<double> values{5.0, 1.0, 4.0, 2.0, 3.0};
    EXPECT_DOUBLE_EQ(percentile(values, 0.0), 1.0);
    EXPECT_DOUBLE_EQ(percentile(values, 50.0), 3.0);
    EXPECT_DOUBLE_EQ(percentile(values, 100.0), 5.0);
    EXPECT_DOUBLE_EQ(percentile({7.0}, 5.0), 7.0);
}

}  // namespace
