#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/drawing/lcd_frame.h"
#include "framework/drawing/locked_pixels.h"

namespace Panelix {

/// A rectangle of pixels that lies wholly on the LCD.
struct PixelRect {
    int x;
    int y;
    int width;
    int height;
};

inline constexpr PixelRect kWholeLcd{0, 0, kLcdWidth, kLcdHeight};

/// A copy of the pixels of one rectangle of a 320 x 240 bitmap. What failed to be locked stays in the
/// bitmap's last status.
class SavedPixels {
public:
    /// Nothing is saved yet, or saving failed.
    bool empty() const { return pixels_.empty(); }

    /// Takes the memory for a rectangle, so that saving it or a smaller one takes none.
    void reserve(const PixelRect& rect) {
        pixels_.reserve(static_cast<std::size_t>(rect.width) * static_cast<std::size_t>(rect.height));
    }

    /// Nothing is saved, and the memory stays.
    void clear() { pixels_.clear(); }

    /// Saves these pixels in place of those saved before, in the same memory if they are as many. Nothing is
    /// saved when it fails.
    bool save(Gdiplus::Bitmap& from, const PixelRect& rect);

    /// Whether `other` has the same pixels there. False when nothing is saved.
    bool equal(const LockedPixels& other) const;

    /// Puts the pixels where they were; false when `to` is as it was, nothing being saved included.
    bool writeTo(Gdiplus::Bitmap& to) const;
    void writeTo(const LockedPixels& to) const;

    /// The saved part of a row of the LCD that the rectangle has.
    const std::uint32_t* row(int lcdRow) const;

    const PixelRect& rect() const { return rect_; }

private:
    PixelRect rect_{};
    std::vector<std::uint32_t> pixels_;
};

}  // namespace Panelix
