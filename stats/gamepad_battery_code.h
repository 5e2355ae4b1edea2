#pragma once

#include <cstdint>

// What gamepadBattery says: the kind of battery and its level in one number.

/// No gamepad, or nothing known about its battery.
inline constexpr std::int32_t kGamepadBatteryNone = 0;
inline constexpr std::int32_t kGamepadBatteryWired = 1;
// Alkaline or NiMH battery at one of four levels.
inline constexpr std::int32_t kGamepadBatteryEmpty = 2;
inline constexpr std::int32_t kGamepadBatteryLow = 3;
inline constexpr std::int32_t kGamepadBatteryMedium = 4;
inline constexpr std::int32_t kGamepadBatteryFull = 5;

// XInput's battery types and levels, for builds that do not have xinput.h.

inline constexpr std::uint8_t kXinputTypeWired = 1;
inline constexpr std::uint8_t kXinputTypeAlkaline = 2;
inline constexpr std::uint8_t kXinputTypeNimh = 3;
inline constexpr std::uint8_t kXinputLevelFull = 3;

/// The code for XInput's battery type and level.
std::int32_t gamepadBatteryCode(std::uint8_t type, std::uint8_t level);
