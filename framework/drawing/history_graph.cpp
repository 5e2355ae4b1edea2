#include "framework/drawing/history_graph.h"

#include <utility>

namespace Panelix {

namespace {

/// One pixel per percent.
constexpr int kPlotHeightPx = 100;

constexpr const wchar_t* kLabelFont = L"Arial";
constexpr Gdiplus::REAL kLabelSizePx = 15.0F;
constexpr Gdiplus::REAL kLabelIndentPx = 2.0F;
constexpr int kLabelTopPx = 85;
/// GDI+ leaves some room above a line of text.
constexpr Gdiplus::REAL kLabelLiftPx = 4.0F;

void addSample(std::list<std::int32_t>& history, const HistoryGraph& graph, bool record) {
    if (record) {
        history.push_front(graph.value);
    }
    if (!history.empty() && std::cmp_greater(history.size(), graph.width)) {
        history.pop_back();
    }
}

void drawSamples(Gdiplus::Graphics& target,
                 const HistoryGraph& graph,
                 const std::list<std::int32_t>& history) {
    const int bottom = graph.y + kPlotHeightPx - 1;
    int column = graph.x + graph.width - 1;
    for (const std::int32_t sample : history) {
        target.DrawLine(graph.linePen, column, bottom, column, bottom - sample);
        --column;
    }
}

void drawLabel(Gdiplus::Graphics& target, const HistoryGraph& graph) {
    const Gdiplus::FontFamily family(kLabelFont);
    const Gdiplus::Font font(&family, kLabelSizePx, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
    // A box without size neither wraps nor clips.
    const Gdiplus::RectF box(static_cast<Gdiplus::REAL>(graph.x) + kLabelIndentPx,
                             static_cast<Gdiplus::REAL>(graph.y + kLabelTopPx) - kLabelLiftPx,
                             0.0F,
                             0.0F);
    target.DrawString(graph.label.c_str(), -1, &font, box, nullptr, graph.labelBrush);
}

}  // namespace

void drawHistoryGraph(Gdiplus::Graphics& target,
                      const HistoryGraph& graph,
                      std::list<std::int32_t>& history,
                      bool record) {
    target.FillRectangle(
        graph.areaBrush, graph.x, graph.y + kPlotHeightPx - graph.value, graph.width, graph.value);
    target.FillRectangle(graph.barBrush,
                         graph.x + graph.width + graph.barGap,
                         graph.y + kPlotHeightPx - graph.barValue,
                         graph.barWidth,
                         graph.barValue);
    addSample(history, graph, record);
    drawSamples(target, graph, history);
    drawLabel(target, graph);
}

}  // namespace Panelix
