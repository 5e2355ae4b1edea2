#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>

#include "framework/drawing/history_graph.h"
#include "framework/drawing/plot_rows.h"
#include "framework/drawing/saved_pixels.h"

namespace Panelix {

/// The plot of one history graph without GDI+: a pixel of it has four states only, with and without the
/// area's colour and a sample's line. drawHistoryGraph draws the whole plot in each of them once, on these
/// plates, and the rows that each sample's line covers; a plot is then chosen from them, pixel by pixel.
class GraphPlates {
public:
    /// Plates of `graph` on `ground`, which is the whole LCD. The plot is at least 101 pixels wide, and it
    /// and the row above, which the line of a full sample reaches, lie on the LCD. Nothing when a call of
    /// GDI+ failed.
    static std::optional<GraphPlates> make(const SavedPixels& ground, const HistoryGraph& graph);

    /// Draws the plot of a graph in the same place and colours: the area up to `value`, and the samples,
    /// newest first. False, and nothing is drawn, when a figure is not in 0 to 100, when the page has other
    /// pixels there than the plates' ground, or when it cannot be locked. Failures stay in the page's last
    /// status.
    bool drawPlot(Gdiplus::Bitmap& page, int value, const std::list<std::int32_t>& history) const;

private:
    /// A sample of 100 covers one row more than the plot has.
    static constexpr int kRows = kPlotHeightPx + 1;
    static constexpr std::size_t kSamples = 101;
    /// Stands for a column without a sample, in which no row is covered.
    static constexpr std::uint8_t kNoSample = kSamples;

    using Columns = std::array<std::uint8_t, kLcdWidth>;

    GraphPlates() = default;
    bool readCoverage(const SavedPixels& lines);
    std::optional<Columns> columnsOf(const std::list<std::int32_t>& history) const;

    PixelRect plot_{};
    /// By whether the area and whether the line is over the ground.
    std::array<std::array<SavedPixels, 2>, 2> plates_;
    /// By row from the top and sample: whether the line is there.
    std::array<std::array<bool, kSamples + 1>, kRows> covered_{};
};

}  // namespace Panelix
