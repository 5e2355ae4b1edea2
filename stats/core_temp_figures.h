#pragma once

#include <cstdint>
#include <string>

/// Clock, bus clock (both in MHz) and multiplier with two decimals, cut off and not rounded beyond the sixth:
/// "3600.00MHz (100.00 x 36.00)". What is not a number reads "inf" or "nan" where that is left of it.
std::wstring cpuClockText(float speed, float busSpeed, float multiplier);

/// The greater of the two; a temperature that is not a finite number does not count.
double hotterOf(double hottest, float temperature);

/// Truncated toward zero, and kept within what 32 bits hold; 0 for what is not a number.
std::int32_t wholeDegrees(double temperature);
