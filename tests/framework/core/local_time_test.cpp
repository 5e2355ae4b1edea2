#include "framework/core/local_time.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <ostream>

#include "tests/support/import_override.h"
#include "tests/support/only_wine.h"
#include "tests/support/system_local_time.h"

namespace {

/// What the runtime is told by the system.
struct Scripted {
    __time64_t now = 0;
    TIME_ZONE_INFORMATION zone{};
    int zoneReadings = 0;
} scripted;

__time64_t scriptedTime(__time64_t*) {
    return scripted.now;
}

DWORD WINAPI scriptedZone(TIME_ZONE_INFORMATION* zone) {
    ++scripted.zoneReadings;
    *zone = scripted.zone;
    return TIME_ZONE_ID_UNKNOWN;
}

TIME_ZONE_INFORMATION zoneWithoutDaylightSaving(LONG bias) {
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = bias;
    return zone;
}

/// One hour ahead of universal time, two from the last Sunday of March to that of October.
TIME_ZONE_INFORMATION centralEurope() {
    TIME_ZONE_INFORMATION zone{};
    zone.Bias = -60;
    zone.StandardDate.wMonth = 10;
    zone.StandardDate.wDay = 5;
    zone.StandardDate.wHour = 3;
    zone.DaylightDate.wMonth = 3;
    zone.DaylightDate.wDay = 5;
    zone.DaylightDate.wHour = 2;
    zone.DaylightBias = -60;
    return zone;
}

/// The system's clock and zone are the test's own.
class LocalTime : public testing::Test {
protected:
    void SetUp() override {
        SKIP_ON_WINDOWS("its C runtime imports the question for the zone from a library of another name");
        clock_.emplace("msvcrt.dll", "_time64", scriptedTime);
        // The runtime's import, not this program's.
        zone_.emplace("kernel32.dll", "GetTimeZoneInformation", scriptedZone, L"msvcrt.dll");
    }

    static void expectTime(int hour, int minute, int second) {
        const std::tm time = Panelix::localTime();
        EXPECT_EQ(time.tm_hour, hour);
        EXPECT_EQ(time.tm_min, minute);
        EXPECT_EQ(time.tm_sec, second);
    }

private:
    std::optional<ImportOverride> clock_;
    std::optional<ImportOverride> zone_;
};

// 13 January 2026, 12:00:00 universal time.
constexpr __time64_t kWinterNoon = 1'768'305'600;

TEST_F(LocalTime, EnvironmentVariableTzDoesNotCount) {
    scripted.now = kWinterNoon;
    scripted.zone = zoneWithoutDaylightSaving(150);
    for (const char* const setting : {"TZ=America/New_York",
                                      "TZ=Europe/Berlin",
                                      "TZ=Asia/Kathmandu",
                                      "TZ=UTC",
                                      "TZ=TST-9",
                                      "TZ=:/x",
                                      "TZ=x"}) {
        ++scripted.now;
        ASSERT_EQ(_putenv(setting), 0);
        _tzset();
        const std::tm time = Panelix::localTime();
        EXPECT_EQ(time.tm_hour, 9) << setting;
        EXPECT_EQ(time.tm_min, 30) << setting;
        EXPECT_EQ(time.tm_isdst, 0) << setting;
        EXPECT_EQ(std::getenv("TZ"), nullptr);
    }
}

TEST_F(LocalTime, ChangedZoneCountsFromTheNextSecondOn) {
    scripted.now = kWinterNoon;
    scripted.zone = zoneWithoutDaylightSaving(0);
    expectTime(12, 0, 0);
    scripted.zone = zoneWithoutDaylightSaving(-345);
    ++scripted.now;
    expectTime(17, 45, 1);
    scripted.zone = zoneWithoutDaylightSaving(300);
    ++scripted.now;
    expectTime(7, 0, 2);
    // The clock may be set back, too.
    scripted.zone = centralEurope();
    scripted.now = kWinterNoon;
    expectTime(13, 0, 0);
}

TEST_F(LocalTime, DaylightSavingTimeBeginsAndEnds) {
    // 29 March and 25 October 2026, 01:00:00 universal time.
    constexpr __time64_t kBegin = 1'774'746'000;
    constexpr __time64_t kEnd = 1'792'890'000;
    scripted.zone = centralEurope();
    scripted.now = kBegin - 1;
    expectTime(1, 59, 59);
    scripted.now = kBegin;
    expectTime(3, 0, 0);
    scripted.now = kEnd - 1;
    expectTime(2, 59, 59);
    scripted.now = kEnd;
    expectTime(2, 0, 0);
}

TEST_F(LocalTime, ZoneIsReadOncePerSecond) {
    scripted.now = kWinterNoon;
    scripted.zone = centralEurope();
    Panelix::localTime();
    const int first = scripted.zoneReadings;
    EXPECT_GE(first, 1);
    for (int i = 0; i < 100; ++i) {
        Panelix::localTime();
    }
    EXPECT_EQ(scripted.zoneReadings, first);
    ++scripted.now;
    Panelix::localTime();
    EXPECT_EQ(scripted.zoneReadings, first + 1);
}

TEST_F(LocalTime, TimeThatCannotBeConvertedIsAllZero) {
    scripted.now = kWinterNoon;
    scripted.zone = centralEurope();
    expectTime(13, 0, 0);
    scripted.now = -1'000'000'000;
    const std::tm time = Panelix::localTime();
    EXPECT_EQ(time.tm_year, 0);
    EXPECT_EQ(time.tm_mday, 0);
    EXPECT_EQ(time.tm_sec, 0);
}

TEST(LocalTimeOfTheSystem, IsNotUniversalTime) {
    // The second may change between two readings of the clock, but not in every round.
    for (int round = 0; round < 10; ++round) {
        const std::tm before = systemLocalTime();
        const std::tm time = Panelix::localTime();
        if (systemLocalTime().tm_sec == before.tm_sec) {
            EXPECT_EQ(time.tm_sec, before.tm_sec);
            EXPECT_EQ(time.tm_min, before.tm_min);
            EXPECT_EQ(time.tm_hour, before.tm_hour);
            EXPECT_EQ(time.tm_mday, before.tm_mday);
            EXPECT_EQ(time.tm_mon, before.tm_mon);
            EXPECT_EQ(time.tm_year, before.tm_year);
            EXPECT_EQ(time.tm_wday, before.tm_wday);
            EXPECT_EQ(time.tm_yday, before.tm_yday);
            return;
        }
    }
    FAIL() << "ten readings of the clock took longer than a second each";
}

}  // namespace
