#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <ctime>

/// The system's local time now, or so many seconds later, without the C runtime's conversion; nothing is said
/// about daylight saving. CTest runs the tests in a zone that is not universal time: without one the test
/// fails, because nothing could be told apart.
inline std::tm systemLocalTime(unsigned secondsLater = 0) {
    constexpr ULONGLONG kTicksPerSecond = 10'000'000;
    constexpr ULONGLONG kTicksPerDay = 24 * 60 * 60 * kTicksPerSecond;
    const auto ticksOf = [](const SYSTEMTIME& time) {
        FILETIME ticks;
        SystemTimeToFileTime(&time, &ticks);
        return static_cast<ULONGLONG>(ticks.dwHighDateTime) << 32 | ticks.dwLowDateTime;
    };

    SYSTEMTIME time;
    SYSTEMTIME universal;
    GetLocalTime(&time);
    GetSystemTime(&universal);
    EXPECT_GT((ticksOf(time) - ticksOf(universal) + kTicksPerSecond) % kTicksPerDay, 2 * kTicksPerSecond)
        << "the system's zone is universal time: set TZ to another one, as CTest does";

    const ULONGLONG ticks = ticksOf(time) + secondsLater * kTicksPerSecond;
    const FILETIME later{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    FileTimeToSystemTime(&later, &time);
    SYSTEMTIME newYear{};
    newYear.wYear = time.wYear;
    newYear.wMonth = 1;
    newYear.wDay = 1;

    std::tm record{};
    record.tm_sec = time.wSecond;
    record.tm_min = time.wMinute;
    record.tm_hour = time.wHour;
    record.tm_mday = time.wDay;
    record.tm_mon = time.wMonth - 1;
    record.tm_year = time.wYear - 1900;
    record.tm_wday = time.wDayOfWeek;
    record.tm_yday = static_cast<int>((ticks - ticksOf(newYear)) / kTicksPerDay);
    return record;
}
