#include "tests/endurance/dialog_visitor.h"

#include <array>
#include <string_view>

#include "app/resource_ids.h"

namespace {

/// The shortest period that the system gives.
constexpr UINT kVisitPeriodMs = 10;
constexpr std::wstring_view kDialogClass = L"#32770";
constexpr std::array<const wchar_t*, 6> kDelays{L"", L"0", L"15", L"999", L"x", L"-1"};

}  // namespace

DialogVisitor* DialogVisitor::current = nullptr;

DialogVisitor::DialogVisitor(std::uint32_t seed)
    : random_(seed),
      timer_(SetTimer(nullptr, 0, kVisitPeriodMs, visitAll)) {
    current = this;
}

DialogVisitor::~DialogVisitor() {
    KillTimer(nullptr, timer_);
    current = nullptr;
}

void CALLBACK DialogVisitor::visitAll(HWND, UINT, UINT_PTR, DWORD) {
    if (current != nullptr) {
        EnumThreadWindows(GetCurrentThreadId(), visitWindow, 0);
    }
}

BOOL CALLBACK DialogVisitor::visitWindow(HWND window, LPARAM) {
    std::array<wchar_t, 16> name{};
    GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    if (name.data() == kDialogClass && IsWindowVisible(window) != FALSE) {
        current->visit(window);
    }
    return TRUE;
}

void DialogVisitor::visit(HWND window) {
    const bool isSettings = GetDlgItem(window, IDC_SAVE) != nullptr;
    if (window != seen_) {
        seen_ = window;
        ++(isSettings ? settingsDialogs : boxes);
    }
    if (onVisit) {
        onVisit();
    }
    if (isSettings) {
        workOnSettings(window);
    } else {
        closeBox(window, random_.chance(2));
    }
}

void DialogVisitor::closeBox(HWND box, bool byItsButton) {
    // The next box may well get the same handle.
    current->seen_ = nullptr;
    if (byItsButton) {
        PostMessageW(box, WM_COMMAND, IDOK, 0);
    } else {
        PostMessageW(box, WM_CLOSE, 0, 0);
    }
}

void DialogVisitor::workOnSettings(HWND dialog) {
    switch (random_.below(5)) {
        case 0:
            SendDlgItemMessageW(
                dialog, IDC_AUTOSTART, BM_SETCHECK, random_.chance(2) ? BST_CHECKED : BST_UNCHECKED, 0);
            SetDlgItemTextW(dialog, IDC_DELAY, random_.oneOf(kDelays));
            break;
        case 1:
            PostMessageW(dialog, WM_COMMAND, IDC_SAVE, 0);
            break;
        case 2:
            seen_ = nullptr;
            PostMessageW(dialog, WM_CLOSE, 0, 0);
            break;
        case 3:
            seen_ = nullptr;
            PostMessageW(dialog, WM_SYSCOMMAND, SC_CLOSE, 0);
            break;
        default:
            seen_ = nullptr;
            PostMessageW(dialog, WM_COMMAND, IDC_CANCEL, 0);
            break;
    }
}
