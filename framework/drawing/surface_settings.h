#pragma once

#include <windows.h>

#include <gdiplus.h>

namespace Panelix {

/// Face of every text on the LCD.
inline constexpr wchar_t kFontFace[] = L"Arial";

/// Sets how the canvas and every page draw: fast, without anti-aliasing of shapes and without scaling
/// filters. Text keeps the system's own rendering hint. Failures stay in the object's last status.
void applySurfaceSettings(Gdiplus::Graphics& graphics);

}  // namespace Panelix
