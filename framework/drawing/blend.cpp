#include "framework/drawing/blend.h"

#include <cstddef>
#include <cstdint>

#include "framework/drawing/lcd_frame.h"

namespace Panelix {

namespace {

/// The pixels of a bitmap, locked as premultiplied ARGB until the end of the scope.
class LockedPixels {
public:
    LockedPixels(Gdiplus::Bitmap& bitmap, UINT mode) : bitmap_(bitmap) {
        const Gdiplus::Rect whole(0, 0, kLcdWidth, kLcdHeight);
        locked_ = bitmap.LockBits(&whole, mode, PixelFormat32bppPARGB, &data_) == Gdiplus::Ok;
    }
    LockedPixels(const LockedPixels&) = delete;
    LockedPixels& operator=(const LockedPixels&) = delete;
    ~LockedPixels() { unlock(); }

    explicit operator bool() const { return locked_; }

    void unlock() {
        if (locked_) {
            bitmap_.UnlockBits(&data_);
            locked_ = false;
        }
    }

    std::uint32_t* pixels() const { return static_cast<std::uint32_t*>(data_.Scan0); }

    std::ptrdiff_t pixelsPerRow() const {
        return data_.Stride / static_cast<std::ptrdiff_t>(sizeof(std::uint32_t));
    }

private:
    Gdiplus::Bitmap& bitmap_;
    Gdiplus::BitmapData data_{};
    bool locked_ = false;
};

}  // namespace

void blendImages(Gdiplus::Bitmap& destination, Gdiplus::Bitmap& source, BlendMode mode) {
    LockedPixels destinationLock(destination, Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeWrite);
    const LockedPixels sourceLock(source, Gdiplus::ImageLockModeRead);
    if (!destinationLock || !sourceLock) {
        return;
    }
    for (int row = 0; row < kLcdHeight; ++row) {
        // One row length serves for both: full-screen bitmaps have the same.
        const std::ptrdiff_t offset = row * destinationLock.pixelsPerRow();
        blendPixels(destinationLock.pixels() + offset, sourceLock.pixels() + offset, kLcdWidth, mode);
    }
    // The result is in place before the source, which may be a temporary copy, is let go.
    destinationLock.unlock();
}

}  // namespace Panelix
