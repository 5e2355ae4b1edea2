#include "pages/figure_texts.h"

#include "stats/two_decimals.h"

namespace {

// Escaped, so that the text does not hang on the compiler's idea of the source's encoding.
constexpr wchar_t kCelsius[] = L" \u00B0C";
constexpr wchar_t kFahrenheit[] = L" \u00B0F";

}  // namespace

std::wstring mailCountText(std::int32_t count) {
    return L"x" + std::to_wstring(count);
}

std::wstring vidText(float volts) {
    return std::to_wstring(static_cast<double>(volts)) + L"v";
}

std::wstring cpuTemperatureText(std::int32_t degrees, bool fahrenheit) {
    return std::to_wstring(degrees) + (fahrenheit ? kFahrenheit : kCelsius);
}

std::wstring gpuTemperatureText(std::int32_t degrees) {
    return std::to_wstring(degrees) + kCelsius;
}

std::wstring gpuClockText(std::uint32_t clockKHz) {
    return twoDecimals(clockKHz * 0.001) + L" MHz";
}
