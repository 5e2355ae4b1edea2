#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>

#include "pages/options_page.h"
#include "tests/pages/main_page_fixture.h"
#include "tests/support/failing_gdiplus.h"
#include "tests/support/import_override.h"

// When the pages paint, and when not: a page that was painted over shows whether it was painted again.

namespace {

using Panelix::LcdButton;

class Repaint : public MainPageOnKeyboard {
protected:
    /// Draws twice and tells whether the second drawing painted. Both within one second, as the clock shows
    /// itself: it is read before the first and after the second.
    bool paintsAgain(const std::function<void()>& change = [] {}) {
        for (;;) {
            const std::wstring clock = sampler.dateTimeText();
            draw();
            smear();
            const PagePixels smeared(*page->bitmap());
            page->takeChanged();
            change();
            const bool painted = !(draw() == smeared);
            EXPECT_EQ(page->takeChanged(), painted);
            if (clock == sampler.dateTimeText()) {
                return painted;
            }
        }
    }

    /// The first drawing has a failing call, the second none: it must paint, and the third must not. Each
    /// call fails once, or only some with `every`; `before` comes before the failure.
    void expectHealed(
        const std::string& function, const std::function<void()>& before = [] {}, int every = 1) {
        SCOPED_TRACE(function);
        FailingGdiplus gdiplus;
        for (int call = 1;; call += every) {
            before();
            sampler.unreadMail = 1 + call;
            gdiplus.failCall(call, function);
            page->Draw(app.canvas(), {});
            const bool failed = gdiplus.hasFailed();
            gdiplus.failCall(0);
            if (!failed) {
                EXPECT_GT(call, 1);
                return;
            }
            smear();
            drawAndCompare("after call " + std::to_string(call));
            EXPECT_FALSE(paintsAgain());
        }
    }
};

TEST_F(Repaint, WhatIsShownAlreadyIsNotPaintedAgain) {
    EXPECT_FALSE(paintsAgain());
    draw(down({LcdButton::Ok}));
    EXPECT_FALSE(paintsAgain()) << "nor is the picture";
    EXPECT_FALSE(paintsAgain([this] { sampler.dataReady = true; })) << "which shows no reading";
    draw(down({LcdButton::Ok}));
    EXPECT_FALSE(paintsAgain());
}

TEST_F(Repaint, EveryFigureThatChangesIsPainted) {
    // Each is a change however often it is made: a drawing that the clock disturbs is repeated.
    const std::function<void(SystemInfo&)> changes[] = {
        [](SystemInfo& info) { ++info.cpuLoad; },
        [](SystemInfo& info) { ++info.cpuTemperature; },
        [](SystemInfo& info) { info.cpuTempFahrenheit = !info.cpuTempFahrenheit; },
        [](SystemInfo& info) { info.cpuName += L"x"; },
        [](SystemInfo& info) { info.cpuClockText += L"x"; },
        [](SystemInfo& info) { info.cpuVid += 0.5F; },
        // Zeros of both signs are equal and look different.
        [](SystemInfo& info) { info.cpuVid = std::signbit(info.cpuVid) ? 0.0F : -0.0F; },
        [](SystemInfo& info) { info.cpuVid = std::signbit(info.cpuVid) ? 0.0F : -0.0F; },
        [](SystemInfo& info) { ++info.memoryLoad; },
        [](SystemInfo& info) { ++info.gpuStats.load; },
        [](SystemInfo& info) { ++info.gpuStats.temperature; },
        [](SystemInfo& info) { ++info.gpuStats.memoryLoad; },
        [](SystemInfo& info) { info.gpuStats.coreClock += 10; },
        [](SystemInfo& info) { info.gpuStats.memoryLoadValid = !info.gpuStats.memoryLoadValid; },
        [](SystemInfo& info) { info.gpuStats.temperatureValid = !info.gpuStats.temperatureValid; },
        [](SystemInfo& info) { info.gpuStats.coreClockValid = !info.gpuStats.coreClockValid; },
        [](SystemInfo& info) { info.gpuStats.loadValid = !info.gpuStats.loadValid; },
        [](SystemInfo& info) { info.gpuName += L"x"; },
        [](SystemInfo& info) { info.gpuAvailable = !info.gpuAvailable; },
        [](SystemInfo& info) { info.coreTempAvailable = !info.coreTempAvailable; },
        [](SystemInfo& info) { ++info.unreadMail; },
        [](SystemInfo& info) { ++info.speakerLeftVolume; },
        [](SystemInfo& info) { ++info.speakerRightVolume; },
        [](SystemInfo& info) { ++info.speakerMasterVolume; },
        [](SystemInfo& info) { info.speakerMuted = !info.speakerMuted; },
        [](SystemInfo& info) { info.microphoneMuted = !info.microphoneMuted; },
        [](SystemInfo& info) { info.gamepadBattery = info.gamepadBattery == 5 ? 4 : 5; },
    };
    int number = 0;
    for (const auto& change : changes) {
        EXPECT_TRUE(paintsAgain([&] { change(sampler); })) << number;
        ++number;
    }
}

TEST_F(Repaint, AReadingIsPaintedAlthoughItsFiguresAreTheSame) {
    EXPECT_TRUE(paintsAgain([this] { sampler.dataReady = true; }));
    draw(down({LcdButton::Ok}));
    EXPECT_FALSE(paintsAgain([this] { sampler.dataReady = true; })) << "no graph shows it";
    EXPECT_FALSE(sampler.dataReady);
}

TEST_F(Repaint, TheBlinkingIsPaintedWhileItIsSeenOnly) {
    const auto nextPhase = [this] {
        for (int update = 0; update < 9; ++update) {
            page->Update(true, {});
        }
        setOrdinaryFigures(sampler);
    };
    const auto nextPhaseOfAnEmptyBattery = [&] {
        nextPhase();
        sampler.gamepadBattery = 2;
    };
    nextPhase();
    EXPECT_FALSE(paintsAgain(nextPhase));
    nextPhaseOfAnEmptyBattery();
    EXPECT_TRUE(paintsAgain(nextPhaseOfAnEmptyBattery));
}

TEST_F(Repaint, TheSecondsOfTheClockArePainted) {
    draw();
    const std::wstring before = sampler.dateTimeText();
    while (sampler.dateTimeText() == before) {
        Sleep(5);
    }
    drawAndCompare("a second later");
}

TEST_F(Repaint, NewImagesArePainted) {
    EXPECT_TRUE(paintsAgain([this] { page->Init(app.canvas()); }));
}

TEST_F(Repaint, AnImageThatIsMissingIsTriedInEveryPass) {
    MainPage bare(&app, &sampler, nullptr);
    bare.Draw(app.canvas(), {});
    EXPECT_TRUE(bare.takeChanged());
    bare.Draw(app.canvas(), {});
    EXPECT_TRUE(bare.takeChanged());
}

TEST_F(Repaint, ADrawingCallThatFailedIsMadeUpForInTheNextPass) {
    sampler.gpuStats.memoryLoadValid = false;
    for (const char* function : {"GdipDrawString",
                                 "GdipDrawImageI",
                                 "GdipBitmapLockBits",
                                 "GdipBitmapUnlockBits",
                                 "GdipCreateStringFormat"}) {
        expectHealed(function);
    }
}

TEST_F(Repaint, AFailureInTheSecondPaintingWhichPreparesTheGraphsIsMadeUpForInTheNextPass) {
    const auto paintOnce = [this] {
        page->Init(app.canvas());
        draw();
    };
    expectHealed("GdipCreateBitmapFromScan0", paintOnce);
    expectHealed("GdipGetImageGraphicsContext", paintOnce);
    // All are alike.
    expectHealed("GdipDrawLineI", paintOnce, 97);
}

TEST_F(Repaint, AFailureInTheFirstPaintingWithItsImagesIsMadeUpForInTheNextPass) {
    const auto forgetAll = [this] { page->Init(app.canvas()); };
    for (const char* function : {"GdipDrawImageI",
                                 "GdipFillRectangleI",
                                 "GdipBitmapLockBits",
                                 "GdipBitmapUnlockBits",
                                 "GdipDrawString"}) {
        expectHealed(function, forgetAll);
    }
}

TEST_F(Repaint, AnImageThatHasChangedSinceIsShownAfterInit) {
    draw();
    Gdiplus::Bitmap* const background = app.canvas()->getImage(108, 0);
    Gdiplus::Color before;
    ASSERT_EQ(background->GetPixel(315, 235, &before), Gdiplus::Ok);
    background->SetPixel(315, 235, Gdiplus::Color(before.GetValue() ^ 0xFFFFFF));
    page->Init(app.canvas());
    drawAndCompare("another pixel in the background");
}

using DrawString = decltype(Gdiplus::DllExports::GdipDrawString);
DrawString* drawString = nullptr;

/// As with another smoothing of fonts, the same call gives other pixels.
Gdiplus::GpStatus WINGDIPAPI drawBelow(Gdiplus::GpGraphics* graphics,
                                       GDIPCONST WCHAR* text,
                                       INT length,
                                       GDIPCONST Gdiplus::GpFont* font,
                                       GDIPCONST Gdiplus::RectF* box,
                                       GDIPCONST Gdiplus::GpStringFormat* format,
                                       GDIPCONST Gdiplus::GpBrush* brush) {
    Gdiplus::RectF below = *box;
    below.Y += 1.0F;
    return drawString(graphics, text, length, font, &below, format, brush);
}

TEST_F(Repaint, TextsThatTheSystemDrawsOtherwiseFromNowOnAreShownWithinAMinute) {
    draw();
    draw();
    const ImportOverride otherSmoothing("gdiplus.dll", "GdipDrawString", drawBelow);
    drawString = otherSmoothing.original<DrawString>();
    for (int pass = 0; pass < OnceAMinute::kPasses; ++pass) {
        page->Update(true, {});
    }
    setOrdinaryFigures(sampler);
    sampler.dataReady = false;
    drawAndCompare("drawn otherwise");
}

TEST_F(Repaint, AListIsPaintedOnceAMinuteAlthoughItShowsTheSame) {
    OptionsPage options(&app);
    options.Init(app.canvas());
    for (const int passes : {1, OnceAMinute::kPasses - 1, OnceAMinute::kPasses}) {
        for (int pass = 1; pass <= passes; ++pass) {
            options.Draw(app.canvas(), {});
            EXPECT_EQ(options.takeChanged(), pass == passes) << "pass " << pass << " of " << passes;
        }
    }
}

TEST_F(Repaint, AListIsPaintedWhenItsRowsChangeOrItsPaintingFailed) {
    OptionsPage options(&app);
    options.Init(app.canvas());
    const auto paints = [&](const Panelix::LcdButtons& buttons = {}) {
        options.takeChanged();
        options.Draw(app.canvas(), buttons);
        return options.takeChanged();
    };
    EXPECT_TRUE(paints());
    EXPECT_FALSE(paints());
    EXPECT_FALSE(paints(down({LcdButton::Up}))) << "the cursor is at the top already";
    EXPECT_TRUE(paints(down({LcdButton::Down})));
    EXPECT_FALSE(paints());
    options.OnActivate();
    EXPECT_TRUE(paints());
    options.Init(app.canvas());
    EXPECT_TRUE(paints());

    FailingGdiplus gdiplus;
    bool goesDown = true;
    for (const char* function : {"GdipCreateStringFormat", "GdipFillPolygonI", "GdipDrawString"}) {
        gdiplus.failCall(1, function);
        EXPECT_TRUE(paints(down({goesDown ? LcdButton::Down : LcdButton::Up})));
        EXPECT_TRUE(gdiplus.hasFailed()) << function;
        gdiplus.failCall(0);
        EXPECT_TRUE(paints()) << "made up for, " << function;
        EXPECT_FALSE(paints());
        goesDown = !goesDown;
    }
}

}  // namespace
