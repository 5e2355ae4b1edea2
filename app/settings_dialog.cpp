#include "app/settings_dialog.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <optional>

#include "app/resource_ids.h"
#include "app/run_entry.h"
#include "app/settings.h"

namespace {

/// Characters that are read from the delay box, the terminator included: longer delays than 999 seconds
/// cannot be asked for.
constexpr int kDelayTextSize = 4;

/// Messages that the default procedure sees to completely. The dialog manager would do each of them once
/// more: a second move loop keeps the dialog at the mouse after the button was let go.
constexpr std::array<UINT, 4> kComplete = {WM_NCLBUTTONDOWN, WM_NCRBUTTONUP, WM_CONTEXTMENU, WM_SYSCOMMAND};

void showSettings(HWND dialog) {
    bool autostart = false;
    std::uint32_t delaySeconds = 0;
    ReadSettings(autostart, delaySeconds);
    if (autostart) {
        PostMessageW(GetDlgItem(dialog, IDC_AUTOSTART), BM_SETCHECK, BST_CHECKED, 0);
    }
    if (delaySeconds != 0) {
        SetDlgItemInt(dialog, IDC_DELAY, delaySeconds, FALSE);
    }
}

void save(HWND dialog) {
    std::array<wchar_t, kDelayTextSize> delayText{};
    GetDlgItemTextW(dialog, IDC_DELAY, delayText.data(), kDelayTextSize);
    const std::optional<std::uint32_t> delaySeconds = typedDelay(delayText.data());
    if (!delaySeconds) {
        ShowWindow(GetDlgItem(dialog, IDC_DELAY_WARNING), SW_SHOW);
        return;
    }
    const bool autostart = SendDlgItemMessageW(dialog, IDC_AUTOSTART, BM_GETCHECK, 0, 0) != BST_UNCHECKED;
    WriteSettings(autostart, *delaySeconds);
    EndDialog(dialog, 0);
}

/// The dialog manager takes a message's result from the window, not from the procedure's return value.
/// Without it, hit tests, deactivation and the caption's text would all be answered with 0: the dialog could
/// not be dragged, closed or read by name.
INT_PTR defaultResult(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    const LRESULT result = DefWindowProcW(dialog, message, wParam, lParam);
    SetWindowLongPtrW(dialog, DWLP_MSGRESULT, result);
    const bool complete = std::find(kComplete.begin(), kComplete.end(), message) != kComplete.end();
    return complete ? TRUE : result;
}

INT_PTR handleMessage(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND && LOWORD(wParam) == IDC_SAVE) {
        save(dialog);
        return TRUE;
    }
    if (message == WM_COMMAND && LOWORD(wParam) == IDC_CANCEL) {
        EndDialog(dialog, 0);
        return TRUE;
    }
    if (message == WM_INITDIALOG) {
        showSettings(dialog);
    }
    return defaultResult(dialog, message, wParam, lParam);
}

INT_PTR CALLBACK dialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    try {
        return handleMessage(dialog, message, wParam, lParam);
    } catch (const std::exception&) {
        // Memory ran out; like any other failure to read or to write it is not shown.
        return FALSE;
    }
}

}  // namespace

void showSettingsDialog(HINSTANCE instance) {
    DialogBoxParamW(instance, MAKEINTRESOURCEW(IDD_SETTINGS), nullptr, dialogProcedure, 0);
}
