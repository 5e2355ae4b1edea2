#include "standins/lcd_sdk/viewer_window.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "standins/lcd_sdk/gdiplus_session.h"
#include "standins/lcd_sdk/viewer_layout.h"
#include "standins/wait_until.h"
#include "tests/support/standin_session.h"

namespace {

using namespace Standins;

constexpr std::uint32_t kUp = 0x1000;
constexpr std::uint32_t kDown = 0x2000;
constexpr std::uint32_t kMenu = 0x4000;

constexpr LPARAM kFirstPress = 1;
constexpr LPARAM kRepeatedPress = 0x40000001;

HWND viewerOfThisThread() {
    HWND window = nullptr;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND candidate, LPARAM found) -> BOOL {
            wchar_t name[64] = {};
            GetClassNameW(candidate, name, 64);
            if (std::wstring(name) != L"KelvaroVirtualG19") {
                return TRUE;
            }
            *reinterpret_cast<HWND*>(found) = candidate;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&window));
    return window;
}

// A base, so that it comes before the members that open the record.
class VirtualG19Viewer : private StandinSession, public testing::Test {
protected:
    VirtualG19Viewer() : window(viewerOfThisThread()) {}

    void SetUp() override { ASSERT_NE(window, nullptr); }

    // One step of the window's clock. Tests of held buttons use it instead of dispatching messages: a window
    // of another test may take the focus at any time, and that releases them.
    void tick() const { SendMessageW(window, WM_TIMER, 1, 0); }

    // Dispatches messages until the condition is true; false after a generous time.
    static bool pumpUntil(const std::function<bool()>& condition) {
        return waitUntil(
            [&] {
                MSG message;
                while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
                    if (message.message == WM_QUIT) {
                        quitCode = static_cast<int>(message.wParam);
                    }
                    DispatchMessageW(&message);
                }
                return condition();
            },
            std::chrono::seconds(5));
    }

    void sendMouse(UINT message, std::uint32_t mask) const {
        for (const ViewerButton& button : kViewerButtons) {
            if (button.mask == mask) {
                SendMessageW(window, message, 0, MAKELPARAM(button.rect.x + 5, button.rect.y + 5));
            }
        }
    }

    // Two passes of a program: a click that is over is let go then.
    void runTwoPasses() {
        keyboard.recordCall(LcdCall::Update, 0);
        keyboard.recordCall(LcdCall::Update, 0);
    }

    static inline int quitCode = -1;

    GdiplusSession gdiplus;
    VirtualG19 keyboard;
    ViewerWindow viewer{GetModuleHandleW(nullptr), keyboard};
    HWND window;
};

TEST_F(VirtualG19Viewer, ClientAreaHoldsTheWholePicture) {
    RECT client;
    ASSERT_NE(GetClientRect(window, &client), FALSE);
    EXPECT_EQ(client.right, kClientWidth);
    EXPECT_EQ(client.bottom, kClientHeight);
    EXPECT_NE(IsWindowVisible(window), FALSE);
}

TEST_F(VirtualG19Viewer, MouseHoldsAButtonUntilItIsReleasedAnywhere) {
    sendMouse(WM_LBUTTONDOWN, kMenu);
    EXPECT_EQ(keyboard.heldButtons(), kMenu);
    EXPECT_EQ(GetCapture(), window);
    runTwoPasses();
    tick();
    EXPECT_EQ(keyboard.heldButtons(), kMenu);
    SendMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(-500, -500));
    EXPECT_EQ(keyboard.heldButtons(), 0u);
    EXPECT_EQ(GetCapture(), nullptr);
}

TEST_F(VirtualG19Viewer, QuickClickIsHeldUntilTheProgramHasSeenIt) {
    sendMouse(WM_LBUTTONDOWN, kUp);
    sendMouse(WM_LBUTTONUP, kUp);
    EXPECT_EQ(keyboard.heldButtons(), kUp);
    runTwoPasses();
    tick();
    EXPECT_EQ(keyboard.heldButtons(), 0u);
}

