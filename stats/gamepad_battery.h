#pragma once

#include <cstdint>

#include "stats/gamepad_battery_code.h"

/// Battery of the first gamepad as one of the codes of gamepad_battery_code.h.
std::int32_t readGamepadBattery();
