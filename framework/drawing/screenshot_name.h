#pragma once

#include <ctime>
#include <string>

namespace Panelix {

/// A local time as screenshot files are named, e.g. "2026-11-16 4-03-16am". Any record gives a name:
/// numbers outside the calendar are written as they are.
std::wstring screenshotTimeText(const std::tm& localTime);

}  // namespace Panelix
