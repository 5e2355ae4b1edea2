#include "framework/drawing/locked_pixels.h"

#include <utility>

#include "framework/drawing/lcd_frame.h"

namespace Panelix {

LockedPixels::LockedPixels(Gdiplus::Bitmap& bitmap, UINT mode) : bitmap_(bitmap) {
    const Gdiplus::Rect whole(0, 0, kLcdWidth, kLcdHeight);
    locked_ = bitmap.LockBits(&whole, mode, PixelFormat32bppPARGB, &data_) == Gdiplus::Ok;
}

bool LockedPixels::unlock() {
    return std::exchange(locked_, false) && bitmap_.UnlockBits(&data_) == Gdiplus::Ok;
}

}  // namespace Panelix
