#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <cstddef>
#include <cstdint>

namespace Panelix {

/// The pixels of a 320 x 240 bitmap, locked as premultiplied ARGB until unlock() or the end of the scope.
/// Nothing can be drawn on the bitmap meanwhile. A failure stays in the bitmap's last status.
class LockedPixels {
public:
    /// `mode` is of Gdiplus::ImageLockMode; the bitmap is borrowed.
    LockedPixels(Gdiplus::Bitmap& bitmap, UINT mode);
    LockedPixels(const LockedPixels&) = delete;
    LockedPixels& operator=(const LockedPixels&) = delete;
    ~LockedPixels() { unlock(); }

    /// Whether the pixels can be used.
    explicit operator bool() const { return locked_; }

    /// Whether what was written is in the bitmap. A second call does nothing and gives false.
    bool unlock();

    /// The first pixel of a row, 0 to 239.
    std::uint32_t* row(int y) const { return static_cast<std::uint32_t*>(data_.Scan0) + y * pixelsPerRow(); }

    std::ptrdiff_t pixelsPerRow() const {
        return data_.Stride / static_cast<std::ptrdiff_t>(sizeof(std::uint32_t));
    }

private:
    Gdiplus::Bitmap& bitmap_;
    Gdiplus::BitmapData data_{};
    bool locked_ = false;
};

}  // namespace Panelix
