#include "framework/drawing/lcd_frame.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "framework/drawing/canvas.h"
#include "framework/drawing/sys_exception.h"
#include "tests/framework/drawing/drawing_fixture.h"
#include "tests/support/gdiplus_ledger.h"
#include "tests/support/import_override.h"

using Panelix::Canvas;
using Panelix::kLcdFrameBytes;
using Panelix::kLcdHeight;
using Panelix::kLcdWidth;
using Panelix::LcdFrame;
using Panelix::TransitionKind;

namespace {

using Lines = int(HDC, HBITMAP, UINT, UINT, LPVOID, LPBITMAPINFO, UINT);
Lines* getLines = nullptr;
/// Number of the call of GetDIBits, counted from 1, that goes wrong, and what it returns then.
int wrongCall = 0;
int wrongResult = 0;
int callCount = 0;

int WINAPI getLinesOrFail(
    HDC context, HBITMAP bitmap, UINT start, UINT count, LPVOID bits, LPBITMAPINFO info, UINT usage) {
    return ++callCount == wrongCall ? wrongResult
                                    : getLines(context, bitmap, start, count, bits, info, usage);
}

Gdiplus::GpStatus WINGDIPAPI refuseBitmap(Gdiplus::GpBitmap*, HBITMAP*, Gdiplus::ARGB) {
    return Gdiplus::OutOfMemory;
}

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

    /// The message of the error that a conversion ends with.
    std::wstring error() {
        try {
            canvas_.toLcdFrame();
        } catch (const Panelix::SysException& exception) {
            EXPECT_EQ(exception.title, L"Drawing Error");
            return exception.message;
        }
        return L"none";
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

TEST_F(LcdFrameConversion, GivesBackTheBitmapAndTheScreensContext) {
    const GdiplusLedger ledger;
    canvas_.toLcdFrame();
    EXPECT_EQ(ledger.taken(), (GdiplusLedger::Numbers{{"GDI bitmap", 1}, {"device context", 1}}));
    EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{});
}

TEST_F(LcdFrameConversion, FailsWithoutAGdiBitmap) {
    const GdiplusLedger ledger;
    {
        const ImportOverride refused("gdiplus.dll", "GdipCreateHBITMAPFromBitmap", refuseBitmap);
        EXPECT_EQ(error(),
                  L"Failed to retrieve background bitmap: " + Canvas::statusText(Gdiplus::OutOfMemory));
    }
    EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{});
    EXPECT_EQ(error(), L"none") << "the next one works again";
}

TEST_F(LcdFrameConversion, FailsWhenTheBitmapsSizeOrItsRowsCannotBeRead) {
    struct Case {
        int call;
        int result;
        std::wstring message;
    };
    const std::wstring unread =
        L"Failed to retrieve background bitmap: " + Canvas::statusText(Gdiplus::Win32Error);
    const std::array<Case, 4> cases{{
        {1, 0, L"Bitmap incorrect size"},
        {2, 0, unread},
        {2, kLcdHeight - 1, unread},
        {2, ERROR_INVALID_PARAMETER, unread},
    }};
    const GdiplusLedger ledger;
    const ImportOverride lines("gdi32.dll", "GetDIBits", getLinesOrFail);
    getLines = lines.original<Lines>();
    for (const Case& failing : cases) {
        callCount = 0;
        wrongCall = failing.call;
        wrongResult = failing.result;
        EXPECT_EQ(error(), failing.message) << failing.call;
        EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{}) << failing.call;
        wrongCall = 0;
        EXPECT_EQ(error(), L"none") << "the next one works again";
        EXPECT_NO_THROW(canvas_.checkStatus(L"and no status is left"));
    }
}
