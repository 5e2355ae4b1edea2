#pragma once

#include <array>

#include "pages/page_geometry.h"

/// Where things stand on the list pages.
namespace ListLayout {

inline constexpr float kFontPx = 20.0F;

/// Centre of the title.
inline constexpr PagePoint kTitle{160, 18};

inline constexpr PagePoint kBackground{0, 0};

using Arrow = std::array<PagePoint, 3>;
inline constexpr Arrow kRightArrow{{{295, 10}, {310, 18}, {295, 26}}};
inline constexpr Arrow kLeftArrow{{{24, 10}, {24, 26}, {9, 18}}};

inline constexpr int kRowX = 4;
inline constexpr int kRowWidth = 312;
inline constexpr int kRowHeight = 29;
inline constexpr int kTextX = 5;

/// Top edge of row `index`, counted from 0. The first row stands 4 pixels higher than the even spacing of the
/// others.
constexpr int rowTop(int index) {
    return index == 0 ? 36 : 40 + kRowHeight * index;
}

constexpr PageRect rowRect(int index) {
    return {kRowX, rowTop(index), kRowWidth, kRowHeight};
}

/// Vertical middle of a row's text.
constexpr float textMiddle(int index) {
    return static_cast<float>(rowTop(index)) + 14.5F;
}

static_assert(isOnScreen(kTitle));
static_assert(isOnScreen(kRightArrow[0]) && isOnScreen(kRightArrow[1]) && isOnScreen(kRightArrow[2]));
static_assert(isOnScreen(kLeftArrow[0]) && isOnScreen(kLeftArrow[1]) && isOnScreen(kLeftArrow[2]));
// Lists do not scroll: the seventh row runs over the lower edge, and those after it are not seen.
static_assert(isOnScreen(rowRect(0)) && isOnScreen(rowRect(5)) && !isOnScreen(rowRect(6)));

}  // namespace ListLayout
