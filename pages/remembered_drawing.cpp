#include "pages/remembered_drawing.h"

#include <algorithm>

using Panelix::LockedPixels;

/// False for line breaks, and for characters that another font may have to stand in for, of any size.
bool RememberedDrawing::staysInItsReach(const std::wstring& text) {
    constexpr wchar_t kDegree = L'\u00B0';
    return std::ranges::all_of(
        text, [](wchar_t letter) { return (letter >= L' ' && letter <= L'~') || letter == kDegree; });
}

/// False when it would have to be drawn anew, and nothing has changed.
bool RememberedDrawing::copyTo(Gdiplus::Bitmap& page, const std::wstring& text, std::uint32_t variant) const {
    if (after_.empty() || text_ != text || variant_ != variant) {
        return false;
    }
    LockedPixels locked(page, Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeWrite);
    if (!locked || !before_.equal(locked)) {
        return false;
    }
    after_.writeTo(locked);
    locked.unlock();
    return true;
}

bool RememberedDrawing::saveGround(Gdiplus::Bitmap& page, const Panelix::PixelRect& reach) {
    after_.clear();
    return before_.save(page, reach);
}

void RememberedDrawing::keep(Gdiplus::Bitmap& page, const std::wstring& text, std::uint32_t variant) {
    text_ = text;
    variant_ = variant;
    after_.save(page, before_.rect());
}
