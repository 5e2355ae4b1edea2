#pragma once

#include <windows.h>

#include <cstdint>

#include "framework/core/unique_resource.h"
#include "standins/lcd_sdk/button_hold.h"
#include "standins/lcd_sdk/viewer_picture.h"
#include "standins/lcd_sdk/virtual_g19.h"

namespace Standins {

/// The viewer's window: the LCD, doubled, and the seven buttons to click or to press on the keyboard.
/// Everything runs on the thread that made it, which must dispatch messages. Closing the window posts
/// WM_QUIT.
class ViewerWindow {
public:
    /// Makes and shows the window. Both must outlive it. Throws std::runtime_error when Windows gives no
    /// window.
    ViewerWindow(HINSTANCE instance, VirtualG19& keyboard);
    ~ViewerWindow();
    ViewerWindow(const ViewerWindow&) = delete;
    ViewerWindow& operator=(const ViewerWindow&) = delete;

private:
    static LRESULT CALLBACK windowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
    LRESULT handle(UINT message, WPARAM wParam, LPARAM lParam);

    void onMouseDown(int x, int y);
    void onMouseUp();
    bool onKeyDown(int virtualKey, bool isRepeat);
    bool onKeyUp(int virtualKey);
    void onFocusLost();
    void onTimer();
    void onPaint();

    void holdButtons();
    void takeNewFrame();

    VirtualG19& keyboard_;
    HWND window_ = nullptr;
    ButtonHold hold_;
    ViewerState shown_;
};

}  // namespace Standins
