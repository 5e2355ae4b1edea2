#include "stats/volume_percent.h"

#include <algorithm>

namespace {

constexpr std::int32_t kMaxPercent = 100;

// Written so that a value that is not a number, which compares false with everything, ends as 0.
std::int32_t boundedPercent(double percent) noexcept {
    if (percent >= kMaxPercent) {
        return kMaxPercent;
    }
    return percent > 0.0 ? static_cast<std::int32_t>(percent) : 0;
}

}  // namespace

std::int32_t truncatedPercent(float scalar) noexcept {
    return boundedPercent(scalar * 100.0F);
}

std::int32_t roundedPercent(float scalar) noexcept {
    return boundedPercent(scalar * 100.0F + 0.5);
}

float volumeScalar(int percent) noexcept {
    return static_cast<float>(std::clamp(percent, 0, kMaxPercent) * 0.01);
}
