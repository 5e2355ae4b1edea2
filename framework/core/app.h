#pragma once

#include <windows.h>

#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "framework/core/com_apartment.h"
#include "framework/core/lcd_buttons.h"
#include "framework/core/page.h"
#include "framework/core/precise_sleeper.h"
#include "framework/core/transition_kind.h"
#include "framework/drawing/lcd_frame.h"

namespace Panelix {

class Canvas;
class LcdDevice;
class PreviewWindow;

/// Base of an LCD applet: owner of COM, the LCD, the canvas and the pages, and its one loop. Without an LCD
/// it runs in desktop mode, with a preview window and a tray icon in the LCD's place; the mode is settled at
/// construction. One object per process; main thread only.
class App {
public:
    /// `instance` is the module with the icon resource `icon`; `name` is the LCD applet's name, the window's
    /// title and the tray icon's tip; `framePeriodMs` is the duration of a pass in milliseconds. Throws
    /// SysException when COM or the preview window cannot be had.
    App(HINSTANCE instance, const std::wstring& name, LPCWSTR icon, std::uint64_t framePeriodMs);
    virtual ~App();
    App(const App&) = delete;
    App& operator=(const App&) = delete;

    /// Obeys a command code from kCommandAbout on; called by the preview window and by pages.
    virtual void HandleCommand(std::uint32_t command) = 0;

    /// Runs passes until a page ends the program or, in desktop mode, the preview window is destroyed. Throws
    /// SysException when no main page was set; whatever a page or the canvas throws passes through.
    void Run();

    /// Initialises `page`, appends it to the pages, activates it and makes it the one that is drawn. Throws
    /// SysException when it is null. After that, and when its Init throws, there is no main page, while the
    /// pages and the one that is drawn are as before.
    void SetMainPage(std::unique_ptr<Page> page);

    /// Adds a page at the front or at the back of the tick order. Not null.
    void AddPage(std::unique_ptr<Page> page, bool atFront);

    /// The first page of exactly this name, case included; null when there is none. Owned by the application.
    Page* FindPage(const std::wstring& name) const;

    /// Makes `page` the active one and starts the slide to it. Does nothing when `page` is null, and before a
    /// main page was set. Called from a page's Update or Draw. `page` must be one of the application's pages.
    void SwitchPage(Page* page, TransitionKind kind);

    /// The page given to SetMainPage, or null. Owned by the application.
    Page* GetMainPage() const { return mainPage_; }

    /// Makes the wait of the running pass a full period, counted from the end of the pass. To be called after
    /// anything modal.
    void requestFullWait() { resetPacing_ = true; }

    std::wstring name() const { return name_; }
    HINSTANCE instance() const { return instance_; }

    /// The preview window; null in LCD mode.
    HWND window() const;

    /// Null until construction is complete and once destruction has begun. Owned by the application.
    Canvas* canvas() const { return canvas_.get(); }

    /// The process's application object, or null before it is complete and after its end.
    static App* current();

private:
    /// False: the program ends.
    bool runPass();
    bool pumpMessages();
    bool updatePages();
    void composeSlide();
    void composeFrame();
    void outputFrame();
    void pace(std::int64_t startMs);
    const LcdButtons& buttons() const;

    bool resetPacing_ = false;
    /// Before all that uses COM, and so ended after it.
    ComApartment com_;
    HINSTANCE instance_;
    std::uint64_t framePeriodMs_;
    std::wstring name_;
    /// Null in desktop mode.
    std::unique_ptr<LcdDevice> lcd_;
    /// What pages read in desktop mode: no button is ever pressed there.
    const LcdButtons desktopButtons_{};
    /// Null in LCD mode.
    std::unique_ptr<PreviewWindow> previewWindow_;
    std::unique_ptr<Canvas> canvas_;
    PreciseSleeper sleeper_;

    Page* mainPage_ = nullptr;
    Page* activePage_ = nullptr;
    Page* previousPage_ = nullptr;
    std::list<std::unique_ptr<Page>> pages_;

    TransitionKind slideKind_ = TransitionKind::SlideFromBottom;
    float slideProgress_ = 1.0F;
    bool slideRuns_ = false;

    /// The page that the canvas shows alone and as it is; null after a slide or a failure, and at first.
    const Page* composedPage_ = nullptr;
    /// The canvas has changed since it was last shown.
    bool canvasChanged_ = false;
    /// What the LCD shows, and the copy that its library gets; both null in desktop mode.
    LcdFrame frame_;
    LcdFrame handedOver_;
};

}  // namespace Panelix
