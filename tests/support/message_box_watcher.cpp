#include "tests/support/message_box_watcher.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace {

constexpr std::chrono::milliseconds kLookPeriod(5);

/// A box whose thread does not answer within this time is looked at again in the next round.
constexpr UINT kAnswerTimeoutMs = 2000;

constexpr int kFirstStandardButton = IDOK;
constexpr int kLastStandardButton = IDCONTINUE;

std::wstring className(HWND window) {
    std::array<wchar_t, 64> name{};
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return std::wstring(name.data(), static_cast<std::size_t>(length));
}

/// Asks with a time-out: the window's thread may be about to end it.
std::optional<DWORD_PTR> ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    DWORD_PTR result = 0;
    if (SendMessageTimeoutW(window, message, wParam, lParam, SMTO_ABORTIFHUNG, kAnswerTimeoutMs, &result) ==
        0) {
        return std::nullopt;
    }
    return result;
}

std::optional<std::wstring> windowText(HWND window) {
    const std::optional<DWORD_PTR> length = ask(window, WM_GETTEXTLENGTH, 0, 0);
    if (!length) {
        return std::nullopt;
    }
    std::wstring text(*length + 1, L'\0');
    const std::optional<DWORD_PTR> copied =
        ask(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    if (!copied) {
        return std::nullopt;
    }
    text.resize(*copied);
    return text;
}

BOOL CALLBACK appendWindow(HWND window, LPARAM windows) noexcept {
    reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
    return TRUE;
}

std::vector<HWND> childrenOf(HWND parent) {
    std::vector<HWND> children;
    EnumChildWindows(parent, appendWindow, reinterpret_cast<LPARAM>(&children));
    return children;
}

std::vector<HWND> dialogsOfThisProcess() {
    std::vector<HWND> windows;
    EnumWindows(appendWindow, reinterpret_cast<LPARAM>(&windows));
    std::erase_if(windows, [](HWND window) {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        return process != GetCurrentProcessId() || !IsWindowVisible(window) || className(window) != L"#32770";
    });
    return windows;
}

MessageBoxIcon iconKind(HICON icon) {
    struct Kind {
        LPCWSTR name;
        MessageBoxIcon kind;
    };
    const std::array<Kind, 4> kinds{{
        {IDI_ERROR, MessageBoxIcon::Error},
        {IDI_QUESTION, MessageBoxIcon::Question},
        {IDI_WARNING, MessageBoxIcon::Warning},
        {IDI_INFORMATION, MessageBoxIcon::Information},
    }};
    if (icon == nullptr) {
        return MessageBoxIcon::None;
    }
    // The system's icons are shared: loading one twice gives the same handle.
    const auto* found = std::find_if(kinds.begin(), kinds.end(), [icon](const Kind& kind) {
        return LoadIconW(nullptr, kind.name) == icon;
    });
    return found == kinds.end() ? MessageBoxIcon::Other : found->kind;
}

bool readStatic(HWND control, SeenMessageBox& box) {
    const bool isIcon = (GetWindowLongPtrW(control, GWL_STYLE) & SS_TYPEMASK) == SS_ICON;
    if (isIcon) {
        const std::optional<DWORD_PTR> icon = ask(control, STM_GETICON, 0, 0);
        if (icon) {
            box.icon = iconKind(reinterpret_cast<HICON>(*icon));
        }
        return icon.has_value();
    }
    std::optional<std::wstring> text = windowText(control);
    if (text) {
        box.text += *text;
    }
    return text.has_value();
}

bool readButton(HWND control, SeenMessageBox& box) {
    const int id = GetDlgCtrlID(control);
    if (id < kFirstStandardButton || id > kLastStandardButton) {
        return false;
    }
    // Wine's template holds all buttons and hides those not asked for.
    if ((GetWindowLongPtrW(control, GWL_STYLE) & WS_VISIBLE) != 0) {
        box.buttons.push_back(id);
    }
    return true;
}

/// Empty when the dialog is no message box, or when it went away meanwhile.
std::optional<SeenMessageBox> readMessageBox(HWND window) {
    std::optional<std::wstring> caption = windowText(window);
    if (!caption) {
        return std::nullopt;
    }
    SeenMessageBox box{
        .window = window,
        .threadId = GetWindowThreadProcessId(window, nullptr),
        .owner = GetWindow(window, GW_OWNER),
        .caption = *caption,
        .text = {},
        .icon = MessageBoxIcon::None,
        .buttons = {},
        .style = GetWindowLongPtrW(window, GWL_STYLE),
        .extendedStyle = GetWindowLongPtrW(window, GWL_EXSTYLE),
    };
    for (const HWND control : childrenOf(window)) {
        const std::wstring kind = className(control);
        const bool fits = (kind == L"Static" && readStatic(control, box)) ||
                          (kind == L"Button" && readButton(control, box));
        if (!fits) {
            return std::nullopt;
        }
    }
    if (box.buttons.empty()) {
        return std::nullopt;
    }
    return box;
}

}  // namespace

MessageBoxWatcher::MessageBoxWatcher(int button, Visitor whileOpen)
    : button_(button),
      whileOpen_(std::move(whileOpen)),
      thread_([this](std::stop_token stop) { watch(stop); }) {}

MessageBoxWatcher::~MessageBoxWatcher() = default;

bool MessageBoxWatcher::waitForCount(std::size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout, [this, count] { return boxes_.size() >= count; });
}

std::vector<SeenMessageBox> MessageBoxWatcher::boxes() const {
    const std::lock_guard lock(mutex_);
    return boxes_;
}

void MessageBoxWatcher::watch(std::stop_token stop) {
    while (!stop.stop_requested()) {
        lookOnce();
        std::this_thread::sleep_for(kLookPeriod);
    }
}

void MessageBoxWatcher::lookOnce() {
    const std::vector<HWND> dialogs = dialogsOfThisProcess();
    // A closed window's handle may come back as a new box.
    std::erase_if(answered_, [&dialogs](HWND window) {
        return std::find(dialogs.begin(), dialogs.end(), window) == dialogs.end();
    });
    for (const HWND dialog : dialogs) {
        if (answered_.contains(dialog)) {
            continue;
        }
        const std::optional<SeenMessageBox> box = readMessageBox(dialog);
        if (!box) {
            continue;
        }
        {
            const std::lock_guard lock(mutex_);
            boxes_.push_back(*box);
        }
        changed_.notify_all();
        if (whileOpen_) {
            whileOpen_(*box);
        }
        answered_.insert(dialog);
        answer(*box);
    }
}

void MessageBoxWatcher::answer(const SeenMessageBox& box) const {
    const bool hasButton = std::find(box.buttons.begin(), box.buttons.end(), button_) != box.buttons.end();
    const int id = hasButton ? button_ : box.buttons.front();
    PostMessageW(box.window,
                 WM_COMMAND,
                 MAKEWPARAM(id, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(box.window, id)));
}
