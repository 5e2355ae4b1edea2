#include "stats/gamepad_battery.h"

#include <windows.h>

#include <xinput.h>

static_assert(kXinputTypeWired == BATTERY_TYPE_WIRED);
static_assert(kXinputTypeAlkaline == BATTERY_TYPE_ALKALINE);
static_assert(kXinputTypeNimh == BATTERY_TYPE_NIMH);
static_assert(kXinputLevelFull == BATTERY_LEVEL_FULL);
static_assert(kGamepadBatteryEmpty + BATTERY_LEVEL_EMPTY == kGamepadBatteryEmpty);
static_assert(kGamepadBatteryEmpty + BATTERY_LEVEL_LOW == kGamepadBatteryLow);
static_assert(kGamepadBatteryEmpty + BATTERY_LEVEL_MEDIUM == kGamepadBatteryMedium);
static_assert(kGamepadBatteryEmpty + BATTERY_LEVEL_FULL == kGamepadBatteryFull);

std::int32_t readGamepadBattery() {
    constexpr DWORD kFirstGamepad = 0;
    XINPUT_STATE state{};
    if (XInputGetState(kFirstGamepad, &state) != ERROR_SUCCESS) {
        return kGamepadBatteryNone;
    }
    // A failed call leaves the type at 0, which is a disconnected battery.
    static_assert(BATTERY_TYPE_DISCONNECTED == 0);
    XINPUT_BATTERY_INFORMATION battery{};
    XInputGetBatteryInformation(kFirstGamepad, BATTERY_DEVTYPE_GAMEPAD, &battery);
    return gamepadBatteryCode(battery.BatteryType, battery.BatteryLevel);
}
