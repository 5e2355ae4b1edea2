#pragma once

#include <windows.h>

#include <gdiplus.h>

#include "framework/drawing/pixel_blend.h"

namespace Panelix {

/// Blends `source` into `destination` pixel by pixel; both are 320 x 240. The result is opaque, whatever
/// alpha the two had. A bitmap that cannot be locked keeps the status in its last-status field, and the
/// destination's pixels stay as they were.
void blendImages(Gdiplus::Bitmap& destination, Gdiplus::Bitmap& source, BlendMode mode);

}  // namespace Panelix
