#include "pages/options_page.h"

#include <gmock/gmock.h>

#include <memory>
#include <vector>

#include "framework/core/lcd_sdk_abi.h"
#include "tests/framework/core/lcd_fixture.h"
#include "tests/framework/core/probe_app.h"
#include "tests/pages/buttons.h"
#include "tests/pages/expected_list_page.h"
#include "tests/pages/page_painter.h"
#include "tests/pages/slide_direction.h"
#include "tests/support/gdiplus_ledger.h"

namespace {

using Panelix::LcdButton;
using Panelix::LcdButtons;
using Panelix::TransitionKind;
using testing::ElementsAre;
using testing::IsEmpty;
namespace LcdSdk = Panelix::LcdSdk;

constexpr std::uint32_t kRed = 0xFFFF0000;
constexpr std::uint32_t kBlue = 0xFF0000FF;

/// The slide that brings the page in is over after so many passes.
constexpr std::uint32_t kPassesToEnter = 12;

/// The options page in an application on the virtual keyboard, with a red main page and a blue page under the
/// audio page's name.
class OptionsPageOnKeyboard : public WithKeyboard {
protected:
    OptionsPageOnKeyboard() {
        auto mainPage = std::make_unique<ProbePage>("main", &app, &log, Gdiplus::Color(kRed));
        auto optionsPage = std::make_unique<OptionsPage>(&app);
        main = mainPage.get();
        options = optionsPage.get();
        app.SetMainPage(std::move(mainPage));
        app.AddPage(std::make_unique<ProbePage>("Active Audio Device", &app, &log, Gdiplus::Color(kBlue)),
                    false);
        app.AddPage(std::move(optionsPage), false);
        options->Init(app.canvas());
        app.SwitchPage(options, TransitionKind::SlideFromRight);
        log.clear();
    }

    PagePixels draw(const LcdButtons& buttons = {}) {
        options->Draw(app.canvas(), buttons);
        return PagePixels(*options->bitmap());
    }

    /// Paints over the page's picture, so that a drawing shows itself.
    PagePixels smeared() {
        Gdiplus::Graphics(options->bitmap()).Clear(Gdiplus::Color(0xFF123456));
        return PagePixels(*options->bitmap());
    }

    /// The page with this row highlighted.
    PagePixels expected(int selected) {
        PagePainter painter(app.canvas());
        std::vector<ExpectedRow> rows{{L"About"}, {L"Settings"}, {L"Exit Applet"}};
        rows[static_cast<std::size_t>(selected)].highlight = 0x3280FFFF;
        paintExpectedList(painter, L"Options", ExpectedArrow::Left, rows);
        for (const PaintedText& text : painter.texts()) {
            TextCoverage(app.canvas(), text);
        }
        return painter.pixels();
    }

    /// Presses the buttons in this order, on one pass in three, and runs until the application has shown the
    /// last slide to its end.
    void press(std::initializer_list<std::uint32_t> masks) {
        unsigned passesLeft = 30;
        // The slide that brought this page in comes first.
        ASSERT_TRUE(keyboard.addScriptStep(0, kPassesToEnter));
        for (const std::uint32_t mask : masks) {
            ASSERT_TRUE(keyboard.addScriptStep(mask, 1));
            ASSERT_TRUE(keyboard.addScriptStep(0, 2));
            passesLeft += 3;
        }
        main->onUpdate = [passesLeft](const LcdButtons&) mutable { return --passesLeft > 0; };
        app.Run();
    }

