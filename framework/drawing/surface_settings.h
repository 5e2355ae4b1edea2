#pragma once

#include <windows.h>

#include <gdiplus.h>

namespace Panelix {

/// Sets how the canvas and every page draw: fast, without anti-aliasing of shapes and without scaling
/// filters. Text keeps the system's own rendering hint. Failures stay in the object's last status.
void applySurfaceSettings(Gdiplus::Graphics& graphics);

}  // namespace Panelix
