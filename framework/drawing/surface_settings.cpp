#include "framework/drawing/surface_settings.h"

namespace Panelix {

void applySurfaceSettings(Gdiplus::Graphics& graphics) {
    graphics.SetCompositingMode(Gdiplus::CompositingModeSourceOver);
    graphics.SetCompositingQuality(Gdiplus::CompositingQualityHighSpeed);
    graphics.SetPixelOffsetMode(Gdiplus::PixelOffsetModeNone);
    graphics.SetSmoothingMode(Gdiplus::SmoothingModeNone);
    graphics.SetInterpolationMode(Gdiplus::InterpolationModeDefault);
}

}  // namespace Panelix
