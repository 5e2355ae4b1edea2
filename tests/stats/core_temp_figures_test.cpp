#include "stats/core_temp_figures.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using FloatLimits = std::numeric_limits<float>;
using DoubleLimits = std::numeric_limits<double>;
using IntLimits = std::numeric_limits<std::int32_t>;

TEST(CoreTempFigures, ClockTextJoinsSpeedBusAndMultiplier) {
    EXPECT_EQ(cpuClockText(3600.0F, 100.0F, 36.0F), L"3600.00MHz (100.00 x 36.00)");
}

TEST(CoreTempFigures, SpeedOfZeroHasTwoDecimals) {
    EXPECT_EQ(cpuClockText(0.0F, 0.0F, 0.0F), L"0.00MHz (0.00 x 0.00)");
}

TEST(CoreTempFigures, DecimalsAreCutOffAndNotRounded) {
    EXPECT_EQ(cpuClockText(3599.875F, 99.998F, 36.999F), L"3599.87MHz (99.99 x 36.99)");
    // Rounding happens at the sixth decimal, before the cut.
    EXPECT_EQ(cpuClockText(0.9999999F, 0.009999F, 0.00999999F), L"1.00MHz (0.00 x 0.01)");
    EXPECT_EQ(cpuClockText(-3600.5F, -0.001F, 1.5F), L"-3600.50MHz (-0.00 x 1.50)");
}

TEST(CoreTempFigures, LargestNumbersAreWrittenInFull) {
    EXPECT_EQ(cpuClockText(FloatLimits::max(), 0.0F, FloatLimits::denorm_min()),
              L"340282346638528859811704183484516925440.00MHz (0.00 x 0.00)");
}

TEST(CoreTempFigures, TextsShorterThanTheCutAreKeptWhole) {
    EXPECT_EQ(cpuClockText(FloatLimits::infinity(), FloatLimits::quiet_NaN(), 1.0F), L"infMHz (nan x 1.00)");
    EXPECT_EQ(cpuClockText(-FloatLimits::infinity(), 1.0F, 1.0F), L"MHz (1.00 x 1.00)");
}

TEST(CoreTempFigures, HotterTemperatureCounts) {
    EXPECT_EQ(hotterOf(40.0, 41.5F), 41.5);
    EXPECT_EQ(hotterOf(40.0, 39.5F), 40.0);
    EXPECT_EQ(hotterOf(0.0, -5.0F), 0.0);
}

TEST(CoreTempFigures, TemperatureThatIsNoNumberDoesNotCount) {
    EXPECT_EQ(hotterOf(40.0, FloatLimits::quiet_NaN()), 40.0);
    EXPECT_EQ(hotterOf(40.0, FloatLimits::signaling_NaN()), 40.0);
    EXPECT_EQ(hotterOf(40.0, FloatLimits::infinity()), 40.0);
    EXPECT_EQ(hotterOf(40.0, -FloatLimits::infinity()), 40.0);
}

TEST(CoreTempFigures, DegreesAreTruncatedTowardZero) {
    EXPECT_EQ(wholeDegrees(61.99), 61);
    EXPECT_EQ(wholeDegrees(-0.9), 0);
    EXPECT_EQ(wholeDegrees(-1.9), -1);
    EXPECT_EQ(wholeDegrees(0.0), 0);
}

TEST(CoreTempFigures, DegreesStayWithinThirtyTwoBits) {
    EXPECT_EQ(wholeDegrees(static_cast<double>(FloatLimits::max())), IntLimits::max());
    EXPECT_EQ(wholeDegrees(-static_cast<double>(FloatLimits::max())), IntLimits::min());
    EXPECT_EQ(wholeDegrees(2147483646.9), 2147483646);
    EXPECT_EQ(wholeDegrees(2147483648.0), IntLimits::max());
    EXPECT_EQ(wholeDegrees(DoubleLimits::infinity()), IntLimits::max());
    EXPECT_EQ(wholeDegrees(DoubleLimits::quiet_NaN()), 0);
}

}  // namespace
