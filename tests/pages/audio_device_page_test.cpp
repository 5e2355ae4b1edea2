#include "pages/audio_device_page.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "framework/core/lcd_sdk_abi.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/core_audio/virtual_audio.h"
#include "stats/system_info.h"
#include "tests/framework/core/lcd_fixture.h"
#include "tests/framework/core/probe_app.h"
#include "tests/pages/buttons.h"
#include "tests/pages/expected_list_page.h"
#include "tests/pages/page_painter.h"
#include "tests/pages/slide_direction.h"

namespace {

using Panelix::LcdButton;
using Panelix::LcdButtons;
using Panelix::TransitionKind;
using Standins::AudioCall;
using Standins::AudioDevice;
using Standins::AudioFlow;
using testing::ElementsAre;
using testing::IsEmpty;
namespace LcdSdk = Panelix::LcdSdk;

constexpr std::uint32_t kRed = 0xFFFF0000;
constexpr std::uint32_t kBlue = 0xFF0000FF;
constexpr int kNoRow = -1;

/// The slide that brings the page in is over after so many passes.
constexpr std::uint32_t kPassesToEnter = 12;

/// The audio device page in an application on the virtual keyboard, with a red main page and a blue page
/// under the options page's name. The virtual sound system starts without devices.
class AudioDevicePageOnKeyboard : public WithKeyboard {
protected:
    AudioDevicePageOnKeyboard() {
        auto mainPage = std::make_unique<ProbePage>("main", &app, &log, Gdiplus::Color(kRed));
        auto devicePage = std::make_unique<AudioDevicePage>(&app, &sampler);
        main = mainPage.get();
        page = devicePage.get();
        app.SetMainPage(std::move(mainPage));
        app.AddPage(std::move(devicePage), false);
        app.AddPage(std::make_unique<ProbePage>("options", &app, &log, Gdiplus::Color(kBlue)), false);
        page->Init(app.canvas());
        log.clear();
    }

    void addDevices(const std::vector<std::wstring>& names) {
        for (const std::wstring& name : names) {
            AudioDevice device;
            device.id = L"id of " + name;
            device.name = name;
            device.levels.channels = {0.5F, 0.5F};
            ASSERT_TRUE(audio.addDevice(device));
        }
    }

    /// Enters the page as the application does.
    void enter() {
        app.SwitchPage(page, TransitionKind::SlideFromBottom);
        log.clear();
    }

    PagePixels draw(const LcdButtons& buttons = {}) {
        page->Draw(app.canvas(), buttons);
        return PagePixels(*page->bitmap());
    }

    PagePixels expected(const std::vector<std::wstring>& names, int active, int cursor) {
        std::vector<ExpectedRow> rows;
        for (int i = 0; i < static_cast<int>(names.size()); ++i) {
            const std::uint32_t cursorColour = i == cursor ? 0x3280FFFF : 0;
            rows.push_back({names[static_cast<std::size_t>(i)], i == active ? 0xC8008080 : cursorColour});
        }
        PagePainter painter(app.canvas());
        paintExpectedList(painter, L"Active Audio Device", ExpectedArrow::Right, rows);
        for (const PaintedText& text : painter.texts()) {
            if (text.y < 215) {
                TextCoverage(app.canvas(), text);
            }
        }
        return painter.pixels();
    }

    /// Enters the page, presses one button once its slide is over, and runs until the next one is over.
    void enterAndPress(std::uint32_t mask) {
        enter();
        ASSERT_TRUE(keyboard.addScriptStep(0, kPassesToEnter));
        ASSERT_TRUE(keyboard.addScriptStep(mask, 1));
        unsigned passesLeft = 30;
        main->onUpdate = [passesLeft](const LcdButtons&) mutable { return --passesLeft > 0; };
        app.Run();
    }

