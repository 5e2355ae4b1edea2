#include "framework/drawing/lcd_frame.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "framework/drawing/canvas.h"
#include "tests/framework/drawing/drawing_fixture.h"

using Panelix::Canvas;
using Panelix::kLcdFrameBytes;
using Panelix::kLcdHeight;
using Panelix::kLcdWidth;
using Panelix::LcdFrame;
using Panelix::TransitionKind;

namespace {

class LcdFrameConversion : public DrawingTest {
protected:
    LcdFrame converted() {
        canvas_.composePages(&page_.bitmap, nullptr, 0.0F, TransitionKind::SlideFromBottom);
        return canvas_.toLcdFrame();
    }

    static void expectPixel(const LcdFrame& frame, std::size_t offset, int blue, int green, int red) {
        EXPECT_EQ(frame[offset], blue) << offset;
        EXPECT_EQ(frame[offset + 1], green) << offset;
        EXPECT_EQ(frame[offset + 2], red) << offset;
    }

    Canvas canvas_;
    Screen page_;
};

}  // namespace

TEST_F(LcdFrameConversion, RedIsTheThirdByteOfEachPixel) {
    page_.fill(0xFFFF0000);
    const LcdFrame frame = converted();
    for (std::size_t offset = 0; offset < kLcdFrameBytes; offset += 4) {
        ASSERT_EQ(frame[offset], 0);
        ASSERT_EQ(frame[offset + 1], 0);
        ASSERT_EQ(frame[offset + 2], 255);
        ASSERT_EQ(frame[offset + 3], 255);
    }
}

TEST_F(LcdFrameConversion, PixelsAreAtTheirOffsets) {
    struct Case {
        int x;
        int y;
        std::size_t offset;
    };
    constexpr std::array<Case, 6> cases{{
        {0, 0, 0},
        {1, 0, 4},
        {319, 0, 1'276},
        {0, 1, 1'280},
        {0, 239, 305'920},
        {319, 239, 307'196},
    }};
    page_.fill(0xFF000000);
    for (const Case& pixel : cases) {
        page_.bitmap.SetPixel(pixel.x, pixel.y, Gdiplus::Color(0xFFC08040));
    }
    const LcdFrame frame = converted();
    for (const Case& pixel : cases) {
        expectPixel(frame, pixel.offset, 0x40, 0x80, 0xC0);
    }
    EXPECT_EQ(countDifferences(readFrame(frame.get()), plainPicture(kLcdWidth, kLcdHeight, 0xFF000000)),
              cases.size());
}

TEST_F(LcdFrameConversion, EachFrameIsABufferOfItsOwn) {
    page_.fill(0xFF112233);
    const LcdFrame first = converted();
    page_.fill(0xFF445566);
    const LcdFrame second = converted();
    EXPECT_NE(first.get(), second.get());
    expectPixel(first, 0, 0x33, 0x22, 0x11);
    expectPixel(second, 0, 0x66, 0x55, 0x44);
}

TEST_F(LcdFrameConversion, AFreshCanvasHasAFrame) {
    const LcdFrame frame = canvas_.toLcdFrame();
    ASSERT_NE(frame, nullptr);
    expectPixel(frame, 0, 0, 0, 0);
    expectPixel(frame, kLcdFrameBytes - 4, 0, 0, 0);
}
