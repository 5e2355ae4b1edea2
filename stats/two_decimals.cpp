#include "stats/two_decimals.h"

#include <charconv>
#include <limits>
#include <string_view>

namespace {

constexpr int kDecimals = 6;
constexpr std::size_t kCutOff = 4;

/// Sign, digits, point and decimals of the greatest number.
constexpr std::size_t kLongestNumber = 1 + std::numeric_limits<double>::max_exponent10 + 1 + 1 + kDecimals;

}  // namespace

std::wstring twoDecimals(double value) {
    char digits[kLongestNumber];
    const std::to_chars_result end =
        std::to_chars(digits, digits + kLongestNumber, value, std::chars_format::fixed, kDecimals);
    const std::string_view text(digits, static_cast<std::size_t>(end.ptr - digits));
    const std::size_t kept = text.size() < kCutOff ? text.size() : text.size() - kCutOff;
    return std::wstring(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(kept));
}
