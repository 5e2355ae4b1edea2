#include "standins/lcd_sdk/viewer_picture.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gdiplus.h>

#include "standins/lcd_sdk/frame_png.h"
#include "standins/lcd_sdk/gdiplus_session.h"
#include "standins/lcd_sdk/viewer_layout.h"

namespace {

using namespace Standins;
using Panelix::LcdSdk::kColorHeight;
using Panelix::LcdSdk::kColorWidth;

// Colour of one pixel, without alpha: red, green and blue from the highest byte to the lowest.
using Rgb = std::uint32_t;

// A frame in which every pixel has a colour of its own.
Rgb patternAt(int x, int y) {
    return (static_cast<Rgb>(x % 256) << 16) | (static_cast<Rgb>(y) << 8) | static_cast<Rgb>(x / 256 * 200);
}

G19Frame patternFrame() {
    G19Frame frame;
    frame.sequence = 1;
    for (int y = 0; y < kColorHeight; ++y) {
        for (int x = 0; x < kColorWidth; ++x) {
            const Rgb colour = patternAt(x, y);
            frame.pixels.push_back(static_cast<std::uint8_t>(colour));
            frame.pixels.push_back(static_cast<std::uint8_t>(colour >> 8));
            frame.pixels.push_back(static_cast<std::uint8_t>(colour >> 16));
            frame.pixels.push_back(0);
        }
    }
    return frame;
}

// The viewer's client area in memory.
class Painted {
public:
    explicit Painted(const ViewerState& state) : dc_(CreateCompatibleDC(nullptr)) {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof(info.bmiHeader);
        info.bmiHeader.biWidth = kClientWidth;
        info.bmiHeader.biHeight = -kClientHeight;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        void* bits = nullptr;
        bitmap_.reset(CreateDIBSection(dc_, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
        const HGDIOBJ before = SelectObject(dc_, bitmap_.get());
        paintViewer(dc_, state);
        GdiFlush();
        const auto* const pixels = static_cast<const Rgb*>(bits);
        pixels_.assign(pixels, pixels + kClientWidth * kClientHeight);
        SelectObject(dc_, before);
    }
    ~Painted() { DeleteDC(dc_); }
    Painted(const Painted&) = delete;
    Painted& operator=(const Painted&) = delete;

    Rgb at(int x, int y) const {
        return pixels_[static_cast<std::size_t>(y) * kClientWidth + static_cast<std::size_t>(x)] & 0xFFFFFF;
    }

private:
    HDC dc_;
    Panelix::UniqueBitmap bitmap_;
    std::vector<Rgb> pixels_;
};

// Numbers of pixels in which two pictures differ, inside and outside a rectangle.
struct Difference {
    int inside = 0;
    int outside = 0;
};

Difference compare(const Painted& one, const Painted& other, const ViewerRect& rect) {
    Difference difference;
    for (int y = 0; y < kClientHeight; ++y) {
        for (int x = 0; x < kClientWidth; ++x) {
            if (one.at(x, y) != other.at(x, y)) {
                ++(rect.contains(x, y) ? difference.inside : difference.outside);
            }
        }
    }
    return difference;
}

class ViewerPicture : public testing::Test {
protected:
    GdiplusSession gdiplus;
    ViewerState running{patternFrame(), false, 0, L"Kelvaro"};
};

TEST_F(ViewerPicture, EveryLcdPixelBecomesASquareOfFour) {
    const Painted picture(running);
    for (int y = 0; y < kLcdRect.height; ++y) {
        for (int x = 0; x < kLcdRect.width; ++x) {
            ASSERT_EQ(picture.at(kLcdRect.x + x, kLcdRect.y + y), patternAt(x / 2, y / 2)) << x << ", " << y;
        }
    }
}

TEST_F(ViewerPicture, PressedButtonLooksDifferentAndNothingElseDoes) {
    const Painted released(running);
    for (const ViewerButton& button : kViewerButtons) {
        ViewerState state = running;
        state.buttonsDown = button.mask;
        const Difference difference = compare(released, Painted(state), button.rect);
        EXPECT_GT(difference.inside, button.rect.width * button.rect.height / 2) << button.mask;
        EXPECT_EQ(difference.outside, 0) << button.mask;
    }
}

TEST_F(ViewerPicture, EndedProgramIsNamedOverItsLastFrame) {
    ViewerState ended = running;
    ended.ended = true;
    const Painted picture(ended);
    const Difference fromRunning = compare(Painted(running), picture, kLcdRect);
    EXPECT_GT(fromRunning.inside, kLcdRect.width * kLcdRect.height / 2);
    EXPECT_EQ(fromRunning.outside, 0);

    ended.programName = L"Another";
    EXPECT_GT(compare(Painted(ended), picture, kLcdRect).inside, 0) << "the name has no pixels";
}

TEST_F(ViewerPicture, WaitingPictureSaysSomething) {
    const Painted picture(ViewerState{});
    int bright = 0;
    for (int y = 0; y < kLcdRect.height; ++y) {
        for (int x = 0; x < kLcdRect.width; ++x) {
            bright += (picture.at(kLcdRect.x + x, kLcdRect.y + y) & 0xFF) > 0xC0 ? 1 : 0;
        }
    }
    // Two lines of text: some of the area, and far from all of it.
    EXPECT_GT(bright, 500);
    EXPECT_LT(bright, 20'000);
}

TEST_F(ViewerPicture, SavedFrameHasEveryPixelOfTheLcd) {
    wchar_t folder[MAX_PATH];
    ASSERT_NE(GetTempPathW(MAX_PATH, folder), 0u);
    const std::wstring path =
        std::wstring(folder) + L"frame_" + std::to_wstring(GetCurrentProcessId()) + L".png";
    ASSERT_TRUE(saveFramePng(*running.frame, path));
    {
        Gdiplus::Bitmap picture(path.c_str());
        ASSERT_EQ(picture.GetLastStatus(), Gdiplus::Ok);
        ASSERT_EQ(picture.GetWidth(), 320u);
        ASSERT_EQ(picture.GetHeight(), 240u);
        for (int y = 0; y < kColorHeight; ++y) {
            for (int x = 0; x < kColorWidth; ++x) {
                Gdiplus::Color colour;
                picture.GetPixel(x, y, &colour);
                ASSERT_EQ(colour.GetValue(), 0xFF000000 | patternAt(x, y)) << x << ", " << y;
            }
        }
    }
    std::filesystem::remove(path);
}

TEST_F(ViewerPicture, FrameCannotBeSavedWhereNoFolderIs) {
    EXPECT_FALSE(saveFramePng(*running.frame, L"C:\\no such folder\\frame.png"));
}

}  // namespace
