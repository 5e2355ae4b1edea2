#include "framework/core/app.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>
#include <stdexcept>

#include "framework/core/lcd_sdk_abi.h"
#include "framework/drawing/slide.h"
#include "framework/drawing/sys_exception.h"
#include "tests/framework/core/lcd_fixture.h"
#include "tests/framework/core/probe_app.h"
#include "tests/support/gdiplus_ledger.h"
#include "tests/support/import_override.h"
#include "tests/support/import_recorder.h"
#include "tests/support/virtual_time.h"

namespace {

using namespace std::chrono_literals;
using Panelix::LcdButton;
using Panelix::LcdButtons;
using Panelix::Page;
using Panelix::SysException;
using Panelix::TransitionKind;
using Standins::G19Frame;
using Standins::LcdCall;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
namespace LcdSdk = Panelix::LcdSdk;

constexpr Gdiplus::ARGB kRed = 0xFFFF0000;
constexpr Gdiplus::ARGB kBlue = 0xFF0000FF;

Gdiplus::ARGB pixel(const G19Frame& frame, int x, int y) {
    const std::uint8_t* p =
        frame.pixels.data() + (static_cast<std::size_t>(y) * 320 + static_cast<std::size_t>(x)) * 4;
    return 0xFF000000U | static_cast<unsigned>(p[2]) << 16 | static_cast<unsigned>(p[1]) << 8 | p[0];
}

/// Column at which the red page's picture begins to be the blue page's, from the left; 320 for none.
int firstBlueColumn(const G19Frame& frame) {
    int x = 0;
    while (x < 320 && pixel(frame, x, 120) != kBlue) {
        ++x;
    }
    return x;
}

/// An application on the virtual keyboard with a red main page and a blue other page. The main page ends the
/// program after `passes` passes.
class AppWithKeyboard : public WithKeyboard {
protected:
    AppWithKeyboard() {
        auto mainPage = std::make_unique<ProbePage>("main", &*app, &log, Gdiplus::Color(kRed));
        auto otherPage = std::make_unique<ProbePage>("other", &*app, &log, Gdiplus::Color(kBlue));
        main = mainPage.get();
        other = otherPage.get();
        app->SetMainPage(std::move(mainPage));
        app->AddPage(std::move(otherPage), false);
        main->onUpdate = [this](const LcdButtons& buttons) {
            ++pass;
            if (onPass) {
                onPass(pass, buttons);
            }
            return pass < passes;
        };
    }

    void run(int count) {
        passes = count;
        app->Run();
    }

    void expectTheOldPageWithoutAMainPage() {
        EXPECT_EQ(app->GetMainPage(), nullptr);
        EXPECT_EQ(app->FindPage(L"main"), main);
        run(1);
        ASSERT_EQ(keyboard.frameCount(), 1U);
        EXPECT_EQ(pixel(*keyboard.frame(1), 160, 120), kRed);
    }

    std::vector<G19Frame> frames() const {
        std::vector<G19Frame> all;
        for (std::uint64_t i = 1; i <= keyboard.frameCount(); ++i) {
            all.push_back(*keyboard.frame(i));
        }
        return all;
    }

