#include "tests/pages/page_painter.h"

#include <algorithm>
#include <cmath>

namespace {

void setPlace(Gdiplus::StringFormat& format, TextPlace place) {
    switch (place) {
        case TextPlace::Centre:
            format.SetAlignment(Gdiplus::StringAlignmentCenter);
            format.SetLineAlignment(Gdiplus::StringAlignmentCenter);
            break;
        case TextPlace::RightBottom:
            format.SetAlignment(Gdiplus::StringAlignmentFar);
            format.SetLineAlignment(Gdiplus::StringAlignmentFar);
            break;
        case TextPlace::LeftMiddle:
            format.SetLineAlignment(Gdiplus::StringAlignmentCenter);
            break;
        case TextPlace::Near:
            format.SetAlignment(Gdiplus::StringAlignmentNear);
            format.SetLineAlignment(Gdiplus::StringAlignmentNear);
            break;
        case TextPlace::TopLeft:
            break;
    }
}

std::uint32_t multiplied(std::uint32_t a, std::uint32_t b) {
    std::uint32_t result = 0xFF000000U;
    for (const int shift : {0, 8, 16}) {
        const double product = (a >> shift & 0xFFU) / 255.0 * ((b >> shift & 0xFFU) / 255.0);
        result |= static_cast<std::uint32_t>(std::clamp(product, 0.0, 1.0) * 255.0) << shift;
    }
    return result;
}

PagePixels coverageOf(Panelix::Canvas* canvas, PaintedText text) {
    PagePainter painter(canvas);
    painter.clear(0xFF000000);
    text.argb = 0xFFFFFFFF;
    painter.text(text);
    return painter.pixels();
}

}  // namespace

PagePainter::PagePainter(Panelix::Canvas* canvas, Texts mode)
    : canvas_(canvas),
      bitmap_(PagePixels::kWidth, PagePixels::kHeight, PixelFormat32bppPARGB),
      graphics_(&bitmap_),
      mode_(mode) {
    graphics_.SetCompositingMode(Gdiplus::CompositingModeSourceOver);
    graphics_.SetCompositingQuality(Gdiplus::CompositingQualityHighSpeed);
    graphics_.SetPixelOffsetMode(Gdiplus::PixelOffsetModeNone);
    graphics_.SetSmoothingMode(Gdiplus::SmoothingModeNone);
    graphics_.SetInterpolationMode(Gdiplus::InterpolationModeDefault);
}

void PagePainter::clear(std::uint32_t argb) {
    graphics_.Clear(Gdiplus::Color(argb));
}

void PagePainter::image(int id, int fromPng, int x, int y) {
    Gdiplus::Bitmap* loaded = canvas_->getImage(static_cast<std::uintptr_t>(id), fromPng);
    ASSERT_NE(loaded, nullptr) << "image " << id;
    EXPECT_EQ(graphics_.DrawImage(loaded, x, y), Gdiplus::Ok) << "image " << id;
}

void PagePainter::multiply(int id) {
    Gdiplus::Bitmap* shade = canvas_->getImage(static_cast<std::uintptr_t>(id), 0);
    ASSERT_NE(shade, nullptr);
    const PagePixels factors(*shade);
    const PagePixels before(bitmap_);
    for (int y = 0; y < PagePixels::kHeight; ++y) {
        for (int x = 0; x < PagePixels::kWidth; ++x) {
            bitmap_.SetPixel(x, y, Gdiplus::Color(multiplied(before.at(x, y), factors.at(x, y))));
        }
    }
}

void PagePainter::fill(int x, int y, int width, int height, std::uint32_t argb) {
    const Gdiplus::SolidBrush brush{Gdiplus::Color(argb)};
    graphics_.FillRectangle(&brush, x, y, width, height);
}

void PagePainter::triangle(Gdiplus::Point a, Gdiplus::Point b, Gdiplus::Point c, std::uint32_t argb) {
    const Gdiplus::SolidBrush brush{Gdiplus::Color(argb)};
    const Gdiplus::Point corners[] = {a, b, c};
    graphics_.FillPolygon(&brush, corners, 3, Gdiplus::FillModeAlternate);
}

void PagePainter::verticalLine(int x, int fromY, int toY, std::uint32_t argb) {
    const Gdiplus::Pen pen(Gdiplus::Color(argb), 1.0F);
    graphics_.DrawLine(&pen, x, fromY, x, toY);
}

void PagePainter::text(const PaintedText& text) {
    texts_.push_back(text);
    if (mode_ == Texts::LeaveOut) {
        return;
    }
    const Gdiplus::FontFamily family(L"Arial");
    const Gdiplus::Font font(&family, text.heightPx, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
    Gdiplus::StringFormat format;
    setPlace(format, text.place);
    const Gdiplus::SolidBrush brush{Gdiplus::Color(text.argb)};
    const Gdiplus::Status status = graphics_.DrawString(text.text.c_str(),
                                                        -1,
                                                        &font,
                                                        Gdiplus::RectF(text.x, text.y, 0.0F, 0.0F),
                                                        text.place == TextPlace::TopLeft ? nullptr : &format,
                                                        &brush);
    EXPECT_EQ(status, Gdiplus::Ok) << "the font Arial must be there, or a replacement for it";
}

TextCoverage::TextCoverage(Panelix::Canvas* canvas, const PaintedText& text)
    : pixels_(coverageOf(canvas, text)) {
    int covered = 0;
    for (int y = 0; y < PagePixels::kHeight; ++y) {
        for (int x = 0; x < PagePixels::kWidth; ++x) {
            covered += at(x, y) > 0 ? 1 : 0;
        }
    }
    // A "1" alone has more than that.
    EXPECT_GT(covered, 10) << "text without pixels";
}
