#include "tests/support/desktop_driver.h"

#include <shellapi.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <optional>
#include <thread>
#include <utility>

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kLookPeriod(10);

/// A window whose thread is about to end may never answer.
constexpr UINT kAnswerTimeoutMs = 2000;

/// Time for the mouse's messages to be handled before the next movement.
constexpr milliseconds kMousePause(50);

constexpr wchar_t kDialogClass[] = L"#32770";
constexpr wchar_t kMenuClass[] = L"#32768";

std::optional<DWORD_PTR> ask(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    DWORD_PTR result = 0;
    if (SendMessageTimeoutW(window, message, wParam, lParam, SMTO_ABORTIFHUNG, kAnswerTimeoutMs, &result) ==
        0) {
        return std::nullopt;
    }
    return result;
}

BOOL CALLBACK appendWindow(HWND window, LPARAM windows) noexcept {
    reinterpret_cast<std::vector<HWND>*>(windows)->push_back(window);
    return TRUE;
}

std::vector<HWND> topLevelWindows(DWORD processId) {
    std::vector<HWND> windows;
    EnumWindows(appendWindow, reinterpret_cast<LPARAM>(&windows));
    std::erase_if(windows, [processId](HWND window) {
        DWORD process = 0;
        GetWindowThreadProcessId(window, &process);
        return process != processId;
    });
    return windows;
}

DWORD processOf(HWND window) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    return process;
}

/// All zero when there is no such thread.
GUITHREADINFO guiStateOf(DWORD thread) {
    GUITHREADINFO info{};
    info.cbSize = sizeof(info);
    return GetGUIThreadInfo(thread, &info) != FALSE ? info : GUITHREADINFO{};
}

HWND focusOf(HWND window) {
    return guiStateOf(GetWindowThreadProcessId(window, nullptr)).hwndFocus;
}

bool isIcon(const Control& control) {
    return control.className == L"Static" && (control.style & SS_TYPEMASK) == SS_ICON;
}

MessageBoxFacts readMessageBox(HWND window) {
    MessageBoxFacts facts{window, GetWindow(window, GW_OWNER), textOf(window), {}, {}, nullptr};
    for (const Control& control : controlsOf(window)) {
        if ((control.style & WS_VISIBLE) == 0) {
            continue;
        }
        if (control.className == L"Button") {
            facts.buttons.push_back(control.id);
        } else if (isIcon(control)) {
            facts.icon = control.window;
        } else {
            facts.text += control.text;
        }
    }
    return facts;
}

/// In 65,536ths of the screen, rounded up: the system rounds down to pixels.
LONG ofScreen(LONG pixel, int size) {
    return (pixel * 65'536 + size - 1) / size;
}

/// Moves the mouse to a point of the first screen, and does each of the events there. Every input has the
/// point in it: on a busy machine the window system may still tell where the mouse was before, and a press
/// without a point of its own would go there.
void sendMouse(POINT point, const std::vector<DWORD>& events) {
    std::vector<INPUT> inputs;
    for (const DWORD event : events) {
        INPUT input{};
        input.type = INPUT_MOUSE;
        input.mi.dx = ofScreen(point.x, GetSystemMetrics(SM_CXSCREEN));
        input.mi.dy = ofScreen(point.y, GetSystemMetrics(SM_CYSCREEN));
        input.mi.dwFlags = MOUSEEVENTF_ABSOLUTE | MOUSEEVENTF_MOVE | event;
        inputs.push_back(input);
    }
    SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT));
    std::this_thread::sleep_for(kMousePause);
}

/// The message that is posted last, and whether it has been taken out of its queue.
UINT lastMessage() {
    static const UINT message = RegisterWindowMessageW(L"Kelvaro test: last message");
    return message;
}

std::atomic<bool> lastTaken{false};

LRESULT CALLBACK watchMessages(int code, WPARAM removal, LPARAM record) {
    if (code == HC_ACTION && removal == PM_REMOVE &&
        reinterpret_cast<const MSG*>(record)->message == lastMessage()) {
        lastTaken = true;
    }
    return CallNextHookEx(nullptr, code, removal, record);
}

}  // namespace

bool waitFor(const std::function<bool()>& condition, milliseconds timeout) {
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(kLookPeriod);
    }
    return true;
}

HWND findWindow(DWORD processId, const wchar_t* className, const wchar_t* title) {
    const std::vector<HWND> windows = topLevelWindows(processId);
    const auto found = std::find_if(windows.begin(), windows.end(), [&](HWND window) {
        return classOf(window) == className && (title == nullptr || textOf(window) == title);
    });
    return found == windows.end() ? nullptr : *found;
}

