#pragma once

#include <ctime>
#include <string>

/// Date and time in English with a 12-hour clock, e.g. "5 Febuary 2018   9:07:03  PM": three blanks between
/// date and time, two before the suffix. Any record gives a text: a month outside the year reads as the
/// nearest one, other numbers are written as they are.
std::wstring clockText(const std::tm& time);
