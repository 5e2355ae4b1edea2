#pragma once

#include <algorithm>
#include <cstdint>

#include "framework/drawing/lcd_frame.h"

// Where bars and lines stand that are one pixel high per percent, as GDI+ is given them. Figures may be
// anything, whatever a driver says; GDI+ works on every row of a shape, seen or not, which takes a second for
// two billion of them, and refuses coordinates that are larger still.

namespace Panelix {

/// Height of a graph's plot in pixels: one per percent.
inline constexpr int kPlotHeightPx = 100;

/// `row` itself, or for one above or below the LCD the row next to the LCD there: the end of a shape stays
/// out of sight.
constexpr int nearestLcdRow(std::int64_t row) {
    return static_cast<int>(std::clamp<std::int64_t>(row, -1, kLcdHeight));
}

/// Rows of a rectangle: `top` is the first; none are filled when `height` is 0 or less.
struct LcdRows {
    int top;
    int height;
};

/// The rows of a bar of any `height` that grows upwards from row `bottom`, which is not part of it. Those on
/// the LCD are the bar's own.
constexpr LcdRows barRows(int bottom, int height) {
    const int top = nearestLcdRow(std::int64_t{bottom} - height);
    return {top, nearestLcdRow(bottom) - top};
}

}  // namespace Panelix
