#include "stats/clock_text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

// "Febuary" is how the clock has always spelled it.
constexpr std::array<std::wstring_view, 12> kMonths = {L"January",
                                                       L"Febuary",
                                                       L"March",
                                                       L"April",
                                                       L"May",
                                                       L"June",
                                                       L"July",
                                                       L"August",
                                                       L"September",
                                                       L"October",
                                                       L"November",
                                                       L"December"};
constexpr int kFirstYear = 1900;
constexpr int kNoon = 12;

std::wstring twoDigits(int value) {
    return (value < 10 ? L"0" : L"") + std::to_wstring(value);
}

}  // namespace

std::wstring clockText(const std::tm& time) {
    const std::wstring_view suffix = time.tm_hour >= kNoon ? L" PM" : L" AM";
    int hour = time.tm_hour;
    if (hour == 0) {
        hour = kNoon;
    } else if (hour > kNoon) {
        hour -= kNoon;
    }
    const auto month = static_cast<std::size_t>(std::clamp(time.tm_mon, 0, 11));

    std::wstring text = std::to_wstring(time.tm_mday);
    text += L' ';
    text += kMonths[month];
    text += L' ';
    text += std::to_wstring(static_cast<long long>(time.tm_year) + kFirstYear);
    text += L"   ";
    text += std::to_wstring(hour);
    text += L':';
    text += twoDigits(time.tm_min);
    text += L':';
    text += twoDigits(time.tm_sec);
    text += L' ';
    text += suffix;
    return text;
}
