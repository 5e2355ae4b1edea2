#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <cstdint>
#include <list>
#include <memory>

#include "pages/main_page_images.h"
#include "pages/main_page_view.h"

struct MainPageMemory;

/// The past in the main page's graphs: loads in percent, newest first, at most one per column of a graph.
struct MainPageHistories {
    std::list<std::int32_t> cpu;
    std::list<std::int32_t> gpu;
};

/// Paints the main page. What a painting takes from an earlier one has the very pixels that painting it anew
/// would give; it is forgotten as a whole after every failure. Plain drawing: no COM and no sampler.
class MainPagePainter {
public:
    MainPagePainter();
    ~MainPagePainter();
    MainPagePainter(const MainPagePainter&) = delete;
    MainPagePainter& operator=(const MainPagePainter&) = delete;

    /// The images of the paintings that follow; without this call there are none. Forgets everything.
    void setImages(const MainPageImages& images);

    /// Nothing is shown, and the next painting uses nothing of an earlier one. The histories stay.
    void forget();

    /// Whether the last painting went well from beginning to end, and showed this.
    bool shows(const MainPageView& view) const { return isPainted_ && painted_ == view; }

    /// Paints the whole page on `graphics`, which draws on `bitmap`, 320 x 240, of which the painter expects
    /// nothing. With `record` the loads of each graph that is shown are added to its history first. False
    /// when a call of GDI+ failed, which stops nothing; the statuses of both are read and so reset.
    bool paint(Gdiplus::Graphics& graphics, Gdiplus::Bitmap& bitmap, const MainPageView& view, bool record);

    const MainPageHistories& histories() const { return histories_; }

private:
    MainPageImages images_;
    MainPageHistories histories_;
    /// Null when there is nothing to remember.
    std::unique_ptr<MainPageMemory> memory_;
    MainPageView painted_;
    bool isPainted_ = false;
};
