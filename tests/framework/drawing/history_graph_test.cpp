#include "framework/drawing/history_graph.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <list>
#include <vector>

#include "tests/framework/drawing/drawing_fixture.h"

using Panelix::drawHistoryGraph;
using Panelix::HistoryGraph;
using Panelix::kLcdHeight;
using Panelix::kLcdWidth;

namespace {

constexpr std::uint32_t kGround = 0xFF000000;
constexpr std::uint32_t kArea = 0xFF204060;
constexpr std::uint32_t kBar = 0xFF00C000;
constexpr std::uint32_t kLine = 0xFFFFFF00;
constexpr std::uint32_t kLabel = 0xFFFFFFFF;

class HistoryGraphDrawing : public DrawingTest {
protected:
    void SetUp() override { screen_.fill(kGround); }

    HistoryGraph graph(int value, int barValue) const {
        return {.label = L"",
                .labelBrush = &labelBrush_,
                .areaBrush = &areaBrush_,
                .barBrush = &barBrush_,
                .linePen = &linePen_,
                .x = 20,
                .y = 60,
                .width = 10,
                .barGap = 3,
                .barWidth = 7,
                .value = value,
                .barValue = barValue};
    }

    Picture drawn(const HistoryGraph& graph, std::list<std::int32_t>& history, bool record = false) {
        drawHistoryGraph(screen_.graphics, graph, history, record);
        EXPECT_EQ(screen_.graphics.GetLastStatus(), Gdiplus::Ok);
        return screen_.picture();
    }

    static Picture ground() { return plainPicture(kLcdWidth, kLcdHeight, kGround); }

    static void paint(Picture& picture, int left, int top, int width, int height, std::uint32_t colour) {
        for (int y = top; y < top + height; ++y) {
            for (int x = left; x < left + width; ++x) {
                picture.pixels[static_cast<std::size_t>(y * kLcdWidth + x)] = colour;
            }
        }
    }

