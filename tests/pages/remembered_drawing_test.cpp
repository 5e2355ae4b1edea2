#include "pages/remembered_drawing.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <random>
#include <string>

#include "framework/drawing/canvas.h"
#include "framework/drawing/surface_settings.h"
#include "pages/main_page_texts.h"
#include "pages/text_tools.h"
#include "tests/pages/page_pixels.h"
#include "tests/support/failing_gdiplus.h"

namespace {

constexpr Argb kColour = 0xFF00C8C8;
constexpr Argb kTranslucent = 0xC8225D80;
constexpr std::uint32_t kGround = 0xFF203040;

/// A page like those of the program.
struct Page {
    Page() { Panelix::applySurfaceSettings(graphics); }

    void fill(std::uint32_t argb) { graphics.Clear(Gdiplus::Color(argb)); }

    /// Fills it with other pixels for each number.
    void fillAtRandom(unsigned number) {
        std::minstd_rand random(number + 1);
        const Panelix::LockedPixels locked(bitmap, Gdiplus::ImageLockModeWrite);
        for (int y = 0; y < Panelix::kLcdHeight; ++y) {
            for (int x = 0; x < Panelix::kLcdWidth; ++x) {
                locked.row(y)[x] = 0xFF000000U | static_cast<std::uint32_t>(random());
            }
        }
    }

    PagePixels pixels() { return PagePixels(bitmap); }

    Gdiplus::Bitmap bitmap{Panelix::kLcdWidth, Panelix::kLcdHeight, PixelFormat32bppPARGB};
    Gdiplus::Graphics graphics{&bitmap};
};

class RememberedTexts : public testing::Test {
protected:
    static void drawFresh(Page& page, MainPageText place, const std::wstring& text, Argb colour) {
        const MainPageTextStyle style = styleOf(place);
        const TextTools tools;
        const Gdiplus::SolidBrush brush{Gdiplus::Color(colour)};
        drawText(page.graphics,
                 text,
                 tools.font(style.font),
                 toPointF(style.point),
                 tools.format(style.anchor),
                 brush);
    }

    /// Draws the text in a place on `page`, and counts when it was not copied.
    void draw(Page& page, MainPageText place, const std::wstring& text, Argb colour = kColour) {
        texts[static_cast<std::size_t>(place)].draw(
            page.bitmap, text, colour, reachOf(styleOf(place), text.size()), [&] {
                ++drawn;
                drawFresh(page, place, text, colour);
            });
    }

