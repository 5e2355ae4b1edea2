#include "pages/main_page.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <utility>

#include "framework/core/lcd_sdk_abi.h"
#include "tests/pages/main_page_fixture.h"
#include "tests/pages/slide_direction.h"
#include "tests/support/documents_folder.h"
#include "tests/support/import_override.h"
#include "tests/support/message_box_watcher.h"
#include "tests/support/only_wine.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/virtual_time.h"

namespace {

using Panelix::LcdButton;
using Panelix::LcdButtons;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// The Documents folder of this process is an empty one.
class MainPageButtons : public MainPageOnKeyboard {
protected:
    MainPageButtons() {
        setDocumentsFolder(documents.path());
        log.clear();
    }

    void SetUp() override {
        SKIP_ON_WINDOWS_UNLESS(documentsFolderIs(documents.path()), kDocumentsAreTheUsers);
    }

    /// The page's picture of the picture mode.
    PagePixels picture() {
        PagePainter painter(app.canvas());
        painter.bitmapImage(105, 0, 0);
        return painter.pixels();
    }

    TemporaryFolder documents;
};

TEST_F(MainPageButtons, LeftAndRightWalkTheChannelsAndLeftWins) {
    struct Step {
        LcdButtons buttons;
        int selected;
    };
    const Step steps[] = {
        {down({LcdButton::Right}), 1},
        {down({LcdButton::Right}), 2},
        {down({LcdButton::Right}), 0},
        {down({LcdButton::Left}), 2},
        {down({LcdButton::Left}), 1},
        {down({LcdButton::Left}), 0},
        {down({LcdButton::Left, LcdButton::Right}), 2},
        {held({LcdButton::Left}), 2},
        {held({LcdButton::Right}), 2},
        {down({LcdButton::Cancel}), 2},
        {LcdButtons{}, 2},
    };
    int number = 0;
    for (const Step& step : steps) {
        expected.selectedChannel = step.selected;
        drawAndCompare("step " + std::to_string(number), step.buttons);
        ++number;
    }
}

TEST_F(MainPageButtons, TheFigureIsTheMastersOrTheSelectedChannels) {
    sampler.speakerLeftVolume = 0;
    sampler.speakerRightVolume = 100;
    sampler.speakerMasterVolume = 66;
    drawAndCompare("master");
    expected.selectedChannel = 1;
    drawAndCompare("left", down({LcdButton::Right}));
    expected.selectedChannel = 2;
    drawAndCompare("right", down({LcdButton::Right}));
}

TEST_F(MainPageButtons, DownSavesWhatTheCanvasHeldBeforeThisDrawing) {
    // The canvas shows the blue page, the page being drawn does not.
    menu->Init(app.canvas());
    app.canvas()->composePages(menu->bitmap(), nullptr, 0.0F, Panelix::TransitionKind::SlideFromLeft);
    drawAndCompare("the page is complete", down({LcdButton::Down}));
    const std::vector<std::wstring> files = documents.files();
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0].substr(0, 13), L"kelvaro shot ");
    Gdiplus::Bitmap saved((documents.path() + L"\\" + files[0]).c_str());
    ASSERT_EQ(saved.GetLastStatus(), Gdiplus::Ok);
    EXPECT_TRUE(samePixels(PagePixels(saved), PagePixels(*menu->bitmap())));
}

