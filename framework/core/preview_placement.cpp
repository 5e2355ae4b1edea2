#include "framework/core/preview_placement.h"

namespace Panelix {

namespace {

// The picture with 8 pixels of frame on each side. The frame at the right and at the bottom hangs over the
// edge of the work area, so the picture itself ends there.
constexpr std::int32_t kWidthPx = 320 + 2 * 8;
constexpr std::int32_t kHeightPx = 240 + 2 * 8;
constexpr std::int32_t kOverhangPx = 8;

}  // namespace

WindowPlacement previewPlacement(std::int32_t workAreaRight,
                                 std::int32_t workAreaBottom,
                                 std::int32_t captionHeight) {
    return {
        .x = workAreaRight - (kWidthPx - kOverhangPx),
        .y = workAreaBottom - captionHeight - (kHeightPx - kOverhangPx),
        .width = kWidthPx,
        .height = captionHeight + kHeightPx,
    };
}

}  // namespace Panelix