    CallLog log;
    std::optional<ProbeApp> app{std::in_place, 20};
    ProbePage* main;
    ProbePage* other;
    int pass = 0;
    int passes = 1;
    std::function<void(int, const LcdButtons&)> onPass;
};

TEST_F(AppWithKeyboard, HasNoWindowAndIsTheProcessesApplication) {
    EXPECT_EQ(app->window(), nullptr);
    EXPECT_EQ(Panelix::App::current(), &*app);
    EXPECT_EQ(app->name(), L"Probe");
    EXPECT_EQ(app->instance(), GetModuleHandleW(nullptr));
    app.reset();
    EXPECT_EQ(Panelix::App::current(), nullptr);
}

TEST_F(AppWithKeyboard, InitialisesTheMainPageTwiceAndTheOthersOnceInListOrder) {
    run(1);
    EXPECT_THAT(log,
                ElementsAre("main.Init", "main.OnActivate", "main.Init", "other.Init", "main.Update active"));
}

TEST_F(AppWithKeyboard, TicksEveryPageAndDrawsTheActiveOneInListOrder) {
    app->AddPage(std::make_unique<ProbePage>("first", &*app, &log), true);
    run(2);
    log.erase(log.begin(), std::find(log.begin(), log.end(), "first.Update"));
    EXPECT_THAT(log,
                ElementsAre("first.Update",
                            "main.Update active",
                            "main.Draw",
                            "other.Update",
                            "first.Update",
                            "main.Update active"));
}

TEST_F(AppWithKeyboard, AnUpdateThatReturnsFalseEndsTheProgramAfterThePass) {
    run(3);
    EXPECT_EQ(keyboard.frameCount(), 3U);
    EXPECT_EQ(keyboard.callCount(LcdCall::Update), 3U);
    // The last pass stopped at the main page: the other one had two passes only.
    EXPECT_EQ(std::count(log.begin(), log.end(), "other.Update"), 2);
    EXPECT_EQ(std::count(log.begin(), log.end(), "main.Draw"), 2);
}

TEST_F(AppWithKeyboard, TheLastPassIsPacedLikeTheOthers) {
    constexpr int kPeriodMs = 200;
    app.emplace(kPeriodMs);
    auto page = std::make_unique<ProbePage>("main", &*app, &log);
    page->onUpdate = [](const LcdButtons&) { return false; };
    app->SetMainPage(std::move(page));
    const auto start = std::chrono::steady_clock::now();
    app->Run();
    // The loop counts in whole milliseconds.
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(kPeriodMs - 1));
    EXPECT_EQ(keyboard.frameCount(), 1U);
}

TEST_F(AppWithKeyboard, EveryPassShowsTheActivePageOnTheLcd) {
    main->onDraw = [](const LcdButtons&) {};
    run(2);
    for (const G19Frame& frame : frames()) {
        EXPECT_EQ(pixel(frame, 0, 0), kRed);
        EXPECT_EQ(pixel(frame, 319, 239), kRed);
    }
}

/// What was converted into LCD frames since the ledger was made.
int conversions(const GdiplusLedger& ledger) {
    return ledger.taken()["GDI bitmap"];
}

TEST_F(AppWithKeyboard, WithoutAChangeTheFrameIsHandedOverAgainAndNothingIsComposedOrConverted) {
    const GdiplusLedger ledger;
    run(5);
    EXPECT_EQ(conversions(ledger), 1);
    EXPECT_EQ(keyboard.frameCount(), 5U);
    EXPECT_EQ(keyboard.callCount(LcdCall::ColorSetBackground), 5U);
    EXPECT_EQ(keyboard.callCount(LcdCall::Update), 5U);
    for (const G19Frame& frame : frames()) {
        EXPECT_EQ(pixel(frame, 160, 120), kRed);
        EXPECT_EQ(frame.checksum, frames().front().checksum);
    }
}

TEST_F(AppWithKeyboard, WhatThePagePaintsIsShownInItsOwnPassAndOnce) {
    onPass = [this](int number, const LcdButtons&) {
        if (number == 3) {
            main->paint(Gdiplus::Color(kBlue));
        }
    };
    const GdiplusLedger ledger;
    run(5);
    EXPECT_EQ(conversions(ledger), 2);
    const auto shown = frames();
    ASSERT_EQ(shown.size(), 5U);
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(pixel(shown[i], 160, 120), i < 2 ? kRed : kBlue) << "frame " << i;
    }
}

TEST_F(AppWithKeyboard, WhatIsDrawnWithoutBeginningAPaintingIsNotShown) {
    onPass = [this](int number, const LcdButtons&) {
        if (number == 3) {
            Gdiplus::Graphics(main->bitmap()).Clear(Gdiplus::Color(kBlue));
        }
    };
    run(5);
    EXPECT_EQ(pixel(frames().back(), 160, 120), kRed);
}

TEST_F(AppWithKeyboard, EveryPassOfASlideIsComposedAndTheOneAfterIt) {
    app->SwitchPage(other, TransitionKind::SlideFromRight);
    const GdiplusLedger ledger;
    run(15);
    EXPECT_EQ(conversions(ledger), 11);
    EXPECT_EQ(firstBlueColumn(frames().back()), 0);
}

