#include "framework/drawing/screenshot_name.h"

namespace Panelix {

namespace {

constexpr long long kFirstTmYear = 1900;
constexpr int kHoursPerHalfDay = 12;

/// "0" in front of a number when `decides` has one digit.
std::wstring padded(long long number, int decides) {
    return (decides < 10 ? L"0" : L"") + std::to_wstring(number);
}

int hourOnClockFace(int hour) {
    if (hour == 0) {
        return kHoursPerHalfDay;
    }
    return hour > kHoursPerHalfDay ? hour - kHoursPerHalfDay : hour;
}

}  // namespace

std::wstring screenshotTimeText(const std::tm& localTime) {
    // The zero-based month decides about its padding, so October reads "010". Existing files are named that
    // way and sort together with new ones.
    return std::to_wstring(localTime.tm_year + kFirstTmYear) + L"-" +
           padded(localTime.tm_mon + 1LL, localTime.tm_mon) + L"-" +
           padded(localTime.tm_mday, localTime.tm_mday) + L" " +
           std::to_wstring(hourOnClockFace(localTime.tm_hour)) + L"-" +
           padded(localTime.tm_min, localTime.tm_min) + L"-" + padded(localTime.tm_sec, localTime.tm_sec) +
           (localTime.tm_hour >= kHoursPerHalfDay ? L"pm" : L"am");
}

}  // namespace Panelix
