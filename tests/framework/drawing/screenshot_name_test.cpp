#include "framework/drawing/screenshot_name.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace {

/// `month` from 1 to 12.
std::tm timeAt(int year, int month, int day, int hour, int minute, int second) {
    std::tm time{};
    time.tm_year = year - 1900;
    time.tm_mon = month - 1;
    time.tm_mday = day;
    time.tm_hour = hour;
    time.tm_min = minute;
    time.tm_sec = second;
    return time;
}

}  // namespace

TEST(ScreenshotName, FollowsItsRules) {
    struct Case {
        std::tm time;
        const wchar_t* text;
    };
    const std::array<Case, 7> cases{{
        {timeAt(2026, 11, 16, 4, 3, 16), L"2026-11-16 4-03-16am"},
        {timeAt(2026, 10, 5, 15, 7, 9), L"2026-010-05 3-07-09pm"},
        {timeAt(2027, 1, 1, 0, 0, 5), L"2027-01-01 12-00-05am"},
        {timeAt(2027, 1, 1, 12, 30, 0), L"2027-01-01 12-30-00pm"},
        {timeAt(2026, 9, 30, 23, 59, 59), L"2026-09-30 11-59-59pm"},
        {timeAt(2026, 12, 10, 10, 10, 10), L"2026-12-10 10-10-10am"},
        {timeAt(1999, 2, 9, 11, 9, 60), L"1999-02-09 11-09-60am"},
    }};
    for (const Case& expected : cases) {
        EXPECT_EQ(Panelix::screenshotTimeText(expected.time), expected.text);
    }
}

TEST(ScreenshotName, PadsTheMonthByItsZeroBasedNumber) {
    const std::array<const wchar_t*, 12> months{
        L"01", L"02", L"03", L"04", L"05", L"06", L"07", L"08", L"09", L"010", L"11", L"12"};
    for (int month = 1; month <= 12; ++month) {
        EXPECT_EQ(Panelix::screenshotTimeText(timeAt(2026, month, 20, 6, 40, 50)),
                  std::wstring(L"2026-") + months[static_cast<std::size_t>(month - 1)] + L"-20 6-40-50am");
    }
}

TEST(ScreenshotName, CountsHoursOnATwelveHourClock) {
    const std::array<const wchar_t*, 24> hours{
        L"12-00-00am", L"1-00-00am", L"2-00-00am", L"3-00-00am", L"4-00-00am",  L"5-00-00am",
        L"6-00-00am",  L"7-00-00am", L"8-00-00am", L"9-00-00am", L"10-00-00am", L"11-00-00am",
        L"12-00-00pm", L"1-00-00pm", L"2-00-00pm", L"3-00-00pm", L"4-00-00pm",  L"5-00-00pm",
        L"6-00-00pm",  L"7-00-00pm", L"8-00-00pm", L"9-00-00pm", L"10-00-00pm", L"11-00-00pm",
    };
    for (int hour = 0; hour < 24; ++hour) {
        EXPECT_EQ(Panelix::screenshotTimeText(timeAt(2026, 3, 31, hour, 0, 0)),
                  std::wstring(L"2026-03-31 ") + hours[static_cast<std::size_t>(hour)]);
    }
}

TEST(ScreenshotName, AnyRecordGivesAName) {
    constexpr int kMost = std::numeric_limits<int>::max();
    constexpr int kLeast = std::numeric_limits<int>::min();
    std::tm time{};
    time.tm_year = time.tm_mon = time.tm_mday = time.tm_hour = time.tm_min = time.tm_sec = kMost;
    EXPECT_EQ(Panelix::screenshotTimeText(time),
              L"2147485547-2147483648-2147483647 2147483635-2147483647-2147483647pm");
    time.tm_year = time.tm_mon = time.tm_mday = time.tm_hour = time.tm_min = time.tm_sec = kLeast;
    EXPECT_EQ(Panelix::screenshotTimeText(time),
              L"-2147481748-0-2147483647-0-2147483648 -2147483648-0-2147483648-0-2147483648am");
}
