#include "tests/support/image_compare.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "framework/drawing/canvas.h"

TEST(ImageCompare, EqualPicturesAreTheSame) {
    EXPECT_TRUE(samePicture(plainPicture(3, 2, 0xFF123456), plainPicture(3, 2, 0xFF123456)));
}

TEST(ImageCompare, FirstDifferenceIsNamedAndBothPicturesAreKept) {
    const Panelix::GdiplusSession gdiplus;
    const Picture expected = plainPicture(4, 3, 0xFF000000);
    Picture actual = expected;
    actual.pixels[6] = 0xFF00FF00;
    actual.pixels[11] = 0xFFFFFFFF;
    const testing::AssertionResult result = samePicture(actual, expected);
    ASSERT_FALSE(result);
    const std::string message = result.message();
    EXPECT_NE(message.find("2 pixels differ, the first one at (2, 1): ff00ff00, expected ff000000"),
              std::string::npos)
        << message;

    const std::wstring stem =
        L"differing_pictures\\ImageCompare.FirstDifferenceIsNamedAndBothPicturesAreKept-";
    Gdiplus::Bitmap kept((stem + L"1-actual.png").c_str());
    EXPECT_EQ(readPicture(kept), actual);
    Gdiplus::Bitmap other((stem + L"2-expected.png").c_str());
    EXPECT_EQ(readPicture(other), expected);
}

TEST(ImageCompare, SizesDiffer) {
    const testing::AssertionResult result = samePicture(plainPicture(2, 3, 0), plainPicture(3, 2, 0));
    ASSERT_FALSE(result);
    EXPECT_STREQ(result.message(), "the picture is 2 x 3, expected 3 x 2");
}

TEST(ImageCompare, PixelsAreFoundByTheirPlace) {
    Picture picture = plainPicture(3, 2, 0);
    picture.pixels[5] = 7;
    EXPECT_EQ(picture.at(2, 1), 7U);
    EXPECT_EQ(picture.at(1, 1), 0U);
    EXPECT_THROW(picture.at(3, 0), std::out_of_range);
    EXPECT_THROW(picture.at(0, -1), std::out_of_range);
}