HWND waitForVisibleWindow(DWORD processId,
                          const wchar_t* className,
                          const wchar_t* title,
                          milliseconds timeout) {
    HWND window = nullptr;
    waitFor(
        [&] {
            window = findWindow(processId, className, title);
            return window != nullptr && IsWindowVisible(window) != FALSE;
        },
        timeout);
    return window != nullptr && IsWindowVisible(window) != FALSE ? window : nullptr;
}

std::vector<HWND> visibleWindows(DWORD processId, const wchar_t* className, const wchar_t* title) {
    std::vector<HWND> windows = topLevelWindows(processId);
    std::erase_if(windows, [&](HWND window) {
        return IsWindowVisible(window) == FALSE || classOf(window) != className || textOf(window) != title;
    });
    return windows;
}

bool waitUntilGone(HWND window) {
    return waitFor([window] { return IsWindow(window) == FALSE; });
}

bool waitUntilPostedIsHandled(HWND window) {
    const HHOOK hook =
        SetWindowsHookExW(WH_GETMESSAGE, watchMessages, nullptr, GetWindowThreadProcessId(window, nullptr));
    if (hook == nullptr) {
        return false;
    }
    lastTaken = false;
    // Posted messages are taken in their order, and the next one once the one before has been handled.
    const bool handled =
        PostMessageW(window, lastMessage(), 0, 0) != FALSE && waitFor([] { return lastTaken.load(); });
    UnhookWindowsHookEx(hook);
    return handled;
}

std::wstring textOf(HWND window) {
    const std::optional<DWORD_PTR> length = ask(window, WM_GETTEXTLENGTH, 0, 0);
    if (!length) {
        return {};
    }
    std::wstring text(*length + 1, L'\0');
    const std::optional<DWORD_PTR> copied =
        ask(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(copied.value_or(0));
    return text;
}

std::wstring classOf(HWND window) {
    std::array<wchar_t, 64> name{};
    const int length = GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    return std::wstring(name.data(), static_cast<std::size_t>(length));
}

std::uint32_t styleOf(HWND window) {
    return static_cast<std::uint32_t>(GetWindowLongPtrW(window, GWL_STYLE));
}

std::uint32_t extendedStyleOf(HWND window) {
    return static_cast<std::uint32_t>(GetWindowLongPtrW(window, GWL_EXSTYLE));
}

RECT rectOf(HWND window) {
    RECT rect{};
    GetWindowRect(window, &rect);
    return rect;
}

POINT clientCentre(HWND window) {
    RECT client{};
    GetClientRect(window, &client);
    POINT centre{client.right / 2, client.bottom / 2};
    ClientToScreen(window, &centre);
    return centre;
}

POINT captionOf(HWND window) {
    const RECT rect = rectOf(window);
    return {rect.left + 60, rect.top + GetSystemMetrics(SM_CYCAPTION) / 2 + 2};
}

POINT closeBoxOf(HWND window) {
    const RECT rect = rectOf(window);
    return {rect.right - 14, rect.top + GetSystemMetrics(SM_CYCAPTION) / 2 + 2};
}

std::vector<Control> controlsOf(HWND parent) {
    std::vector<Control> controls;
    for (HWND child = GetWindow(parent, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        RECT rect = rectOf(child);
        MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&rect), 2);
        controls.push_back({child, GetDlgCtrlID(child), classOf(child), textOf(child), styleOf(child), rect});
    }
    return controls;
}

int focusedControl(HWND dialog) {
    const HWND focus = focusOf(dialog);
    return focus != nullptr && focus != dialog ? GetDlgCtrlID(focus) : 0;
}

void pressButton(HWND dialog, int id) {
    PostMessageW(GetDlgItem(dialog, id), BM_CLICK, 0, 0);
}

void pressKey(HWND window, WPARAM virtualKey) {
    const HWND focus = focusOf(window);
    const HWND target = focus != nullptr ? focus : window;
    PostMessageW(target, WM_KEYDOWN, virtualKey, 1);
    PostMessageW(target, WM_KEYUP, virtualKey, static_cast<LPARAM>(0xC0000001));
}

void typeText(HWND dialog, int id, const std::wstring& text) {
    const HWND edit = GetDlgItem(dialog, id);
    ask(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L""));
    for (const wchar_t character : text) {
        ask(edit, WM_CHAR, character, 1);
    }
}

MessageBoxFacts waitForMessageBox(DWORD processId) {
    MessageBoxFacts facts{};
    waitFor([&] {
        const HWND window = findWindow(processId, kDialogClass);
        if (window == nullptr || IsWindowVisible(window) == FALSE) {
            return false;
        }
        facts = readMessageBox(window);
        return !facts.buttons.empty() && !facts.text.empty();
    });
    return facts;
}

