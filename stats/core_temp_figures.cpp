#include "stats/core_temp_figures.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "stats/two_decimals.h"

std::wstring cpuClockText(float speed, float busSpeed, float multiplier) {
    return twoDecimals(speed) + L"MHz (" + twoDecimals(busSpeed) + L" x " + twoDecimals(multiplier) + L")";
}

double hotterOf(double hottest, float temperature) {
    return std::isfinite(temperature) ? std::max(hottest, static_cast<double>(temperature)) : hottest;
}

std::int32_t wholeDegrees(double temperature) {
    if (std::isnan(temperature)) {
        return 0;
    }
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(
        std::clamp(temperature, static_cast<double>(Limits::min()), static_cast<double>(Limits::max())));
}
