#pragma once

#include <windows.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// A user's eyes and hands for tests: finds windows of this or of another process, reads what they show, and
// operates them through window messages and the mouse. Nothing here depends on the windows' own code.

/// Asks until `condition` holds; false when the time is over first.
bool waitFor(const std::function<bool()>& condition,
             std::chrono::milliseconds timeout = std::chrono::seconds(10));

/// First top-level window of a process with this class and, unless null, this title; hidden ones included.
/// Null when there is none.
HWND findWindow(DWORD processId, const wchar_t* className, const wchar_t* title = nullptr);

/// The same for a window that is visible, waiting for it. Null when the time is over.
HWND waitForVisibleWindow(DWORD processId,
                          const wchar_t* className,
                          const wchar_t* title = nullptr,
                          std::chrono::milliseconds timeout = std::chrono::seconds(10));

/// The visible top-level windows of a process with this class and title.
std::vector<HWND> visibleWindows(DWORD processId, const wchar_t* className, const wchar_t* title);

/// Waits until a window is no more; false when the time is over.
bool waitUntilGone(HWND window);

/// Waits until all messages that were posted to a window of this process before have been handled; one that
/// opened a box or dialog counts when that one's loop runs. Not the mouse's messages: they come after posted
/// ones. Called on another thread than the window's. False when the time is over.
bool waitUntilPostedIsHandled(HWND window);

/// Empty when the window does not answer.
std::wstring textOf(HWND window);
std::wstring classOf(HWND window);
std::uint32_t styleOf(HWND window);
std::uint32_t extendedStyleOf(HWND window);
/// Outer rectangle in screen pixels.
RECT rectOf(HWND window);
/// Middle of what a window shows inside its frame, in screen pixels.
POINT clientCentre(HWND window);
/// A point of a window's caption away from its icon and buttons, in screen pixels, and the middle of its
/// close box.
POINT captionOf(HWND window);
POINT closeBoxOf(HWND window);

/// A direct child of a window.
struct Control {
    HWND window;
    int id;
    std::wstring className;
    std::wstring text;
    std::uint32_t style;
    /// Pixels of the parent's client area.
    RECT rect;
};

/// In the order of the dialog's template, which is that of the Tab key.
std::vector<Control> controlsOf(HWND parent);

/// The control with the keyboard focus of the window's thread, 0 when there is none.
int focusedControl(HWND dialog);

/// Posts what a press of a button sends.
void pressButton(HWND dialog, int id);
/// Posts a press and a release of a key to what has the focus of the window's thread.
void pressKey(HWND window, WPARAM virtualKey);
void typeText(HWND dialog, int id, const std::wstring& text);

/// What a message box shows.
struct MessageBoxFacts {
    HWND window;
    HWND owner;
    std::wstring caption;
    std::wstring text;
    std::vector<int> buttons;
    /// The control with the icon, null when there is none.
    HWND icon;
};

/// Waits for a message box of a process; a null window when none came.
MessageBoxFacts waitForMessageBox(DWORD processId);

/// Whether the notification area knows icon 1 of a window, of this or of another process.
bool hasTrayIcon(HWND window);
/// Posts the notice of the notification area that opens the menu and waits for it; null when none came.
HWND openTrayMenu(HWND window, UINT mouseMessage = WM_RBUTTONDOWN);
/// The open popup menu of a process, or null.
HWND openMenu(DWORD processId);
/// Chooses the item at this position of the open menu, from 0, by arrow keys and Return. `owner` is the
/// window that the menu belongs to. False when the menu stays open.
bool chooseMenuItem(HWND owner, std::size_t position);
/// Closes the open menu without a choice.
bool dismissMenu(HWND owner);

struct MenuItem {
    std::wstring text;
    UINT id;
    bool operator==(const MenuItem&) const = default;
};

/// Items of a menu of this process: its handle means nothing in others.
std::vector<MenuItem> menuItems(HWND menuWindow);

/// Pixels of the screen, 0x00RRGGBB, row by row.
struct ScreenPicture {
    int width;
    int height;
    std::vector<std::uint32_t> pixels;
    bool operator==(const ScreenPicture&) const = default;
};

/// The part of the rectangle, and of what a window shows inside its frame, that is on the screen.
ScreenPicture captureScreen(const RECT& wanted);
ScreenPicture captureClient(HWND window);
/// The same once it has come to rest with more than one colour; what is painted reaches the screen a little
/// later. No pixels when that does not happen.
ScreenPicture captureSettled(HWND window);

/// Moves the mouse and presses, drags and releases its left or its right button.
void clickAt(POINT point);
void rightClickAt(POINT point);
void doubleClickAt(POINT point);
void dragFromTo(POINT from, POINT to);
