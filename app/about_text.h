#pragma once

#include "app/version.h"

/// Text of the About box.
inline constexpr wchar_t kAboutText[] =
    L"Kelvaro " KELVARO_VERSION_TEXT
    L", by the Kelvaro developers\n"
    L"\n"
    L"Kelvaro shows stats about your CPU, GPU, audio, email count and time! Run Core Temp in the background if "
    L"you want CPU temps (make it start on boot).";
