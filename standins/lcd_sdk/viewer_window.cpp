#include "standins/lcd_sdk/viewer_window.h"

#include <windowsx.h>

#include <exception>
#include <stdexcept>

#include "standins/lcd_sdk/viewer_layout.h"

namespace Standins {

namespace {

constexpr wchar_t kWindowClass[] = L"KelvaroVirtualG19";
constexpr wchar_t kTitle[] = L"Virtual G19";
constexpr DWORD kStyle = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;
constexpr UINT_PTR kRefreshTimer = 1;
// As often as the program draws at its fastest.
constexpr UINT kRefreshMs = 16;
// Bit of a key message's parameter: the key was down already.
constexpr LPARAM kKeyRepeatBit = LPARAM{1} << 30;

RECT toRect(const ViewerRect& rect) {
    return {rect.x, rect.y, rect.x + rect.width, rect.y + rect.height};
}

class PaintScope {
public:
    explicit PaintScope(HWND window) : window_(window) { BeginPaint(window, &paint_); }
    ~PaintScope() { EndPaint(window_, &paint_); }
    PaintScope(const PaintScope&) = delete;
    PaintScope& operator=(const PaintScope&) = delete;

    HDC dc() const { return paint_.hdc; }
    const RECT& area() const { return paint_.rcPaint; }

private:
    HWND window_;
    PAINTSTRUCT paint_{};
};

// A bitmap of the client area's size, selected into a device context of its own.
class MemoryPicture {
public:
    explicit MemoryPicture(HDC like)
        : dc_(CreateCompatibleDC(like)),
          bitmap_(CreateCompatibleBitmap(like, kClientWidth, kClientHeight)),
          before_(SelectObject(dc_, bitmap_.get())) {}
    ~MemoryPicture() {
        SelectObject(dc_, before_);
        DeleteDC(dc_);
    }
    MemoryPicture(const MemoryPicture&) = delete;
    MemoryPicture& operator=(const MemoryPicture&) = delete;

    HDC dc() const { return dc_; }

private:
    HDC dc_;
    Panelix::UniqueBitmap bitmap_;
    HGDIOBJ before_;
};

}  // namespace

ViewerWindow::ViewerWindow(HINSTANCE instance, VirtualG19& keyboard) : keyboard_(keyboard) {
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = windowProcedure;
    windowClass.hInstance = instance;
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
    windowClass.lpszClassName = kWindowClass;
    RegisterClassExW(&windowClass);

    RECT frame = {0, 0, kClientWidth, kClientHeight};
    AdjustWindowRectEx(&frame, kStyle, FALSE, 0);
    CreateWindowExW(0,
                    kWindowClass,
                    kTitle,
                    kStyle,
                    CW_USEDEFAULT,
                    CW_USEDEFAULT,
                    frame.right - frame.left,
                    frame.bottom - frame.top,
                    nullptr,
                    nullptr,
                    instance,
                    this);
    if (window_ == nullptr) {
        throw std::runtime_error("The viewer's window cannot be made (error " +
                                 std::to_string(GetLastError()) + ")");
    }
    SetTimer(window_, kRefreshTimer, kRefreshMs, nullptr);
    ShowWindow(window_, SW_SHOWNORMAL);
    SetForegroundWindow(window_);
    SetFocus(window_);
}

ViewerWindow::~ViewerWindow() {
    if (window_ != nullptr) {
        DestroyWindow(window_);
    }
    keyboard_.setHeldButtons(0);
}

LRESULT CALLBACK ViewerWindow::windowProcedure(HWND window,
                                               UINT message,
                                               WPARAM wParam,
                                               LPARAM lParam) noexcept {
    if (message == WM_NCCREATE) {
        auto* const self =
            static_cast<ViewerWindow*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
        self->window_ = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    auto* const self = reinterpret_cast<ViewerWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (self == nullptr) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        self->window_ = nullptr;
        return DefWindowProcW(window, message, wParam, lParam);
    }
    try {
        return self->handle(message, wParam, lParam);
    } catch (const std::exception&) {
        // Out of memory while a picture was copied: the next timer tick tries again.
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

LRESULT ViewerWindow::handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_LBUTTONDOWN:
            onMouseDown(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam));
            return 0;
        case WM_LBUTTONUP:
        case WM_CAPTURECHANGED:
            onMouseUp();
            return 0;
        case WM_KEYDOWN:
            if (onKeyDown(static_cast<int>(wParam), (lParam & kKeyRepeatBit) != 0)) {
                return 0;
            }
            break;
        case WM_KEYUP:
            if (onKeyUp(static_cast<int>(wParam))) {
                return 0;
            }
            break;
        case WM_KILLFOCUS:
            onFocusLost();
            return 0;
        case WM_TIMER:
            onTimer();
            return 0;
        case WM_ERASEBKGND:
            return 1;  // painted as a whole
        case WM_PAINT:
            onPaint();
            return 0;
        case WM_DESTROY:
            PostQuitMessage(0);
            return 0;
        default:
            break;
    }
    return DefWindowProcW(window_, message, wParam, lParam);
}

