#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstring>
#include <ctime>

#include "framework/drawing/screenshot_name.h"
#include "framework/drawing/status_text.h"
#include "pages/figure_texts.h"
#include "stats/clock_text.h"
#include "stats/nvapi_status.h"
#include "stats/two_decimals.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

/// Longest text of a 32-bit number, and of what a year or a month becomes: sign and ten digits.
constexpr std::size_t kNumberLength = 11;

/// Six numbers and what stands between them.
constexpr std::size_t kClockLength = 6 * kNumberLength + 32;

constexpr std::wstring_view kDigits = L"0123456789";

/// An optional sign, digits, a point and so many decimals.
bool isDecimal(std::wstring_view text, std::size_t decimals) {
    if (text.starts_with(L'-')) {
        text.remove_prefix(1);
    }
    const std::size_t point = text.find_first_not_of(kDigits);
    return point != 0 && point != std::wstring_view::npos && text[point] == L'.' &&
           text.size() == point + 1 + decimals &&
           text.find_first_not_of(kDigits, point + 1) == std::wstring_view::npos;
}

bool isInTheDay(const std::tm& time) {
    return time.tm_hour >= 0 && time.tm_hour < 24 && time.tm_min >= 0 && time.tm_min < 60 &&
           time.tm_sec >= 0 && time.tm_sec < 60;
}

std::tm someTime(FuzzedDataProvider& input) {
    std::tm time{};
    for (int* const field :
         {&time.tm_sec, &time.tm_min, &time.tm_hour, &time.tm_mday, &time.tm_mon, &time.tm_year}) {
        *field = input.ConsumeBool() ? input.ConsumeIntegral<std::int8_t>() : input.ConsumeIntegral<int>();
    }
    return time;
}

void checkClock(const std::tm& time) {
    const std::wstring text = clockText(time);
    require(text.size() <= kClockLength, "a clock's text is bounded");
    require(text.ends_with(time.tm_hour >= 12 ? L"  PM" : L"  AM"), "noon divides the day");
    const std::size_t hour = text.find(L"   ");
    require(hour != std::wstring::npos, "date and time stand apart");
    if (isInTheDay(time)) {
        const std::wstring shown = text.substr(hour + 3);
        const int hourShown = std::stoi(shown);
        require(hourShown >= 1 && hourShown <= 12 && hourShown % 12 == time.tm_hour % 12,
                "the hour is that of a clock's face");
        require(shown.size() == (hourShown < 10 ? 11 : 12), "minutes and seconds have two digits");
    }
}

void checkScreenshotName(const std::tm& time) {
    const std::wstring text = Panelix::screenshotTimeText(time);
    require(text.size() <= kClockLength, "a screenshot's name is bounded");
    require(text.find_first_of(L"\\/:*?\"<>|") == std::wstring::npos, "a screenshot's name is one of a file");
    require(text.ends_with(time.tm_hour >= 12 ? L"pm" : L"am"), "noon divides the day");
}

void checkDecimals(double value) {
    const std::wstring text = twoDecimals(value);
    if (!std::isfinite(value)) {
        require(text.size() <= 3, "what is no number stays short");
        return;
    }
    require(isDecimal(text, 2), "a number has two decimals");
    const double shown = std::stod(text);
    require(std::abs(shown) <= std::abs(value) + 0.000001 || std::abs(value) > 1e15, "decimals are cut off");
    require(std::abs(value - shown) < 0.010001 || std::abs(value) > 1e9, "two decimals are kept");
}

void checkFigures(FuzzedDataProvider& input) {
    const auto number = input.ConsumeIntegral<std::int32_t>();
    require(std::stoll(mailCountText(number).substr(1)) == number, "a count is shown as it is");
    require(mailCountText(number).size() <= 1 + kNumberLength, "a count's text is bounded");
    require(gpuTemperatureText(number) == cpuTemperatureText(number, false), "degrees look alike");
    require(cpuTemperatureText(number, true).ends_with(L"\u00B0F"), "a temperature has its unit");
    require(nvapiStatusName(number).starts_with(L"NVAPI") && nvapiStatusName(number).size() < 40,
            "a status has a name");
    require(Panelix::gdiplusStatusText(number) != nullptr &&
                std::wcslen(Panelix::gdiplusStatusText(number)) < 300,
            "a status has a text");
    const auto clock = input.ConsumeIntegral<std::uint32_t>();
    const std::wstring clockShown = gpuClockText(clock);
    require(clockShown.ends_with(L" MHz") && clockShown.size() <= 14, "a clock's text is bounded");
    require(isDecimal(clockShown.substr(0, clockShown.size() - 4), 2), "a clock has two decimals");
    require(std::abs(std::stod(clockShown) * 1000 - clock) <= 10.0, "a clock is shown to 10 kHz");
}

double someNumber(FuzzedDataProvider& input) {
    const auto bits = input.ConsumeIntegral<std::uint64_t>();
    double number = 0.0;
    std::memcpy(&number, &bits, sizeof(number));
    return number;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const std::tm time = someTime(input);
    checkClock(time);
    checkScreenshotName(time);
    const double number = someNumber(input);
    checkDecimals(number);
    checkDecimals(static_cast<double>(static_cast<std::int32_t>(std::lround(std::fmod(number, 1e6)))) /
                  128.0);
    const auto volts = input.ConsumeFloatingPointInRange(-1e6F, 1e6F);
    const std::wstring voltage = vidText(volts);
    require(isDecimal(voltage.substr(0, voltage.size() - 1), 6), "a voltage has six decimals");
    checkFigures(input);
    return 0;
}
