#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "framework/drawing/saved_pixels.h"

/// The last drawing in one place of a page: the pixels in its reach before and after it. The same drawing
/// over the same pixels gives the same again, whatever the smoothing, so that it is copied.
class RememberedDrawing {
public:
    /// Takes the memory for a drawing with this reach or a smaller one, so that remembering it takes none.
    void reserve(const Panelix::PixelRect& reach) {
        constexpr std::size_t kUsualLetters = 64;
        text_.reserve(kUsualLetters);
        before_.reserve(reach);
        after_.reserve(reach);
    }

    /// Draws by calling `drawAnew`, or copies what that has drawn before. `text`, empty for a bar, and
    /// `variant`, its colour or percentage, are all that two drawings in this place can differ in. `reach`
    /// is what this one can change, a text being in one line. What cannot be locked stays in the page's last
    /// status.
    template <typename Draw>
    void draw(Gdiplus::Bitmap& page,
              const std::wstring& text,
              std::uint32_t variant,
              const Panelix::PixelRect& reach,
              const Draw& drawAnew) {
        if (copyTo(page, text, variant)) {
            return;
        }
        const bool remembered = staysInItsReach(text) && saveGround(page, reach);
        drawAnew();
        if (remembered) {
            keep(page, text, variant);
        }
    }

private:
    static bool staysInItsReach(const std::wstring& text);
    bool copyTo(Gdiplus::Bitmap& page, const std::wstring& text, std::uint32_t variant) const;
    bool saveGround(Gdiplus::Bitmap& page, const Panelix::PixelRect& reach);
    void keep(Gdiplus::Bitmap& page, const std::wstring& text, std::uint32_t variant);

    std::wstring text_;
    std::uint32_t variant_ = 0;
    Panelix::SavedPixels before_;
    /// Empty when nothing is remembered.
    Panelix::SavedPixels after_;
};
