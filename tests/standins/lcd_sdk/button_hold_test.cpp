#include "standins/lcd_sdk/button_hold.h"

#include <gtest/gtest.h>

namespace {

using Standins::ButtonHold;
using Standins::PressSource;

constexpr std::uint32_t kUp = 0x1000;
constexpr std::uint32_t kMenu = 0x4000;

TEST(ButtonHold, ButtonStaysDownWhileItIsHeld) {
    ButtonHold hold;
    EXPECT_EQ(hold.buttonsDown(0, 0), 0u);
    hold.press(kUp, PressSource::Mouse, 10, 1000);
    EXPECT_EQ(hold.buttonsDown(10, 1000), kUp);
    EXPECT_EQ(hold.buttonsDown(500, 60'000), kUp);
    hold.release(kUp, PressSource::Mouse);
    EXPECT_EQ(hold.buttonsDown(500, 60'000), 0u);
}

TEST(ButtonHold, QuickClickLastsUntilAWholePassHasSeenIt) {
    ButtonHold hold;
    hold.press(kUp, PressSource::Mouse, 10, 1000);
    hold.release(kUp, PressSource::Mouse);
    EXPECT_EQ(hold.buttonsDown(10, 1005), kUp);
    EXPECT_EQ(hold.buttonsDown(11, 1070), kUp);
    EXPECT_EQ(hold.buttonsDown(12, 1136), 0u);
    EXPECT_EQ(hold.buttonsDown(12, 1136), 0u);
}

TEST(ButtonHold, QuickClickEndsByItselfWhenTheProgramStandsStill) {
    ButtonHold hold;
    hold.press(kUp, PressSource::Mouse, 10, 1000);
    hold.release(kUp, PressSource::Mouse);
    EXPECT_EQ(hold.buttonsDown(10, 1249), kUp);
    EXPECT_EQ(hold.buttonsDown(10, 1250), 0u);
}

TEST(ButtonHold, ButtonIsUpOnlyWhenMouseAndKeyHaveLetGo) {
    ButtonHold hold;
    hold.press(kUp, PressSource::Mouse, 0, 0);
    hold.press(kUp, PressSource::Key, 0, 0);
    hold.releaseSource(PressSource::Mouse);
    EXPECT_EQ(hold.buttonsDown(100, 10'000), kUp);
    hold.release(kUp, PressSource::Key);
    EXPECT_EQ(hold.buttonsDown(100, 10'000), 0u);
}

TEST(ButtonHold, TwoButtonsAreHeldSideBySide) {
    ButtonHold hold;
    hold.press(kUp, PressSource::Mouse, 0, 0);
    hold.press(kMenu, PressSource::Key, 0, 0);
    EXPECT_EQ(hold.buttonsDown(100, 10'000), kUp | kMenu);
    hold.releaseSource(PressSource::Mouse);
    EXPECT_EQ(hold.buttonsDown(100, 10'000), kMenu);
}

TEST(ButtonHold, ReleaseOfAllDropsQuickClicksToo) {
    ButtonHold hold;
    hold.press(kUp, PressSource::Mouse, 0, 0);
    hold.press(kMenu, PressSource::Key, 0, 0);
    hold.release(kMenu, PressSource::Key);
    hold.releaseAll();
    EXPECT_EQ(hold.buttonsDown(0, 0), 0u);
}

}  // namespace
