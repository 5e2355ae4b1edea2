#pragma once

#include <windows.h>

#include <shellapi.h>

#include <string>

namespace Panelix {

/// Message that the notification area sends to the icon's window: lParam is the mouse or keyboard message.
inline constexpr UINT kTrayIconMessage = WM_APP;

/// The record of an icon for `window` with the tip `tip`, cut to 127 characters, and without a picture yet.
/// `bytes` is the record's size as the shell knows it.
NOTIFYICONDATAW trayRecord(DWORD bytes, HWND window, const std::wstring& tip);

/// The program's icon in the notification area. Failures are ignored: the program works without the icon.
/// Main thread only.
class TrayIcon {
public:
    /// Adds the icon `icon` (a resource of `instance`; a name is borrowed for as long as this object lives)
    /// with the tip `tip` for `window`.
    void add(HINSTANCE instance, LPCWSTR icon, HWND window, const std::wstring& tip);

    /// Adds the icon of the last add() again, to a notification area that was started anew.
    void restore();

    /// Removes the icon.
    void remove();

private:
    HINSTANCE instance_ = nullptr;
    LPCWSTR icon_ = nullptr;
    NOTIFYICONDATAW data_{};
};

}  // namespace Panelix
