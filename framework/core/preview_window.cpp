#include "framework/core/preview_window.h"

#include <dwmapi.h>
#include <gdiplus.h>

#include <array>
#include <cstdint>
#include <utility>

#include "framework/core/app.h"
#include "framework/core/command_codes.h"
#include "framework/core/preview_placement.h"
#include "framework/core/unique_resource.h"
#include "framework/drawing/canvas.h"
#include "framework/drawing/sys_exception.h"

namespace Panelix {

namespace {

constexpr wchar_t kClassName[] = L"PanelixWindow";
constexpr wchar_t kErrorTitle[] = L"Panelix Window System";
constexpr DWORD kExtendedStyle = WS_EX_TOPMOST | WS_EX_TOOLWINDOW;
constexpr DWORD kStyle = WS_POPUP | WS_CAPTION | WS_SYSMENU;
constexpr MARGINS kGlassMarginsPx = {1, 1, 1, 1};

/// The window's timer for the tray icon; it runs only while the icon is to be added again. A timer of the
/// window goes on while a box or a dialog is open.
constexpr UINT_PTR kTrayIconTimer = 1;
/// From the end of one attempt to the next one.
constexpr UINT kTrayIconPauseMs = 3000;

static_assert(sizeof(WNDCLASSEXW) == 80);

// Painting of one WM_PAINT; its end validates the window, so it must come on every way out.
class PaintScope {
public:
    explicit PaintScope(HWND window) : window_(window), dc_(BeginPaint(window, &paint_)) {}
    ~PaintScope() { EndPaint(window_, &paint_); }
    PaintScope(const PaintScope&) = delete;
    PaintScope& operator=(const PaintScope&) = delete;

    HDC dc() const { return dc_; }

private:
    HWND window_;
    PAINTSTRUCT paint_{};
    HDC dc_;
};

WindowPlacement placement() {
    RECT workArea{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &workArea, 0);
    return previewPlacement(workArea.right, workArea.bottom, GetSystemMetrics(SM_CYSMCAPTION));
}

PreviewWindow* boundObject(HWND window) {
    return reinterpret_cast<PreviewWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

void bindObject(HWND window, PreviewWindow* object) {
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(object));
}

}  // namespace

PreviewWindowClass::PreviewWindowClass(HINSTANCE instance, LPCWSTR icon, WNDPROC procedure)
    : instance_(instance) {
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.style = CS_HREDRAW | CS_VREDRAW;
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = instance;
    windowClass.hIcon = LoadIconW(instance, icon);
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(std::intptr_t{COLOR_WINDOW + 1});
    windowClass.lpszClassName = kClassName;
    windowClass.hIconSm = windowClass.hIcon;
    if (RegisterClassExW(&windowClass) == 0) {
        throw SysException(L"Cannot create main ATOM", kErrorTitle);
    }
}

PreviewWindowClass::~PreviewWindowClass() {
    UnregisterClassW(kClassName, instance_);
}

PreviewWindow::PreviewWindow(HINSTANCE instance, const std::wstring& title, LPCWSTR icon)
    : taskbarCreated_(RegisterWindowMessageW(L"TaskbarCreated")),
      class_(instance, icon, windowProcedure) {
    const WindowPlacement place = placement();
    const HWND window = CreateWindowExW(kExtendedStyle,
                                        kClassName,
                                        title.c_str(),
                                        kStyle,
                                        place.x,
                                        place.y,
                                        place.width,
                                        place.height,
                                        nullptr,
                                        nullptr,
                                        instance,
                                        this);
    if (window == nullptr) {
        throw SysException(L"Cannot create main window", kErrorTitle);
    }
    // Windows keeps the shell's messages from a program that runs as administrator, unless it asks for them.
    ChangeWindowMessageFilterEx(window, taskbarCreated_, MSGFLT_ALLOW, nullptr);
    DwmExtendFrameIntoClientArea(window, &kGlassMarginsPx);
    tryLaterUnless(trayIcon_.add(instance, icon, window, title));
}

PreviewWindow::~PreviewWindow() {
    if (window_ != nullptr) {
        bindObject(window_, nullptr);
    }
}

void PreviewWindow::invalidate() const {
    // Without a window the call would repaint every window of the desktop.
    if (window_ != nullptr) {
        InvalidateRect(window_, nullptr, FALSE);
    }
}

void PreviewWindow::rethrowPending() {
    if (pending_ != nullptr) {
        std::rethrow_exception(std::exchange(pending_, nullptr));
    }
}

LRESULT CALLBACK PreviewWindow::windowProcedure(HWND window,
                                                UINT message,
                                                WPARAM wParam,
                                                LPARAM lParam) noexcept {
    // Once only: any program may send the message later, with whatever it likes as the object.
    if (message == WM_NCCREATE && boundObject(window) == nullptr) {
        auto* const created =
            static_cast<PreviewWindow*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        created->window_ = window;
        bindObject(window, created);
    }
    PreviewWindow* const object = boundObject(window);
    if (object == nullptr) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    if (message == WM_NCDESTROY) {
        bindObject(window, nullptr);
        object->window_ = nullptr;
        return DefWindowProcW(window, message, wParam, lParam);
    }
    try {
        return object->handleMessage(message, wParam, lParam);
    } catch (...) {
        // Of several, in nested message loops, the first tells what went wrong.
        if (object->pending_ == nullptr) {
            object->pending_ = std::current_exception();
        }
        return 0;
    }
}

LRESULT PreviewWindow::handleMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_DESTROY:
            onDestroy();
            return 0;
        case WM_PAINT:
            onPaint();
            return 0;
        case WM_CLOSE:
            hide();
            return 0;
        case WM_NCHITTEST:
            return onHitTest(wParam, lParam);
        case WM_COMMAND:
            return onCommand(wParam, lParam);
        case kTrayIconMessage:
            onTrayIcon(lParam);
            return 0;
        case WM_TIMER:
            return onTimer(wParam, lParam);
        default:
            if (message == taskbarCreated_) {
                tryLaterUnless(trayIcon_.restore());
            }
            return defaultResult(message, wParam, lParam);
    }
}

