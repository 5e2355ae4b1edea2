#include "framework/drawing/history_graph.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <list>
#include <vector>

#include "tests/framework/drawing/drawing_fixture.h"
#include "tests/support/gdiplus_ledger.h"
#include "tests/support/import_override.h"

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

constexpr int kLeast = std::numeric_limits<int>::min();
constexpr int kMost = std::numeric_limits<int>::max();

/// A line or a rectangle as GDI+ was given it; of a line the second point takes the size's place.
struct DrawnShape {
    int x;
    int y;
    int width;
    int height;

    friend bool operator==(const DrawnShape&, const DrawnShape&) = default;
};

std::vector<DrawnShape> drawnLines;
std::vector<DrawnShape> filledRectangles;

Gdiplus::GpStatus WINGDIPAPI noteLine(Gdiplus::GpGraphics*, Gdiplus::GpPen*, INT x1, INT y1, INT x2, INT y2) {
    drawnLines.push_back({x1, y1, x2, y2});
    return Gdiplus::Ok;
}

Gdiplus::GpStatus WINGDIPAPI
noteRectangle(Gdiplus::GpGraphics*, Gdiplus::GpBrush*, INT x, INT y, INT width, INT height) {
    filledRectangles.push_back({x, y, width, height});
    return Gdiplus::Ok;
}

/// Takes lines and rectangles away from GDI+ and notes them.
struct NotedShapes {
    NotedShapes() {
        drawnLines.clear();
        filledRectangles.clear();
    }

    ImportOverride line{"gdiplus.dll", "GdipDrawLineI", noteLine};
    ImportOverride rectangle{"gdiplus.dll", "GdipFillRectangleI", noteRectangle};
};

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

TEST_F(HistoryGraphDrawing, EveryEntryIsALineFromThePlotsFootAndAZeroOneHasNoLength) {
    std::list<std::int32_t> history{0, 7, 0};
    const NotedShapes noted;
    drawHistoryGraph(screen_.graphics, graph(0, 0), history, false);
    const std::vector<DrawnShape> lines{{29, 159, 29, 159}, {28, 159, 28, 152}, {27, 159, 27, 159}};
    EXPECT_EQ(drawnLines, lines);
    const std::vector<DrawnShape> rectangles{{20, 160, 10, 0}, {33, 160, 7, 0}};
    EXPECT_EQ(filledRectangles, rectangles);
}

TEST_F(HistoryGraphDrawing, WhatShowsIsDrawnAsIfNothingWereCutOff) {
    // Half transparent, and all over each other: what is drawn twice shows.
    const Gdiplus::SolidBrush area{Gdiplus::Color(0x64FF0000)};
    const Gdiplus::SolidBrush bar{Gdiplus::Color(0xC8FF3C00)};
    const Gdiplus::Pen line{Gdiplus::Color(0x96FF0000), 1.0F};
    Screen uncut;
    for (int value = -400; value <= 400; ++value) {
        HistoryGraph mad = graph(value, -value);
        mad.areaBrush = &area;
        mad.barBrush = &bar;
        mad.linePen = &line;
        // The plots of the main page, and some that reach over the LCD's edges themselves.
        constexpr std::array<int, 5> kTops{4, 109, -60, 200, 300};
        mad.y = kTops[static_cast<std::size_t>(value + 400) % kTops.size()];
        std::list<std::int32_t> history{value, -value, value / 2, 300 - value};
        screen_.fill(0xFF808080);
        drawHistoryGraph(screen_.graphics, mad, history, false);

        uncut.fill(0xFF808080);
        const int bottom = mad.y + 100;
        uncut.graphics.FillRectangle(&area, 20, bottom - value, 10, value);
        uncut.graphics.FillRectangle(&bar, 33, bottom + value, 7, -value);
        int column = 29;
        for (const std::int32_t sample : history) {
            uncut.graphics.DrawLine(&line, column, bottom - 1, column, bottom - 1 - sample);
            --column;
        }
        ASSERT_TRUE(samePicture(screen_.picture(), uncut.picture())) << value << " at " << mad.y;
    }
}

TEST_F(HistoryGraphDrawing, MadFiguresReachGdiplusAsFarAsTheLcdGoesOnly) {
    for (const int value : {kLeast, kLeast + 1, -1'000'000'000, 1'000'000'000, kMost - 1, kMost}) {
        std::list<std::int32_t> history{value, 50};
        {
            const NotedShapes noted;
            drawHistoryGraph(screen_.graphics, graph(value, value), history, true);
        }
        ASSERT_EQ(drawnLines.size(), 3U);
        ASSERT_EQ(filledRectangles.size(), 2U);
        for (const DrawnShape& line : drawnLines) {
            EXPECT_GE(std::min(line.y, line.height), -1) << value;
            EXPECT_LE(std::max(line.y, line.height), kLcdHeight) << value;
        }
        for (const DrawnShape& rectangle : filledRectangles) {
            EXPECT_GE(std::min(rectangle.y, rectangle.y + rectangle.height), -1) << value;
            EXPECT_LE(std::max(rectangle.y, rectangle.y + rectangle.height), kLcdHeight) << value;
        }
        EXPECT_EQ(history, (std::list<std::int32_t>{value, value, 50})) << "the history keeps what was read";
    }
}

TEST_F(HistoryGraphDrawing, AMadFigureLooksLikeTheFirstOneBeyondTheLcd) {
    for (const int sign : {-1, 1}) {
        std::list<std::int32_t> history{400 * sign};
        screen_.fill(kGround);
        const Picture expected = drawn(graph(400 * sign, 400 * sign), history);
        history = {sign < 0 ? kLeast : kMost};
        screen_.fill(kGround);
        EXPECT_TRUE(samePicture(drawn(graph(history.front(), history.front()), history), expected));
    }
}

TEST_F(HistoryGraphDrawing, GivesBackEverythingThatADrawingTakes) {
    HistoryGraph labelled = graph(40, 20);
    labelled.label = L"CPU";
    std::list<std::int32_t> history{10};
    const GdiplusLedger ledger;
    drawHistoryGraph(screen_.graphics, labelled, history, true);
    EXPECT_EQ(ledger.taken(), (GdiplusLedger::Numbers{{"font", 1}, {"font family", 1}}));
    EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{});
}
