#include "framework/drawing/history_graph.h"

#include <cstdint>
#include <utility>

#include "framework/drawing/plot_rows.h"
#include "framework/drawing/surface_settings.h"

namespace Panelix {

namespace {

constexpr Gdiplus::REAL kLabelSizePx = 15.0F;
constexpr Gdiplus::REAL kLabelIndentPx = 2.0F;
constexpr int kLabelTopPx = 85;
/// GDI+ leaves some room above a line of text.
constexpr Gdiplus::REAL kLabelLiftPx = 4.0F;

/// Fills a bar that stands on the plot's lower edge.
void fillBar(Gdiplus::Graphics& target,
             const Gdiplus::Brush* brush,
             int x,
             int width,
             const HistoryGraph& graph,
             int percent) {
    const LcdRows rows = barRows(graph.y + kPlotHeightPx, percent);
    target.FillRectangle(brush, x, rows.top, width, rows.height);
}

void drawSamples(Gdiplus::Graphics& target,
                 const HistoryGraph& graph,
                 const std::list<std::int32_t>& history) {
    const int foot = graph.y + kPlotHeightPx - 1;
    int column = graph.x + graph.width - 1;
    for (const std::int32_t sample : history) {
        const int head = nearestLcdRow(std::int64_t{foot} - sample);
        target.DrawLine(graph.linePen, column, nearestLcdRow(foot), column, head);
        --column;
    }
}

void drawLabel(Gdiplus::Graphics& target, const HistoryGraph& graph) {
    const Gdiplus::FontFamily family(kFontFace);
    const Gdiplus::Font font(&family, kLabelSizePx, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
    // A box without size neither wraps nor clips.
    const Gdiplus::RectF box(static_cast<Gdiplus::REAL>(graph.x) + kLabelIndentPx,
                             static_cast<Gdiplus::REAL>(graph.y + kLabelTopPx) - kLabelLiftPx,
                             0.0F,
                             0.0F);
    target.DrawString(graph.label.c_str(), -1, &font, box, nullptr, graph.labelBrush);
}

}  // namespace

void addHistorySample(const HistoryGraph& graph, std::list<std::int32_t>& history, bool record) {
    if (record) {
        history.push_front(graph.value);
    }
    if (!history.empty() && std::cmp_greater(history.size(), graph.width)) {
        history.pop_back();
    }
}

void drawHistoryBar(Gdiplus::Graphics& target, const HistoryGraph& graph) {
    fillBar(
        target, graph.barBrush, graph.x + graph.width + graph.barGap, graph.barWidth, graph, graph.barValue);
}

void drawHistoryGraph(Gdiplus::Graphics& target,
                      const HistoryGraph& graph,
                      std::list<std::int32_t>& history,
                      bool record) {
    fillBar(target, graph.areaBrush, graph.x, graph.width, graph, graph.value);
    drawHistoryBar(target, graph);
    addHistorySample(graph, history, record);
    drawSamples(target, graph, history);
    drawLabel(target, graph);
}

}  // namespace Panelix