void ViewerWindow::onMouseDown(int x, int y) {
    SetFocus(window_);
    const std::uint32_t mask = buttonAt(x, y);
    if (mask != 0) {
        // The release must arrive wherever the mouse is by then.
        SetCapture(window_);
        hold_.press(mask, PressSource::Mouse, keyboard_.passCount(), GetTickCount64());
        holdButtons();
    }
}

void ViewerWindow::onMouseUp() {
    hold_.releaseSource(PressSource::Mouse);
    holdButtons();
    if (GetCapture() == window_) {
        ReleaseCapture();
    }
}

bool ViewerWindow::onKeyDown(int virtualKey, bool isRepeat) {
    const std::uint32_t mask = buttonForKey(virtualKey);
    if (mask != 0 && !isRepeat) {
        hold_.press(mask, PressSource::Key, keyboard_.passCount(), GetTickCount64());
        holdButtons();
    }
    return mask != 0;
}

bool ViewerWindow::onKeyUp(int virtualKey) {
    const std::uint32_t mask = buttonForKey(virtualKey);
    hold_.release(mask, PressSource::Key);
    holdButtons();
    return mask != 0;
}

void ViewerWindow::onFocusLost() {
    hold_.releaseAll();
    holdButtons();
}

void ViewerWindow::onTimer() {
    holdButtons();
    takeNewFrame();
}

void ViewerWindow::holdButtons() {
    keyboard_.setHeldButtons(hold_.buttonsDown(keyboard_.passCount(), GetTickCount64()));
    // Scripted presses of other programs are shown too.
    const std::uint32_t down = keyboard_.buttonsDown();
    for (const ViewerButton& button : kViewerButtons) {
        if (((down ^ shown_.buttonsDown) & button.mask) != 0) {
            const RECT area = toRect(button.rect);
            InvalidateRect(window_, &area, FALSE);
        }
    }
    shown_.buttonsDown = down;
}

void ViewerWindow::takeNewFrame() {
    const bool ended = keyboard_.state() != KeyboardState::Waiting && !keyboard_.programIsRunning();
    const std::uint64_t shownSequence = shown_.frame.has_value() ? shown_.frame->sequence : 0;
    const std::uint64_t newest = keyboard_.frameCount();
    if (newest == shownSequence && ended == shown_.ended) {
        return;
    }
    if (newest != shownSequence) {
        std::optional<G19Frame> frame = keyboard_.frame(newest);
        if (!frame.has_value()) {
            return;  // overtaken by the program: the next tick finds a newer one
        }
        shown_.frame = std::move(frame);
        shown_.programName = keyboard_.initRecord().name;
    }
    shown_.ended = ended;
    const RECT area = toRect(kLcdRect);
    InvalidateRect(window_, &area, FALSE);
}

void ViewerWindow::onPaint() {
    const PaintScope paint(window_);
    // Drawn in memory first: shapes that appear one after the other would flicker.
    const MemoryPicture picture(paint.dc());
    paintViewer(picture.dc(), shown_);
    const RECT& area = paint.area();
    const int width = area.right - area.left;
    const int height = area.bottom - area.top;
    BitBlt(paint.dc(), area.left, area.top, width, height, picture.dc(), area.left, area.top, SRCCOPY);
}

}  // namespace Standins
