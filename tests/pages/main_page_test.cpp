#include "pages/main_page.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

#include "tests/pages/main_page_fixture.h"
#include "tests/support/gdiplus_ledger.h"
#include "tests/support/import_override.h"

namespace {

using Panelix::LcdButton;
using Panelix::LcdButtons;

using MainPageLook = MainPageOnKeyboard;

struct State {
    const char* name;
    std::function<void(SystemInfo&)> set;
};

TEST_F(MainPageLook, IsTheStartValuesBeforeTheFirstReading) {
    SystemInfo fresh;
    MainPage freshPage(&app, &fresh, nullptr);
    freshPage.Init(app.canvas());
    expected.snapshot = &fresh;
    drawWithinOneSecond(freshPage);
    PagePainter painter(app.canvas());
    expected.paint(painter);
    EXPECT_TRUE(samePixels(PagePixels(*freshPage.bitmap()), painter.pixels()));
}

TEST_F(MainPageLook, FollowsTheCpuFigures) {
    const State states[] = {
        {"ordinary", [](SystemInfo&) {}},
        {"Fahrenheit", [](SystemInfo& info) { info.cpuTempFahrenheit = true; }},
        {"negative temperature", [](SystemInfo& info) { info.cpuTemperature = -7; }},
        {"no voltage", [](SystemInfo& info) { info.cpuVid = 0.0F; }},
        {"no name and no clock",
         [](SystemInfo& info) {
             info.cpuName.clear();
             info.cpuClockText.clear();
         }},
        {"idle",
         [](SystemInfo& info) {
             info.cpuLoad = 0;
             info.memoryLoad = 0;
         }},
        {"full",
         [](SystemInfo& info) {
             info.cpuLoad = 100;
             info.memoryLoad = 100;
         }},
        {"beyond the scale",
         [](SystemInfo& info) {
             info.cpuLoad = 150;
             info.memoryLoad = -20;
         }},
        {"Core Temp does not run", [](SystemInfo& info) { info.coreTempAvailable = false; }},
    };
    for (const State& state : states) {
        setOrdinaryFigures(sampler);
        state.set(sampler);
        drawAndCompare(state.name);
    }
}

TEST_F(MainPageLook, FollowsTheGpuFigures) {
    const State states[] = {
        {"no card", [](SystemInfo& info) { info.gpuAvailable = false; }},
        {"idle card",
         [](SystemInfo& info) {
             info.gpuStats.load = 0;
             info.gpuStats.memoryLoad = 0;
             info.gpuStats.coreClock = 0;
             info.gpuStats.temperature = 0;
         }},
        {"busy card",
         [](SystemInfo& info) {
             info.gpuStats.load = 100;
             info.gpuStats.memoryLoad = 100;
             info.gpuStats.coreClock = 1'999'999;
             info.gpuStats.temperature = 105;
         }},
        {"Celsius although the CPU's unit is Fahrenheit",
         [](SystemInfo& info) { info.cpuTempFahrenheit = true; }},
        {"no load", [](SystemInfo& info) { info.gpuStats.loadValid = false; }},
        {"no temperature", [](SystemInfo& info) { info.gpuStats.temperatureValid = false; }},
        {"no memory load", [](SystemInfo& info) { info.gpuStats.memoryLoadValid = false; }},
        {"no clock", [](SystemInfo& info) { info.gpuStats.coreClockValid = false; }},
        {"nothing", [](SystemInfo& info) { info.gpuStats = {}; }},
        {"stale figures of a card that is gone",
         [](SystemInfo& info) {
             info.gpuAvailable = false;
             info.gpuStats.load = 80;
         }},
    };
    for (const State& state : states) {
        setOrdinaryFigures(sampler);
        state.set(sampler);
        drawAndCompare(state.name);
    }
}

TEST_F(MainPageLook, OneMadFigureIsDrawnAsFarAsTheLcdGoesAndStaysInTheHistory) {
    const auto setAll = [this](std::int32_t value) {
        sampler.cpuLoad = static_cast<std::uint32_t>(value);
        sampler.memoryLoad = value;
        sampler.gpuStats.load = value;
        sampler.gpuStats.memoryLoad = value;
    };
    for (const std::int32_t figure :
         {std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()}) {
        setAll(figure);
        sampler.dataReady = true;
        draw();
        drawWithinOneSecond(*page);
        // The same to the eye, and nothing that the test's own drawing could not cope with.
        const int likeIt = figure > 0 ? 400 : -400;
        setAll(likeIt);
        expected.cpuHistory.push_front(likeIt);
        expected.gpuHistory.push_front(likeIt);
        PagePainter painter(app.canvas());
        expected.paint(painter);
        EXPECT_TRUE(samePixels(PagePixels(*page->bitmap()), painter.pixels())) << figure;
    }
}

TEST_F(MainPageLook, ShowsIconAndCountForUnreadMailOnly) {
    sampler.unreadMail = 0;
    const PagePixels without = draw();
    compare(without, "no mail");
    sampler.unreadMail = -1;
    drawAndCompare("mail unknown");
    for (const int count : {1, 3, 128, 12345}) {
        sampler.unreadMail = count;
        const PagePixels with = draw();
        compare(with, std::to_string(count));
        EXPECT_FALSE(with == without);
    }
}

TEST_F(MainPageLook, HasOneIconPerState) {
    for (const bool microphoneMuted : {false, true}) {
        for (const bool speakerMuted : {false, true}) {
            sampler.microphoneMuted = microphoneMuted;
            sampler.speakerMuted = speakerMuted;
            drawAndCompare("muted");
        }
    }
    for (const int battery : {-1, 0, 1, 2, 3, 4, 5, 6}) {
        sampler.gamepadBattery = battery;
        drawAndCompare("battery " + std::to_string(battery));
    }
}

TEST_F(MainPageLook, FollowsTheVolumes) {
    struct Volumes {
        int left;
        int right;
        int master;
    };
    for (const Volumes& v : {Volumes{0, 0, 0}, {100, 100, 100}, {1, 99, 7}, {-5, 150, 1234}}) {
        sampler.speakerLeftVolume = v.left;
        sampler.speakerRightVolume = v.right;
        sampler.speakerMasterVolume = v.master;
        drawAndCompare("master " + std::to_string(v.master));
    }
}

TEST_F(MainPageLook, LetsLongNamesRunOnInOneLineUnderWhatIsDrawnLater) {
    for (const std::size_t length : {60U, 1000U}) {
        sampler.cpuName.assign(length, L'W');
        sampler.gpuName.assign(length, L'M');
        drawWithinOneSecond(*page);
        PagePainter painter(app.canvas());
        expected.paint(painter);
        EXPECT_TRUE(samePixels(PagePixels(*page->bitmap()), painter.pixels())) << length;
    }
}

TEST_F(MainPageLook, WithoutItsImagesShowsEverythingElse) {
    MainPage bare(&app, &sampler, nullptr);
    sampler.unreadMail = 3;
    sampler.gamepadBattery = 5;
    drawWithinOneSecond(bare);
    PagePainter painter(app.canvas());
    expected.paint(painter, ExpectedMainPage::Ground::Empty);
    EXPECT_TRUE(samePixels(PagePixels(*bare.bitmap()), painter.pixels()));
}

TEST_F(MainPageLook, ShowsTheEmptyBatteryForNineUpdatesAndHidesItForNine) {
    for (int phase = 0; phase < 4; ++phase) {
        for (int update = 0; update < 9; ++update) {
            sampler.gamepadBattery = 2;
            expected.blinkOn = phase % 2 == 1;
            drawAndCompare("phase " + std::to_string(phase) + ", update " + std::to_string(update));
            EXPECT_TRUE(page->Update(false, {}));
            setOrdinaryFigures(sampler);
        }
    }
}

/// The resources that were asked for, in order.
std::vector<std::uintptr_t> loadedResources;
decltype(Gdiplus::DllExports::GdipCreateBitmapFromResource)* createFromResource = nullptr;
decltype(FindResourceW)* findResource = nullptr;

Gdiplus::GpStatus WINGDIPAPI noteBitmap(HINSTANCE module, GDIPCONST WCHAR* id, Gdiplus::GpBitmap** bitmap) {
    loadedResources.push_back(reinterpret_cast<std::uintptr_t>(id));
    return createFromResource(module, id, bitmap);
}

HRSRC WINAPI noteResource(HMODULE module, LPCWSTR id, LPCWSTR type) {
    loadedResources.push_back(reinterpret_cast<std::uintptr_t>(id));
    return findResource(module, id, type);
}

TEST_F(MainPageLook, LoadsItsImagesInOrderAndOnce) {
    loadedResources.clear();
    const ImportOverride bitmaps("gdiplus.dll", "GdipCreateBitmapFromResource", noteBitmap);
    createFromResource = bitmaps.original<decltype(noteBitmap)>();
    const ImportOverride pngs("kernel32.dll", "FindResourceW", noteResource);
    findResource = pngs.original<decltype(noteResource)>();
    Panelix::Canvas fresh;
    page->Init(&fresh);
    page->Init(&fresh);
    EXPECT_THAT(loadedResources,
                testing::ElementsAre(108, 104, 105, 107, 106, 130, 136, 131, 137, 133, 135, 134, 132));
    page->Init(app.canvas());
}

TEST_F(MainPageLook, GivesBackEverythingThatADrawingTakes) {
    sampler.unreadMail = 3;
    sampler.gamepadBattery = 5;
    const GdiplusLedger ledger;
    for (const LcdButtons& buttons :
         {LcdButtons{}, down({LcdButton::Right}), down({LcdButton::Ok}), down({LcdButton::Ok})}) {
        sampler.dataReady = true;
        draw(buttons);
    }
    EXPECT_GT(ledger.taken().size(), 5U);
    EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{});
}

TEST_F(MainPageLook, GoesWithItsBitmapAndItsGraphics) {
    const GdiplusLedger ledger;
    {
        MainPage other(&app, &sampler, nullptr);
        other.Init(app.canvas());
        other.Draw(app.canvas(), {});
        EXPECT_EQ(ledger.outstanding(), (GdiplusLedger::Numbers{{"graphics", 1}, {"image", 1}}));
    }
    EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{});
}

TEST_F(MainPageLook, IsTheSameAfterASecondInitialisation) {
    page->Init(app.canvas());
    sampler.unreadMail = 1;
    drawAndCompare("initialised twice");
}

using MainPageUpdate = MainPageOnKeyboard;

TEST_F(MainPageUpdate, DrivesTheSamplerWhetherOrNotThePageIsShown) {
    ASSERT_FALSE(sampler.dataReady);
    EXPECT_TRUE(page->Update(false, {}));
    EXPECT_TRUE(sampler.dataReady);
}

TEST_F(MainPageUpdate, NeverAsksToEndTheProgram) {
    for (const LcdButton button : {LcdButton::Menu, LcdButton::Ok, LcdButton::Cancel}) {
        EXPECT_TRUE(page->Update(true, down({button})));
    }
}

}  // namespace
