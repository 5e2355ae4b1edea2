#include "app/settings_dialog.h"

#include <array>
#include <cstdint>
#include <exception>
#include <optional>

#include "app/open_dialog.h"
#include "app/resource_ids.h"
#include "app/run_entry.h"
#include "app/settings.h"

namespace {

/// Characters that are read from the delay box, the terminator included: longer delays than 999 seconds
/// cannot be asked for.
constexpr int kDelayTextSize = 4;

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

/// Messages whose result is the procedure's return value. Of all others the dialog manager takes the result
/// from the window.
bool returnsItsResult(UINT message) {
    switch (message) {
        case WM_INITDIALOG:
        case WM_CHARTOITEM:
        case WM_COMPAREITEM:
        case WM_VKEYTOITEM:
        case WM_QUERYDRAGICON:
            return true;
        default:
            // A brush each.
            return message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC;
    }
}

/// Messages that the dialog manager must see to as well, since the default procedure does less than a dialog
/// needs. All others are done once the default procedure has handled them: the manager would only hand them
/// to it once more. A second mouse loop, say, would keep the caption's click until the next one, a second
/// WM_NCCALCSIZE would take the frame off the client area twice.
bool needsDialogManager(UINT message) {
    switch (message) {
        // Only the manager knows the default button, the order of the controls and the template's font.
        case DM_GETDEFID:
        case DM_SETDEFID:
        case WM_NEXTDLGCTL:
        case WM_GETFONT:
        // It keeps the focused control while the dialog is not active, and gives it the focus back.
        case WM_ACTIVATE:
        case WM_SETFOCUS:
        case WM_SHOWWINDOW:
        // The class of dialogs has no brush: it asks for one through WM_CTLCOLORDLG.
        case WM_ERASEBKGND:
        // It gives back the font and its own record of the dialog.
        case WM_NCDESTROY:
            return true;
        default:
            // WM_CLOSE is not among them: the manager would press a button with the id of Cancel, which the
            // dialog does not have; by default the window is destroyed, and the dialog's loop ends with it.
            // The mouse buttons are not: the manager closes the lists of combo boxes, of which there are
            // none.
            return false;
    }
}

INT_PTR defaultResult(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    const LRESULT result = DefWindowProcW(dialog, message, wParam, lParam);
    if (returnsItsResult(message)) {
        return result;
    }
    SetWindowLongPtrW(dialog, DWLP_MSGRESULT, result);
    return needsDialogManager(message) ? FALSE : TRUE;
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
    static OpenDialog settings;
    settings.show([instance] {
        DialogBoxParamW(instance, MAKEINTRESOURCEW(IDD_SETTINGS), nullptr, dialogProcedure, 0);
    });
}
