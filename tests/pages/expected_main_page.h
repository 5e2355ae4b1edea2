#pragma once

#include <deque>
#include <string>

#include "stats/snapshot.h"
#include "tests/pages/page_painter.h"

/// What the main page must look like, written down once more and independently of the page.
struct ExpectedMainPage {
    /// Borrowed; read when painting.
    const Snapshot* snapshot;
    /// 0 none, 1 left, 2 right.
    int selectedChannel = 0;
    bool blinkOn = false;
    std::wstring clock{};
    /// Loads in percent, newest first.
    std::deque<int> cpuHistory{};
    std::deque<int> gpuHistory{};
    /// Borrowed: the whole backdrop, painted once. Null paints it anew each time, which is slow.
    Gdiplus::Bitmap* backdrop = nullptr;

    /// What stands behind the graphs and figures. All but the first come without any image; Empty is a page
    /// that was never painted on.
    enum class Ground { Artwork, Black, White, Empty };

    /// Paints the whole page.
    void paint(PagePainter& painter, Ground ground = Ground::Artwork) const;

    /// Paints what stands behind everything else only.
    void paintBackdrop(PagePainter& painter, Ground ground = Ground::Artwork) const;

private:
    void paintMail(PagePainter& painter, Ground ground) const;
    void paintCpu(PagePainter& painter) const;
    void paintGpu(PagePainter& painter) const;
    void paintMixer(PagePainter& painter) const;
    void paintIcons(PagePainter& painter) const;
};
