#include "framework/drawing/graph_plates.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <list>
#include <optional>
#include <random>
#include <string>

#include "tests/framework/drawing/drawing_fixture.h"
#include "tests/support/failing_gdiplus.h"

using Panelix::drawHistoryGraph;
using Panelix::HistoryGraph;
using Panelix::kLcdHeight;
using Panelix::kLcdWidth;

namespace {

constexpr int kWidth = 201;

/// The graphs of the program, in its colours, over a ground of random pixels.
class GraphPlates : public DrawingTest {
protected:
    GraphPlates() {
        std::mt19937 random(5);
        for (int y = 0; y < kLcdHeight; ++y) {
            for (int x = 0; x < kLcdWidth; ++x) {
                ground_.bitmap.SetPixel(
                    x, y, Gdiplus::Color(0xFF000000U | static_cast<std::uint32_t>(random())));
            }
        }
        EXPECT_TRUE(savedGround_.save(ground_.bitmap, Panelix::kWholeLcd));
    }

    HistoryGraph graph(int y, int value) const {
        return {.label = L"",
                .labelBrush = &areaBrush_,
                .areaBrush = &areaBrush_,
                .barBrush = &areaBrush_,
                .linePen = &linePen_,
                .x = 4,
                .y = y,
                .width = kWidth,
                .barGap = 4,
                .barWidth = 18,
                .value = value,
                .barValue = 0};
    }

    std::optional<Panelix::GraphPlates> make(int y) const {
        return Panelix::GraphPlates::make(savedGround_, graph(y, 37));
    }

    /// Compares with what drawHistoryGraph draws.
    void expectSame(const Panelix::GraphPlates& plates,
                    int y,
                    int value,
                    std::list<std::int32_t> history,
                    const std::string& what) {
        savedGround_.writeTo(chosen_.bitmap);
        EXPECT_TRUE(plates.drawPlot(chosen_.bitmap, value, history)) << what;
        savedGround_.writeTo(drawn_.bitmap);
        drawHistoryGraph(drawn_.graphics, graph(y, value), history, false);
        EXPECT_TRUE(samePicture(chosen_.picture(), drawn_.picture())) << what;
        EXPECT_EQ(chosen_.bitmap.GetLastStatus(), Gdiplus::Ok);
    }

    void expectLeftAlone(const Panelix::GraphPlates& plates,
                         int value,
                         const std::list<std::int32_t>& history) {
        const Picture before = chosen_.picture();
        EXPECT_FALSE(plates.drawPlot(chosen_.bitmap, value, history));
        EXPECT_TRUE(samePicture(chosen_.picture(), before));
    }

    Screen ground_;
    Screen chosen_;
    Screen drawn_;
    Panelix::SavedPixels savedGround_;
    Gdiplus::SolidBrush areaBrush_{Gdiplus::Color(0x64FF0000)};
    Gdiplus::Pen linePen_{Gdiplus::Color(0x96006FF0), 1.0F};
};

TEST_F(GraphPlates, GiveWhatIsDrawnForEveryLevelAndEverySample) {
    for (const int y : {4, 109}) {
        const auto plates = make(y);
        ASSERT_TRUE(plates);
        // Both halves of the plot have all samples, in each order.
        std::list<std::int32_t> history;
        for (int sample = 0; sample <= 100; ++sample) {
            history.push_back(sample);
        }
        for (int sample = 100; sample > 0; --sample) {
            history.push_back(sample);
        }
        ASSERT_EQ(history.size(), std::size_t{kWidth});
        for (int value = 0; value <= 100; ++value) {
            expectSame(*plates, y, value, history, "level " + std::to_string(value));
        }
    }
}

TEST_F(GraphPlates, GiveWhatIsDrawnForHistoriesOfAnyLength) {
    const auto plates = make(4);
    ASSERT_TRUE(plates);
    for (const std::size_t length : {0U, 1U, 100U, 200U, 201U}) {
        expectSame(*plates, 4, 50, std::list<std::int32_t>(length, 100), std::to_string(length));
        expectSame(*plates, 4, 50, std::list<std::int32_t>(length, 0), std::to_string(length));
    }
}

TEST_F(GraphPlates, LeaveFiguresBeyondTheScaleToDrawing) {
    const auto plates = make(4);
    ASSERT_TRUE(plates);
    savedGround_.writeTo(chosen_.bitmap);
    for (const int figure : {-1, 101, -400, 400}) {
        expectLeftAlone(*plates, figure, {50});
        expectLeftAlone(*plates, 50, {50, figure});
        expectLeftAlone(*plates, 50, {figure, 50});
    }
    expectLeftAlone(*plates, 50, std::list<std::int32_t>(kWidth + 1, 50));
    EXPECT_TRUE(plates->drawPlot(chosen_.bitmap, 50, {50}));
}

TEST_F(GraphPlates, LeaveAnotherGroundToDrawing) {
    const auto plates = make(4);
    ASSERT_TRUE(plates);
    for (const Gdiplus::Point& place :
         {Gdiplus::Point(4, 3), Gdiplus::Point(204, 103), Gdiplus::Point(4, 103)}) {
        savedGround_.writeTo(chosen_.bitmap);
        Gdiplus::Color before;
        chosen_.bitmap.GetPixel(place.X, place.Y, &before);
        chosen_.bitmap.SetPixel(place.X, place.Y, Gdiplus::Color(before.GetValue() ^ 1U));
        expectLeftAlone(*plates, 50, {50});
    }
    savedGround_.writeTo(chosen_.bitmap);
    chosen_.bitmap.SetPixel(205, 50, Gdiplus::Color(0xFF000000));
    EXPECT_TRUE(plates->drawPlot(chosen_.bitmap, 50, {50})) << "the plot's own ground is the same";
}

TEST_F(GraphPlates, ABitmapThatCannotBeLockedKeepsItsStatus) {
    const auto plates = make(4);
    ASSERT_TRUE(plates);
    Gdiplus::Bitmap tooSmall(10, 10, PixelFormat32bppPARGB);
    EXPECT_FALSE(plates->drawPlot(tooSmall, 50, {50}));
    EXPECT_NE(tooSmall.GetLastStatus(), Gdiplus::Ok);
}

TEST_F(GraphPlates, AreNotMadeWhenACallHasFailed) {
    FailingGdiplus gdiplus;
    // Lines are many, and one of them is like the others.
    for (int call = 1;; call += call > 60 ? 31 : 1) {
        gdiplus.failCall(call);
        const bool made = make(4).has_value();
        ASSERT_EQ(made, !gdiplus.hasFailed()) << "call " << call;
        if (made) {
            EXPECT_GT(call, 500) << "of two plates' lines and more";
            break;
        }
    }
}

}  // namespace
