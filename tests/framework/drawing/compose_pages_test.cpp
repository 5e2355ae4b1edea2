#include "framework/drawing/canvas.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "tests/framework/drawing/drawing_fixture.h"
#include "tests/support/failing_gdiplus.h"

using Panelix::Canvas;
using Panelix::kLcdHeight;
using Panelix::kLcdWidth;
using Panelix::TransitionKind;

namespace {

constexpr TransitionKind kAtRest = TransitionKind::SlideFromBottom;

/// Every pixel of a page tells its own place, and which of the two pages it belongs to.
constexpr std::uint32_t kCurrent = 0xFF000000;
constexpr std::uint32_t kPrevious = 0xFF800000;

std::uint32_t pagePixel(std::uint32_t page, int x, int y) {
    return page | static_cast<std::uint32_t>(x / 2) << 8 | static_cast<std::uint32_t>(y) |
           (x % 2 ? 0x10000 : 0U);
}

class ComposePages : public DrawingTest {
protected:
    void SetUp() override {
        paint(current_.bitmap, kCurrent);
        paint(previous_.bitmap, kPrevious);
    }

    Picture composed(float progress, TransitionKind direction) {
        canvas_.composePages(&current_.bitmap, &previous_.bitmap, progress, direction);
        return frameOf(canvas_);
    }

    /// The previous page at its place under the current page at its own, on a black canvas.
    static Picture expected(int currentX, int currentY, int previousX, int previousY) {
        Picture picture = plainPicture(kLcdWidth, kLcdHeight, 0xFF000000);
        paste(picture, kPrevious, previousX, previousY);
        paste(picture, kCurrent, currentX, currentY);
        return picture;
    }

    Canvas canvas_;
    Screen current_;
    Screen previous_;

private:
    static void paint(Gdiplus::Bitmap& bitmap, std::uint32_t page) {
        for (int y = 0; y < kLcdHeight; ++y) {
            for (int x = 0; x < kLcdWidth; ++x) {
                bitmap.SetPixel(x, y, Gdiplus::Color(pagePixel(page, x, y)));
            }
        }
    }

    static void paste(Picture& picture, std::uint32_t page, int left, int top) {
        for (int y = 0; y < kLcdHeight; ++y) {
            for (int x = 0; x < kLcdWidth; ++x) {
                const int pageX = x - left;
                const int pageY = y - top;
                if (pageX >= 0 && pageX < kLcdWidth && pageY >= 0 && pageY < kLcdHeight) {
                    picture.pixels[static_cast<std::size_t>(y * kLcdWidth + x)] =
                        pagePixel(page, pageX, pageY);
                }
            }
        }
    }
};

}  // namespace

TEST_F(ComposePages, WithoutAPreviousPageTheCurrentOneFillsTheCanvas) {
    canvas_.composePages(&current_.bitmap, nullptr, 0.0F, kAtRest);
    EXPECT_TRUE(samePicture(frameOf(canvas_), expected(0, 0, 0, 0)));
    canvas_.composePages(&previous_.bitmap, nullptr, 0.3F, TransitionKind::SlideFromLeft);
    canvas_.composePages(&current_.bitmap, nullptr, 0.3F, TransitionKind::SlideFromLeft);
    EXPECT_TRUE(samePicture(frameOf(canvas_), expected(0, 0, 0, 0)));
}

TEST_F(ComposePages, HalfWayFromTheRightThePagesMeetInTheMiddle) {
    EXPECT_TRUE(samePicture(composed(0.5F, TransitionKind::SlideFromRight), expected(160, 0, -160, 0)));
}

TEST_F(ComposePages, EachDirectionMovesBothPagesItsWay) {
    EXPECT_TRUE(samePicture(composed(0.3F, TransitionKind::SlideFromLeft), expected(-293, 0, 27, 0)));
    EXPECT_TRUE(samePicture(composed(0.3F, TransitionKind::SlideFromRight), expected(293, 0, -27, 0)));
    EXPECT_TRUE(samePicture(composed(0.3F, TransitionKind::SlideFromTop), expected(0, -220, 0, 20)));
    EXPECT_TRUE(samePicture(composed(0.3F, TransitionKind::SlideFromBottom), expected(0, 220, 0, -20)));
}

TEST_F(ComposePages, AtTheEndOnlyTheCurrentPageIsLeft) {
    for (const std::uint32_t direction : {0U, 1U, 2U, 3U}) {
        current_.fill(0xFF102030);
        canvas_.composePages(&previous_.bitmap, nullptr, 0.0F, kAtRest);
        canvas_.composePages(
            &current_.bitmap, &previous_.bitmap, 1.0F, static_cast<TransitionKind>(direction));
        EXPECT_TRUE(samePicture(frameOf(canvas_), plainPicture(kLcdWidth, kLcdHeight, 0xFF102030)))
            << direction;
    }
}

TEST_F(ComposePages, AtTheStartOnlyThePreviousPageIsSeen) {
    EXPECT_TRUE(samePicture(composed(0.0F, TransitionKind::SlideFromTop), expected(0, -240, 0, 0)));
}

