#include <windows.h>

#include <gdiplus.h>
#include <psapi.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <list>
#include <memory>
#include <string>

#include "framework/core/com_apartment.h"
#include "framework/drawing/blend.h"
#include "framework/drawing/canvas.h"
#include "framework/drawing/history_graph.h"
#include "framework/drawing/lcd_frame.h"
#include "framework/drawing/surface_settings.h"
#include "tests/framework/drawing/drawing_fixture.h"
#include "tests/framework/drawing/test_resources.h"

using Panelix::Canvas;
using Panelix::kLcdFrameBytes;
using Panelix::LcdFrame;
using Panelix::TransitionKind;

namespace {

/// More than the 65,536 GDI handles that a process may have: a handle lost each time ends the run early.
constexpr int kBeyondAllHandles = 70'000;

/// Converting is all that takes handles of GDI. In the long form everything else goes as far.
constexpr int kPasses = 4'000;
constexpr int kWarmUpPasses = 1'000;
constexpr std::size_t kAllowedGrowthBytes = std::size_t{256} * 1024;
constexpr int kSlidePasses = 10;
constexpr int kPassesPerSlide = 100;

/// The process's own memory that is in use. Windows calls the same figure PrivateUsage, which Wine leaves at
/// 0.
std::size_t privateBytes() {
    PROCESS_MEMORY_COUNTERS counters{};
    EXPECT_NE(GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)), FALSE);
    return counters.PagefileUsage;
}

/// Whether ./test.sh was told to run the long forms of tests.
bool inLongForm() {
    return GetEnvironmentVariableW(L"KELVARO_ALL", nullptr, 0) != 0;
}

/// What a page does in a pass, but for the full-screen images: a blend, small images, texts and graphs. Under
/// Wine a full-screen image takes about a millisecond, and composing already draws one in every pass.
class BusyPage {
public:
    explicit BusyPage(Canvas& canvas)
        : glyph_(canvas.getImage(TEST_BITMAP_GLYPH, 0)),
          overlay_(canvas.getImage(TEST_PNG_TWELVE_PIXELS, 1)) {
        Panelix::applySurfaceSettings(screen_.graphics);
        screen_.fill(0xFF304050);
        Gdiplus::Graphics(&shade_).Clear(Gdiplus::Color(0xFFC0A080));
    }

    Gdiplus::Bitmap* draw(int pass) {
        Gdiplus::Graphics& graphics = screen_.graphics;
        graphics.DrawImage(glyph_, pass % 200, 10);
        Panelix::blendImages(screen_.bitmap, shade_, Panelix::BlendMode::Multiply);
        graphics.DrawImage(overlay_, 5, 5);
        drawText(std::to_wstring(pass));
        drawGraph(pass);
        return &screen_.bitmap;
    }

private:
    void drawText(const std::wstring& text) {
        const Gdiplus::FontFamily family(L"Arial");
        const Gdiplus::Font font(&family, 20.0F, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
        const Gdiplus::SolidBrush brush{Gdiplus::Color(0xFFFFFFFF)};
        const Gdiplus::StringFormat format;
        screen_.graphics.DrawString(
            text.c_str(), -1, &font, Gdiplus::RectF(10.0F, 200.0F, 200.0F, 30.0F), &format, &brush);
    }

    void drawGraph(int pass) {
        const Gdiplus::SolidBrush area{Gdiplus::Color(0x64FF0000)};
        const Gdiplus::SolidBrush label{Gdiplus::Color(0xFFFFFFFF)};
        const Gdiplus::Pen line{Gdiplus::Color(0xFF00FF00)};
        Panelix::drawHistoryGraph(screen_.graphics,
                                  {.label = L"CPU " + std::to_wstring(pass % 100) + L" %",
                                   .labelBrush = &label,
                                   .areaBrush = &area,
                                   .barBrush = &area,
                                   .linePen = &line,
                                   .x = 20,
                                   .y = 40,
                                   .width = 30,
                                   .barGap = 2,
                                   .barWidth = 8,
                                   .value = pass % 101,
                                   .barValue = 50},
                                  history_,
                                  pass % 5 == 0);
    }

    Screen screen_;
    Gdiplus::Bitmap shade_{Panelix::kLcdWidth, Panelix::kLcdHeight, PixelFormat32bppPARGB};
    Gdiplus::Bitmap* glyph_;
    Gdiplus::Bitmap* overlay_;
    std::list<std::int32_t> history_;
};

}  // namespace

TEST(DrawingSoak, MemoryCounterSeesEightMebibytes) {
    constexpr std::size_t kBlock = std::size_t{8} * 1024 * 1024;
    const std::size_t before = privateBytes();
    const std::unique_ptr<volatile std::byte[]> block(new std::byte[kBlock]);
    for (std::size_t offset = 0; offset < kBlock; offset += 4096) {
        block[offset] = std::byte{1};
    }
    EXPECT_GE(privateBytes(), before + kBlock - kBlock / 8);
}

TEST(DrawingSoak, ConvertingGivesEveryHandleBack) {
    const Panelix::ComApartment com;
    Canvas canvas;
    Screen screen;
    screen.fill(0xFF304050);
    canvas.composePages(&screen.bitmap, nullptr, 0.0F, TransitionKind::SlideFromBottom);
    const Picture first = readFrame(canvas.toLcdFrame().get());
    for (int frame = 0; frame < kBeyondAllHandles; ++frame) {
        ASSERT_NO_THROW(canvas.toLcdFrame()) << "after " << frame << " frames";
    }
    EXPECT_TRUE(samePicture(readFrame(canvas.toLcdFrame().get()), first));
}

TEST(DrawingSoak, PassesLeaveNothingBehind) {
    const Panelix::ComApartment com;
    Canvas canvas;
    BusyPage first(canvas);
    BusyPage second(canvas);
    const int passesInAll = inLongForm() ? kBeyondAllHandles : kPasses;
    std::size_t settled = 0;
    std::uint64_t sum = 0;
    for (int pass = 0; pass < passesInAll; ++pass) {
        Gdiplus::Bitmap* current = first.draw(pass);
        const int slidePass = pass % kPassesPerSlide;
        if (slidePass < kSlidePasses) {
            canvas.composePages(current,
                                second.draw(pass),
                                static_cast<float>(slidePass + 1) / kSlidePasses,
                                static_cast<TransitionKind>(pass / kPassesPerSlide % 4));
        } else {
            canvas.composePages(current, nullptr, 0.0F, TransitionKind::SlideFromBottom);
        }
        const LcdFrame frame = canvas.toLcdFrame();
        sum += frame[kLcdFrameBytes / 2];
        const int passes = pass + 1;
        if (passes == kWarmUpPasses) {
            settled = privateBytes();
        } else if (passes % kWarmUpPasses == 0) {
            // Looked at all the way: a leak should fail the test, not the machine.
            ASSERT_LE(privateBytes(), settled + kAllowedGrowthBytes) << "after " << passes << " passes";
        }
    }
    EXPECT_GT(sum, 0U);
    std::printf("private bytes: %zu after %d passes, %zu after %d\n",
                settled,
                kWarmUpPasses,
                privateBytes(),
                passesInAll);
}
