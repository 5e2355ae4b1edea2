#include "tests/framework/drawing/blend_definition.h"

#include <algorithm>

namespace {

double part(std::uint32_t pixel, unsigned shift) {
    return static_cast<double>((pixel >> shift) & 0xFF) / 255.0;
}

double combine(double destination, double source, std::uint32_t mode) {
    switch (mode) {
        case 0:
            return destination * source;
        case 1:
            return destination + source;
        case 2:
            return destination - source;
        default:
            return 0.0;
    }
}

std::uint32_t result(std::uint32_t destination, std::uint32_t source, std::uint32_t mode, unsigned shift) {
    const double combined = combine(part(destination, shift), part(source, shift), mode);
    return static_cast<std::uint32_t>(std::clamp(combined, 0.0, 1.0) * 255.0) << shift;
}

}  // namespace

void blendByDefinition(std::uint32_t* destination,
                       const std::uint32_t* source,
                       std::size_t count,
                       std::uint32_t mode) {
    for (std::size_t index = 0; index < count; ++index) {
        const std::uint32_t d = destination[index];
        const std::uint32_t s = source[index];
        destination[index] =
            0xFF000000 | result(d, s, mode, 16) | result(d, s, mode, 8) | result(d, s, mode, 0);
    }
}
