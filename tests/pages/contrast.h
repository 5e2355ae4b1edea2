#pragma once

#include <cstdint>
#include <vector>

// Contrast of opaque colours after the Web Content Accessibility Guidelines: 1 for equal ones, 21 for black
// on white. The alpha byte of an opaque colour plays no part.

double contrastRatio(std::uint32_t one, std::uint32_t other);

double relativeLuminance(std::uint32_t colour);

/// `argb` drawn over an opaque colour.
std::uint32_t drawnOver(std::uint32_t argb, std::uint32_t ground);

/// The value below which `percent` of the values lie; `values` is not empty.
double percentile(std::vector<double> values, double percent);
