#include "framework/drawing/blend.h"

#include <cstddef>

#include "framework/drawing/lcd_frame.h"
#include "framework/drawing/locked_pixels.h"

namespace Panelix {

void blendImages(Gdiplus::Bitmap& destination, Gdiplus::Bitmap& source, BlendMode mode) {
    LockedPixels destinationLock(destination, Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeWrite);
    const LockedPixels sourceLock(source, Gdiplus::ImageLockModeRead);
    if (!destinationLock || !sourceLock) {
        return;
    }
    for (int row = 0; row < kLcdHeight; ++row) {
        // One row length serves for both: full-screen bitmaps have the same.
        const std::ptrdiff_t offset = row * destinationLock.pixelsPerRow();
        blendPixels(destinationLock.row(0) + offset, sourceLock.row(0) + offset, kLcdWidth, mode);
    }
    // The result is in place before the source, which may be a temporary copy, is let go.
    destinationLock.unlock();
}

}  // namespace Panelix
