#include "framework/core/tray_icon.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace {

/// A window for an icon, gone with the object.
class IconWindow {
public:
    IconWindow()
        : window_(CreateWindowExW(
              0, L"Static", L"icon", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr)) {}
    ~IconWindow() { DestroyWindow(window_); }
    IconWindow(const IconWindow&) = delete;
    IconWindow& operator=(const IconWindow&) = delete;

    HWND get() const { return window_; }

    /// Whether the notification area knows icon 1 of the window: it refuses to change one that it does not.
    bool hasIcon() const {
        NOTIFYICONDATAW record{};
        record.cbSize = sizeof(record);
        record.hWnd = window_;
        record.uID = 1;
        return Shell_NotifyIconW(NIM_MODIFY, &record) != FALSE;
    }

private:
    HWND window_;
};

TEST(TrayIcon, RecordHasIdOneTheCallbackMessageAndTheTip) {
    const auto window = reinterpret_cast<HWND>(std::intptr_t{0x1234});
    const NOTIFYICONDATAW record = Panelix::trayRecord(976, window, L"Kelvaro");
    EXPECT_EQ(record.cbSize, 976U);
    EXPECT_EQ(record.hWnd, window);
    EXPECT_EQ(record.uID, 1U);
    EXPECT_EQ(record.uFlags, 7U);
    EXPECT_EQ(record.uCallbackMessage, 0x8000U);
    EXPECT_STREQ(record.szTip, L"Kelvaro");
    EXPECT_EQ(record.hIcon, nullptr);
    EXPECT_EQ(record.dwState, 0U);
}

TEST(TrayIcon, TipIsCutTo127Characters) {
    for (const std::size_t length : {std::size_t{0}, std::size_t{127}, std::size_t{128}, std::size_t{500}}) {
        const NOTIFYICONDATAW record = Panelix::trayRecord(952, nullptr, std::wstring(length, L'x'));
        EXPECT_EQ(std::wstring(record.szTip).size(), std::min(length, std::size_t{127}));
        EXPECT_EQ(record.dwState, 0U) << "nothing is written behind the tip";
    }
}

TEST(TrayIcon, IsInTheNotificationAreaFromAddToRemove) {
    const IconWindow window;
    Panelix::TrayIcon icon;
    EXPECT_FALSE(window.hasIcon());
    icon.add(nullptr, IDI_APPLICATION, window.get(), L"tip");
    EXPECT_TRUE(window.hasIcon());
    icon.remove();
    EXPECT_FALSE(window.hasIcon());
}

TEST(TrayIcon, IsRestoredAfterTheNotificationAreaLostIt) {
    const IconWindow window;
    Panelix::TrayIcon icon;
    icon.add(nullptr, IDI_APPLICATION, window.get(), L"tip");
    NOTIFYICONDATAW record = Panelix::trayRecord(sizeof(NOTIFYICONDATAW), window.get(), L"");
    ASSERT_NE(Shell_NotifyIconW(NIM_DELETE, &record), FALSE);
    icon.restore();
    EXPECT_TRUE(window.hasIcon());
    icon.remove();
}

TEST(TrayIcon, WithoutPictureIsNoFailure) {
    const IconWindow window;
    Panelix::TrayIcon icon;
    icon.add(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(4711), window.get(), L"tip");
    EXPECT_TRUE(window.hasIcon());
    icon.remove();
}

}  // namespace
