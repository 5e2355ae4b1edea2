#include "framework/drawing/opaque_copy.h"

#include <algorithm>
#include <cstdint>

#include "framework/drawing/lcd_frame.h"
#include "framework/drawing/locked_pixels.h"

namespace Panelix {

namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;

bool isOpaque(const LockedPixels& locked) {
    std::uint32_t common = kOpaque;
    for (int y = 0; y < kLcdHeight; ++y) {
        const std::uint32_t* const row = locked.row(y);
        for (int x = 0; x < kLcdWidth; ++x) {
            common &= row[x];
        }
    }
    return common == kOpaque;
}

bool copyLocked(Gdiplus::Bitmap& from, Gdiplus::Bitmap& to) {
    const LockedPixels source(from, Gdiplus::ImageLockModeRead);
    if (!source || !isOpaque(source)) {
        return false;
    }
    LockedPixels destination(to, Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeWrite);
    if (!destination) {
        return false;
    }
    for (int y = 0; y < kLcdHeight; ++y) {
        std::copy_n(source.row(y), kLcdWidth, destination.row(y));
    }
    return destination.unlock();
}

}  // namespace

bool copyIfOpaque(Gdiplus::Bitmap& from, Gdiplus::Bitmap& to) {
    const bool copied = copyLocked(from, to);
    from.GetLastStatus();
    to.GetLastStatus();
    return copied;
}

}  // namespace Panelix
