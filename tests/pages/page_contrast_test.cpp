#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

#include "pages/options_page.h"
#include "tests/pages/contrast.h"
#include "tests/pages/frame_dump.h"
#include "tests/pages/main_page_fixture.h"
#include "tests/pages/text_contrast.h"

// Readability of every text and icon on real frames, with the figures printed. Under the fixed colours some
// texts over full graphs cannot reach the wanted contrast on any ground; those must come close to the best
// that the colours allow.

namespace {

using Panelix::LcdButton;
using Ground = ExpectedMainPage::Ground;

constexpr double kWanted = 4.5;
/// Share of the best possible contrast that the artwork must leave where kWanted is out of reach.
constexpr double kShareOfBest = 0.95;
/// For icons, as for other graphics that one must be able to tell apart.
constexpr double kWantedForIcons = 3.0;

void printHeading(const char* state) {
    std::printf("%s\n    %-38s %8s %8s %8s  at\n", state, "text", "minimum", "5 %", "best");
}

void check(const TextContrast& contrast) {
    std::string name(contrast.text.begin(), contrast.text.end());
    for (char& character : name) {
        character = character >= ' ' && character <= '~' ? character : '.';
    }
    std::printf("    %-38.38s %8.2f %8.2f %8.2f  %d, %d\n",
                name.c_str(),
                contrast.minimum,
                contrast.fifthPercentile,
                contrast.bestMinimum,
                contrast.minimumX,
                contrast.minimumY);
    EXPECT_GE(contrast.minimum, std::min(kWanted, contrast.bestMinimum * kShareOfBest)) << name;
}

class MainPageContrast : public MainPageOnKeyboard {
protected:
    void measure(const char* state, const Panelix::LcdButtons& buttons = {}) {
        SCOPED_TRACE(state);
        printHeading(state);
        draw(buttons);
        drawWithinOneSecond(*page);
        const PagePixels shown(*page->bitmap());
        dumpFrame(*page->bitmap(), state);
        PagePainter onBlack(app.canvas(), PagePainter::Texts::LeaveOut);
        expected.paint(onBlack, Ground::Black);
        PagePainter onWhite(app.canvas(), PagePainter::Texts::LeaveOut);
        expected.paint(onWhite, Ground::White);
        const ContrastFrames frames{shown, onBlack.pixels(), onWhite.pixels()};
        for (const TextContrast& contrast : measureTexts(app.canvas(), onBlack.texts(), frames)) {
            check(contrast);
        }
    }

    void fillHistories() {
        sampler.cpuLoad = 100;
        sampler.gpuStats.load = 100;
        for (int i = 0; i < 201; ++i) {
            drawNewReading();
        }
    }

    void setLevels(int percent) {
        sampler.cpuLoad = static_cast<std::uint32_t>(percent);
        sampler.memoryLoad = percent;
        sampler.gpuStats.load = percent;
        sampler.gpuStats.memoryLoad = percent;
    }
};

TEST_F(MainPageContrast, OverEmptyGraphs) {
    setLevels(0);
    measure("empty graphs");
    sampler.coreTempAvailable = false;
    sampler.gpuAvailable = false;
    measure("no Core Temp, no GPU");
}

TEST_F(MainPageContrast, OverFullLevels) {
    setLevels(100);
    measure("full levels without history");
    sampler.coreTempAvailable = false;
    sampler.gpuStats.temperatureValid = false;
    measure("no Core Temp, GPU errors, full levels");
}

TEST_F(MainPageContrast, OverFullHistories) {
    fillHistories();
    setLevels(0);
    measure("full histories, empty levels");
    setLevels(100);
    measure("full histories and levels");
    sampler.coreTempAvailable = false;
    sampler.gpuStats.temperatureValid = false;
    measure("no Core Temp, GPU errors, full histories and levels");
    sampler.gpuAvailable = false;
    measure("no GPU behind full histories");
}

TEST_F(MainPageContrast, OverGraphsInUse) {
    for (int i = 0; i < 201; ++i) {
        sampler.cpuLoad = static_cast<std::uint32_t>(i * 37 % 101);
        sampler.gpuStats.load = i * 53 % 101;
        drawNewReading();
    }
    setOrdinaryFigures(sampler);
    measure("ordinary figures");
}

TEST_F(MainPageContrast, OfNamesThatRunOnOverTheSideBar) {
    sampler.cpuName = L"Intel Core i9-10980XE (Cascade)";
    sampler.gpuName = L"NVIDIA GeForce RTX 4090 Lap";
    for (const int percent : {0, 100}) {
        setLevels(percent);
        measure("long names");
    }
}

TEST_F(MainPageContrast, OfTheVolumes) {
    for (const int volume : {0, 50, 100}) {
        sampler.speakerLeftVolume = volume;
        sampler.speakerRightVolume = volume;
        sampler.speakerMasterVolume = volume;
        expected.selectedChannel = 0;
        measure("master volume");
        expected.selectedChannel = 1;
        measure("left channel selected", down({LcdButton::Right}));
        expected.selectedChannel = 2;
        measure("right channel selected", down({LcdButton::Right}));
        draw(down({LcdButton::Right}));
    }
}

TEST_F(MainPageContrast, OfTheMailCountBesideEveryIcon) {
    for (const int count : {3, 128}) {
        for (const int battery : {0, 3, 4, 5}) {
            sampler.unreadMail = count;
            sampler.gamepadBattery = battery;
            sampler.microphoneMuted = battery % 2 == 0;
            sampler.speakerMuted = battery > 3;
            measure("mail and icons");
        }
    }
}

TEST_F(MainPageContrast, OfTheIcons) {
    const auto checkIcon = [this](const char* name, int x, int width, int height, int y = 112) {
        const double contrast = iconContrast(draw(), x, y, width, height);
        std::printf("    %-38s %8.2f\n", name, contrast);
        EXPECT_GE(contrast, kWantedForIcons) << name;
    };
    checkIcon("microphone on", 232, 25, 37);
    checkIcon("speaker on", 256, 18, 37);
    sampler.microphoneMuted = true;
    sampler.speakerMuted = true;
    checkIcon("microphone muted", 232, 25, 37);
    checkIcon("speaker muted", 256, 18, 37);
    for (const int battery : {3, 4, 5}) {
        sampler.gamepadBattery = battery;
        checkIcon(("battery " + std::to_string(battery)).c_str(), 274, 42, 37);
    }
    for (int i = 0; i < 9; ++i) {
        page->Update(true, {});
    }
    setOrdinaryFigures(sampler);
    sampler.gamepadBattery = 2;
    checkIcon("battery 2", 274, 42, 37);
    sampler.unreadMail = 3;
    checkIcon("mail", 235, 34, 22, 155);
}

TEST_F(MainPageContrast, OfTheVolumeBarsOnTheirTracks) {
    sampler.speakerLeftVolume = 50;
    sampler.speakerRightVolume = 50;
    for (const Panelix::LcdButtons& buttons :
         {Panelix::LcdButtons{}, down({LcdButton::Right}), down({LcdButton::Right})}) {
        const PagePixels shown = draw(buttons);
        for (const int x : {280, 300}) {
            // The quarter lines are no part of the track's ground.
            const double contrast = contrastRatio(shown.at(x + 8, 20), shown.at(x + 8, 95));
            std::printf("    %-38s %8.2f\n", "volume bar", contrast);
            EXPECT_GE(contrast, kWantedForIcons) << x;
        }
    }
}

class ListContrast : public WithKeyboard {
protected:
    /// Measures the list as it stands in `shown`.
    void measure(const char* state,
                 const PagePixels& shown,
                 const std::vector<PaintedText>& texts,
                 const std::function<void(PagePainter&)>& paintBetween) {
        SCOPED_TRACE(state);
        printHeading(state);
        PagePainter onBlack(app.canvas());
        onBlack.clear(0xFF000000);
        paintBetween(onBlack);
        PagePainter onWhite(app.canvas());
        onWhite.clear(0xFFFFFFFF);
        paintBetween(onWhite);
        const ContrastFrames frames{shown, onBlack.pixels(), onWhite.pixels()};
        for (const TextContrast& contrast : measureTexts(app.canvas(), texts, frames)) {
            check(contrast);
        }
    }