    CallLog log;
    Standins::VirtualAudio audio;
    ProbeApp app{1};
    Standins::LoadedCoreAudio audioClasses;
    SystemInfo sampler;
    ProbePage* main;
    AudioDevicePage* page;
};

const std::vector<std::wstring> kThree{L"Speakers", L"Headset", L"Monitor"};

TEST_F(AudioDevicePageOnKeyboard, HasTheNameThatTheOptionsPageLooksFor) {
    EXPECT_EQ(page->name(), L"Active Audio Device");
    EXPECT_TRUE(page->Update(true, {}));
    EXPECT_TRUE(page->Update(false, down({LcdButton::Ok})));
}

TEST_F(AudioDevicePageOnKeyboard, LeavesANewReadingToTheMainPage) {
    addDevices(kThree);
    sampler.dataReady = true;
    enter();
    draw();
    page->Update(true, {});
    EXPECT_TRUE(sampler.dataReady);
}

TEST_F(AudioDevicePageOnKeyboard, OpensWithTheCursorOnTheDefaultDevice) {
    addDevices(kThree);
    for (const int active : {2, 0, 1}) {
        audio.setDefault(AudioFlow::Render, static_cast<std::uint32_t>(active));
        enter();
        EXPECT_TRUE(samePixels(draw(), expected(kThree, active, active))) << active;
    }
}

TEST_F(AudioDevicePageOnKeyboard, TheCursorMovesAndStopsAtTheEnds) {
    addDevices(kThree);
    audio.setDefault(AudioFlow::Render, 1);
    enter();
    struct Step {
        LcdButtons buttons;
        int cursor;
    };
    const Step steps[] = {
        {down({LcdButton::Up}), 0},
        {down({LcdButton::Up}), 0},
        {down({LcdButton::Down}), 1},
        {down({LcdButton::Down}), 2},
        {down({LcdButton::Down}), 2},
        {held({LcdButton::Up}), 2},
        {down({LcdButton::Left}), 2},
        {down({LcdButton::Up, LcdButton::Ok}), 1},
        {down({LcdButton::Up, LcdButton::Down, LcdButton::Ok}), 2},
        {down({LcdButton::Down, LcdButton::Ok}), 2},
    };
    int number = 0;
    for (const Step& step : steps) {
        EXPECT_TRUE(samePixels(draw(step.buttons), expected(kThree, 1, step.cursor))) << "step " << number;
        ++number;
    }
    EXPECT_EQ(audio.callCount(AudioCall::SetDefaultEndpoint), 0U);
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(AudioDevicePageOnKeyboard, OkMakesTheDeviceTheDefaultAndReturnsInTheSameFrame) {
    addDevices(kThree);
    audio.setLevels(2, {{0.2F, 0.3F}, 0.3F, true});
    enter();
    draw(down({LcdButton::Down}));
    draw(down({LcdButton::Down}));
    Gdiplus::Graphics(page->bitmap()).Clear(Gdiplus::Color(0xFF123456));
    const PagePixels before(*page->bitmap());
    EXPECT_TRUE(samePixels(draw(down({LcdButton::Ok})), before)) << "nothing is drawn";
    EXPECT_EQ(audio.lastDefaultId(), L"id of Monitor");
    EXPECT_EQ(audio.defaultDevice(AudioFlow::Render), 2U);
    EXPECT_THAT(log, ElementsAre("main.OnActivate"));
    EXPECT_EQ(sampler.speakerLeftVolume, 20) << "the snapshot is the new device's";
    EXPECT_EQ(sampler.speakerRightVolume, 30);
    EXPECT_TRUE(sampler.speakerMuted);
    enter();
    EXPECT_TRUE(samePixels(draw(), expected(kThree, 2, 2))) << "and the next visit shows it";
}

TEST_F(AudioDevicePageOnKeyboard, OkOnTheActiveDeviceReturnsToo) {
    addDevices(kThree);
    enter();
    draw(down({LcdButton::Ok}));
    EXPECT_EQ(audio.lastDefaultId(), L"id of Speakers");
    EXPECT_THAT(log, ElementsAre("main.OnActivate"));
}

TEST_F(AudioDevicePageOnKeyboard, AnEmptyListShowsNoRowAndOkDoesNothing) {
    enter();
    const PagePixels empty = expected({}, kNoRow, kNoRow);
    EXPECT_TRUE(samePixels(draw(), empty));
    for (const LcdButton button : {LcdButton::Ok, LcdButton::Down, LcdButton::Up, LcdButton::Ok}) {
        EXPECT_TRUE(samePixels(draw(down({button})), empty));
    }
    EXPECT_EQ(audio.callCount(AudioCall::SetDefaultEndpoint), 0U);
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(AudioDevicePageOnKeyboard, BeforeItsFirstActivationItIsEmpty) {
    addDevices(kThree);
    EXPECT_TRUE(samePixels(draw(), expected({}, kNoRow, kNoRow)));
    draw(down({LcdButton::Ok}));
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(AudioDevicePageOnKeyboard, WithoutADefaultDeviceTheFirstRowIsTheActiveOne) {
    addDevices(kThree);
    audio.setDefault(AudioFlow::Render, 1);
    enter();
    audio.setDefault(AudioFlow::Render, std::nullopt);
    enter();
    EXPECT_TRUE(samePixels(draw(), expected(kThree, 0, 0)));
}

TEST_F(AudioDevicePageOnKeyboard, TheListIsReadWhenThePageBecomesActiveOnly) {
    addDevices({L"Speakers"});
    enter();
    draw();
    addDevices({L"Headset"});
    EXPECT_TRUE(samePixels(draw(), expected({L"Speakers"}, 0, 0)));
    EXPECT_EQ(audio.callCount(AudioCall::EnumAudioEndpoints), 1U);
    enter();
    EXPECT_TRUE(samePixels(draw(), expected({L"Speakers", L"Headset"}, 0, 0)));
}

TEST_F(AudioDevicePageOnKeyboard, AShorterListBringsTheCursorBackOnIt) {
    addDevices(kThree);
    audio.setDefault(AudioFlow::Render, 2);
    enter();
    audio.setPresent(2, false);
    audio.setPresent(1, false);
    audio.setDefault(AudioFlow::Render, 0);
    enter();
    EXPECT_TRUE(samePixels(draw(), expected({L"Speakers"}, 0, 0)));
    draw(down({LcdButton::Ok}));
    EXPECT_EQ(audio.lastDefaultId(), L"id of Speakers");
}

TEST_F(AudioDevicePageOnKeyboard, ThirtyDevicesWithLongNamesRunOffTheScreen) {
    std::vector<std::wstring> names;
    for (int i = 0; i < 30; ++i) {
        names.push_back(std::to_wstring(i) + std::wstring(100, i % 2 == 0 ? L'W' : L'j'));
    }
    addDevices(names);
    audio.setDefault(AudioFlow::Render, 3);
    enter();
    EXPECT_TRUE(samePixels(draw(), expected(names, 3, 3)));
    for (int i = 4; i < 30; ++i) {
        draw(down({LcdButton::Down}));
    }
    EXPECT_TRUE(samePixels(draw(down({LcdButton::Down})), expected(names, 3, 29)))
        << "the cursor is below the screen";
    draw(down({LcdButton::Ok}));
    EXPECT_EQ(audio.lastDefaultId(), L"id of " + names[29]);
}

TEST_F(AudioDevicePageOnKeyboard, ADeviceWithoutANameIsAnEmptyRow) {
    AudioDevice device;
    device.id = L"nameless";
    device.nameKind = Standins::FriendlyName::Missing;
    device.levels.channels = {0.5F, 0.5F};
    ASSERT_TRUE(audio.addDevice(device));
    enter();
    PagePainter painter(app.canvas());
    painter.bitmapImage(304, 0, 0);
    painter.triangle({295, 10}, {310, 18}, {295, 26}, 0xFFFFFFFF);
    painter.text({L"Active Audio Device", 20, 0xFFFFFFFF, 160, 18, TextPlace::Centre});
    painter.fill(4, 36, 312, 29, 0xC8008080);
    EXPECT_TRUE(samePixels(draw(), painter.pixels()));
    draw(down({LcdButton::Ok}));
    EXPECT_EQ(audio.lastDefaultId(), L"nameless");
}

TEST_F(AudioDevicePageOnKeyboard, RightLeadsToTheOptionsPageFromTheRight) {
    enterAndPress(LcdSdk::kButtonRight);
    EXPECT_EQ(slideDirection(keyboard, kBlue, kPassesToEnter), TransitionKind::SlideFromRight);
}

TEST_F(AudioDevicePageOnKeyboard, MenuReturnsToTheMainPageFromTheTop) {
    enterAndPress(LcdSdk::kButtonMenu);
    EXPECT_EQ(slideDirection(keyboard, kRed, kPassesToEnter), TransitionKind::SlideFromTop);
}

TEST_F(AudioDevicePageOnKeyboard, CancelReturnsToTheMainPageFromTheTop) {
    enterAndPress(LcdSdk::kButtonCancel);
    EXPECT_EQ(slideDirection(keyboard, kRed, kPassesToEnter), TransitionKind::SlideFromTop);
}

TEST_F(AudioDevicePageOnKeyboard, OkReturnsToTheMainPageFromTheTop) {
    addDevices(kThree);
    enterAndPress(LcdSdk::kButtonOk);
    EXPECT_EQ(slideDirection(keyboard, kRed, kPassesToEnter), TransitionKind::SlideFromTop);
}

TEST_F(AudioDevicePageOnKeyboard, LeavingDrawsNothingAndMenuWinsOverRight) {
    addDevices(kThree);
    for (const LcdButton button : {LcdButton::Menu, LcdButton::Cancel, LcdButton::Right}) {
        enter();
        Gdiplus::Graphics(page->bitmap()).Clear(Gdiplus::Color(0xFF123456));
        const PagePixels before(*page->bitmap());
        EXPECT_TRUE(samePixels(draw(down({button, LcdButton::Down, LcdButton::Ok})), before));
        EXPECT_EQ(log.size(), 1U);
    }
    enter();
    draw(down({LcdButton::Menu, LcdButton::Right, LcdButton::Ok}));
    EXPECT_THAT(log, ElementsAre("main.OnActivate"));
    EXPECT_EQ(audio.callCount(AudioCall::SetDefaultEndpoint), 0U);
}

TEST_F(WithKeyboard, WithoutAnOptionsPageRightDoesNothing) {
    CallLog log;
    Standins::VirtualAudio audio;
    ProbeApp app;
    Standins::LoadedCoreAudio audioClasses;
    SystemInfo sampler;
    app.SetMainPage(std::make_unique<ProbePage>("main", &app, &log));
    AudioDevicePage lonely(&app, &sampler);
    log.clear();
    lonely.Draw(app.canvas(), down({LcdButton::Right}));
    EXPECT_THAT(log, IsEmpty());
}

}  // namespace
