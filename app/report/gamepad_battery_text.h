#pragma once

#include <cstdint>

#include "stats/gamepad_battery_code.h"

/// What the program shows for one of the codes of gamepad_battery_code.h.
inline const wchar_t* gamepadBatteryText(std::int32_t code) {
    switch (code) {
        case kGamepadBatteryWired:
            return L"wired";
        case kGamepadBatteryEmpty:
            return L"empty";
        case kGamepadBatteryLow:
            return L"low";
        case kGamepadBatteryMedium:
            return L"medium";
        case kGamepadBatteryFull:
            return L"full";
        default:
            return L"none";
    }
}
