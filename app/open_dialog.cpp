#include "app/open_dialog.h"

#include <utility>

/// The dialog that is being opened. Windows shows a dialog only once its loop finds nothing to do: what waits
/// in the queue, another request or the tray menu, would run before it can be seen. So it is shown as soon as
/// it is complete, which a hook on the thread's messages tells: message boxes offer no other place.
class OpenDialog::Opening {
public:
    explicit Opening(OpenDialog& dialog)
        : dialog_(dialog),
          outer_(std::exchange(current, this)),
          hook_(SetWindowsHookExW(WH_CALLWNDPROCRET, afterMessage, nullptr, GetCurrentThreadId())) {
        dialog_.opening_ = true;
        dialog_.window_ = nullptr;
    }
    ~Opening() {
        stopWaiting();
        dialog_.opening_ = false;
        dialog_.window_ = nullptr;
    }
    Opening(const Opening&) = delete;
    Opening& operator=(const Opening&) = delete;

private:
    static LRESULT CALLBACK afterMessage(int code, WPARAM wParam, LPARAM lParam) noexcept {
        const auto* const sent = reinterpret_cast<const CWPRETSTRUCT*>(lParam);
        if (code == HC_ACTION && sent->message == WM_INITDIALOG && current != nullptr) {
            current->found(sent->hwnd);
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }

    void found(HWND window) noexcept {
        stopWaiting();
        dialog_.opening_ = false;
        dialog_.window_ = window;
        ShowWindow(window, SW_SHOWNORMAL);
    }

    void stopWaiting() noexcept {
        if (!waits_) {
            return;
        }
        waits_ = false;
        current = outer_;
        if (hook_ != nullptr) {
            UnhookWindowsHookEx(hook_);
        }
    }

    /// The innermost one that waits for its dialog.
    static Opening* current;

    OpenDialog& dialog_;
    Opening* const outer_;
    const HHOOK hook_;
    bool waits_ = true;
};

OpenDialog::Opening* OpenDialog::Opening::current = nullptr;

bool OpenDialog::isOpen() const {
    // A dialog that has ended under the loop of another one stays, hidden, until that one has ended as well.
    return opening_ || (window_ != nullptr && IsWindowVisible(window_) != FALSE);
}

void OpenDialog::show(const std::function<void()>& open) {
    if (!isOpen()) {
        const Opening opening(*this);
        open();
    } else if (window_ != nullptr) {
        SetForegroundWindow(window_);
    }
}
