#include "framework/drawing/blend.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <random>
#include <vector>

#include "tests/framework/drawing/blend_definition.h"
#include "tests/framework/drawing/drawing_fixture.h"
#include "tests/support/gdiplus_ledger.h"

using Panelix::blendImages;
using Panelix::BlendMode;
using Panelix::kLcdHeight;
using Panelix::kLcdWidth;

namespace {

class Blend : public DrawingTest {
protected:
    void SetUp() override {
        std::mt19937 random(3);
        for (int y = 0; y < kLcdHeight; ++y) {
            for (int x = 0; x < kLcdWidth; ++x) {
                destination_.bitmap.SetPixel(
                    x, y, Gdiplus::Color(0xFF000000 | static_cast<std::uint32_t>(random())));
                source_.bitmap.SetPixel(
                    x, y, Gdiplus::Color(0xFF000000 | static_cast<std::uint32_t>(random())));
            }
        }
    }

    Picture expected(std::uint32_t mode) {
        Picture picture = destination_.picture();
        const Picture source = source_.picture();
        blendByDefinition(picture.pixels.data(), source.pixels.data(), source.pixels.size(), mode);
        return picture;
    }

    Screen destination_;
    Screen source_;
};

}  // namespace

TEST_F(Blend, EveryModeIsTheDefinition) {
    for (const std::uint32_t mode : {0U, 1U, 2U}) {
        const Picture wanted = expected(mode);
        const Picture source = source_.picture();
        blendImages(destination_.bitmap, source_.bitmap, static_cast<BlendMode>(mode));
        EXPECT_TRUE(samePicture(destination_.picture(), wanted)) << mode;
        EXPECT_TRUE(samePicture(source_.picture(), source)) << mode;
        EXPECT_EQ(destination_.bitmap.GetLastStatus(), Gdiplus::Ok);
        EXPECT_EQ(source_.bitmap.GetLastStatus(), Gdiplus::Ok);
    }
}

TEST_F(Blend, ModeSevenTurnsTheDestinationOpaqueBlack) {
    blendImages(destination_.bitmap, source_.bitmap, static_cast<BlendMode>(7));
    EXPECT_TRUE(samePicture(destination_.picture(), plainPicture(kLcdWidth, kLcdHeight, 0xFF000000)));
}

TEST_F(Blend, ResultIsOpaqueWhateverTheAlpha) {
    destination_.fill(0x80FFFFFF);
    source_.fill(0x00000000);
    blendImages(destination_.bitmap, source_.bitmap, BlendMode::Add);
    // Half transparent white is 0x80808080 when premultiplied.
    EXPECT_TRUE(samePicture(destination_.picture(), plainPicture(kLcdWidth, kLcdHeight, 0xFF808080)));
}

TEST_F(Blend, BitmapWithoutAlphaIsConvertedOnTheWay) {
    Gdiplus::Bitmap source(kLcdWidth, kLcdHeight, PixelFormat24bppRGB);
    Gdiplus::Graphics(&source).Clear(Gdiplus::Color(0xFF204060));
    destination_.fill(0xFF808080);
    blendImages(destination_.bitmap, source, BlendMode::Subtract);
    EXPECT_TRUE(samePicture(destination_.picture(), plainPicture(kLcdWidth, kLcdHeight, 0xFF604020)));
}

TEST_F(Blend, LockedSourceLeavesTheDestinationAlone) {
    const Picture before = destination_.picture();
    const Gdiplus::Rect whole(0, 0, kLcdWidth, kLcdHeight);
    Gdiplus::BitmapData data{};
    ASSERT_EQ(source_.bitmap.LockBits(&whole, Gdiplus::ImageLockModeRead, PixelFormat32bppPARGB, &data),
              Gdiplus::Ok);
    blendImages(destination_.bitmap, source_.bitmap, BlendMode::Multiply);
    EXPECT_NE(source_.bitmap.GetLastStatus(), Gdiplus::Ok);
    ASSERT_EQ(source_.bitmap.UnlockBits(&data), Gdiplus::Ok);

    EXPECT_EQ(destination_.bitmap.GetLastStatus(), Gdiplus::Ok);
    EXPECT_TRUE(samePicture(destination_.picture(), before));
}

TEST_F(Blend, LockedDestinationIsLeftAloneAndTheSourceReleased) {
    const Picture before = destination_.picture();
    const Gdiplus::Rect whole(0, 0, kLcdWidth, kLcdHeight);
    Gdiplus::BitmapData data{};
    ASSERT_EQ(destination_.bitmap.LockBits(&whole, Gdiplus::ImageLockModeRead, PixelFormat32bppPARGB, &data),
              Gdiplus::Ok);
    blendImages(destination_.bitmap, source_.bitmap, BlendMode::Multiply);
    EXPECT_NE(destination_.bitmap.GetLastStatus(), Gdiplus::Ok);
    ASSERT_EQ(destination_.bitmap.UnlockBits(&data), Gdiplus::Ok);

    EXPECT_TRUE(samePicture(destination_.picture(), before));
    ASSERT_EQ(source_.bitmap.LockBits(&whole, Gdiplus::ImageLockModeRead, PixelFormat32bppPARGB, &data),
              Gdiplus::Ok);
    EXPECT_EQ(source_.bitmap.UnlockBits(&data), Gdiplus::Ok);
}

TEST_F(Blend, ABitmapThatIsTooSmallKeepsTheStatusAndTheDestinationItsPixels) {
    Gdiplus::Bitmap small(10, 10, PixelFormat32bppPARGB);
    const Picture before = destination_.picture();
    blendImages(destination_.bitmap, small, BlendMode::Multiply);
    EXPECT_NE(small.GetLastStatus(), Gdiplus::Ok);
    EXPECT_TRUE(samePicture(destination_.picture(), before));
}

TEST_F(Blend, ABitmapBlendedWithItselfIsLeftAlone) {
    const Picture before = destination_.picture();
    blendImages(destination_.bitmap, destination_.bitmap, BlendMode::Multiply);
    EXPECT_NE(destination_.bitmap.GetLastStatus(), Gdiplus::Ok);
    EXPECT_TRUE(samePicture(destination_.picture(), before));
}

TEST_F(Blend, UnlocksWhatItHasLocked) {
    Gdiplus::Bitmap small(10, 10, PixelFormat32bppPARGB);
    const GdiplusLedger ledger;
    blendImages(destination_.bitmap, source_.bitmap, BlendMode::Multiply);
    EXPECT_EQ(ledger.taken(), (GdiplusLedger::Numbers{{"locked bits", 2}}));
    EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{});
    blendImages(destination_.bitmap, small, BlendMode::Multiply);
    blendImages(small, source_.bitmap, BlendMode::Multiply);
    EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{});
}
