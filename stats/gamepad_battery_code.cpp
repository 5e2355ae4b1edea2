#include "stats/gamepad_battery_code.h"

namespace {

// XInput's values (xinput.h, which only Windows builds have).
constexpr std::uint8_t kTypeWired = 1;
constexpr std::uint8_t kTypeAlkaline = 2;
constexpr std::uint8_t kTypeNimh = 3;
constexpr std::uint8_t kLevelFull = 3;

}  // namespace

std::int32_t gamepadBatteryCode(std::uint8_t type, std::uint8_t level) {
    if (type == kTypeWired) {
        return kGamepadBatteryWired;
    }
    const bool isBattery = type == kTypeAlkaline || type == kTypeNimh;
    return isBattery && level <= kLevelFull ? kGamepadBatteryEmpty + level : kGamepadBatteryNone;
}