    ProbeApp app;
};

/// Six rows: the active device's and the cursor's among them.
class SixRows : public ListPage {
public:
    explicit SixRows(Panelix::App* app) : ListPage(L"six rows", app) {}
    bool Update(bool, const Panelix::LcdButtons&) override { return true; }
    void Draw(Panelix::Canvas*, const Panelix::LcdButtons&) override {
        std::vector<Row> rows(6, Row{L"Speakers (High Definition)"});
        rows[1].highlight = Palette::kListActiveDevice;
        rows[4].highlight = Palette::kListCursor;
        showList(L"Active Audio Device", ListLayout::kRightArrow, rows);
    }
};

TEST_F(ListContrast, OfTitleAndRows) {
    SixRows page(&app);
    page.Init(app.canvas());
    page.Draw(app.canvas(), {});
    std::vector<PaintedText> texts{{L"Active Audio Device", 20, 0xFFFFFFFF, 160, 18, TextPlace::Centre}};
    for (int i = 0; i < 6; ++i) {
        const float top = i == 0 ? 36.0F : static_cast<float>(40 + 29 * i);
        texts.push_back(
            {L"Speakers (High Definition)", 20, 0xFFFFFFFF, 5, top + 14.5F, TextPlace::LeftMiddle});
    }
    dumpFrame(*page.bitmap(), "list of devices");
    measure("list of devices", PagePixels(*page.bitmap()), texts, [](PagePainter& painter) {
        painter.fill(4, 69, 312, 29, 0xC8008080);
        painter.fill(4, 156, 312, 29, 0x3280FFFF);
    });
    const double arrow = iconContrast(PagePixels(*page.bitmap()), 293, 8, 20, 20);
    std::printf("    %-38s %8.2f\n", "arrow", arrow);
    EXPECT_GE(arrow, kWantedForIcons);
}

TEST_F(ListContrast, OfTheOptions) {
    OptionsPage page(&app);
    page.Init(app.canvas());
    const int tops[] = {36, 69, 98};
    for (const int top : tops) {
        page.Draw(app.canvas(), top == 36 ? Panelix::LcdButtons{} : down({LcdButton::Down}));
        dumpFrame(*page.bitmap(), "options");
        measure("options",
                PagePixels(*page.bitmap()),
                {{L"Options", 20, 0xFFFFFFFF, 160, 18, TextPlace::Centre},
                 {L"About", 20, 0xFFFFFFFF, 5, 50.5F, TextPlace::LeftMiddle},
                 {L"Settings", 20, 0xFFFFFFFF, 5, 83.5F, TextPlace::LeftMiddle},
                 {L"Exit Applet", 20, 0xFFFFFFFF, 5, 112.5F, TextPlace::LeftMiddle}},
                [top](PagePainter& painter) { painter.fill(4, top, 312, 29, 0x3280FFFF); });
    }
}

}  // namespace
