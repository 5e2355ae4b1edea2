#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "framework/drawing/graph_plates.h"
#include "framework/drawing/lcd_frame.h"
#include "framework/drawing/saved_pixels.h"
#include "pages/main_page_texts.h"
#include "pages/remembered_drawing.h"

/// Every bar of the main page.
enum class MainPageBar { Memory, GpuMemory, LeftVolume, RightVolume, Count };

inline constexpr std::size_t kMainPageBars = static_cast<std::size_t>(MainPageBar::Count);

/// Pixels that GDI+ made from the main page's images in earlier paintings, for as long as the same painting
/// would give the same pixels again.
struct MainPageMemory {
    MainPageMemory() {
        for (std::size_t i = 0; i < texts.size(); ++i) {
            // As many letters as none of the texts has.
            texts[i].reserve(reachOf(styleOf(static_cast<MainPageText>(i)), Panelix::kLcdWidth));
        }
    }

    /// What stands behind everything else; empty before it was painted.
    Panelix::SavedPixels backdrop;
    /// Of the graphs on that backdrop, once one was shown.
    std::optional<Panelix::GraphPlates> cpuPlates;
    std::optional<Panelix::GraphPlates> gpuPlates;
    /// By MainPageBar.
    std::array<RememberedDrawing, kMainPageBars> bars;
    /// By MainPageText.
    std::array<RememberedDrawing, kMainPageTexts> texts;
};