TEST_F(VirtualG19Viewer, ClickBesideTheButtonsHoldsNothing) {
    SendMessageW(window, WM_LBUTTONDOWN, 0, MAKELPARAM(kLcdRect.x + 100, kLcdRect.y + 100));
    EXPECT_EQ(keyboard.heldButtons(), 0u);
}

TEST_F(VirtualG19Viewer, KeysHoldTheirButtonsSideBySide) {
    SendMessageW(window, WM_KEYDOWN, VK_UP, kFirstPress);
    SendMessageW(window, WM_KEYDOWN, 'M', kFirstPress);
    EXPECT_EQ(keyboard.heldButtons(), kUp | kMenu);
    runTwoPasses();
    SendMessageW(window, WM_KEYUP, VK_UP, kFirstPress);
    EXPECT_EQ(keyboard.heldButtons(), kMenu);
    SendMessageW(window, WM_KEYUP, 'M', kFirstPress);
    EXPECT_EQ(keyboard.heldButtons(), 0u);
}

TEST_F(VirtualG19Viewer, KeyThatRepeatsItselfIsNotPressedAgain) {
    SendMessageW(window, WM_KEYDOWN, VK_DOWN, kRepeatedPress);
    EXPECT_EQ(keyboard.heldButtons(), 0u);
    SendMessageW(window, WM_KEYDOWN, VK_DOWN, kFirstPress);
    runTwoPasses();
    SendMessageW(window, WM_KEYDOWN, VK_DOWN, kRepeatedPress);
    EXPECT_EQ(keyboard.heldButtons(), kDown);
    SendMessageW(window, WM_KEYUP, VK_DOWN, kFirstPress);
    EXPECT_EQ(keyboard.heldButtons(), 0u);
}

TEST_F(VirtualG19Viewer, LossOfFocusReleasesEverything) {
    SendMessageW(window, WM_KEYDOWN, VK_UP, kFirstPress);
    sendMouse(WM_LBUTTONDOWN, kMenu);
    SendMessageW(window, WM_KILLFOCUS, 0, 0);
    EXPECT_EQ(keyboard.heldButtons(), 0u);
}

TEST_F(VirtualG19Viewer, NewFrameIsPainted) {
    ASSERT_TRUE(pumpUntil([&] { return GetUpdateRect(window, nullptr, FALSE) == FALSE; }));
    const std::vector<std::uint8_t> green = [] {
        std::vector<std::uint8_t> pixels(Panelix::LcdSdk::kColorFrameBytes);
        for (std::size_t i = 1; i < pixels.size(); i += 4) {
            pixels[i] = 0xFF;
        }
        return pixels;
    }();
    keyboard.recordInit(L"Kelvaro", 2, true);
    keyboard.setBackground(green.data());
    keyboard.endPass();
    const HDC dc = GetDC(window);
    EXPECT_TRUE(pumpUntil([&] { return GetPixel(dc, kLcdRect.x + 50, kLcdRect.y + 50) == RGB(0, 255, 0); }));
    // Shut down, the picture stays and goes dark.
    keyboard.recordShutdown();
    EXPECT_TRUE(pumpUntil([&] {
        const COLORREF colour = GetPixel(dc, kLcdRect.x + 50, kLcdRect.y + 50);
        return GetGValue(colour) > 0 && GetGValue(colour) < 200 && GetRValue(colour) == 0;
    }));
    ReleaseDC(window, dc);
}

TEST_F(VirtualG19Viewer, ClosedWindowLetsGoAndEndsTheLoop) {
    SendMessageW(window, WM_KEYDOWN, VK_UP, kFirstPress);
    PostMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_TRUE(pumpUntil([&] { return quitCode == 0; }));
    EXPECT_EQ(IsWindow(window), FALSE);
}

TEST(VirtualG19ViewerEnd, HeldButtonsAreReleased) {
    useOwnSession();
    const GdiplusSession gdiplus;
    VirtualG19 keyboard;
    {
        const ViewerWindow viewer(GetModuleHandleW(nullptr), keyboard);
        SendMessageW(viewerOfThisThread(), WM_KEYDOWN, VK_UP, kFirstPress);
        EXPECT_EQ(keyboard.heldButtons(), kUp);
    }
    EXPECT_EQ(keyboard.heldButtons(), 0u);
}

}  // namespace
