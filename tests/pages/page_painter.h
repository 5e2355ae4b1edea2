#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <cstdint>
#include <string>
#include <vector>

#include "framework/drawing/canvas.h"
#include "tests/pages/page_pixels.h"

/// What a text's point refers to. TopLeft is drawn without any format.
enum class TextPlace { TopLeft, Near, Centre, RightBottom, LeftMiddle };

struct PaintedText {
    std::wstring text;
    float heightPx;
    std::uint32_t argb;
    float x;
    float y;
    TextPlace place;
};

/// Paints what a test expects to see, with GDI+ calls of its own, on a bitmap like a page's.
class PagePainter {
public:
    enum class Texts { Draw, LeaveOut };

    /// Images come from `canvas`, which is borrowed.
    explicit PagePainter(Panelix::Canvas* canvas, Texts mode = Texts::Draw);

    /// Fills the whole page with an opaque colour.
    void clear(std::uint32_t argb);
    /// A whole page.
    void picture(Gdiplus::Bitmap* page) { EXPECT_EQ(graphics_.DrawImage(page, 0, 0), Gdiplus::Ok); }
    void bitmapImage(int id, int x, int y) { image(id, 0, x, y); }
    void pngImage(int id, int x, int y) { image(id, 1, x, y); }
    /// Multiplies a bitmap resource into the page.
    void multiply(int id);
    void fill(int x, int y, int width, int height, std::uint32_t argb);
    void triangle(Gdiplus::Point a, Gdiplus::Point b, Gdiplus::Point c, std::uint32_t argb);
    void verticalLine(int x, int fromY, int toY, std::uint32_t argb);
    void text(const PaintedText& text);

    /// Every text so far, drawn or left out.
    const std::vector<PaintedText>& texts() const { return texts_; }

    PagePixels pixels() { return PagePixels(bitmap_); }
    /// Owned by the painter.
    Gdiplus::Bitmap* bitmap() { return &bitmap_; }

private:
    void image(int id, int fromPng, int x, int y);

    Panelix::Canvas* canvas_;
    Gdiplus::Bitmap bitmap_;
    Gdiplus::Graphics graphics_;
    Texts mode_;
    std::vector<PaintedText> texts_;
};

/// How much each pixel of a page is covered by a text, 0 to 255. Fails the test when the text has no pixels
/// at all, as with a font that is not there.
class TextCoverage {
public:
    TextCoverage(Panelix::Canvas* canvas, const PaintedText& text);

    int at(int x, int y) const { return static_cast<int>(pixels_.at(x, y) >> 8 & 0xFFU); }

private:
    PagePixels pixels_;
};
