#include "framework/drawing/saved_pixels.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "tests/framework/drawing/drawing_fixture.h"

using Panelix::kLcdHeight;
using Panelix::kLcdWidth;
using Panelix::LockedPixels;
using Panelix::PixelRect;

namespace {

constexpr PixelRect kRect{7, 100, 20, 3};

class SavedPixels : public DrawingTest {
protected:
    SavedPixels() {
        for (int y = 0; y < kLcdHeight; ++y) {
            for (int x = 0; x < kLcdWidth; ++x) {
                screen.bitmap.SetPixel(x, y, Gdiplus::Color(pixelAt(x, y)));
            }
        }
    }

    static std::uint32_t pixelAt(int x, int y) { return 0xFF000000U + static_cast<unsigned>(y * 1000 + x); }

    static bool isInside(int x, int y) {
        return x >= kRect.x && x < kRect.x + kRect.width && y >= kRect.y && y < kRect.y + kRect.height;
    }

    bool equal() {
        const LockedPixels locked(screen.bitmap, Gdiplus::ImageLockModeRead);
        return saved.equal(locked);
    }

    Screen screen;
    Panelix::SavedPixels saved;
};

TEST_F(SavedPixels, ArePutBackWhereTheyWereAndNowhereElse) {
    EXPECT_TRUE(saved.empty());
    ASSERT_TRUE(saved.save(screen.bitmap, kRect));
    EXPECT_FALSE(saved.empty());
    screen.fill(0xFF123456);
    EXPECT_TRUE(saved.writeTo(screen.bitmap));
    Picture expected = plainPicture(kLcdWidth, kLcdHeight, 0xFF123456);
    for (int y = 0; y < kLcdHeight; ++y) {
        for (int x = 0; x < kLcdWidth; ++x) {
            if (isInside(x, y)) {
                expected.pixels[static_cast<std::size_t>(y * kLcdWidth + x)] = pixelAt(x, y);
            }
        }
    }
    EXPECT_TRUE(samePicture(screen.picture(), expected));
    EXPECT_EQ(screen.bitmap.GetLastStatus(), Gdiplus::Ok);
}

TEST_F(SavedPixels, EqualABitmapThatHasThemInTheirRectangle) {
    ASSERT_TRUE(saved.save(screen.bitmap, kRect));
    EXPECT_TRUE(equal());
    const int right = kRect.x + kRect.width;
    const int bottom = kRect.y + kRect.height;
    for (const int x : {kRect.x - 1, kRect.x, right - 1, right}) {
        for (const int y : {kRect.y - 1, kRect.y, bottom - 1, bottom}) {
            screen.bitmap.SetPixel(x, y, Gdiplus::Color(0xFFABCDEF));
            EXPECT_EQ(equal(), !isInside(x, y)) << x << ", " << y;
            screen.bitmap.SetPixel(x, y, Gdiplus::Color(pixelAt(x, y)));
        }
    }
}

TEST_F(SavedPixels, ABitmapThatCannotBeLockedSavesNothingAndKeepsItsPixels) {
    Gdiplus::Bitmap tooSmall(10, 10, PixelFormat32bppPARGB);
    EXPECT_FALSE(saved.writeTo(screen.bitmap)) << "nothing is saved yet";
    ASSERT_TRUE(saved.save(screen.bitmap, kRect));
    EXPECT_FALSE(saved.writeTo(tooSmall));
    EXPECT_NE(tooSmall.GetLastStatus(), Gdiplus::Ok);
    EXPECT_FALSE(saved.save(tooSmall, kRect));
    EXPECT_NE(tooSmall.GetLastStatus(), Gdiplus::Ok);
    EXPECT_TRUE(saved.empty());
    EXPECT_FALSE(equal());
}

}  // namespace
