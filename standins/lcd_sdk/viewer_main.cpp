// The virtual keyboard's window. It waits for a program to use the stand-in library, shows what it draws on
// the LCD, and gives it the buttons that are clicked or pressed here. Everything else is virtual_g19_tool's.

#include <windows.h>

#include <exception>
#include <string>

#include "standins/lcd_sdk/gdiplus_session.h"
#include "standins/lcd_sdk/viewer_window.h"
#include "standins/lcd_sdk/virtual_g19.h"

namespace {

int runViewer(HINSTANCE instance) {
    const Standins::GdiplusSession gdiplus;
    Standins::VirtualG19 keyboard;
    const Standins::ViewerWindow window(instance, keyboard);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE /*previous*/, wchar_t* commandLine, int /*show*/) {
    if (*commandLine != L'\0') {
        MessageBoxW(
            nullptr,
            L"The viewer takes no options. virtual_g19_tool --help lists what can be done from a console.",
            L"Virtual G19",
            MB_OK | MB_ICONINFORMATION);
        return 2;
    }
    try {
        return runViewer(instance);
    } catch (const std::exception& error) {
        MessageBoxA(nullptr, error.what(), "Virtual G19", MB_OK | MB_ICONERROR);
        return 1;
    }
}