TEST_F(ComposePages, AnUnknownDirectionDrawsTheCurrentPageOverThePreviousOne) {
    EXPECT_TRUE(samePicture(composed(0.3F, static_cast<TransitionKind>(9)), expected(0, 0, 0, 0)));
}

TEST_F(ComposePages, ANullCurrentPageDrawsNothing) {
    canvas_.composePages(&previous_.bitmap, nullptr, 0.0F, kAtRest);
    const Picture before = frameOf(canvas_);
    canvas_.composePages(nullptr, nullptr, 0.0F, kAtRest);
    EXPECT_TRUE(samePicture(frameOf(canvas_), before));
    canvas_.composePages(nullptr, &previous_.bitmap, 1.0F, TransitionKind::SlideFromTop);
    EXPECT_TRUE(samePicture(frameOf(canvas_), before));
    // A failure is no state: the next page is drawn.
    canvas_.composePages(&current_.bitmap, nullptr, 0.0F, kAtRest);
    EXPECT_TRUE(samePicture(frameOf(canvas_), expected(0, 0, 0, 0)));
}

TEST_F(ComposePages, TransparentPartsShowWhatWasThere) {
    previous_.fill(0xFF0000FF);
    current_.fill(0x00000000);
    canvas_.composePages(&previous_.bitmap, nullptr, 0.0F, kAtRest);
    canvas_.composePages(&current_.bitmap, nullptr, 0.0F, kAtRest);
    EXPECT_TRUE(samePicture(frameOf(canvas_), plainPicture(kLcdWidth, kLcdHeight, 0xFF0000FF)));
}

TEST_F(ComposePages, OneTranslucentPixelShowsWhatWasThere) {
    previous_.fill(0xFF0000FF);
    for (const Gdiplus::Point& place :
         {Gdiplus::Point(0, 0), Gdiplus::Point(kLcdWidth - 1, kLcdHeight - 1), Gdiplus::Point(160, 120)}) {
        current_.fill(0xFF00FF00);
        current_.bitmap.SetPixel(place.X, place.Y, Gdiplus::Color(0x80000000));
        Screen drawn;
        drawn.graphics.DrawImage(&previous_.bitmap, 0, 0);
        drawn.graphics.DrawImage(&current_.bitmap, 0, 0);
        canvas_.composePages(&previous_.bitmap, nullptr, 0.0F, kAtRest);
        EXPECT_TRUE(canvas_.composePages(&current_.bitmap, nullptr, 0.0F, kAtRest));
        EXPECT_TRUE(samePicture(frameOf(canvas_), drawn.picture())) << place.X;
    }
}

TEST_F(ComposePages, APageOrCanvasThatCannotBeLockedIsDrawnAndLeavesNoFailure) {
    FailingGdiplus gdiplus;
    for (const int failing : {1, 2}) {
        canvas_.composePages(&previous_.bitmap, nullptr, 0.0F, kAtRest);
        gdiplus.failCall(failing, "GdipBitmapLockBits");
        EXPECT_TRUE(canvas_.composePages(&current_.bitmap, nullptr, 0.0F, kAtRest)) << failing;
        EXPECT_TRUE(gdiplus.hasFailed()) << failing;
        EXPECT_EQ(current_.bitmap.GetLastStatus(), Gdiplus::Ok) << failing;
        EXPECT_TRUE(samePicture(frameOf(canvas_), expected(0, 0, 0, 0))) << failing;
    }
}

TEST_F(ComposePages, AnOpaquePageAtRestIsNotDrawnButCopied) {
    FailingGdiplus gdiplus;
    EXPECT_TRUE(canvas_.composePages(&current_.bitmap, nullptr, 0.0F, kAtRest));
    EXPECT_EQ(gdiplus.calls("GdipDrawImageI"), 0);
    EXPECT_TRUE(canvas_.composePages(&current_.bitmap, &previous_.bitmap, 1.0F, kAtRest));
    EXPECT_EQ(gdiplus.calls("GdipDrawImageI"), 2) << "a step of a slide";
}

TEST_F(ComposePages, PresentingDrawsTheSurfaceAtTheOrigin) {
    canvas_.composePages(&current_.bitmap, nullptr, 0.0F, kAtRest);
    Screen target;
    target.fill(0xFFFFFFFF);
    canvas_.presentTo(target.graphics);
    EXPECT_EQ(target.graphics.GetLastStatus(), Gdiplus::Ok);
    EXPECT_TRUE(samePicture(target.picture(), expected(0, 0, 0, 0)));
}

TEST_F(ComposePages, PresentingToABrokenTargetLeavesItsStatus) {
    Gdiplus::Graphics target(static_cast<Gdiplus::Image*>(nullptr));
    ASSERT_NE(target.GetLastStatus(), Gdiplus::Ok);
    canvas_.presentTo(target);
    EXPECT_NE(target.GetLastStatus(), Gdiplus::Ok);
}
