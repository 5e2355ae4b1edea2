#include "stats/two_decimals.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using Limits = std::numeric_limits<double>;

TEST(TwoDecimals, AreCutOffAndNotRounded) {
    EXPECT_EQ(twoDecimals(1350.0), L"1350.00");
    EXPECT_EQ(twoDecimals(324.129), L"324.12");
    EXPECT_EQ(twoDecimals(-0.5), L"-0.50");
    EXPECT_EQ(twoDecimals(0.0), L"0.00");
}

TEST(TwoDecimals, AreCutFromANumberRoundedToSix) {
    EXPECT_EQ(twoDecimals(0.9999999), L"1.00");
    EXPECT_EQ(twoDecimals(0.999999), L"0.99");
}

TEST(TwoDecimals, StandAfterTheLongestNumber) {
    const std::wstring text = twoDecimals(-Limits::max());
    EXPECT_EQ(text.size(), 1U + 309U + 3U);
    EXPECT_EQ(text.substr(0, 8), L"-1797693");
    EXPECT_EQ(text.substr(text.size() - 3), L".00");
}

TEST(TwoDecimals, AreNotTakenFromShorterTexts) {
    EXPECT_EQ(twoDecimals(Limits::infinity()), L"inf");
    EXPECT_EQ(twoDecimals(Limits::quiet_NaN()), L"nan");
    EXPECT_EQ(twoDecimals(-Limits::infinity()), L"");
}

}  // namespace
