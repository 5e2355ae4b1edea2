#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>

#include "pages/options_page.h"
#include "tests/pages/main_page_fixture.h"
#include "tests/support/import_override.h"

// When the pages paint, and when not: a page that was painted over shows whether it was painted again.

namespace {

using Panelix::LcdButton;

/// The call of the overridden function, counted from 1, that fails; 0 for none.
int failingCall = 0;
int callCount = 0;

template <auto& original, typename... Arguments>
Gdiplus::GpStatus WINGDIPAPI failOnce(Arguments... arguments) {
    return ++callCount == failingCall ? Gdiplus::OutOfMemory : original(arguments...);
}

using UnlockBits = decltype(Gdiplus::DllExports::GdipBitmapUnlockBits);
UnlockBits* unlockBits = nullptr;

/// Unlocks and says that it failed: a bitmap that stays locked could never be painted again.
template <>
Gdiplus::GpStatus WINGDIPAPI failOnce<unlockBits>(Gdiplus::GpBitmap* bitmap, Gdiplus::BitmapData* data) {
    const Gdiplus::GpStatus status = unlockBits(bitmap, data);
    return ++callCount == failingCall ? Gdiplus::OutOfMemory : status;
}

using DrawString = decltype(Gdiplus::DllExports::GdipDrawString);
using FillRectangle = decltype(Gdiplus::DllExports::GdipFillRectangleI);
using LockBits = decltype(Gdiplus::DllExports::GdipBitmapLockBits);
using DrawImage = decltype(Gdiplus::DllExports::GdipDrawImageI);
using CreateFormat = decltype(Gdiplus::DllExports::GdipCreateStringFormat);
using FillPolygon = decltype(Gdiplus::DllExports::GdipFillPolygonI);

DrawString* drawString = nullptr;
FillRectangle* fillRectangle = nullptr;
LockBits* lockBits = nullptr;
DrawImage* drawImage = nullptr;
CreateFormat* createFormat = nullptr;
FillPolygon* fillPolygon = nullptr;

/// Makes one call of one GDI+ function fail.
template <typename Function>
struct OneFailure;

template <typename... Arguments>
struct OneFailure<Gdiplus::GpStatus(Arguments...)> {
    using Function = Gdiplus::GpStatus(Arguments...);

    template <auto& original>
    static ImportOverride make(const char* name) {
        return ImportOverride("gdiplus.dll", name, failOnce<original, Arguments...>);
    }
};

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
    /// call fails once, or with `every` only some of them; `before` comes before the failure.
    template <typename Function, auto& original>
    void expectHealed(
        const char* name, const std::function<void()>& before = [] {}, int every = 1) {
        SCOPED_TRACE(name);
        const ImportOverride failing = OneFailure<Function>::template make<original>(name);
        original = failing.original<Function>();
        for (int call = 1;; call += every) {
            before();
            sampler.unreadMail = 1 + call;
            callCount = 0;
            failingCall = call;
            page->Draw(app.canvas(), {});
            const bool failed = callCount >= failingCall;
            failingCall = 0;
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
    expectHealed<DrawString, drawString>("GdipDrawString");
    expectHealed<FillRectangle, fillRectangle>("GdipFillRectangleI");
    expectHealed<DrawImage, drawImage>("GdipDrawImageI");
    expectHealed<LockBits, lockBits>("GdipBitmapLockBits");
    expectHealed<UnlockBits, unlockBits>("GdipBitmapUnlockBits");
    expectHealed<CreateFormat, createFormat>("GdipCreateStringFormat");
}

TEST_F(Repaint, AFailureInTheFirstPaintingWithItsImagesIsMadeUpForInTheNextPass) {
    const auto forgetAll = [this] { page->Init(app.canvas()); };
    expectHealed<DrawImage, drawImage>("GdipDrawImageI", forgetAll);
    expectHealed<LockBits, lockBits>("GdipBitmapLockBits", forgetAll);
    expectHealed<UnlockBits, unlockBits>("GdipBitmapUnlockBits", forgetAll);
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

    const ImportOverride polygon = OneFailure<FillPolygon>::make<fillPolygon>("GdipFillPolygonI");
    fillPolygon = polygon.original<FillPolygon>();
    const ImportOverride format = OneFailure<CreateFormat>::make<createFormat>("GdipCreateStringFormat");
    createFormat = format.original<CreateFormat>();
    // The two formats, then the arrow.
    for (int call = 1; call <= 3; ++call) {
        callCount = 0;
        failingCall = call;
        EXPECT_TRUE(paints(down({call % 2 == 1 ? LcdButton::Down : LcdButton::Up})));
        EXPECT_GE(callCount, call);
        EXPECT_TRUE(paints()) << "made up for, call " << call;
        EXPECT_FALSE(paints());
    }
}

}  // namespace
