#pragma once

#include <windows.h>

#include <shellapi.h>

#include <string>

namespace Panelix {

/// Message that the notification area sends to the icon's window: lParam is the mouse or keyboard message.
inline constexpr UINT kTrayIconMessage = WM_APP;

/// The program's icon in the notification area. Failures are ignored: the program works without the icon.
/// Main thread only.
class TrayIcon {
public:
    /// Adds the icon `icon` (a resource of `instance`) with the tip `tip`, cut to 127 characters, for
    /// `window`.
    void add(HINSTANCE instance, LPCWSTR icon, HWND window, const std::wstring& tip);

    /// Removes the icon.
    void remove();

private:
    NOTIFYICONDATAW data_{};
};

}  // namespace Panelix
