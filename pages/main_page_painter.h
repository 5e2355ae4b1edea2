#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <cstdint>
#include <list>

#include "pages/main_page_images.h"
#include "pages/main_page_view.h"

/// The past in the main page's graphs: loads in percent, newest first, at most one per column of a graph.
struct MainPageHistories {
    std::list<std::int32_t> cpu;
    std::list<std::int32_t> gpu;
};

/// Paints the whole main page on `graphics`, which draws on `bitmap`, 320 x 240. With `record` the loads of
/// each graph that is shown are added to its history first. False when a call of GDI+ failed, which stops
/// nothing; the statuses of both are read and so reset. Plain drawing: no COM and no sampler.
bool paintMainPage(Gdiplus::Graphics& graphics,
                   Gdiplus::Bitmap& bitmap,
                   const MainPageView& view,
                   const MainPageImages& images,
                   MainPageHistories& histories,
                   bool record);
