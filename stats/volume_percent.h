#pragma once

#include <cstdint>

/// Conversions between Core Audio's volume scalars, 0.0 to 1.0, and percent. Percentages are always 0 to 100:
/// what lies outside is brought to the nearer end, and what is not a number is 0.

/// As volumes are read when an endpoint is bound: 0.495 is 49.
std::int32_t truncatedPercent(float scalar) noexcept;

/// As volumes are taken from a notification: 0.495 is 50, 0.494 is 49.
std::int32_t roundedPercent(float scalar) noexcept;

/// The scalar for a percentage: 150 is 1.0, -5 is 0.0.
float volumeScalar(int percent) noexcept;
