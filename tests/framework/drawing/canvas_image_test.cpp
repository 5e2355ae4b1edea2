#include "framework/drawing/canvas.h"

#include <gtest/gtest.h>

#include "framework/drawing/sys_exception.h"
#include "tests/framework/drawing/drawing_fixture.h"
#include "tests/framework/drawing/test_resources.h"
#include "tests/support/gdiplus_ledger.h"
#include "tests/support/image_compare.h"
#include "tests/support/message_box_watcher.h"

using Panelix::Canvas;
using Panelix::SysException;

namespace {

class CanvasImage : public DrawingTest {
protected:
    Canvas canvas_;
    MessageBoxWatcher watcher_;
};

}  // namespace

TEST_F(CanvasImage, IdZeroIsNullWithoutAMessage) {
    EXPECT_EQ(canvas_.getImage(0, 0), nullptr);
    EXPECT_EQ(canvas_.getImage(0, 1), nullptr);
    EXPECT_TRUE(watcher_.boxes().empty());
}

TEST_F(CanvasImage, BitmapResourceHasItsPixels) {
    Gdiplus::Bitmap* image = canvas_.getImage(TEST_BITMAP_GLYPH, 0);
    ASSERT_NE(image, nullptr);
    Picture expected = plainPicture(34, 22, 0);
    for (std::uint32_t y = 0; y < 22; ++y) {
        for (std::uint32_t x = 0; x < 34; ++x) {
            expected.pixels[y * 34 + x] =
                0xFF000000 | (7 * x) % 256 << 16 | (11 * y) % 256 << 8 | (x * y) % 256;
        }
    }
    EXPECT_TRUE(samePicture(readPicture(*image), expected));
}

TEST_F(CanvasImage, PngResourceHasPremultipliedPixels) {
    Gdiplus::Bitmap* image = canvas_.getImage(TEST_PNG_ONE_PIXEL, 1);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(readPicture(*image), plainPicture(1, 1, 0x80643219));
}

TEST_F(CanvasImage, SecondRequestGivesTheSameImageWhateverItsKind) {
    Gdiplus::Bitmap* png = canvas_.getImage(TEST_PNG_TWELVE_PIXELS, 1);
    ASSERT_NE(png, nullptr);
    EXPECT_EQ(canvas_.getImage(TEST_PNG_TWELVE_PIXELS, 1), png);
    EXPECT_EQ(canvas_.getImage(TEST_PNG_TWELVE_PIXELS, 0), png);
    EXPECT_EQ(canvas_.getImage(TEST_PNG_TWELVE_PIXELS, -5), png);

    Gdiplus::Bitmap* bitmap = canvas_.getImage(TEST_BITMAP_GLYPH, 0);
    ASSERT_NE(bitmap, nullptr);
    EXPECT_NE(bitmap, png);
    EXPECT_EQ(canvas_.getImage(TEST_BITMAP_GLYPH, 1), bitmap);
}

TEST_F(CanvasImage, AnyKindButZeroIsAPng) {
    EXPECT_NE(canvas_.getImage(TEST_PNG_ONE_PIXEL, -1), nullptr);
    EXPECT_NE(canvas_.getImage(TEST_PNG_TWELVE_PIXELS, 256), nullptr);
}

TEST_F(CanvasImage, MissingPngShowsABoxAtEveryRequest) {
    EXPECT_EQ(canvas_.getImage(TEST_PNG_MISSING, 1), nullptr);
    EXPECT_EQ(canvas_.getImage(TEST_PNG_MISSING, 1), nullptr);
    const std::vector<SeenMessageBox> boxes = watcher_.boxes();
    ASSERT_EQ(boxes.size(), 2U);
    for (const SeenMessageBox& box : boxes) {
        EXPECT_EQ(box.text, L"NULL");
        EXPECT_EQ(box.caption, L"Panelix Image load Error");
        EXPECT_EQ(box.icon, MessageBoxIcon::None);
        EXPECT_EQ(box.buttons, std::vector<int>{IDOK});
        EXPECT_EQ(box.owner, nullptr);
    }
}