TEST_F(AppWithKeyboard, WhatAPageHasPaintedWhileItWasNotShownIsShownOnceItIs) {
    onPass = [this](int number, const LcdButtons&) {
        if (number == 2) {
            other->paint(Gdiplus::Color(0xFF00FF00));
        } else if (number == 4) {
            app->SwitchPage(other, TransitionKind::SlideFromTop);
        }
    };
    run(20);
    EXPECT_EQ(pixel(frames().back(), 160, 120), 0xFF00FF00U);
}

using DrawImage = decltype(Gdiplus::DllExports::GdipDrawImageI);
DrawImage* drawImage = nullptr;
int refusedImages = 0;

Gdiplus::GpStatus WINGDIPAPI refuseImages(Gdiplus::GpGraphics* graphics,
                                          Gdiplus::GpImage* image,
                                          INT x,
                                          INT y) {
    if (refusedImages > 0) {
        --refusedImages;
        return Gdiplus::OutOfMemory;
    }
    return drawImage(graphics, image, x, y);
}

using LockBits = decltype(Gdiplus::DllExports::GdipBitmapLockBits);
LockBits* lockBits = nullptr;

/// A page that cannot be copied is drawn: as long as no drawing works, copying does not either.
Gdiplus::GpStatus WINGDIPAPI refuseLocks(Gdiplus::GpBitmap* bitmap,
                                         GDIPCONST Gdiplus::GpRect* rect,
                                         UINT mode,
                                         Gdiplus::PixelFormat format,
                                         Gdiplus::BitmapData* data) {
    return refusedImages > 0 ? Gdiplus::OutOfMemory : lockBits(bitmap, rect, mode, format, data);
}

TEST_F(AppWithKeyboard, ACompositionThatFailedIsRepeatedInTheNextPass) {
    const ImportOverride refusing("gdiplus.dll", "GdipDrawImageI", refuseImages);
    drawImage = refusing.original<DrawImage>();
    const ImportOverride refusingLocks("gdiplus.dll", "GdipBitmapLockBits", refuseLocks);
    lockBits = refusingLocks.original<LockBits>();
    refusedImages = 2;
    run(5);
    const auto shown = frames();
    ASSERT_EQ(shown.size(), 5U);
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(pixel(shown[i], 160, 120), i < 2 ? Gdiplus::ARGB{0xFF000000} : kRed) << "frame " << i;
    }
}

Gdiplus::GpStatus WINGDIPAPI refuseBitmap(Gdiplus::GpBitmap*, HBITMAP*, Gdiplus::ARGB) {
    return Gdiplus::OutOfMemory;
}

TEST_F(AppWithKeyboard, AfterAConversionThatFailedTheNextRunConverts) {
    {
        const ImportOverride refusing("gdiplus.dll", "GdipCreateHBITMAPFromBitmap", refuseBitmap);
        EXPECT_THROW(run(5), SysException);
    }
    EXPECT_EQ(keyboard.frameCount(), 0U);
    pass = 0;
    run(2);
    ASSERT_EQ(keyboard.frameCount(), 2U);
    EXPECT_EQ(pixel(*keyboard.frame(1), 160, 120), kRed);
}

using SetBackground = bool(unsigned char*);
SetBackground* setBackground = nullptr;
decltype(GetProcAddress)* getProcAddress = nullptr;

/// A library that writes into the frames that it is given.
bool scribble(unsigned char* frame) {
    const bool result = setBackground(frame);
    std::fill_n(frame, Panelix::kLcdFrameBytes, static_cast<unsigned char>(0x55));
    return result;
}

FARPROC WINAPI findScribble(HMODULE module, LPCSTR name) {
    const FARPROC found = getProcAddress(module, name);
    if (std::string(name) != "LogiLcdColorSetBackground") {
        return found;
    }
    setBackground = reinterpret_cast<SetBackground*>(reinterpret_cast<void*>(found));
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(scribble));
}

TEST_F(AppWithKeyboard, ALibraryThatWritesIntoAFrameDoesNotSpoilTheNextOnes) {
    const ImportOverride lookup("kernel32.dll", "GetProcAddress", findScribble);
    getProcAddress = lookup.original<decltype(GetProcAddress)>();
    app.reset();
    app.emplace(20);
    auto page = std::make_unique<ProbePage>("main", &*app, &log, Gdiplus::Color(kRed));
    page->onUpdate = [this](const LcdButtons&) { return ++pass < 4; };
    app->SetMainPage(std::move(page));
    app->Run();
    ASSERT_NE(setBackground, nullptr);
    EXPECT_EQ(keyboard.frameCount(), 4U);
    for (const G19Frame& frame : frames()) {
        EXPECT_EQ(pixel(frame, 160, 120), kRed);
    }
}

