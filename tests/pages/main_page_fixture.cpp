#include "tests/pages/main_page_fixture.h"

#include <algorithm>
#include <memory>

namespace {

constexpr std::size_t kHistoryLength = 201;

void addToHistory(std::deque<int>& history, int value) {
    history.push_front(value);
    history.resize(std::min(history.size(), kHistoryLength));
}

/// A pixel that a text covers wholly has the text's colour, unless something else was drawn over it.
void expectTextSeen(Panelix::Canvas* canvas, const PagePixels& shown, const PaintedText& text) {
    const TextCoverage coverage(canvas, text);
    if (text.argb >> 24 != 0xFFU) {
        return;
    }
    int covered = 0;
    int seen = 0;
    for (int y = 0; y < PagePixels::kHeight; ++y) {
        for (int x = 0; x < PagePixels::kWidth; ++x) {
            if (coverage.at(x, y) == 255) {
                ++covered;
                seen += shown.at(x, y) == text.argb ? 1 : 0;
            }
        }
    }
    EXPECT_GT(covered, 0);
    EXPECT_GE(seen * 10, covered * 9);
}

}  // namespace

MainPageOnKeyboard::MainPageOnKeyboard() {
    auto menuPage = std::make_unique<ProbePage>("menu", &app, &log, Gdiplus::Color(0xFF0000FF));
    auto mainPage = std::make_unique<MainPage>(&app, &sampler, menuPage.get());
    page = mainPage.get();
    menu = menuPage.get();
    app.SetMainPage(std::move(mainPage));
    app.AddPage(std::move(menuPage), false);
    setOrdinaryFigures(sampler);
}

PagePixels MainPageOnKeyboard::draw(const Panelix::LcdButtons& buttons) {
    clockBefore_ = sampler.dateTimeText();
    page->Draw(app.canvas(), buttons);
    clockAfter_ = sampler.dateTimeText();
    return PagePixels(*page->bitmap());
}

PagePixels MainPageOnKeyboard::drawNewReading() {
    sampler.dataReady = true;
    addToHistory(expected.cpuHistory, static_cast<int>(sampler.cpuLoad));
    if (sampler.gpuAvailable && sampler.gpuStats.loadValid) {
        addToHistory(expected.gpuHistory, sampler.gpuStats.load);
    }
    return draw();
}

void MainPageOnKeyboard::drawAndCompare(const std::string& state, const Panelix::LcdButtons& buttons) {
    compare(draw(buttons), state);
}

void MainPageOnKeyboard::compare(const PagePixels& shown, const std::string& state) {
    SCOPED_TRACE(state);
    expected.clock = clockBefore_;
    PagePainter painter(app.canvas());
    expected.paint(painter);
    if (clockBefore_ != clockAfter_ && painter.pixels() != shown) {
        // The second changed while the page was drawn.
        expected.clock = clockAfter_;
        PagePainter again(app.canvas());
        expected.paint(again);
        EXPECT_TRUE(samePixels(shown, again.pixels()));
    } else {
        EXPECT_TRUE(samePixels(shown, painter.pixels()));
    }
    for (const PaintedText& text : painter.texts()) {
        if (!text.text.empty() && text.text != clockBefore_) {
            SCOPED_TRACE(std::string(text.text.begin(), text.text.end()));
            expectTextSeen(app.canvas(), shown, text);
        }
    }
}

void MainPageOnKeyboard::drawWithinOneSecond(MainPage& other) {
    do {
        expected.clock = sampler.dateTimeText();
        other.Draw(app.canvas(), {});
    } while (expected.clock != sampler.dateTimeText());
}

void MainPageOnKeyboard::smear() {
    Gdiplus::Graphics graphics(page->bitmap());
    graphics.Clear(Gdiplus::Color(0xFF123456));
}
