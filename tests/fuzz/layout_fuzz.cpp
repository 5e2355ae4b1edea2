#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdlib>

#include "framework/core/preview_placement.h"
#include "framework/drawing/plot_rows.h"
#include "framework/drawing/slide.h"
#include "pages/list_layout.h"
#include "pages/list_navigation.h"
#include "pages/main_page_layout.h"
#include "tests/fuzz/fuzz_support.h"

using Panelix::kLcdHeight;
using Panelix::kLcdWidth;

namespace {

/// Whether a rectangle from row `top` to before row `bottom` fills `row`.
bool fills(std::int64_t top, std::int64_t bottom, int row) {
    return top <= row && row < bottom;
}

void checkBars(FuzzedDataProvider& input) {
    const int bottom = input.ConsumeIntegral<int>();
    const int height = input.ConsumeIntegral<int>();
    const Panelix::LcdRows rows = Panelix::barRows(bottom, height);
    require(rows.top >= -1 && rows.top <= kLcdHeight && rows.top + rows.height <= kLcdHeight,
            "a bar ends next to the LCD at the latest");
    for (int row = 0; row < kLcdHeight; ++row) {
        require(
            fills(rows.top, rows.top + rows.height, row) == fills(std::int64_t{bottom} - height, bottom, row),
            "a bar fills its own rows of the LCD");
    }
    const int percent = input.ConsumeIntegral<int>();
    const PageRect bar = MainPageLayout::volumeBar(MainPageLayout::kLeftVolumeBarX, percent);
    require(percent < 1 || percent > 100 || isOnScreen(bar), "a volume's bar is on the screen");
    require((bar.height > 0) == (percent > 0), "only nothing has no bar");
}

void checkRectangles(FuzzedDataProvider& input) {
    const PageRect rect{input.ConsumeIntegral<int>(),
                        input.ConsumeIntegral<int>(),
                        input.ConsumeIntegral<int>(),
                        input.ConsumeIntegral<int>()};
    const bool corners = isOnScreen(PagePoint{rect.x, rect.y}) && rect.width > 0 && rect.height > 0 &&
                         std::int64_t{rect.x} + rect.width <= kLcdWidth &&
                         std::int64_t{rect.y} + rect.height <= kLcdHeight;
    require(isOnScreen(rect) == corners, "a rectangle on the screen has its corners there");
    const int row = input.ConsumeIntegralInRange(0, 1'000'000);
    const PageRect here = ListLayout::rowRect(row);
    require(here.y + here.height <= ListLayout::rowRect(row + 1).y, "rows do not overlap");
    require(isOnScreen(here) == (row < 6), "six rows are on the screen");
    require(ListLayout::textMiddle(row) > static_cast<float>(here.y), "a row's text stands in it");
}

void checkList(FuzzedDataProvider& input) {
    Panelix::LcdButtons buttons;
    const int rows = input.ConsumeIntegralInRange(0, 1000);
    int cursor = input.ConsumeIntegralInRange(0, std::max(0, rows - 1));
    for (int pass = 0; pass < 16; ++pass) {
        for (bool& pressed : buttons.pressed) {
            pressed = input.ConsumeBool();
        }
        const int moved = movedCursor(cursor, rows, listCommand(buttons));
        require(moved >= 0 && moved < std::max(1, rows), "the cursor stays in the list");
        require(std::abs(moved - cursor) <= 1, "the cursor moves by one row");
        cursor = moved;
    }
}

void checkSlide(FuzzedDataProvider& input) {
    const auto progress = input.ConsumeProbability<float>();
    const auto direction =
        static_cast<Panelix::TransitionKind>(input.ConsumeIntegralInRange<std::uint32_t>(0, 5));
    const float gone = Panelix::easedPosition(progress);
    require(gone >= 0.0F && gone <= 1.0F, "a slide has gone a part of its way");
    const Panelix::SlideOffsets at = Panelix::slideOffsets(progress, direction);
    require(std::abs(at.currentX) <= kLcdWidth && std::abs(at.previousX) <= kLcdWidth &&
                std::abs(at.currentY) <= kLcdHeight && std::abs(at.previousY) <= kLcdHeight,
            "a page is a screen away at most");
    // Both are rounded on their own, halves away from zero.
    const int apartX = std::abs(at.currentX - at.previousX);
    const int apartY = std::abs(at.currentY - at.previousY);
    require(apartX == 0 || std::abs(apartX - kLcdWidth) <= 1, "the pages of a slide lie side by side");
    require(apartY == 0 || std::abs(apartY - kLcdHeight) <= 1,
            "the pages of a slide lie one above the other");
    require(apartX == 0 || apartY == 0, "a slide goes one way");
}

void checkPreview(FuzzedDataProvider& input) {
    // What Windows takes as a place on the desktop.
    const int right = input.ConsumeIntegral<std::int16_t>();
    const int bottom = input.ConsumeIntegral<std::int16_t>();
    const int caption = input.ConsumeIntegralInRange(0, 1000);
    const Panelix::WindowPlacement window = Panelix::previewPlacement(right, bottom, caption);
    require(window.x + window.width == right + 8 && window.y + window.height == bottom + 8,
            "the picture ends where the work area ends");
    require(window.width == kLcdWidth + 16 && window.height == kLcdHeight + 16 + caption,
            "the window has room for the picture and its frame");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    checkBars(input);
    checkRectangles(input);
    checkList(input);
    checkSlide(input);
    checkPreview(input);
    return 0;
}