TEST_F(AppWithKeyboard, FindsPagesByTheirExactName) {
    EXPECT_EQ(app->FindPage(L"main"), main);
    EXPECT_EQ(app->FindPage(L"other"), other);
    EXPECT_EQ(app->FindPage(L"Main"), nullptr);
    EXPECT_EQ(app->FindPage(L"mai"), nullptr);
    EXPECT_EQ(app->FindPage(L""), nullptr);
    EXPECT_EQ(app->GetMainPage(), main);
}

TEST_F(AppWithKeyboard, OfTwoPagesOfOneNameTheFirstInTheListIsFound) {
    auto twin = std::make_unique<ProbePage>("other", &*app, &log);
    const Page* front = twin.get();
    app->AddPage(std::move(twin), true);
    EXPECT_EQ(app->FindPage(L"other"), front);
}

TEST_F(AppWithKeyboard, PagesAfterTheOneThatSwitchedSeeNoPressAndTheNewState) {
    std::vector<bool> pressSeen;
    onPass = [this](int number, const LcdButtons& buttons) {
        if (buttons.isPressed(LcdButton::Menu)) {
            app->SwitchPage(other, TransitionKind::SlideFromBottom);
            EXPECT_EQ(number, 1);
        }
    };
    other->onUpdate = [&](const LcdButtons& buttons) {
        pressSeen.push_back(buttons.isPressed(LcdButton::Menu));
        EXPECT_TRUE(pressSeen.size() > 1 || buttons.isHeld(LcdButton::Menu));
        return true;
    };
    keyboard.setHeldButtons(LcdSdk::kButtonMenu);
    run(3);
    EXPECT_THAT(pressSeen, ElementsAre(false, false));
    EXPECT_THAT(log, Not(Contains("other.Update")));
    EXPECT_THAT(log, Contains("other.Update active"));
}

TEST_F(AppWithKeyboard, ASwitchDeactivatesTheOldPageBeforeItActivatesTheNewOne) {
    log.clear();
    app->SwitchPage(other, TransitionKind::SlideFromLeft);
    EXPECT_THAT(log, ElementsAre("main.OnDeactivate", "other.OnActivate"));
}

TEST_F(AppWithKeyboard, ASwitchToNoPageDoesNothing) {
    log.clear();
    app->SwitchPage(nullptr, TransitionKind::SlideFromLeft);
    EXPECT_TRUE(log.empty());
    run(3);
    for (const G19Frame& frame : frames()) {
        EXPECT_EQ(frame.checksum, frames().front().checksum);
    }
}

TEST_F(WithKeyboard, ASwitchBeforeAMainPageIsSetDoesNothing) {
    ProbeApp app;
    CallLog log;
    auto page = std::make_unique<ProbePage>("other", &app, &log);
    ProbePage* const other = page.get();
    app.AddPage(std::move(page), false);
    app.SwitchPage(other, TransitionKind::SlideFromLeft);
    EXPECT_TRUE(log.empty());
    EXPECT_THROW(app.Run(), SysException) << "there is still no active page";
}

TEST_F(AppWithKeyboard, ASwitchToTheActivePageSlidesItOverItself) {
    app->SwitchPage(main, TransitionKind::SlideFromLeft);
    run(12);
    EXPECT_THAT(log, Contains("main.OnDeactivate"));
    for (const G19Frame& frame : frames()) {
        EXPECT_EQ(pixel(frame, 160, 120), kRed);
    }
}

TEST_F(AppWithKeyboard, ASlideHasTenFramesFromOneTenthToItsEnd) {
    app->SwitchPage(other, TransitionKind::SlideFromRight);
    run(12);
    const auto shown = frames();
    ASSERT_EQ(shown.size(), 12U);
    float progress = 0.0F;
    for (std::size_t i = 0; i < 10; ++i) {
        progress = std::min(progress + 0.1F, 1.0F);
        const auto offsets = Panelix::slideOffsets(progress, TransitionKind::SlideFromRight);
        EXPECT_EQ(firstBlueColumn(shown[i]), offsets.currentX) << "frame " << i;
    }
    EXPECT_EQ(firstBlueColumn(shown[9]), 0);
    EXPECT_EQ(shown[10].checksum, shown[9].checksum);
    EXPECT_GT(firstBlueColumn(shown[0]), 280);
}