    CallLog log;
    ProbeApp app{1};
    ProbePage* main;
    OptionsPage* options;
};

TEST_F(OptionsPageOnKeyboard, OpensOnAbout) {
    EXPECT_EQ(options->name(), L"options");
    EXPECT_TRUE(samePixels(draw(), expected(0)));
}

TEST_F(OptionsPageOnKeyboard, UpAndDownMoveTheHighlightAndStopAtTheEnds) {
    struct Step {
        LcdButtons buttons;
        int selected;
    };
    const Step steps[] = {
        {down({LcdButton::Up}), 0},
        {down({LcdButton::Down}), 1},
        {down({LcdButton::Down}), 2},
        {down({LcdButton::Down}), 2},
        {held({LcdButton::Up}), 2},
        {down({LcdButton::Up}), 1},
        {down({LcdButton::Down, LcdButton::Up}), 2},
        {down({LcdButton::Up}), 1},
        {down({LcdButton::Down, LcdButton::Ok}), 2},
        {down({LcdButton::Up, LcdButton::Ok}), 1},
        {down({LcdButton::Right}), 1},
        {LcdButtons{}, 1},
    };
    int number = 0;
    for (const Step& step : steps) {
        EXPECT_TRUE(samePixels(draw(step.buttons), expected(step.selected))) << "step " << number;
        ++number;
    }
    EXPECT_THAT(app.commands, IsEmpty());
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(OptionsPageOnKeyboard, OpensOnAboutEachTime) {
    draw(down({LcdButton::Down}));
    options->OnDeactivate();
    options->OnActivate();
    EXPECT_TRUE(samePixels(draw(), expected(0)));
}

TEST_F(OptionsPageOnKeyboard, OkSendsTheEntrysCommandAndReturnsWithoutAFrameOfItsOwn) {
    const std::uint32_t codes[] = {32772, 32773};
    for (const std::uint32_t code : codes) {
        app.commands.clear();
        log.clear();
        app.onCommand = [this](std::uint32_t) { log.push_back("command"); };
        const PagePixels before = smeared();
        EXPECT_TRUE(samePixels(draw(down({LcdButton::Ok})), before)) << "nothing is drawn";
        EXPECT_THAT(app.commands, ElementsAre(code));
        EXPECT_THAT(log, ElementsAre("command", "main.OnActivate"));
        EXPECT_TRUE(options->Update(true, {}));
        app.SwitchPage(options, TransitionKind::SlideFromRight);
        draw(down({LcdButton::Down}));
    }
}

TEST_F(OptionsPageOnKeyboard, ExitAppletEndsTheProgramAtTheNextUpdate) {
    draw(down({LcdButton::Down}));
    draw(down({LcdButton::Down}));
    EXPECT_TRUE(options->Update(true, {}));
    const PagePixels before = smeared();
    EXPECT_TRUE(samePixels(draw(down({LcdButton::Ok})), before)) << "nothing is drawn";
    EXPECT_THAT(app.commands, IsEmpty());
    EXPECT_THAT(log, ElementsAre("main.OnActivate"));
    EXPECT_FALSE(options->Update(false, {}));
    EXPECT_FALSE(options->Update(true, {})) << "it stays so";
}

TEST_F(OptionsPageOnKeyboard, ExitAppletEndsTheLoop) {
    unsigned passes = 0;
    main->onUpdate = [&passes](const LcdButtons&) { return ++passes < 100; };
    ASSERT_TRUE(keyboard.addScriptStep(LcdSdk::kButtonDown, 1));
    ASSERT_TRUE(keyboard.addScriptStep(0, 1));
    ASSERT_TRUE(keyboard.addScriptStep(LcdSdk::kButtonDown, 1));
    ASSERT_TRUE(keyboard.addScriptStep(0, 1));
    ASSERT_TRUE(keyboard.addScriptStep(LcdSdk::kButtonOk, 1));
    app.Run();
    const std::optional<Standins::G19Frame> pressed = keyboard.frame(keyboard.frameCount() - 1);
    ASSERT_TRUE(pressed);
    EXPECT_EQ(pressed->buttons, LcdSdk::kButtonOk) << "the pass after the press is the last";
    EXPECT_LT(passes, 10U);
}

TEST_F(OptionsPageOnKeyboard, GivesBackEverythingThatADrawingTakes) {
    const GdiplusLedger ledger;
    draw();
    draw(down({LcdButton::Down}));
    draw(down({LcdButton::Ok}));
    EXPECT_GT(ledger.taken().size(), 3U);
    EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{});
}

TEST_F(OptionsPageOnKeyboard, WhatACommandThrowsLeavesThePage) {
    app.onCommand = [](std::uint32_t) { throw std::runtime_error("from a dialog"); };
    EXPECT_THROW(draw(down({LcdButton::Ok})), std::runtime_error);
    EXPECT_THAT(log, IsEmpty()) << "the page is not left";
}

TEST_F(OptionsPageOnKeyboard, ACommandLongerThanAPassIsFollowedByAFullPeriodOfTheSlide) {
    constexpr std::uint64_t kSlidePeriodUs = 16'000;
    std::uint64_t framesBefore = 0;
    std::uint64_t nextUpdateUs = 0;
    app.onCommand = [&](std::uint32_t) {
        framesBefore = keyboard.frameCount();
        Sleep(300);
    };
    main->onUpdate = [&](const LcdButtons&) {
        if (app.commands.empty()) {
            return true;
        }
        nextUpdateUs = Standins::nowMicroseconds();
        return false;
    };
    ASSERT_TRUE(keyboard.addScriptStep(0, kPassesToEnter));
    ASSERT_TRUE(keyboard.addScriptStep(LcdSdk::kButtonOk, 1));
    app.Run();
    EXPECT_THAT(app.commands, ElementsAre(32772U));
    // The frame of the command's own pass came right before the wait.
    const std::optional<Standins::G19Frame> frame = keyboard.frame(framesBefore + 1);
    ASSERT_TRUE(frame);
    EXPECT_GE(nextUpdateUs, frame->timeUs + kSlidePeriodUs - 1'000);
}

TEST_F(OptionsPageOnKeyboard, MenuReturnsToTheMainPageFromTheTop) {
    press({LcdSdk::kButtonMenu});
    EXPECT_EQ(slideDirection(keyboard, kRed, kPassesToEnter), TransitionKind::SlideFromTop);
}

TEST_F(OptionsPageOnKeyboard, OkReturnsToTheMainPageFromTheTop) {
    press({LcdSdk::kButtonOk});
    EXPECT_EQ(slideDirection(keyboard, kRed, kPassesToEnter), TransitionKind::SlideFromTop);
}

TEST_F(OptionsPageOnKeyboard, LeftLeadsToTheAudioPageFromTheLeft) {
    press({LcdSdk::kButtonDown, LcdSdk::kButtonLeft});
    EXPECT_EQ(slideDirection(keyboard, kBlue, kPassesToEnter), TransitionKind::SlideFromLeft);
}

TEST_F(OptionsPageOnKeyboard, CancelLeadsToTheAudioPageFromTheLeft) {
    press({LcdSdk::kButtonCancel});
    EXPECT_EQ(slideDirection(keyboard, kBlue, kPassesToEnter), TransitionKind::SlideFromLeft);
}

TEST_F(OptionsPageOnKeyboard, LeavingDrawsNothingAndMenuWins) {
    draw(down({LcdButton::Down}));
    const PagePixels before = smeared();
    EXPECT_TRUE(samePixels(draw(down({LcdButton::Left, LcdButton::Down})), before));
    EXPECT_TRUE(samePixels(draw(down({LcdButton::Cancel, LcdButton::Up})), before));
    EXPECT_TRUE(samePixels(draw(down({LcdButton::Menu, LcdButton::Up})), before));
    log.clear();
    draw(down({LcdButton::Menu, LcdButton::Cancel, LcdButton::Left, LcdButton::Ok}));
    EXPECT_THAT(log, testing::Contains("main.OnActivate"));
    EXPECT_THAT(app.commands, IsEmpty());
}

TEST_F(WithKeyboard, WithoutAnAudioPageLeftAndCancelDoNothing) {
    CallLog log;
    ProbeApp app;
    app.SetMainPage(std::make_unique<ProbePage>("main", &app, &log));
    // A name that differs in case only is another name.
    app.AddPage(std::make_unique<ProbePage>("active audio device", &app, &log), false);
    OptionsPage options(&app);
    log.clear();
    options.Draw(app.canvas(), down({LcdButton::Left}));
    options.Draw(app.canvas(), down({LcdButton::Cancel}));
    EXPECT_THAT(log, IsEmpty());
}

}  // namespace
