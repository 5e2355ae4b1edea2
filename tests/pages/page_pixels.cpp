#include "tests/pages/page_pixels.h"

#include <cstring>
#include <iomanip>

PagePixels::PagePixels(Gdiplus::Bitmap& bitmap) : values_(std::size_t{kWidth} * kHeight) {
    EXPECT_EQ(bitmap.GetWidth(), UINT{kWidth});
    EXPECT_EQ(bitmap.GetHeight(), UINT{kHeight});
    const Gdiplus::Rect all(0, 0, kWidth, kHeight);
    Gdiplus::BitmapData data{};
    const Gdiplus::Status status =
        bitmap.LockBits(&all, Gdiplus::ImageLockModeRead, PixelFormat32bppPARGB, &data);
    EXPECT_EQ(status, Gdiplus::Ok);
    if (status != Gdiplus::Ok) {
        return;
    }
    const auto* row = static_cast<const std::uint8_t*>(data.Scan0);
    for (int y = 0; y < kHeight; ++y, row += data.Stride) {
        std::memcpy(&values_[indexOf(0, y)], row, std::size_t{kWidth} * 4);
    }
    bitmap.UnlockBits(&data);
}

testing::AssertionResult samePixels(const PagePixels& actual, const PagePixels& expected) {
    if (actual == expected) {
        return testing::AssertionSuccess();
    }
    testing::AssertionResult failure = testing::AssertionFailure();
    int count = 0;
    for (int y = 0; y < PagePixels::kHeight; ++y) {
        for (int x = 0; x < PagePixels::kWidth; ++x) {
            if (actual.at(x, y) == expected.at(x, y)) {
                continue;
            }
            if (count == 0) {
                failure << "first at (" << x << ", " << y << "): " << std::hex << std::setfill('0')
                        << std::setw(8) << actual.at(x, y) << " instead of " << std::setw(8)
                        << expected.at(x, y) << std::dec;
            }
            ++count;
        }
    }
    return failure << "; " << count << " pixels differ";
}
