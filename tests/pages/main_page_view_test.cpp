#include "pages/main_page_view.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>

#include "stats/gamepad_battery_code.h"

namespace {

using enum MixerChannel;

MainPageView viewOf(const Snapshot& snapshot, MixerChannel selected = None, bool blinkOn = false) {
    MainPageView view;
    updateStatisticsView(view, snapshot, selected, blinkOn, L"clock");
    return view;
}

TEST(MainPageView, HoldsTheFiguresOfTheSnapshot) {
    Snapshot snapshot;
    snapshot.cpuLoad = 37;
    snapshot.cpuTemperature = -5;
    snapshot.cpuTempFahrenheit = true;
    snapshot.cpuName = L"CPU's name";
    snapshot.cpuClockText = L"CPU's clock";
    snapshot.cpuVid = 1.25F;
    snapshot.memoryLoad = 62;
    snapshot.coreTempAvailable = true;
    snapshot.gpuStats = {.load = 1, .temperature = 2, .memoryLoad = 3, .coreClock = 4, .loadValid = true};
    snapshot.gpuName = L"GPU's name";
    snapshot.gpuAvailable = true;
    snapshot.unreadMail = 7;
    snapshot.speakerLeftVolume = 10;
    snapshot.speakerRightVolume = 20;
    snapshot.speakerMasterVolume = 30;
    snapshot.speakerMuted = true;
    snapshot.gamepadBattery = kGamepadBatteryLow;
    const MainPageView expected{.unreadMail = 7,
                                .cpuLoad = 37,
                                .memoryLoad = 62,
                                .coreTempAvailable = true,
                                .cpuName = L"CPU's name",
                                .cpuClockText = L"CPU's clock",
                                .cpuVidBits = std::bit_cast<std::uint32_t>(1.25F),
                                .cpuTemperature = -5,
                                .cpuTempFahrenheit = true,
                                .gpuAvailable = true,
                                .gpuName = L"GPU's name",
                                .gpuStats = snapshot.gpuStats,
                                .volumeFigure = 30,
                                .leftVolume = 10,
                                .rightVolume = 20,
                                .speakerMuted = true,
                                .gamepadBattery = kGamepadBatteryLow,
                                .clockText = L"clock"};
    EXPECT_EQ(viewOf(snapshot), expected);
}

TEST(MainPageView, NothingIsLeftOfTheViewThatItWasBefore) {
    Snapshot other;
    other.cpuLoad = 37;
    other.cpuTemperature = -5;
    other.cpuTempFahrenheit = true;
    other.cpuName = L"CPU's name";
    other.cpuClockText = L"CPU's clock";
    other.cpuVid = 1.25F;
    other.memoryLoad = 62;
    other.coreTempAvailable = true;
    other.gpuStats = {.load = 1, .temperature = 2, .memoryLoad = 3, .coreClock = 4, .loadValid = true};
    other.gpuName = L"GPU's name";
    other.gpuAvailable = true;
    other.unreadMail = 7;
    other.speakerLeftVolume = 10;
    other.speakerRightVolume = 20;
    other.speakerMasterVolume = 30;
    other.speakerMuted = true;
    other.microphoneMuted = true;
    other.gamepadBattery = kGamepadBatteryLow;
    MainPageView view;
    updateStatisticsView(view, other, Left, true, L"another clock");
    view.pictureMode = true;
    updateStatisticsView(view, Snapshot(), None, false, L"clock");
    EXPECT_EQ(view, viewOf(Snapshot()));
}

TEST(MainPageView, TheFigureIsTheMastersOrTheSelectedChannels) {
    Snapshot snapshot;
    snapshot.speakerLeftVolume = 10;
    snapshot.speakerRightVolume = 20;
    snapshot.speakerMasterVolume = 30;
    EXPECT_EQ(viewOf(snapshot, None).volumeFigure, 30);
    EXPECT_EQ(viewOf(snapshot, Left).volumeFigure, 10);
    EXPECT_EQ(viewOf(snapshot, Right).volumeFigure, 20);
    EXPECT_EQ(viewOf(snapshot, Right).selectedChannel, Right);
}

TEST(MainPageView, AnEmptyBatteryIsThereInOnePhaseOfItsBlinkingOnly) {
    Snapshot snapshot;
    for (const std::int32_t battery : {kGamepadBatteryNone, kGamepadBatteryWired, kGamepadBatteryFull}) {
        snapshot.gamepadBattery = battery;
        EXPECT_EQ(viewOf(snapshot, None, true), viewOf(snapshot, None, false)) << battery;
    }
    snapshot.gamepadBattery = kGamepadBatteryEmpty;
    EXPECT_EQ(viewOf(snapshot, None, true).gamepadBattery, kGamepadBatteryEmpty);
    EXPECT_EQ(viewOf(snapshot, None, false).gamepadBattery, kGamepadBatteryNone);
}

TEST(MainPageView, VoltagesThatLookDifferentAreDifferent) {
    Snapshot zero;
    Snapshot negative;
    negative.cpuVid = -0.0F;
    EXPECT_FALSE(viewOf(zero) == viewOf(negative));
    Snapshot none;
    none.cpuVid = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(viewOf(none), viewOf(none)) << "the text is the same each time";
}

TEST(MainPageView, AnyLoadIsTakenAsItIs) {
    Snapshot snapshot;
    snapshot.cpuLoad = 0x80000000U;
    EXPECT_EQ(viewOf(snapshot).cpuLoad, std::numeric_limits<std::int32_t>::min());
}

TEST(MainPageView, WhetherAReadingIsDueIsNoPartOfThePicture) {
    Snapshot snapshot;
    const MainPageView before = viewOf(snapshot);
    snapshot.dataReady = true;
    EXPECT_EQ(viewOf(snapshot), before);
}

}  // namespace
