#pragma once

#include "framework/drawing/saved_pixels.h"

/// Pixels that GDI+ made from the main page's images in earlier paintings, for as long as the same painting
/// would give the same pixels again.
struct MainPageMemory {
    /// What stands behind everything else; empty before it was painted.
    Panelix::SavedPixels backdrop;
};
