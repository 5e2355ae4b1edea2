#pragma once

#include <cstdint>
#include <string>

// The texts of the main page's figures, e.g. "x3", "1.250000v", "54 °C", "1350.00 MHz".

std::wstring mailCountText(std::int32_t count);

/// Core voltage in volts, with six decimals.
std::wstring vidText(float volts);

/// The degrees are in the unit that `fahrenheit` names.
std::wstring cpuTemperatureText(std::int32_t degrees, bool fahrenheit);

/// Always Celsius: the graphics drivers know no other unit.
std::wstring gpuTemperatureText(std::int32_t degrees);

/// Clock in kHz, shown in MHz with two decimals, the rest cut off.
std::wstring gpuClockText(std::uint32_t clockKHz);
