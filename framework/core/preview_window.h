#pragma once

#include <windows.h>

#include <exception>
#include <string>

#include "framework/core/tray_icon.h"

namespace Panelix {

/// The preview window's class, registered for as long as the object lives and, should a window of the class
/// outlive it, beyond that.
class PreviewWindowClass {
public:
    /// Throws SysException ("Cannot create main ATOM", "Panelix Window System") when the class cannot be
    /// registered.
    PreviewWindowClass(HINSTANCE instance, LPCWSTR icon, WNDPROC procedure);
    ~PreviewWindowClass();
    PreviewWindowClass(const PreviewWindowClass&) = delete;
    PreviewWindowClass& operator=(const PreviewWindowClass&) = delete;

private:
    HINSTANCE instance_;
};

/// The window that stands in for the LCD in desktop mode, with its tray icon. Created hidden at the bottom
/// right of the work area; the close box hides it, "Exit" in the tray menu destroys it and so ends the
/// message loop. What it shows and whom it asks is the process's application, App::current(). Main thread
/// only.
class PreviewWindow {
public:
    /// `icon` is an icon resource of `instance`; `title` is also the tray icon's tip. Throws SysException
    /// ("Panelix Window System") when the window cannot be made.
    PreviewWindow(HINSTANCE instance, const std::wstring& title, LPCWSTR icon);
    /// Leaves the window and the tray icon as they are: they go with the process. From then on the window
    /// answers nothing by itself.
    ~PreviewWindow();
    PreviewWindow(const PreviewWindow&) = delete;
    PreviewWindow& operator=(const PreviewWindow&) = delete;

    /// Null once the window was destroyed.
    HWND handle() const { return window_; }

    /// Asks for a repaint from the canvas.
    void invalidate() const;

    /// Throws again what a command threw inside the window procedure, which nothing may leave by exception.
    /// To be called after each dispatched message.
    void rethrowPending();

private:
    static LRESULT CALLBACK windowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT defaultResult(UINT message, WPARAM wParam, LPARAM lParam) const;
    void onPaint();
    LRESULT onHitTest(WPARAM wParam, LPARAM lParam);
    LRESULT onCommand(WPARAM wParam, LPARAM lParam);
    void onTrayIcon(LPARAM lParam);
    LRESULT onTimer(WPARAM wParam, LPARAM lParam);
    void onDestroy();
    void tryLaterUnless(bool trayIconIsThere);
    void showTrayMenu();
    void show();
    void hide();
    void toggle();

    // Sent to all windows when the notification area was started anew, without any icon.
    const UINT taskbarCreated_;
    PreviewWindowClass class_;
    HWND window_ = nullptr;
    TrayIcon trayIcon_;
    std::exception_ptr pending_;
};

}  // namespace Panelix