TEST_F(AppWithKeyboard, SwitchingBackInTheMiddleOfASlideContinuesFromTheMirroredPlace) {
    onPass = [this](int number, const LcdButtons&) {
        if (number == 4) {
            app->SwitchPage(main, TransitionKind::SlideFromLeft);
        }
    };
    app->SwitchPage(other, TransitionKind::SlideFromRight);
    run(9);
    const auto shown = frames();
    ASSERT_EQ(shown.size(), 9U);
    // The third frame stands at 0.3; the slide back starts at 0.7 and shows 0.8 first.
    float progress = 1.0F - (0.1F + 0.1F + 0.1F);
    for (std::size_t i = 3; i < 6; ++i) {
        progress = std::min(progress + 0.1F, 1.0F);
        const auto offsets = Panelix::slideOffsets(progress, TransitionKind::SlideFromLeft);
        EXPECT_EQ(firstBlueColumn(shown[i]), offsets.previousX) << "frame " << i;
    }
    EXPECT_GT(firstBlueColumn(shown[3]), firstBlueColumn(shown[2]));
    EXPECT_LT(firstBlueColumn(shown[3]), 320);
    EXPECT_EQ(firstBlueColumn(shown[8]), 320);
}

TEST_F(AppWithKeyboard, ALongPassIsFollowedByNoWaitUnlessSomethingModalRanInIt) {
    for (const bool modal : {false, true}) {
        app.emplace(60);
        auto page = std::make_unique<ProbePage>("main", &*app, &log);
        ProbePage* only = page.get();
        int left = 6;
        only->onDraw = [&](const LcdButtons&) {
            Sleep(100);
            if (modal) {
                app->requestFullWait();
            }
        };
        only->onUpdate = [&left](const LcdButtons&) { return --left > 0; };
        app->SetMainPage(std::move(page));
        const std::uint64_t first = keyboard.frameCount() + 1;
        app->Run();
        double shortestMs = 1e9;
        for (std::uint64_t i = first; i + 2 <= keyboard.frameCount(); ++i) {
            const auto us = keyboard.frame(i + 1)->timeUs - keyboard.frame(i)->timeUs;
            shortestMs = std::min(shortestMs, static_cast<double>(us) / 1000.0);
        }
        if (modal) {
            EXPECT_GE(shortestMs, 158.0);
        } else {
            EXPECT_GE(shortestMs, 99.0);
            EXPECT_LT(shortestMs, 158.0);
        }
    }
}

/// The same with time in the test's hands and a period of 66 ms.
class AppInVirtualTime : public AppWithKeyboard {
protected:
    AppInVirtualTime() {
        app.emplace(66);
        auto page = std::make_unique<ProbePage>("main", &*app, &log);
        main = page.get();
        main->onUpdate = [this](const LcdButtons&) {
            ++pass;
            if (onPass) {
                onPass(pass, {});
            }
            return pass < passes;
        };
        app->SetMainPage(std::move(page));
    }

    VirtualTime time;
};

TEST_F(AppInVirtualTime, PassesAreFastDuringASlideOnly) {
    onPass = [this](int, const LcdButtons&) { time.pass(1ms); };
    app->SwitchPage(main, TransitionKind::SlideFromTop);
    run(12);
    // The tenth pass of the slide ends it and waits out the whole period.
    std::vector<double> expected(9, 15.0);
    expected.insert(expected.end(), 3, 65.0);
    EXPECT_EQ(time.sleptMs, expected);
}

TEST_F(AppInVirtualTime, WhatIsModalMakesTheWaitOfItsOwnPassFullAndOfNoOther) {
    onPass = [this](int number, const LcdButtons&) {
        // Passes 2 and 4 are longer than the period, and pass 2 was modal.
        time.pass(number == 2 || number == 4 ? 10s : 6ms);
        if (number == 2) {
            app->requestFullWait();
        }
    };
    run(5);
    EXPECT_THAT(time.sleptMs, ElementsAre(60.0, 66.0, 60.0, 60.0));
}

