#include "pages/figure_texts.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace {

TEST(FigureTexts, MailCountIsTheDecimalCountAfterAnX) {
    EXPECT_EQ(mailCountText(1), L"x1");
    EXPECT_EQ(mailCountText(3), L"x3");
    EXPECT_EQ(mailCountText(128), L"x128");
    EXPECT_EQ(mailCountText(std::numeric_limits<std::int32_t>::max()), L"x2147483647");
}

TEST(FigureTexts, VidHasSixDecimals) {
    EXPECT_EQ(vidText(1.25F), L"1.250000v");
    EXPECT_EQ(vidText(0.0F), L"0.000000v");
    EXPECT_EQ(vidText(-0.5F), L"-0.500000v");
    EXPECT_EQ(vidText(12345.5F), L"12345.500000v");
}

TEST(FigureTexts, VidShowsTheFloatAsItIsAndNotTheDecimalItStandsFor) {
    EXPECT_EQ(vidText(1.1F), L"1.100000v");
    // The float nearest to 16777.1 is 16777.099609375.
    EXPECT_EQ(vidText(16777.1F), L"16777.099609v");
}

TEST(FigureTexts, VidOfTheGreatestFloatIsNotCutShort) {
    const std::wstring text = vidText(std::numeric_limits<float>::max());
    EXPECT_EQ(text, L"340282346638528859811704183484516925440.000000v");
}

TEST(FigureTexts, CpuTemperatureNamesTheUnitItIsIn) {
    EXPECT_EQ(cpuTemperatureText(54, false), L"54 \u00B0C");
    EXPECT_EQ(cpuTemperatureText(129, true), L"129 \u00B0F");
    EXPECT_EQ(cpuTemperatureText(0, false), L"0 \u00B0C");
}

TEST(FigureTexts, NegativeCpuTemperatureShowsALeadingMinusSign) {
    EXPECT_EQ(cpuTemperatureText(-7, false), L"-7 \u00B0C");
    EXPECT_EQ(cpuTemperatureText(-40, true), L"-40 \u00B0F");
    EXPECT_EQ(cpuTemperatureText(std::numeric_limits<std::int32_t>::min(), false), L"-2147483648 \u00B0C");
}

TEST(FigureTexts, GpuTemperatureIsAlwaysCelsius) {
    EXPECT_EQ(gpuTemperatureText(61), L"61 \u00B0C");
    EXPECT_EQ(gpuTemperatureText(0), L"0 \u00B0C");
    EXPECT_EQ(gpuTemperatureText(-3), L"-3 \u00B0C");
}

TEST(FigureTexts, GpuClockIsInMegahertzWithTwoDecimals) {
    struct Case {
        std::uint32_t clockKHz;
        const wchar_t* text;
    };
    const Case cases[] = {
        {1'350'000, L"1350.00 MHz"},
        {0, L"0.00 MHz"},
        {1, L"0.00 MHz"},
        {10, L"0.01 MHz"},
        {324'125, L"324.12 MHz"},
        {999'999, L"999.99 MHz"},
        {std::numeric_limits<std::uint32_t>::max(), L"4294967.29 MHz"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(gpuClockText(c.clockKHz), c.text) << c.clockKHz << " kHz";
    }
}

}  // namespace
