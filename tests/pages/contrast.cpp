#include "tests/pages/contrast.h"

#include <algorithm>
#include <cmath>

namespace {

double linear(std::uint32_t colour, int shift) {
    const double value = (colour >> shift & 0xFFU) / 255.0;
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

}  // namespace

double relativeLuminance(std::uint32_t colour) {
    return 0.2126 * linear(colour, 16) + 0.7152 * linear(colour, 8) + 0.0722 * linear(colour, 0);
}

double contrastRatio(std::uint32_t one, std::uint32_t other) {
    const auto [darker, lighter] = std::minmax({relativeLuminance(one), relativeLuminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

std::uint32_t drawnOver(std::uint32_t argb, std::uint32_t ground) {
    const double alpha = (argb >> 24) / 255.0;
    std::uint32_t result = 0xFF000000U;
    for (const int shift : {0, 8, 16}) {
        const double mixed = (argb >> shift & 0xFFU) * alpha + (ground >> shift & 0xFFU) * (1.0 - alpha);
        result |= static_cast<std::uint32_t>(std::lround(mixed)) << shift;
    }
    return result;
}

double percentile(std::vector<double> values, double percent) {
    const auto index = static_cast<std::ptrdiff_t>(static_cast<double>(values.size() - 1) * percent / 100.0);
    std::nth_element(values.begin(), values.begin() + index, values.end());
    return values[static_cast<std::size_t>(index)];
}
