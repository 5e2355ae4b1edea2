#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <string>
#include <utility>

#include "framework/core/lcd_buttons.h"

namespace Panelix {

class App;
class Canvas;

/// One full-screen page of the LCD: base of everything that the LCD shows. A page paints itself into its own
/// 320 x 240 bitmap; the application composes that bitmap onto the canvas. Main thread only.
class Page {
public:
    /// `name` is what App::FindPage looks for; `app` is borrowed and outlives the page. GDI+ must be running,
    /// so the application object exists first. GDI+ failures stay in the objects' last-status fields.
    Page(std::wstring name, App* app);
    virtual ~Page();
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    /// Loads what the page needs through the canvas. The main page is initialised twice, by App::SetMainPage
    /// and by App::Run.
    virtual void Init(Canvas* canvas) = 0;

    /// The page has become the active one.
    virtual void OnActivate() {}

    /// The page is being left.
    virtual void OnDeactivate() {}

    /// Called in every pass for every page, in list order. False ends the program after this pass.
    virtual bool Update(bool isActive, const LcdButtons& buttons) = 0;

    /// Called in every pass for the active page, after its Update returned true. What is to be seen must be
    /// in bitmap() when it returns; a page whose bitmap shows it already paints nothing.
    virtual void Draw(Canvas* canvas, const LcdButtons& buttons) = 0;

    const std::wstring& name() const { return name_; }

    /// 320 x 240, premultiplied ARGB, owned by the page.
    Gdiplus::Bitmap* bitmap() { return &bitmap_; }

    /// Whether the page has painted since the last call.
    bool takeChanged() { return std::exchange(changed_, false); }

protected:
    App* app() const { return app_; }

    /// What draws on bitmap(), without anti-aliasing; owned by the page. Every painting begins with this call
    /// and uses nothing else: it marks the page as changed, and what is not marked is not shown.
    Gdiplus::Graphics& beginPainting() {
        changed_ = true;
        return graphics_;
    }

private:
    std::wstring name_;
    App* app_;
    Gdiplus::Bitmap bitmap_;
    // Declared after the bitmap that it draws on, so it goes first.
    Gdiplus::Graphics graphics_;
    bool changed_ = false;
};

}  // namespace Panelix
