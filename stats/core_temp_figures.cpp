#include "stats/core_temp_figures.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace {

constexpr int kDecimals = 6;
constexpr std::size_t kCutOff = 4;

// The longest float has 39 digits before the point.
constexpr std::size_t kLongestNumber = 64;

std::wstring twoDecimals(float value) {
    char digits[kLongestNumber];
    const std::to_chars_result end = std::to_chars(
        digits, digits + kLongestNumber, static_cast<double>(value), std::chars_format::fixed, kDecimals);
    const std::string_view text(digits, static_cast<std::size_t>(end.ptr - digits));
    const std::size_t kept = text.size() < kCutOff ? text.size() : text.size() - kCutOff;
    return std::wstring(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(kept));
}

}  // namespace

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
