#pragma once

#include <string>

/// The number with six decimals, of which the last four are cut off: "1350.00". What is not a finite number
/// has no decimals to lose, but loses its last four letters where it has as many: "nan", "inf", "".
std::wstring twoDecimals(double value);
