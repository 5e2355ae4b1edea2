#include "framework/drawing/graph_plates.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "framework/drawing/surface_settings.h"

namespace Panelix {

namespace {

constexpr int kFull = 100;

bool isOnScale(std::int32_t figure) {
    return figure >= 0 && figure <= kFull;
}

/// What drawHistoryGraph makes of `rect` over `ground`, or over nothing where that is empty; empty when a
/// call of GDI+ failed.
SavedPixels drawnPlot(const SavedPixels& ground,
                      const PixelRect& rect,
                      const HistoryGraph& graph,
                      std::list<std::int32_t> history) {
    Gdiplus::Bitmap bitmap(kLcdWidth, kLcdHeight, PixelFormat32bppPARGB);
    Gdiplus::Graphics graphics(&bitmap);
    applySurfaceSettings(graphics);
    ground.writeTo(bitmap);
    drawHistoryGraph(graphics, graph, history, false);
    SavedPixels plot;
    plot.save(bitmap, rect);
    const bool drawn = graphics.GetLastStatus() == Gdiplus::Ok && bitmap.GetLastStatus() == Gdiplus::Ok;
    return drawn ? plot : SavedPixels();
}

}  // namespace

std::optional<GraphPlates> GraphPlates::make(const SavedPixels& ground, const HistoryGraph& graph) {
    GraphPlates made;
    made.plot_ = {graph.x, graph.y - 1, graph.width, kRows};
    HistoryGraph plain = graph;
    plain.label.clear();
    plain.barValue = 0;
    const auto samples = static_cast<std::size_t>(graph.width);
    for (const bool area : {false, true}) {
        plain.value = area ? kFull : 0;
        made.plates_[area][false] = drawnPlot(ground, made.plot_, plain, {});
        made.plates_[area][true] =
            drawnPlot(ground, made.plot_, plain, std::list<std::int32_t>(samples, kFull));
        if (made.plates_[area][false].empty() || made.plates_[area][true].empty()) {
            return std::nullopt;
        }
    }
    plain.value = 0;
    std::list<std::int32_t> eachSample(kSamples);
    std::iota(eachSample.begin(), eachSample.end(), 0);
    if (!made.readCoverage(drawnPlot({}, made.plot_, plain, std::move(eachSample)))) {
        return std::nullopt;
    }
    return made;
}

/// From the samples 0 to 100 at the right edge of a plot on an empty ground. False when there is no plot.
bool GraphPlates::readCoverage(const SavedPixels& lines) {
    if (lines.empty()) {
        return false;
    }
    for (int row = 0; row < kRows; ++row) {
        const std::uint32_t* const newest = lines.row(plot_.y + row) + plot_.width - 1;
        for (std::size_t sample = 0; sample < kSamples; ++sample) {
            covered_[static_cast<std::size_t>(row)][sample] = *(newest - sample) != 0;
        }
    }
    return true;
}

bool GraphPlates::drawPlot(Gdiplus::Bitmap& page, int value, const std::list<std::int32_t>& history) const {
    const std::optional<Columns> columns = columnsOf(history);
    if (!columns || !isOnScale(value)) {
        return false;
    }
    LockedPixels locked(page, Gdiplus::ImageLockModeRead | Gdiplus::ImageLockModeWrite);
    if (!locked || !plates_[false][false].equal(locked)) {
        return false;
    }
    const int areaTop = barRows(plot_.y + kRows, value).top;
    for (int y = plot_.y; y < plot_.y + kRows; ++y) {
        const auto& plates = plates_[y >= areaTop];
        const std::uint32_t* const line = plates[true].row(y);
        const std::uint32_t* const noLine = plates[false].row(y);
        const auto& covered = covered_[static_cast<std::size_t>(y - plot_.y)];
        std::uint32_t* const shown = locked.row(y) + plot_.x;
        for (int x = 0; x < plot_.width; ++x) {
            shown[x] = covered[(*columns)[static_cast<std::size_t>(x)]] ? line[x] : noLine[x];
        }
    }
    locked.unlock();
    return true;
}

/// The sample in each column of the plot; nothing when one is not in 0 to 100, or when there are too many.
std::optional<GraphPlates::Columns> GraphPlates::columnsOf(const std::list<std::int32_t>& history) const {
    if (std::cmp_greater(history.size(), plot_.width) || !std::ranges::all_of(history, isOnScale)) {
        return std::nullopt;
    }
    Columns columns;
    columns.fill(kNoSample);
    auto column = static_cast<std::size_t>(plot_.width);
    for (const std::int32_t sample : history) {
        columns[--column] = static_cast<std::uint8_t>(sample);
    }
    return columns;
}

}  // namespace Panelix
