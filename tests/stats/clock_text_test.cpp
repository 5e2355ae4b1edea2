#include "stats/clock_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

std::tm timeOf(int year, int month, int day, int hour, int minute, int second) {
    std::tm time{};
    time.tm_year = year - 1900;
    time.tm_mon = month - 1;
    time.tm_mday = day;
    time.tm_hour = hour;
    time.tm_min = minute;
    time.tm_sec = second;
    return time;
}

TEST(ClockText, FebruaryIsSpelledFebuary) {
    EXPECT_EQ(clockText(timeOf(2018, 2, 5, 21, 7, 3)), L"5 Febuary 2018   9:07:03  PM");
}

TEST(ClockText, TwelveHoursRunFromTwelveToEleven) {
    struct Case {
        int hour;
        const wchar_t* expected;
    };
    const Case cases[] = {
        {0, L"1 May 2018   12:30:45  AM"},
        {1, L"1 May 2018   1:30:45  AM"},
        {11, L"1 May 2018   11:30:45  AM"},
        {12, L"1 May 2018   12:30:45  PM"},
        {13, L"1 May 2018   1:30:45  PM"},
        {23, L"1 May 2018   11:30:45  PM"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(clockText(timeOf(2018, 5, 1, c.hour, 30, 45)), c.expected) << c.hour;
    }
}

TEST(ClockText, MinutesAndSecondsArePaddedAndHoursAndDaysAreNot) {
    EXPECT_EQ(clockText(timeOf(2026, 11, 9, 9, 5, 7)), L"9 November 2026   9:05:07  AM");
    EXPECT_EQ(clockText(timeOf(2026, 11, 10, 10, 10, 10)), L"10 November 2026   10:10:10  AM");
    EXPECT_EQ(clockText(timeOf(2026, 11, 10, 10, 0, 0)), L"10 November 2026   10:00:00  AM");
}

TEST(ClockText, EveryMonthHasItsName) {
    const wchar_t* const names[] = {L"January",
                                    L"Febuary",
                                    L"March",
                                    L"April",
                                    L"May",
                                    L"June",
                                    L"July",
                                    L"August",
                                    L"September",
                                    L"October",
                                    L"November",
                                    L"December"};
    for (int month = 1; month <= 12; ++month) {
        EXPECT_EQ(clockText(timeOf(2020, month, 3, 4, 5, 6)),
                  std::wstring(L"3 ") + names[month - 1] + L" 2020   4:05:06  AM");
    }
}

TEST(ClockText, EmptyRecordIsMidnightBeforeTheFirstOfJanuary) {
    EXPECT_EQ(clockText(std::tm{}), L"0 January 1900   12:00:00  AM");
}

TEST(ClockText, MonthOutsideTheYearReadsAsTheNearestOne) {
    EXPECT_EQ(clockText(timeOf(2020, 0, 3, 4, 5, 6)), L"3 January 2020   4:05:06  AM");
    EXPECT_EQ(clockText(timeOf(2020, 13, 3, 4, 5, 6)), L"3 December 2020   4:05:06  AM");
}

TEST(ClockText, NumbersOutOfRangeAreWrittenAsTheyAre) {
    std::tm time{};
    time.tm_mday = -1;
    time.tm_mon = std::numeric_limits<int>::min();
    time.tm_year = std::numeric_limits<int>::max();
    time.tm_hour = -1;
    time.tm_min = -1;
    time.tm_sec = -1;
    EXPECT_EQ(clockText(time), L"-1 January 2147485547   -1:0-1:0-1  AM");
}

}  // namespace
