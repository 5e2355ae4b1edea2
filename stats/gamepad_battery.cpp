#include "stats/gamepad_battery.h"

#include <windows.h>

#include <xinput.h>

std::int32_t readGamepadBattery() {
    constexpr DWORD kFirstGamepad = 0;
    XINPUT_STATE state{};
    if (XInputGetState(kFirstGamepad, &state) != ERROR_SUCCESS) {
        return kGamepadBatteryNone;
    }
    // A failed call leaves the type at 0, which is a disconnected battery.
    XINPUT_BATTERY_INFORMATION battery{};
    XInputGetBatteryInformation(kFirstGamepad, BATTERY_DEVTYPE_GAMEPAD, &battery);
    return gamepadBatteryCode(battery.BatteryType, battery.BatteryLevel);
}
