#include "app/open_dialog.h"

#include <windows.h>

#include <array>
#include <string_view>

namespace {

/// Windows' own class of all dialogs, message boxes included.
constexpr std::wstring_view kDialogClass = L"#32770";

struct Search {
    std::wstring_view caption;
    HWND found;
};

bool matches(HWND window, std::wstring_view caption) {
    // In nested message loops a dialog that was closed stays, hidden, until the inner one is closed as well.
    if (IsWindowVisible(window) == FALSE) {
        return false;
    }
    std::array<wchar_t, 64> text{};
    GetClassNameW(window, text.data(), static_cast<int>(text.size()));
    if (text.data() != kDialogClass) {
        return false;
    }
    GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
    return text.data() == caption;
}

BOOL CALLBACK look(HWND window, LPARAM parameter) noexcept {
    auto* const search = reinterpret_cast<Search*>(parameter);
    if (!matches(window, search->caption)) {
        return TRUE;
    }
    search->found = window;
    return FALSE;
}

}  // namespace

bool bringDialogToFront(const wchar_t* caption) {
    Search search{caption, nullptr};
    EnumThreadWindows(GetCurrentThreadId(), look, reinterpret_cast<LPARAM>(&search));
    if (search.found == nullptr) {
        return false;
    }
    SetForegroundWindow(search.found);
    return true;
}