TEST_F(AppInVirtualTime, WhatWasModalBeforeTheFirstPassConcernsNoPass) {
    onPass = [this](int, const LcdButtons&) { time.pass(10ms); };
    app->requestFullWait();
    run(2);
    EXPECT_THAT(time.sleptMs, ElementsAre(56.0, 56.0));
}

TEST_F(AppInVirtualTime, StandbyInsideAPassOrInsideItsWaitDisturbsNoOtherPass) {
    onPass = [this](int number, const LcdButtons&) {
        time.pass(6ms);
        if (number == 2) {
            time.standBy(8h);
        }
    };
    time.onSleep = [this] {
        // The wait of pass 3: pass 2 has none.
        if (time.sleptMs.size() == 2) {
            time.standBy(8h);
        }
    };
    run(5);
    EXPECT_THAT(time.sleptMs, ElementsAre(60.0, 60.0, 60.0, 60.0));
}

TEST_F(AppWithKeyboard, ASecondSlideStartsAnewOnceTheFirstIsOver) {
    onPass = [this](int number, const LcdButtons&) {
        if (number == 12) {
            app->SwitchPage(main, TransitionKind::SlideFromLeft);
        }
    };
    app->SwitchPage(other, TransitionKind::SlideFromRight);
    run(23);
    const auto shown = frames();
    ASSERT_EQ(shown.size(), 23U);
    EXPECT_EQ(firstBlueColumn(shown[10]), 0);
    float progress = 0.0F;
    for (std::size_t i = 11; i < 21; ++i) {
        progress = std::min(progress + 0.1F, 1.0F);
        const auto offsets = Panelix::slideOffsets(progress, TransitionKind::SlideFromLeft);
        EXPECT_EQ(firstBlueColumn(shown[i]), std::min(offsets.previousX, 320)) << "frame " << i;
    }
    EXPECT_LT(firstBlueColumn(shown[11]), 40);
    EXPECT_EQ(firstBlueColumn(shown[21]), 320);
}

TEST_F(AppWithKeyboard, DeletesThePagesInListOrderAndThenEndsTheLcd) {
    std::vector<std::uint64_t> shutdowns;
    for (ProbePage* page : {main, other}) {
        page->onDestroy = [&] { shutdowns.push_back(keyboard.callCount(LcdCall::Shutdown)); };
    }
    log.clear();
    app.reset();
    EXPECT_THAT(log, ElementsAre("main.destroyed", "other.destroyed"));
    EXPECT_THAT(shutdowns, ElementsAre(0U, 0U));
    EXPECT_EQ(keyboard.callCount(LcdCall::Shutdown), 1U);
}

TEST_F(AppWithKeyboard, NothingOfPagesAndCanvasIsLeftWhenGdiplusEnds) {
    app.reset();
    const GdiplusLedger ledger;
    app.emplace(1);
    app->SetMainPage(std::make_unique<ProbePage>("main", &*app, &log));
    EXPECT_EQ(ledger.outstanding(), (GdiplusLedger::Numbers{{"graphics", 2}, {"image", 2}}));
    app.reset();
    EXPECT_EQ(ledger.outstandingAtTheEnd(), GdiplusLedger::Numbers{});
    EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{});
}

/// Whether the calling thread is in a COM apartment.
bool isInComApartment() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    return CoGetApartmentType(&type, &qualifier) != CO_E_NOTINITIALIZED;
}

TEST_F(AppWithKeyboard, EndsThePagesThenGdiplusThenTheLcdThenCom) {
    std::vector<std::string> ends;
    const auto note = [&](const std::string& what) {
        ends.push_back(what + (keyboard.callCount(LcdCall::Shutdown) == 0 ? " with LCD" : " without LCD"));
    };
    ImportRecorder<&Gdiplus::GdiplusShutdown> gdiplus("gdiplus.dll", "GdiplusShutdown");
    ImportRecorder<&CoUninitialize> com("ole32.dll", "CoUninitialize");
    main->onDestroy = [&] { note("main"); };
    other->onDestroy = [&] { note("other"); };
    gdiplus.onCall([&] { note("GDI+"); });
    com.onCall([&] { note("COM"); });
    ASSERT_TRUE(isInComApartment());
    app.reset();
    EXPECT_THAT(ends, ElementsAre("main with LCD", "other with LCD", "GDI+ with LCD", "COM without LCD"));
    EXPECT_FALSE(isInComApartment());
}

