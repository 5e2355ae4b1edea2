#pragma once

#include <optional>

#include "framework/drawing/graph_plates.h"
#include "framework/drawing/saved_pixels.h"

/// Pixels that GDI+ made from the main page's images in earlier paintings, for as long as the same painting
/// would give the same pixels again.
struct MainPageMemory {
    /// What stands behind everything else; empty before it was painted.
    Panelix::SavedPixels backdrop;
    /// Of the graphs on that backdrop, once one was shown.
    std::optional<Panelix::GraphPlates> cpuPlates;
    std::optional<Panelix::GraphPlates> gpuPlates;
};
