#pragma once

#include <cstdint>

namespace Panelix {

/// Outer rectangle of a window in screen pixels.
struct WindowPlacement {
    std::int32_t x;
    std::int32_t y;
    std::int32_t width;
    std::int32_t height;
};

/// Where the preview window goes: the bottom right corner of the work area, whose right and bottom edges
/// these are, for a window with a small caption of `captionHeight` pixels.
WindowPlacement previewPlacement(std::int32_t workAreaRight,
                                 std::int32_t workAreaBottom,
                                 std::int32_t captionHeight);

}  // namespace Panelix