TEST_F(WithKeyboard, AnApplicationThatCannotBeMadeLeavesNeitherComNorTheLcd) {
    keyboard.setRefuseInit(true);
    {
        // No LCD, and the window that takes its place is refused.
        ImportRecorder<&CreateWindowExW> windows("USER32.dll", "CreateWindowExW");
        windows.failWith(nullptr);
        EXPECT_THROW(ProbeApp(), SysException);
        EXPECT_EQ(windows.count(), 1U);
    }
    EXPECT_FALSE(isInComApartment());
    EXPECT_EQ(Panelix::App::current(), nullptr);
    EXPECT_EQ(keyboard.callCount(LcdCall::Shutdown), 0U) << "what never began does not end";
    keyboard.setRefuseInit(false);
    const ProbeApp app;
    EXPECT_EQ(app.window(), nullptr) << "the next one is as if nothing had been";
}

TEST_F(AppWithKeyboard, WhatAPageThrowsLeavesTheLoop) {
    main->onDraw = [](const LcdButtons&) { throw std::runtime_error("from a page"); };
    EXPECT_THROW(run(10), std::runtime_error);
    EXPECT_EQ(keyboard.frameCount(), 0U);
}

TEST_F(AppWithKeyboard, AnEmptyMainPageIsRefusedAndTheOldOneIsStillDrawnButNoLongerTheMainPage) {
    try {
        app->SetMainPage(nullptr);
        FAIL() << "nothing was thrown";
    } catch (const SysException& error) {
        EXPECT_EQ(error.message, L"Main page empty");
        EXPECT_EQ(error.title, L"Panelix Init Error");
    }
    expectTheOldPageWithoutAMainPage();
}

TEST_F(AppWithKeyboard, AMainPageWhoseInitThrowsIsGoneAndTheOldOneIsStillDrawnButNoLongerTheMainPage) {
    auto page = std::make_unique<ProbePage>("new", &*app, &log, Gdiplus::Color(kBlue));
    page->onInit = [] { throw std::runtime_error("from Init"); };
    log.clear();
    EXPECT_THROW(app->SetMainPage(std::move(page)), std::runtime_error);
    EXPECT_THAT(log, ElementsAre("new.Init", "new.destroyed"));
    EXPECT_EQ(app->FindPage(L"new"), nullptr);
    expectTheOldPageWithoutAMainPage();
}

TEST_F(WithKeyboard, WithoutAMainPageRunThrowsBeforeAnyPageIsCalled) {
    ProbeApp app;
    CallLog log;
    app.AddPage(std::make_unique<ProbePage>("other", &app, &log), false);
    try {
        app.Run();
        FAIL() << "nothing was thrown";
    } catch (const SysException& error) {
        EXPECT_EQ(error.message, L"Main page not created or activated");
        EXPECT_EQ(error.title, L"Panelix Init Error");
    }
    EXPECT_TRUE(log.empty());
}

TEST(App, WithoutComThereIsNoApplication) {
    // A thread that is in the multithreaded apartment already cannot enter a single-threaded one.
    ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
    try {
        const ProbeApp app;
        ADD_FAILURE() << "nothing was thrown";
    } catch (const SysException& error) {
        EXPECT_EQ(error.message, L"Cannot initialise COM library");
        EXPECT_EQ(error.title, L"Panelix Init Error");
    }
    CoUninitialize();
}

TEST(App, ComThatRunsAlreadyIsNoError) {
    const RegistryOverride registry;
    ASSERT_TRUE(SUCCEEDED(CoInitialize(nullptr)));
    ProbeApp{};
    CoUninitialize();
}

// Desktop mode.

class AppWithoutKeyboard : public testing::Test {
protected:
    RegistryOverride registry;
    CallLog log;
    ProbeApp app;
};

TEST_F(AppWithoutKeyboard, HasAHiddenWindowInstead) {
    ASSERT_NE(app.window(), nullptr);
    EXPECT_EQ(IsWindowVisible(app.window()), FALSE);
}

