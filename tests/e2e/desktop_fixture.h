#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/e2e/kelvaro_program.h"
#include "tests/support/child_process.h"
#include "tests/support/desktop_driver.h"
#include "tests/support/installation.h"
#include "tests/support/lcd_registration.h"

inline constexpr wchar_t kPreviewClass[] = L"PanelixWindow";

/// The preview window of a running program, hidden or not; null when none came in time.
inline HWND waitForPreview(const ChildProcess& process,
                           std::chrono::milliseconds timeout = std::chrono::seconds(20)) {
    HWND window = nullptr;
    waitFor(
        [&] {
            window = findWindow(process.id(), kPreviewClass);
            return window != nullptr;
        },
        timeout);
    // The window answers once the main loop runs.
    waitFor([window] { return textOf(window) == L"Kelvaro"; });
    return window;
}

/// What the icon of a message box of this style looks like. The icon of another process's box shows by its
/// picture only.
inline ScreenPicture pictureOfIcon(UINT style) {
    ScreenPicture picture{};
    std::thread user([&picture] {
        const MessageBoxFacts box = waitForMessageBox(GetCurrentProcessId());
        picture = captureSettled(box.icon);
        pressButton(box.window, IDOK);
    });
    MessageBoxW(nullptr, L"reference", L"reference", style);
    user.join();
    return picture;
}

/// A window of the test that covers the whole screen and is in front of all others.
class RivalWindow {
public:
    RivalWindow()
        : window_(CreateWindowExW(WS_EX_TOPMOST,
                                  L"Button",
                                  L"rival",
                                  WS_POPUP | WS_VISIBLE,
                                  0,
                                  0,
                                  GetSystemMetrics(SM_CXSCREEN),
                                  GetSystemMetrics(SM_CYSCREEN),
                                  nullptr,
                                  nullptr,
                                  nullptr,
                                  nullptr)) {
        SetForegroundWindow(window_);
        EXPECT_TRUE(isInFront());
    }
    ~RivalWindow() { DestroyWindow(window_); }
    RivalWindow(const RivalWindow&) = delete;
    RivalWindow& operator=(const RivalWindow&) = delete;

    bool isInFront() const {
        return GetForegroundWindow() == window_ && WindowFromPoint({100, 100}) == window_;
    }

private:
    HWND window_;
};

/// Whether a window comes in front of all others, with the keyboard.
inline bool comesToFront(HWND window) {
    return waitFor([window] {
        const HWND seen = WindowFromPoint(clientCentre(window));
        return GetForegroundWindow() == window && GetAncestor(seen, GA_ROOT) == window;
    });
}

/// A machine without an LCD library, on which the shipped program can be started.
class KelvaroOnTheDesktop : public testing::Test {
protected:
    /// Starts the program and waits for its window.
    void start() {
        kelvaro = std::make_unique<ChildProcess>(kelvaroProgram());
        window = waitForPreview(*kelvaro);
        ASSERT_NE(window, nullptr);
    }

    /// Chooses an item of the tray menu, from 0.
    void choose(std::size_t position) {
        ASSERT_NE(openTrayMenu(window), nullptr);
        ASSERT_TRUE(chooseMenuItem(window, position));
    }

    /// Asks for what an item of the menu with this code does, without the menu.
    void ask(std::uint32_t command) const { PostMessageW(window, WM_COMMAND, command, 0); }

    /// The program's open dialogs or message boxes with this caption.
    std::vector<HWND> dialogs(const wchar_t* caption) const {
        return visibleWindows(kelvaro->id(), L"#32770", caption);
    }

    bool becomesVisible(bool visible) const {
        return waitFor([this, visible] { return (IsWindowVisible(window) != FALSE) == visible; });
    }

    LcdRegistrationScope noLcd{L""};
    CleanProgramEntries entries;
    std::unique_ptr<ChildProcess> kelvaro;
    HWND window = nullptr;
};
