#include "stats/gamepad_battery_code.h"

std::int32_t gamepadBatteryCode(std::uint8_t type, std::uint8_t level) {
    if (type == kXinputTypeWired) {
        return kGamepadBatteryWired;
    }
    const bool isBattery = type == kXinputTypeAlkaline || type == kXinputTypeNimh;
    return isBattery && level <= kXinputLevelFull ? kGamepadBatteryEmpty + level : kGamepadBatteryNone;
}
