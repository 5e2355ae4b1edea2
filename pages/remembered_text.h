#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <cstddef>
#include <string>

#include "framework/drawing/saved_pixels.h"
#include "pages/palette.h"

/// The last drawing of the text in one place of a page, always with the same font and alignment: the pixels
/// in its reach before and after it. The same text over the same pixels gives the same again, whatever the
/// smoothing, so that it is copied.
class RememberedText {
public:
    /// Takes the memory for a text with this reach or a smaller one, so that remembering it takes none.
    void reserve(const Panelix::PixelRect& reach) {
        constexpr std::size_t kUsualLetters = 64;
        text_.reserve(kUsualLetters);
        before_.reserve(reach);
        after_.reserve(reach);
    }

    /// Draws `text` by calling `drawAnew`, or copies what that has drawn before. `reach` is what this
    /// text can change when it is in one line. What cannot be locked stays in the page's last status.
    template <typename Draw>
    void draw(Gdiplus::Bitmap& page,
              const std::wstring& text,
              Argb colour,
              const Panelix::PixelRect& reach,
              const Draw& drawAnew) {
        if (copyTo(page, text, colour)) {
            return;
        }
        const bool remembered = staysInItsReach(text) && saveGround(page, reach);
        drawAnew();
        if (remembered) {
            keep(page, text, colour);
        }
    }

private:
    static bool staysInItsReach(const std::wstring& text);
    bool copyTo(Gdiplus::Bitmap& page, const std::wstring& text, Argb colour) const;
    bool saveGround(Gdiplus::Bitmap& page, const Panelix::PixelRect& reach);
    void keep(Gdiplus::Bitmap& page, const std::wstring& text, Argb colour);

    std::wstring text_;
    Argb colour_ = 0;
    Panelix::SavedPixels before_;
    /// Empty when nothing is remembered.
    Panelix::SavedPixels after_;
};