    Panelix::Canvas canvas;
    Page shown;
    Page fresh;
    std::array<RememberedDrawing, kMainPageTexts> texts;
    int drawn = 0;
};

TEST_F(RememberedTexts, AreThoseThatAreDrawnAnewWhateverLiesBeneath) {
    const std::array<std::wstring, 6> kTexts{
        L"54 \u00B0C", L"x3", L"3600.00MHz (100.00 x 36.00)", std::wstring(60, L'@'), L"", L"Two\nlines"};
    std::mt19937 random(11);
    constexpr int kRounds = 400;
    for (int round = 0; round < kRounds; ++round) {
        const auto place = static_cast<MainPageText>(random() % kMainPageTexts);
        const std::wstring& text = kTexts[random() % kTexts.size()];
        const Argb colour = random() % 3 == 0 ? kTranslucent : kColour;
        const unsigned ground = static_cast<unsigned>(random() % 2);
        shown.fillAtRandom(ground);
        fresh.fillAtRandom(ground);
        draw(shown, place, text, colour);
        drawFresh(fresh, place, text, colour);
        ASSERT_TRUE(samePixels(shown.pixels(), fresh.pixels()))
            << "round " << round << ", place " << static_cast<int>(place);
    }
    EXPECT_LT(drawn, kRounds * 99 / 100) << "some are copied";
}

TEST_F(RememberedTexts, AreCopiedWhileNothingChangesAndDrawnWhenTextOrColourDoes) {
    const auto drawnAnew = [this](const std::wstring& text, Argb colour) {
        const int before = drawn;
        shown.fill(kGround);
        fresh.fill(kGround);
        draw(shown, MainPageText::Clock, text, colour);
        drawFresh(fresh, MainPageText::Clock, text, colour);
        EXPECT_TRUE(samePixels(shown.pixels(), fresh.pixels()));
        return drawn > before;
    };
    EXPECT_TRUE(drawnAnew(L"4:03:16", kColour));
    EXPECT_FALSE(drawnAnew(L"4:03:16", kColour));
    EXPECT_TRUE(drawnAnew(L"4:03:17", kColour));
    EXPECT_FALSE(drawnAnew(L"4:03:17", kColour));
    EXPECT_TRUE(drawnAnew(L"4:03:17", kTranslucent));
    EXPECT_FALSE(drawnAnew(L"4:03:17", kTranslucent));
}

TEST_F(RememberedTexts, OnePixelThatIsOtherInTheirReachHasThemDrawn) {
    const Panelix::PixelRect reach = reachOf(styleOf(MainPageText::CpuName), 4);
    for (const int x : {reach.x, reach.x + reach.width - 1, reach.x + reach.width}) {
        for (const int y : {reach.y - 1, reach.y, reach.y + reach.height - 1, reach.y + reach.height}) {
            shown.fill(kGround);
            draw(shown, MainPageText::CpuName, L"Name");
            const int before = drawn;
            shown.fill(kGround);
            shown.bitmap.SetPixel(x, y, Gdiplus::Color(kGround + 1));
            draw(shown, MainPageText::CpuName, L"Name");
            const bool isInside = x < reach.x + reach.width && y >= reach.y && y < reach.y + reach.height;
            EXPECT_EQ(drawn, before + (isInside ? 1 : 0)) << x << ", " << y;
        }
    }
}

TEST_F(RememberedTexts, WithLineBreaksOrUnusualCharactersAreAlwaysDrawn) {
    for (const wchar_t* text : {L"Two\nlines", L"Two\rlines", L"Tab\t", L"\u00C5", L"\u4E2D", L"\x7F"}) {
        const int before = drawn;
        for (int i = 0; i < 2; ++i) {
            shown.fill(kGround);
            draw(shown, MainPageText::CpuName, text);
        }
        EXPECT_EQ(drawn, before + 2);
    }
}

TEST_F(RememberedTexts, OnAPageThatCannotBeLockedAreDrawnAndNotRemembered) {
    FailingGdiplus gdiplus;
    for (const char* function : {"GdipBitmapLockBits", "GdipBitmapUnlockBits"}) {
        for (const int call : {1, 2}) {
            texts = {};
            fresh.fill(kGround);
            drawFresh(fresh, MainPageText::Clock, L"4:03", kColour);
            shown.fill(kGround);
            gdiplus.failCall(call, function);
            draw(shown, MainPageText::Clock, L"4:03");
            EXPECT_TRUE(gdiplus.hasFailed()) << function;
            EXPECT_NE(shown.bitmap.GetLastStatus(), Gdiplus::Ok) << function;
            EXPECT_TRUE(samePixels(shown.pixels(), fresh.pixels())) << function;
            const int before = drawn;
            shown.fill(kGround);
            draw(shown, MainPageText::Clock, L"4:03");
            EXPECT_EQ(drawn, before + 1) << function << ", call " << call;
        }
    }
}

TEST_F(RememberedTexts, HaveAllOfTheirPixelsInTheirReachHoweverTallAndWide) {
    const auto expectInside = [this](MainPageText place, const std::wstring& text) {
        shown.fill(kGround);
        drawFresh(shown, place, text, kColour);
        const Panelix::PixelRect reach = reachOf(styleOf(place), text.size());
        const PagePixels pixels = shown.pixels();
        int inside = 0;
        int outside = 0;
        for (int y = 0; y < PagePixels::kHeight; ++y) {
            for (int x = 0; x < PagePixels::kWidth; ++x) {
                const bool isInside =
                    x >= reach.x && x < reach.x + reach.width && y >= reach.y && y < reach.y + reach.height;
                if (pixels.at(x, y) != kGround) {
                    ++(isInside ? inside : outside);
                }
            }
        }
        EXPECT_GT(inside, 0) << static_cast<int>(place) << ", " << static_cast<int>(text[0]);
        EXPECT_EQ(outside, 0) << static_cast<int>(place) << ", " << text.size() << " times "
                              << static_cast<int>(text[0]);
    };
    for (std::size_t i = 0; i < kMainPageTexts; ++i) {
        for (wchar_t letter = L'!'; letter <= L'~'; ++letter) {
            expectInside(static_cast<MainPageText>(i), std::wstring(1, letter));
        }
        for (const wchar_t letter : {L'@', L'W', L'M', L'%', L'Q', L'j', L'|', L'_', L'(', L'\u00B0'}) {
            for (const std::size_t count : {2U, 5U, 11U, 60U}) {
                expectInside(static_cast<MainPageText>(i), std::wstring(count, letter));
            }
        }
    }
}

}  // namespace