TEST_F(MainPageButtons, TheErrorBoxOfAScreenshotIsFollowedByAFullPeriodOfTheSlide) {
    constexpr std::uint64_t kSlidePeriodUs = 16'000;
    setDocumentsFolder(L"Q:\\nowhere");
    const MessageBoxWatcher watcher(IDOK, [](const SeenMessageBox&) { Sleep(200); });
    // Looks before the main page does anything.
    auto first = std::make_unique<ProbePage>("first", &app, &log);
    std::uint64_t framesBefore = 0;
    std::uint64_t nextUpdateUs = 0;
    int pass = 0;
    first->onUpdate = [&](const LcdButtons& buttons) {
        ++pass;
        if (framesBefore != 0) {
            nextUpdateUs = Standins::nowMicroseconds();
            return false;
        }
        framesBefore = buttons.isPressed(LcdButton::Down) ? keyboard.frameCount() : 0;
        return pass < 10;
    };
    app.AddPage(std::move(first), true);
    app.SwitchPage(page, Panelix::TransitionKind::SlideFromLeft);
    ASSERT_TRUE(keyboard.addScriptStep(0, 2));
    ASSERT_TRUE(keyboard.addScriptStep(Panelix::LcdSdk::kButtonDown, 1));
    app.Run();
    EXPECT_EQ(watcher.boxes().size(), 1U);
    // The frame of the screenshot's own pass came right before the wait.
    const std::optional<Standins::G19Frame> frame = keyboard.frame(framesBefore + 1);
    ASSERT_TRUE(frame);
    EXPECT_GE(nextUpdateUs, frame->timeUs + kSlidePeriodUs - 1'000);
}

constexpr std::chrono::milliseconds kSavingTime(5);
VirtualTime* timeOfSaving = nullptr;
const ImportOverride* usualSaving = nullptr;

Gdiplus::GpStatus WINAPI saveSlowly(Gdiplus::GpImage* image,
                                    const WCHAR* path,
                                    const CLSID* encoder,
                                    const Gdiplus::EncoderParameters* parameters) {
    timeOfSaving->pass(kSavingTime);
    return usualSaving->original<decltype(saveSlowly)>()(image, path, encoder, parameters);
}

// The wait of a pass with a slow saving is that much shorter, so the next pass comes in its time.
TEST_F(MainPageButtons, AScreenshotWithoutABoxIsPacedAsAnyPass) {
    VirtualTime time;
    timeOfSaving = &time;
    const ImportOverride saving("gdiplus.dll", "GdipSaveImageToFile", saveSlowly);
    usualSaving = &saving;
    auto last = std::make_unique<ProbePage>("last", &app, &log);
    int pass = 0;
    last->onUpdate = [&pass](const LcdButtons&) { return ++pass < 5; };
    app.AddPage(std::move(last), false);
    // During a slide a period is longer than the saving.
    app.SwitchPage(page, Panelix::TransitionKind::SlideFromLeft);
    ASSERT_TRUE(keyboard.addScriptStep(0, 2));
    ASSERT_TRUE(keyboard.addScriptStep(Panelix::LcdSdk::kButtonDown, 1));
    app.Run();
    EXPECT_EQ(documents.files().size(), 1U);
    ASSERT_EQ(time.sleptMs.size(), 5U);
    const double usual = time.sleptMs.front();
    EXPECT_THAT(time.sleptMs, testing::UnorderedElementsAre(usual, usual, usual, usual, usual - 5.0));
}

TEST_F(MainPageButtons, OnePressSavesOnce) {
    draw(down({LcdButton::Down}));
    ASSERT_EQ(documents.files().size(), 1U);
    std::filesystem::remove(std::filesystem::path(documents.path()) / documents.files()[0]);
    draw(held({LcdButton::Down}));
    draw();
    draw(down({LcdButton::Up}));
    EXPECT_THAT(documents.files(), IsEmpty());
    draw(down({LcdButton::Down}));
    EXPECT_EQ(documents.files().size(), 1U);
}

TEST_F(MainPageButtons, NoOtherPressSavesAnything) {
    for (const LcdButton button :
         {LcdButton::Up, LcdButton::Cancel, LcdButton::Menu, LcdButton::Ok, LcdButton::Ok}) {
        draw(down({button}));
    }
    draw(held({LcdButton::Down}));
    EXPECT_THAT(documents.files(), IsEmpty());
}

TEST_F(MainPageButtons, WithAChannelSelectedDownSavesNothing) {
    draw(down({LcdButton::Right}));
    draw(down({LcdButton::Down}));
    draw(down({LcdButton::Right}));
    draw(down({LcdButton::Down}));
    EXPECT_THAT(documents.files(), IsEmpty());
}

TEST_F(MainPageButtons, APressThatSelectsAndDownAtOnceActOnTheNewSelection) {
    draw(down({LcdButton::Right, LcdButton::Down}));
    EXPECT_THAT(documents.files(), IsEmpty()) << "left is selected before DOWN is looked at";
    draw(down({LcdButton::Left, LcdButton::Down}));
    EXPECT_EQ(documents.files().size(), 1U) << "no channel is selected any more";
}

TEST_F(MainPageButtons, OkShowsThePictureAloneAndTheStatisticsAgain) {
    EXPECT_TRUE(samePixels(draw(down({LcdButton::Ok})), picture()));
    EXPECT_TRUE(samePixels(draw(held({LcdButton::Ok})), picture()));
    drawAndCompare("statistics", down({LcdButton::Ok}));
}

TEST_F(MainPageButtons, PictureModeObeysNoButtonButOkAndMenu) {
    draw(down({LcdButton::Ok}));
    for (const LcdButton button :
         {LcdButton::Up, LcdButton::Right, LcdButton::Down, LcdButton::Left, LcdButton::Cancel}) {
        EXPECT_TRUE(samePixels(draw(down({button})), picture()));
    }
    EXPECT_THAT(documents.files(), IsEmpty());
    EXPECT_THAT(log, IsEmpty());
    drawAndCompare("nothing was selected meanwhile", down({LcdButton::Ok}));
}

TEST_F(MainPageButtons, PictureModeClearsDataReadyAndRecordsNothing) {
    draw(down({LcdButton::Ok}));
    sampler.dataReady = true;
    draw();
    EXPECT_FALSE(sampler.dataReady);
    drawAndCompare("the histories are empty", down({LcdButton::Ok}));
}

TEST_F(MainPageButtons, PictureModeWithoutThePictureLeavesThePageAsItWas) {
    MainPage bare(&app, &sampler, nullptr);
    Gdiplus::Graphics(bare.bitmap()).Clear(Gdiplus::Color(0xFF123456));
    const PagePixels before(*bare.bitmap());
    bare.Draw(app.canvas(), down({LcdButton::Ok}));
    EXPECT_TRUE(samePixels(PagePixels(*bare.bitmap()), before));
}

TEST_F(MainPageButtons, MenuOpensTheGivenPageAndDrawsNothing) {
    smear();
    const PagePixels before(*page->bitmap());
    sampler.dataReady = true;
    EXPECT_TRUE(samePixels(draw(down({LcdButton::Menu})), before));
    EXPECT_THAT(log, ElementsAre("menu.OnActivate"));
    EXPECT_TRUE(sampler.dataReady) << "the reading waits for the next drawing";
}

TEST_F(MainPageButtons, MenuWinsOverEveryOtherButton) {
    draw(down(
        {LcdButton::Menu, LcdButton::Ok, LcdButton::Left, LcdButton::Right, LcdButton::Up, LcdButton::Down}));
    EXPECT_THAT(log, ElementsAre("menu.OnActivate"));
    EXPECT_THAT(documents.files(), IsEmpty());
    drawAndCompare("no picture and no channel");
}

TEST_F(MainPageButtons, MenuOpensTheGivenPageInPictureModeToo) {
    draw(down({LcdButton::Ok}));
    draw(down({LcdButton::Menu}));
    EXPECT_THAT(log, ElementsAre("menu.OnActivate"));
    EXPECT_TRUE(samePixels(draw(), picture())) << "and the picture is still there on return";
}

TEST_F(MainPageButtons, MenuWithoutAPageBehindItDoesNothing) {
    MainPage lonely(&app, &sampler, nullptr);
    lonely.Draw(app.canvas(), down({LcdButton::Menu}));
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(MainPageButtons, AHeldMenuOpensNothing) {
    draw(held({LcdButton::Menu}));
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(MainPageButtons, TheMenuPageSlidesInFromTheBottom) {
    int passes = 0;
    menu->onUpdate = [&passes](const LcdButtons&) { return ++passes < 12; };
    ASSERT_TRUE(keyboard.addScriptStep(Panelix::LcdSdk::kButtonMenu, 1));
    app.Run();
    EXPECT_THAT(log, Contains("menu.OnActivate"));
    EXPECT_EQ(slideDirection(keyboard, 0xFF0000FF), Panelix::TransitionKind::SlideFromBottom);
}

TEST_F(MainPageButtons, SelectionAndGraphsOutliveAVisitToAnotherPage) {
    expected.selectedChannel = 2;
    draw(down({LcdButton::Left}));
    drawNewReading();
    sampler.cpuLoad = 90;
    drawNewReading();
    draw(down({LcdButton::Menu}));
    app.SwitchPage(page, Panelix::TransitionKind::SlideFromTop);
    drawAndCompare("back again");
}

}  // namespace
