#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <string>

#include "standins/lcd_sdk/virtual_g19.h"

namespace Standins {

/// Saves the frame as a PNG file of 320 x 240 opaque pixels. GDI+ must be running. False when the file cannot
/// be written.
bool saveFramePng(const G19Frame& frame, const std::wstring& path);

/// Saves any bitmap as a PNG file. GDI+ must be running. False when the file cannot be written.
bool savePng(Gdiplus::Bitmap& picture, const std::wstring& path);

}  // namespace Standins
