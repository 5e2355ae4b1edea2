#include "framework/core/tray_icon.h"

#include <shlwapi.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>

#include "framework/core/exported_function.h"
#include "framework/core/tray_record.h"
#include "framework/core/unique_resource.h"

namespace Panelix {

namespace {

constexpr UINT kTrayIconId = 1;
constexpr UINT kFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;

static_assert(sizeof(NOTIFYICONDATAW) == kTrayRecordBytes);
static_assert(offsetof(NOTIFYICONDATAW, guidItem) == kOldTrayRecordBytes);
static_assert(std::size(NOTIFYICONDATAW{}.szTip) == 128);

// Packed version of the shell's library, 0 when it cannot be had.
std::uint64_t shellVersion() {
    const UniqueModule shell{LoadLibraryExW(L"Shell32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32)};
    if (!shell) {
        return 0;
    }
    auto* const getVersion =
        exportedFunction<std::remove_pointer_t<DLLGETVERSIONPROC>>(shell.get(), "DllGetVersion");
    if (getVersion == nullptr) {
        return 0;
    }
    DLLVERSIONINFO info{};
    info.cbSize = sizeof(info);
    if (FAILED(getVersion(&info))) {
        return 0;
    }
    return packVersion(info.dwMajorVersion, info.dwMinorVersion);
}

}  // namespace

NOTIFYICONDATAW trayRecord(DWORD bytes, HWND window, const std::wstring& tip) {
    NOTIFYICONDATAW record{};
    record.cbSize = bytes;
    record.hWnd = window;
    record.uID = kTrayIconId;
    record.uFlags = kFlags;
    record.uCallbackMessage = kTrayIconMessage;
    // The rest of the zero-filled field ends the text.
    std::copy_n(tip.data(), std::min(tip.size(), std::size(record.szTip) - 1), record.szTip);
    return record;
}

bool TrayIcon::add(HINSTANCE instance, LPCWSTR icon, HWND window, const std::wstring& tip) {
    instance_ = instance;
    icon_ = icon;
    data_ = trayRecord(trayRecordBytes(shellVersion()), window, tip);
    return restore();
}

bool TrayIcon::restore() {
    return request(NIM_ADD);
}

bool TrayIcon::tryAgain() {
    // A request that ran into the time-out may have been obeyed later: adding the icon then fails for ever,
    // while changing it succeeds. Each takes its turn, so that no call waits for two time-outs.
    return request(lastMessage_ == NIM_ADD ? NIM_MODIFY : NIM_ADD);
}

void TrayIcon::remove() {
    data_.uFlags = 0;
    Shell_NotifyIconW(NIM_DELETE, &data_);
}

bool TrayIcon::request(DWORD message) {
    if (!isWanted()) {
        return true;
    }
    lastMessage_ = message;
    // The shell keeps a copy of its own.
    const UniqueIcon picture{static_cast<HICON>(LoadImageW(
        instance_, icon_, IMAGE_ICON, GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON), 0))};
    NOTIFYICONDATAW record = data_;
    record.hIcon = picture.get();
    const bool obeyed = Shell_NotifyIconW(message, &record) != FALSE;
    // While the shell is waited for, other programs' messages come in: the window may be gone.
    return obeyed || !isWanted();
}

}  // namespace Panelix
