#pragma once

#include <windows.h>

#include <functional>

/// A dialog or message box of which at most one is open in the process, counted from the request until it
/// has ended: a request that a message loop takes out meanwhile opens no second one. Main thread only.
class OpenDialog {
public:
    OpenDialog() = default;
    OpenDialog(const OpenDialog&) = delete;
    OpenDialog& operator=(const OpenDialog&) = delete;

    /// Calls `open`, which opens the dialog and returns when it was closed. The dialog is visible before its
    /// message loop takes out the first message. When it is open already, it comes to the front, if it can be
    /// seen yet, and this returns at once. What `open` throws passes through.
    void show(const std::function<void()>& open);

private:
    class Opening;

    bool isOpen() const;

    /// From the request until the dialog is known by its window.
    bool opening_ = false;
    /// The dialog of the latest request; null before it is made and after show() has returned.
    HWND window_ = nullptr;
};
