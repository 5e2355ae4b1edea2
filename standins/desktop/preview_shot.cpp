#include <windows.h>

#include <gdiplus.h>

#include <chrono>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

#include "framework/core/command_codes.h"
#include "framework/core/unique_resource.h"
#include "standins/lcd_sdk/frame_png.h"
#include "standins/lcd_sdk/gdiplus_session.h"
#include "standins/wait_until.h"

// Shows Kelvaro's preview window, as its tray menu does, and saves what the screen then has there.
// preview_shot.exe FILE.png SECONDS

namespace {

constexpr std::chrono::seconds kStartLimit(60);

HWND waitForPreview() {
    HWND window = nullptr;
    const bool found = Standins::waitUntil(
        [&] { return (window = FindWindowW(L"PanelixWindow", nullptr)) != nullptr; }, kStartLimit);
    if (!found) {
        throw std::runtime_error("Kelvaro has no preview window");
    }
    return window;
}

void show(HWND window) {
    PostMessageW(window, WM_COMMAND, Panelix::kCommandShow, 0);
    if (!Standins::waitUntil([&] { return IsWindowVisible(window) != FALSE; }, kStartLimit)) {
        throw std::runtime_error("the preview window does not show");
    }
}

/// The window stands out of the screen by a little, and reading beyond the screen's edge gives nothing at
/// all.
RECT visiblePart(HWND window) {
    const RECT screen{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    RECT outer{};
    RECT visible{};
    GetWindowRect(window, &outer);
    IntersectRect(&visible, &outer, &screen);
    return visible;
}

void saveScreen(const RECT& rect, const std::wstring& file) {
    const Panelix::UniqueDc screen(CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr));
    Gdiplus::Bitmap picture(rect.right - rect.left, rect.bottom - rect.top, PixelFormat24bppRGB);
    {
        Gdiplus::Graphics graphics(&picture);
        const HDC target = graphics.GetHDC();
        BitBlt(target,
               0,
               0,
               rect.right - rect.left,
               rect.bottom - rect.top,
               screen.get(),
               rect.left,
               rect.top,
               SRCCOPY);
        graphics.ReleaseHDC(target);
    }
    if (!Standins::savePng(picture, file)) {
        throw std::runtime_error("the picture cannot be saved");
    }
}

void run(const std::wstring& file, DWORD seconds) {
    const Standins::GdiplusSession gdiplus;
    const HWND window = waitForPreview();
    show(window);
    Sleep(seconds * 1000);
    saveScreen(visiblePart(window), file);
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc != 3) {
        std::fputs("Usage: preview_shot.exe FILE.png SECONDS\n", stderr);
        return 2;
    }
    try {
        run(argv[1], static_cast<DWORD>(std::stoul(argv[2])));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "preview_shot: %s\n", error.what());
        return 1;
    }
}