    /// One text as the graph should show it, on the ground.
    Picture textAlone(const wchar_t* text,
                      const wchar_t* familyName,
                      Gdiplus::REAL x,
                      Gdiplus::REAL y) const {
        Screen screen;
        screen.fill(kGround);
        const Gdiplus::FontFamily family(familyName);
        const Gdiplus::Font font(&family, 15.0F, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
        screen.graphics.DrawString(text, -1, &font, Gdiplus::PointF(x, y), &labelBrush_);
        return screen.picture();
    }

    Screen screen_;
    Gdiplus::SolidBrush labelBrush_{Gdiplus::Color(kLabel)};
    Gdiplus::SolidBrush areaBrush_{Gdiplus::Color(kArea)};
    Gdiplus::SolidBrush barBrush_{Gdiplus::Color(kBar)};
    Gdiplus::Pen linePen_{Gdiplus::Color(kLine)};
};

}  // namespace

TEST_F(HistoryGraphDrawing, AreaAndBarAreOnePixelPerPercentFromTheBottom) {
    for (const int value : {1, 50, 99, 100}) {
        screen_.fill(kGround);
        Picture expected = ground();
        paint(expected, 20, 160 - value, 10, value, kArea);
        paint(expected, 33, 160 - value / 2, 7, value / 2, kBar);
        std::list<std::int32_t> history;
        EXPECT_TRUE(samePicture(drawn(graph(value, value / 2), history), expected)) << value;
    }
}

TEST_F(HistoryGraphDrawing, ValueZeroDrawsNothing) {
    std::list<std::int32_t> history{0, 0, 0};
    EXPECT_TRUE(samePicture(drawn(graph(0, 0), history, true), ground()));
    EXPECT_EQ(history, (std::list<std::int32_t>{0, 0, 0, 0}));
}

TEST_F(HistoryGraphDrawing, ValuesAboveHundredDrawAboveThePlot) {
    Picture expected = ground();
    paint(expected, 20, 160 - 130, 10, 130, kArea);
    paint(expected, 33, 160 - 120, 7, 120, kBar);
    paint(expected, 29, 159 - 150, 1, 151, kLine);
    std::list<std::int32_t> history{150};
    EXPECT_TRUE(samePicture(drawn(graph(130, 120), history), expected));
}

TEST_F(HistoryGraphDrawing, ValuesBelowZeroDrawOnlyALineBelowThePlot) {
    Picture expected = ground();
    paint(expected, 29, 159, 1, 21, kLine);
    std::list<std::int32_t> history{-20};
    EXPECT_TRUE(samePicture(drawn(graph(-10, -10), history), expected));
}

TEST_F(HistoryGraphDrawing, NewestSampleIsAtTheRightEdge) {
    Picture expected = ground();
    paint(expected, 20, 130, 10, 30, kArea);
    paint(expected, 29, 159 - 30, 1, 31, kLine);
    paint(expected, 28, 159 - 70, 1, 71, kLine);
    paint(expected, 27, 159 - 5, 1, 6, kLine);
    std::list<std::int32_t> history{70, 5};
    EXPECT_TRUE(samePicture(drawn(graph(30, 0), history, true), expected));
    EXPECT_EQ(history, (std::list<std::int32_t>{30, 70, 5}));
}

TEST_F(HistoryGraphDrawing, WithoutRecordingTheHistoryStays) {
    std::list<std::int32_t> history{1, 2, 3};
    drawn(graph(50, 50), history, false);
    EXPECT_EQ(history, (std::list<std::int32_t>{1, 2, 3}));
}

TEST_F(HistoryGraphDrawing, AFullHistoryLosesItsOldestSample) {
    std::list<std::int32_t> history(10, 4);
    history.back() = 9;
    Picture expected = ground();
    paint(expected, 20, 153, 10, 7, kArea);
    paint(expected, 20, 155, 10, 5, kLine);
    paint(expected, 29, 152, 1, 8, kLine);
    EXPECT_TRUE(samePicture(drawn(graph(7, 0), history, true), expected));
    ASSERT_EQ(history.size(), 10U);
    EXPECT_EQ(history.front(), 7);
    EXPECT_EQ(history.back(), 4);
}

TEST_F(HistoryGraphDrawing, ATooLongHistoryShrinksByOneSamplePerCall) {
    // Five more than fit.
    std::list<std::int32_t> history(15, 3);
    drawn(graph(0, 0), history, false);
    EXPECT_EQ(history.size(), 14U);
    drawn(graph(0, 0), history, true);
    EXPECT_EQ(history.size(), 14U);
    drawn(graph(0, 0), history, false);
    EXPECT_EQ(history.size(), 13U);
}

TEST_F(HistoryGraphDrawing, SamplesThatDoNotFitAreDrawnLeftOfThePlot) {
    std::list<std::int32_t> history(14, 3);
    Picture expected = ground();
    paint(expected, 17, 156, 13, 4, kLine);
    EXPECT_TRUE(samePicture(drawn(graph(0, 0), history), expected));
}

TEST_F(HistoryGraphDrawing, AWidthOfZeroOrLessKeepsNothing) {
    for (const int width : {0, -1, -100}) {
        HistoryGraph narrow = graph(10, 0);
        narrow.width = width;
        std::list<std::int32_t> history;
        drawHistoryGraph(screen_.graphics, narrow, history, false);
        EXPECT_TRUE(history.empty());
        drawHistoryGraph(screen_.graphics, narrow, history, true);
        EXPECT_TRUE(history.empty());
    }
}

TEST_F(HistoryGraphDrawing, LabelIsArialFifteenPixelsHighAtTheBottomLeft) {
    HistoryGraph labelled = graph(0, 0);
    labelled.label = L"CPU 37 %";
    std::list<std::int32_t> history;
    // The plot's corner is at (20, 60).
    const Picture expected = textAlone(L"CPU 37 %", L"Arial", 22.0F, 141.0F);
    ASSERT_GT(countDifferences(expected, ground()), 100U) << "the font draws nothing";
    EXPECT_TRUE(samePicture(drawn(labelled, history), expected));
}

TEST_F(HistoryGraphDrawing, LabelIsNeitherWrappedNorClipped) {
    HistoryGraph labelled = graph(0, 0);
    labelled.label = L"a label far wider than its plot\nin two lines";
    std::list<std::int32_t> history;
    const Picture expected = textAlone(labelled.label.c_str(), L"Arial", 22.0F, 141.0F);
    ASSERT_GT(countDifferences(expected, ground()), 500U) << "the font draws nothing";
    EXPECT_TRUE(samePicture(drawn(labelled, history), expected));
}

TEST_F(HistoryGraphDrawing, LabelIsDrawnOverTheGraph) {
    HistoryGraph labelled = graph(100, 100);
    labelled.label = L"M";
    std::list<std::int32_t> history(10, 100);
    const Picture picture = drawn(labelled, history);
    EXPECT_GT(std::count(picture.pixels.begin(), picture.pixels.end(), kLabel), 0);
}

TEST_F(HistoryGraphDrawing, AMissingFontDrawsNoTextAndDoesNoHarm) {
    const Gdiplus::FontFamily family(L"No Such Font Family");
    EXPECT_EQ(family.GetLastStatus(), Gdiplus::FontFamilyNotFound);
    const Picture picture = textAlone(L"CPU 37 %", L"No Such Font Family", 22.0F, 141.0F);
    EXPECT_TRUE(samePicture(picture, ground()));
}

TEST_F(HistoryGraphDrawing, NullBrushesAndPenLeaveAStatusAndDrawTheRest) {
    HistoryGraph bare = graph(40, 20);
    bare.label = L"text";
    bare.labelBrush = nullptr;
    bare.areaBrush = nullptr;
    bare.linePen = nullptr;
    std::list<std::int32_t> history{10, 20};
    Picture expected = ground();
    paint(expected, 33, 140, 7, 20, kBar);
    drawHistoryGraph(screen_.graphics, bare, history, true);
    EXPECT_EQ(screen_.graphics.GetLastStatus(), Gdiplus::InvalidParameter);
    EXPECT_TRUE(samePicture(screen_.picture(), expected));
    EXPECT_EQ(history, (std::list<std::int32_t>{40, 10, 20}));
}
