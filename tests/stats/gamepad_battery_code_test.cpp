#include "stats/gamepad_battery_code.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint8_t kDisconnected = 0;
constexpr std::uint8_t kWired = 1;
constexpr std::uint8_t kAlkaline = 2;
constexpr std::uint8_t kNimh = 3;
constexpr std::uint8_t kUnknown = 0xFF;

TEST(GamepadBatteryCode, WiredGamepadIsOneWhateverItsLevel) {
    for (int level = 0; level <= 0xFF; ++level) {
        EXPECT_EQ(gamepadBatteryCode(kWired, static_cast<std::uint8_t>(level)), 1) << level;
    }
}

TEST(GamepadBatteryCode, BatteryIsTwoPlusItsLevel) {
    for (const std::uint8_t type : {kAlkaline, kNimh}) {
        EXPECT_EQ(gamepadBatteryCode(type, 0), 2);
        EXPECT_EQ(gamepadBatteryCode(type, 1), 3);
        EXPECT_EQ(gamepadBatteryCode(type, 2), 4);
        EXPECT_EQ(gamepadBatteryCode(type, 3), 5);
    }
}

TEST(GamepadBatteryCode, UnknownLevelOfABatteryIsZero) {
    EXPECT_EQ(gamepadBatteryCode(kAlkaline, 4), 0);
    EXPECT_EQ(gamepadBatteryCode(kNimh, 0xFF), 0);
}

TEST(GamepadBatteryCode, EveryOtherTypeIsZero) {
    for (int type = 0; type <= 0xFF; ++type) {
        if (type != kWired && type != kAlkaline && type != kNimh) {
            EXPECT_EQ(gamepadBatteryCode(static_cast<std::uint8_t>(type), 3), 0) << type;
        }
    }
    EXPECT_EQ(gamepadBatteryCode(kDisconnected, 3), 0);
    EXPECT_EQ(gamepadBatteryCode(kUnknown, 3), 0);
}

}  // namespace