TEST_F(AppWithoutKeyboard, EndsAfterThePassThatSeesTheQuitMessage) {
    auto page = std::make_unique<ProbePage>("main", &app, &log);
    int drawn = 0;
    page->onDraw = [&drawn](const LcdButtons& buttons) {
        EXPECT_EQ(std::count(buttons.pressed.begin(), buttons.pressed.end(), true), 0);
        EXPECT_EQ(std::count(buttons.held.begin(), buttons.held.end(), true), 0);
        if (++drawn == 3) {
            PostQuitMessage(0);
        }
    };
    app.SetMainPage(std::move(page));
    app.Run();
    EXPECT_EQ(drawn, 4);
}

decltype(InvalidateRect)* invalidateRect = nullptr;
int invalidations = 0;

BOOL WINAPI countInvalidation(HWND window, const RECT* rectangle, BOOL erase) {
    ++invalidations;
    return invalidateRect(window, rectangle, erase);
}

TEST_F(AppWithoutKeyboard, AsksForARepaintAfterAChangeOnly) {
    const ImportOverride counting("user32.dll", "InvalidateRect", countInvalidation);
    invalidateRect = counting.original<decltype(InvalidateRect)>();
    invalidations = 0;
    auto page = std::make_unique<ProbePage>("main", &app, &log);
    ProbePage* const only = page.get();
    std::vector<int> before;
    page->onUpdate = [&](const LcdButtons&) {
        before.push_back(invalidations);
        if (before.size() == 4) {
            only->paint(Gdiplus::Color(kBlue));
        }
        return before.size() < 7;
    };
    app.SetMainPage(std::move(page));
    app.Run();
    EXPECT_THAT(before, ElementsAre(0, 1, 1, 1, 2, 2, 2));
}

TEST_F(AppWithoutKeyboard, StopsPumpingAtTheQuitMessage) {
    auto page = std::make_unique<ProbePage>("main", &app, &log);
    app.SetMainPage(std::move(page));
    PostThreadMessageW(GetCurrentThreadId(), WM_QUIT, 0, 0);
    PostThreadMessageW(GetCurrentThreadId(), WM_APP + 1, 0, 0);
    app.Run();
    MSG message;
    EXPECT_NE(PeekMessageW(&message, nullptr, WM_APP + 1, WM_APP + 1, PM_REMOVE), FALSE);
}

TEST_F(AppWithoutKeyboard, AnErrorOfACommandLeavesTheLoopOnceAndTheLoopCanGoOn) {
    auto page = std::make_unique<ProbePage>("main", &app, &log);
    int updates = 0;
    page->onUpdate = [&updates](const LcdButtons&) { return ++updates < 3; };
    app.SetMainPage(std::move(page));
    app.onCommand = [](std::uint32_t command) {
        throw SysException(command == 0x8004 ? L"the first" : L"a later one", L"Test");
    };
    // Sent messages are not dispatched by the loop, as those that come in while a box is open.
    SendMessageW(app.window(), WM_COMMAND, 0x8004, 0);
    SendMessageW(app.window(), WM_COMMAND, 0x8005, 0);
    PostMessageW(app.window(), WM_NULL, 0, 0);
    try {
        app.Run();
        FAIL() << "nothing was thrown";
    } catch (const SysException& error) {
        EXPECT_EQ(error.message, L"the first");
    }
    PostMessageW(app.window(), WM_NULL, 0, 0);
    EXPECT_NO_THROW(app.Run());
    EXPECT_EQ(updates, 3);
}

TEST_F(AppWithoutKeyboard, CommandsFromTheWindowReachTheApplicationAndTheirErrorsLeaveTheLoop) {
    app.SetMainPage(std::make_unique<ProbePage>("main", &app, &log));
    app.onCommand = [](std::uint32_t) { throw SysException(L"from a command", L"Test"); };
    PostMessageW(app.window(), WM_COMMAND, 0x8004, 0);
    try {
        app.Run();
        FAIL() << "nothing was thrown";
    } catch (const SysException& error) {
        EXPECT_EQ(error.message, L"from a command");
    }
    EXPECT_THAT(app.commands, ElementsAre(0x8004U));
}

}  // namespace