LRESULT PreviewWindow::defaultResult(UINT message, WPARAM wParam, LPARAM lParam) const {
    return DefWindowProcW(window_, message, wParam, lParam);
}

void PreviewWindow::onDestroy() {
    trayIcon_.remove();
    PostQuitMessage(0);
}

void PreviewWindow::onPaint() {
    const PaintScope paint(window_);
    const App* const app = App::current();
    if (app != nullptr && app->canvas() != nullptr) {
        Gdiplus::Graphics graphics(paint.dc());
        app->canvas()->presentTo(graphics);
    }
}

LRESULT PreviewWindow::onHitTest(WPARAM wParam, LPARAM lParam) {
    // The picture is the handle by which the window is dragged.
    const LRESULT place = defaultResult(WM_NCHITTEST, wParam, lParam);
    return place == HTCLIENT ? HTCAPTION : place;
}

LRESULT PreviewWindow::onCommand(WPARAM wParam, LPARAM lParam) {
    const std::uint32_t code = LOWORD(wParam);
    switch (code) {
        case IDOK:
        case kCommandHide:
            hide();
            return 0;
        case kCommandShow:
            show();
            return 0;
        case kCommandExit:
            DestroyWindow(window_);
            return 0;
        default:
            break;
    }
    if (code < kCommandAbout) {
        return defaultResult(WM_COMMAND, wParam, lParam);
    }
    if (App* const app = App::current(); app != nullptr) {
        app->HandleCommand(code);
        app->requestFullWait();
    }
    return 0;
}

void PreviewWindow::onTrayIcon(LPARAM lParam) {
    switch (lParam) {
        case WM_CONTEXTMENU:
        case WM_RBUTTONDOWN:
            showTrayMenu();
            break;
        case WM_LBUTTONDBLCLK:
            toggle();
            break;
        default:
            break;
    }
}

LRESULT PreviewWindow::onTimer(WPARAM wParam, LPARAM lParam) {
    if (wParam != kTrayIconTimer) {
        return defaultResult(WM_TIMER, wParam, lParam);
    }
    tryLaterUnless(trayIcon_.tryAgain());
    return 0;
}

void PreviewWindow::tryLaterUnless(bool trayIconIsThere) {
    if (trayIconIsThere) {
        KillTimer(window_, kTrayIconTimer);
    } else {
        SetTimer(window_, kTrayIconTimer, kTrayIconPauseMs, nullptr);
    }
}

void PreviewWindow::showTrayMenu() {
    struct Item {
        std::uint32_t code;
        const wchar_t* text;
    };
    const Item first =
        IsWindowVisible(window_) != FALSE ? Item{kCommandHide, L"Hide"} : Item{kCommandShow, L"Show"};
    const std::array<Item, 4> items = {{
        first,
        {kCommandAbout, L"About"},
        {kCommandSettings, L"Settings"},
        {kCommandExit, L"Exit"},
    }};

    POINT cursor{};
    GetCursorPos(&cursor);
    const UniqueMenu menu{CreatePopupMenu()};
    if (!menu) {
        return;
    }
    for (const Item& item : items) {
        AppendMenuW(menu.get(), MF_STRING, item.code, item.text);
    }
    // A menu of a window that is not in the foreground would stay open when the user clicks elsewhere.
    SetForegroundWindow(window_);
    TrackPopupMenu(menu.get(), TPM_BOTTOMALIGN, cursor.x, cursor.y, 0, window_, nullptr);
    // Without a message after the menu the next one would close as soon as it opens.
    PostMessageW(window_, WM_NULL, 0, 0);
}

void PreviewWindow::show() {
    // Windows moves no hidden window when a monitor goes.
    if (MonitorFromWindow(window_, MONITOR_DEFAULTTONULL) == nullptr) {
        const WindowPlacement place = placement();
        SetWindowPos(window_, nullptr, place.x, place.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
    ShowWindow(window_, SW_RESTORE);
}

void PreviewWindow::hide() {
    ShowWindow(window_, SW_HIDE);
}

void PreviewWindow::toggle() {
    if (IsWindowVisible(window_) != FALSE) {
        hide();
    } else {
        show();
    }
}

}  // namespace Panelix
