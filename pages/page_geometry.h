#pragma once

#include "framework/drawing/lcd_frame.h"

/// A place on a page, in pixels from the top-left corner.
struct PagePoint {
    int x;
    int y;
};

/// A rectangle on a page, in pixels.
struct PageRect {
    int x;
    int y;
    int width;
    int height;
};

constexpr bool isOnScreen(PagePoint point) {
    return point.x >= 0 && point.x < Panelix::kLcdWidth && point.y >= 0 && point.y < Panelix::kLcdHeight;
}

constexpr bool isOnScreen(PageRect rect) {
    return rect.x >= 0 && rect.y >= 0 && rect.width > 0 && rect.height > 0 &&
           rect.width <= Panelix::kLcdWidth - rect.x && rect.height <= Panelix::kLcdHeight - rect.y;
}
