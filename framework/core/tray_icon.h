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

/// The program's icon in the notification area. Adding it may fail: a shell that is busy, as at logon, misses
/// the request, and nothing tells when it is free again. The program works without the icon; until it is
/// there, its owner calls tryAgain() every few seconds. Each call makes one request, which takes the shell's
/// time-out of about 4 s at most. Main thread only.
class TrayIcon {
public:
    /// Adds the icon `icon` (a resource of `instance`; a name is borrowed for as long as this object lives)
    /// with the tip `tip` for `window`. False when tryAgain() is to be called.
    bool add(HINSTANCE instance, LPCWSTR icon, HWND window, const std::wstring& tip);

    /// Adds the icon of the last add() again, to a notification area that was started anew; nothing when it
    /// was removed. False when tryAgain() is to be called.
    bool restore();

    /// Asks for the icon once more. True when it is there, or was removed in the meantime.
    bool tryAgain();

    /// Removes the icon for good.
    void remove();

private:
    bool request(DWORD message);
    bool isWanted() const { return data_.uFlags != 0; }

    HINSTANCE instance_ = nullptr;
    LPCWSTR icon_ = nullptr;
    /// Without the picture, which is loaded for each request. Its flags are 0 while no icon is wanted.
    NOTIFYICONDATAW data_{};
    DWORD lastMessage_ = NIM_ADD;
};

}  // namespace Panelix
