#include "framework/core/preview_placement.h"

#include "framework/drawing/lcd_frame.h"

namespace Panelix {

namespace {

// The picture with a frame on each side. The frame at the right and at the bottom hangs over the edge of the
// work area, so the picture itself ends there.
constexpr std::int32_t kFramePx = 8;
constexpr std::int32_t kWidthPx = kLcdWidth + 2 * kFramePx;
constexpr std::int32_t kHeightPx = kLcdHeight + 2 * kFramePx;

}  // namespace

WindowPlacement previewPlacement(std::int32_t workAreaRight,
                                 std::int32_t workAreaBottom,
                                 std::int32_t captionHeight) {
    return {
        .x = workAreaRight - (kWidthPx - kFramePx),
        .y = workAreaBottom - captionHeight - (kHeightPx - kFramePx),
        .width = kWidthPx,
        .height = captionHeight + kHeightPx,
    };
}

}  // namespace Panelix