TEST_F(CanvasImage, ResourceOfTheOtherTypeIsMissing) {
    EXPECT_EQ(canvas_.getImage(TEST_BITMAP_GLYPH, 1), nullptr);
    EXPECT_EQ(watcher_.boxes().size(), 1U);
    EXPECT_THROW(canvas_.getImage(TEST_PNG_ONE_PIXEL, 0), SysException);
    EXPECT_EQ(watcher_.boxes().size(), 1U);
}

TEST_F(CanvasImage, CorruptPngShowsTheBox) {
    EXPECT_EQ(canvas_.getImage(TEST_PNG_CORRUPT, 1), nullptr);
    ASSERT_EQ(watcher_.boxes().size(), 1U);
    EXPECT_EQ(watcher_.boxes()[0].text, L"NULL");
}

TEST_F(CanvasImage, MissingBitmapThrowsWithTheStatusText) {
    for (int request = 0; request < 2; ++request) {
        try {
            canvas_.getImage(TEST_BITMAP_MISSING, 0);
            FAIL() << "no exception";
        } catch (const SysException& exception) {
            EXPECT_EQ(exception.title, L"Drawing Error");
            EXPECT_EQ(
                exception.message,
                L"Failed to load bitmap: InvalidParameter: Indicates that one of the arguments passed to "
                L"the method was not valid.");
        }
    }
    EXPECT_TRUE(watcher_.boxes().empty());
}

TEST_F(CanvasImage, DamagedBitmapThrows) {
    try {
        canvas_.getImage(TEST_BITMAP_DAMAGED, 0);
        FAIL() << "no exception";
    } catch (const SysException& exception) {
        EXPECT_EQ(exception.title, L"Drawing Error");
        EXPECT_EQ(exception.message.find(L"Failed to load bitmap: "), 0U);
    }
}

TEST_F(CanvasImage, StatusStaysUntilAnOperationSucceeds) {
    EXPECT_NO_THROW(canvas_.checkStatus(L"Nothing happened yet"));
    EXPECT_THROW(canvas_.getImage(TEST_BITMAP_MISSING, 0), SysException);
    for (int check = 0; check < 2; ++check) {
        try {
            canvas_.checkStatus(L"Still");
            FAIL() << "no exception";
        } catch (const SysException& exception) {
            EXPECT_EQ(exception.title, L"Drawing Error");
            EXPECT_EQ(exception.message.find(L"Still: InvalidParameter: "), 0U);
        }
    }
    EXPECT_NE(canvas_.getImage(TEST_BITMAP_GLYPH, 0), nullptr);
    EXPECT_NO_THROW(canvas_.checkStatus(L"Fine again"));
}

TEST(CanvasStatus, TextIsTheTables) {
    EXPECT_EQ(Canvas::statusText(0), L"Ok: Indicates that the method call was successful.");
    EXPECT_EQ(Canvas::statusText(21), L"Invalid status: Indicates an unknown status was returned.");
    EXPECT_EQ(Canvas::statusText(-1), L"Invalid status: Indicates an unknown status was returned.");
}

TEST(CanvasStatus, CanvasAloneStartsAndEndsGdiplus) {
    const Panelix::ComApartment com;
    for (int round = 0; round < 3; ++round) {
        Canvas canvas;
        EXPECT_NE(canvas.getImage(TEST_PNG_TWELVE_PIXELS, 1), nullptr);
        EXPECT_NE(canvas.getImage(TEST_BITMAP_GLYPH, 0), nullptr);
        EXPECT_NE(canvas.toLcdFrame(), nullptr);
    }
}

TEST(CanvasStatus, NothingOfTheCanvasIsLeftWhenGdiplusEnds) {
    const Panelix::ComApartment com;
    const GdiplusLedger ledger;
    {
        Canvas canvas;
        canvas.getImage(TEST_PNG_TWELVE_PIXELS, 1);
        canvas.getImage(TEST_BITMAP_GLYPH, 0);
        EXPECT_THROW(canvas.getImage(TEST_BITMAP_MISSING, 0), SysException);
        EXPECT_EQ(ledger.outstanding(),
                  (GdiplusLedger::Numbers{{"graphics", 1}, {"heap block", 2}, {"image", 3}}));
    }
    EXPECT_EQ(ledger.outstandingAtTheEnd(), GdiplusLedger::Numbers{});
    EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{});
}
