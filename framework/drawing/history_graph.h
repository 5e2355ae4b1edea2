#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <cstdint>
#include <list>
#include <string>

namespace Panelix {

/// One history graph on a page: a plot kPlotHeightPx high, one pixel per percent, with a bar at its right.
struct HistoryGraph {
    std::wstring label;
    /// Brushes and pen are borrowed; a null one makes GDI+ record a failure and draw nothing.
    const Gdiplus::Brush* labelBrush;
    const Gdiplus::Brush* areaBrush;
    const Gdiplus::Brush* barBrush;
    const Gdiplus::Pen* linePen;
    /// Top-left corner of the plot.
    int x;
    int y;
    /// Width of the plot in pixels, which is also the number of samples kept.
    int width;
    int barGap;
    int barWidth;
    /// Current reading and bar in percent. Any value; those outside 0 to 100 draw outside the plot, as far as
    /// the LCD goes.
    int value;
    int barValue;
};

/// Draws `graph` on `target` with the samples of `history` (newest first, owned by the caller). With `record`
/// the current value is added first. At most one sample is dropped per call when there are more than fit.
/// Failures stay in target's last status.
void drawHistoryGraph(Gdiplus::Graphics& target,
                      const HistoryGraph& graph,
                      std::list<std::int32_t>& history,
                      bool record);

// Steps of drawHistoryGraph, for a graph whose plot is drawn in another way.

void addHistorySample(const HistoryGraph& graph, std::list<std::int32_t>& history, bool record);

void drawHistoryBar(Gdiplus::Graphics& target, const HistoryGraph& graph);

}  // namespace Panelix