bool hasTrayIcon(HWND window) {
    NOTIFYICONDATAW record{};
    record.cbSize = sizeof(record);
    record.hWnd = window;
    record.uID = 1;
    // An icon that is not there cannot be changed.
    return Shell_NotifyIconW(NIM_MODIFY, &record) != FALSE;
}

HWND openTrayMenu(HWND window, UINT mouseMessage) {
    PostMessageW(window, WM_APP, 1, static_cast<LPARAM>(mouseMessage));
    HWND menu = nullptr;
    waitFor([&] {
        menu = openMenu(processOf(window));
        return menu != nullptr;
    });
    return menu;
}

HWND openMenu(DWORD processId) {
    const HWND menu = findWindow(processId, kMenuClass);
    return menu != nullptr && IsWindowVisible(menu) != FALSE ? menu : nullptr;
}

bool chooseMenuItem(HWND owner, std::size_t position) {
    for (std::size_t i = 0; i <= position; ++i) {
        PostMessageW(owner, WM_KEYDOWN, VK_DOWN, 1);
    }
    PostMessageW(owner, WM_KEYDOWN, VK_RETURN, 1);
    return waitFor([owner] { return openMenu(processOf(owner)) == nullptr; });
}

bool dismissMenu(HWND owner) {
    PostMessageW(owner, WM_CANCELMODE, 0, 0);
    return waitFor([owner] { return openMenu(processOf(owner)) == nullptr; });
}

std::vector<MenuItem> menuItems(HWND menuWindow) {
    const auto answer = ask(menuWindow, MN_GETHMENU, 0, 0);
    const HMENU menu = reinterpret_cast<HMENU>(answer.value_or(0));
    std::vector<MenuItem> items;
    for (int i = 0; i < GetMenuItemCount(menu); ++i) {
        std::array<wchar_t, 64> text{};
        GetMenuStringW(menu, static_cast<UINT>(i), text.data(), static_cast<int>(text.size()), MF_BYPOSITION);
        items.push_back({text.data(), GetMenuItemID(menu, i)});
    }
    return items;
}

ScreenPicture captureScreen(const RECT& wanted) {
    // Reading beyond the edge of the screen gives no picture at all.
    const RECT all{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    RECT rect{};
    if (IntersectRect(&rect, &wanted, &all) == FALSE) {
        return {};
    }
    ScreenPicture picture{rect.right - rect.left, rect.bottom - rect.top, {}};
    picture.pixels.resize(static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height));
    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, picture.width, picture.height);
    const HGDIOBJ before = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, picture.width, picture.height, screen, rect.left, rect.top, SRCCOPY);
    SelectObject(memory, before);

    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = picture.width;
    info.bmiHeader.biHeight = -picture.height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    GetDIBits(
        memory, bitmap, 0, static_cast<UINT>(picture.height), picture.pixels.data(), &info, DIB_RGB_COLORS);
    for (std::uint32_t& pixel : picture.pixels) {
        pixel &= 0x00FFFFFFU;
    }
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return picture;
}

ScreenPicture captureClient(HWND window) {
    RECT rect{};
    GetClientRect(window, &rect);
    MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&rect), 2);
    return captureScreen(rect);
}

ScreenPicture captureSettled(HWND window) {
    constexpr milliseconds kRest(150);
    ScreenPicture picture = captureClient(window);
    const bool settled = waitFor([&] {
        std::this_thread::sleep_for(kRest);
        const ScreenPicture before = std::exchange(picture, captureClient(window));
        const auto& pixels = picture.pixels;
        const bool plain =
            std::adjacent_find(pixels.begin(), pixels.end(), std::not_equal_to<>()) == pixels.end();
        return before == picture && !plain;
    });
    return settled ? picture : ScreenPicture{};
}

void clickAt(POINT point) {
    sendMouse(point, {MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP});
}

void rightClickAt(POINT point) {
    sendMouse(point, {MOUSEEVENTF_RIGHTDOWN, MOUSEEVENTF_RIGHTUP});
}

void doubleClickAt(POINT point) {
    sendMouse(point, {MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP, MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP});
}

void dragFromTo(POINT from, POINT to) {
    const DWORD thread = GetWindowThreadProcessId(WindowFromPoint(from), nullptr);
    sendMouse(from, {MOUSEEVENTF_LEFTDOWN});
    // The window follows the mouse only once its thread is in the loop that moves it.
    waitFor([thread] { return (guiStateOf(thread).flags & GUI_INMOVESIZE) != 0; });
    sendMouse({from.x + (to.x - from.x) / 2, from.y + (to.y - from.y) / 2}, {0});
    sendMouse(to, {MOUSEEVENTF_LEFTUP});
}
