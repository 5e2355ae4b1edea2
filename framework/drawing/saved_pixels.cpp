#include "framework/drawing/saved_pixels.h"

#include <algorithm>
#include <cstddef>

namespace Panelix {

bool SavedPixels::save(Gdiplus::Bitmap& from, const PixelRect& rect) {
    LockedPixels locked(from, Gdiplus::ImageLockModeRead);
    if (!locked) {
        pixels_.clear();
        return false;
    }
    rect_ = rect;
    pixels_.resize(static_cast<std::size_t>(rect.width) * static_cast<std::size_t>(rect.height));
    auto saved = pixels_.begin();
    for (int y = rect.y; y < rect.y + rect.height; ++y) {
        saved = std::copy_n(locked.row(y) + rect.x, rect.width, saved);
    }
    if (!locked.unlock()) {
        pixels_.clear();
    }
    return !empty();
}

bool SavedPixels::equal(const LockedPixels& other) const {
    if (empty()) {
        return false;
    }
    for (int y = rect_.y; y < rect_.y + rect_.height; ++y) {
        const std::uint32_t* const saved = row(y);
        if (!std::equal(saved, saved + rect_.width, other.row(y) + rect_.x)) {
            return false;
        }
    }
    return true;
}

bool SavedPixels::writeTo(Gdiplus::Bitmap& to) const {
    if (empty()) {
        return false;
    }
    LockedPixels locked(to, Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeWrite);
    if (!locked) {
        return false;
    }
    writeTo(locked);
    return locked.unlock();
}

void SavedPixels::writeTo(const LockedPixels& to) const {
    for (int y = rect_.y; y < rect_.y + rect_.height; ++y) {
        std::copy_n(row(y), rect_.width, to.row(y) + rect_.x);
    }
}

const std::uint32_t* SavedPixels::row(int lcdRow) const {
    return pixels_.data() + std::ptrdiff_t{lcdRow - rect_.y} * rect_.width;
}

}  // namespace Panelix
