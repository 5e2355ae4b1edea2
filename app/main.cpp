#include <windows.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <string>

#include "app/kelvaro.h"
#include "app/start_delay.h"
#include "framework/core/unique_resource.h"
#include "framework/drawing/sys_exception.h"

namespace {

constexpr wchar_t kInstanceMutex[] = L"KELVARO_G19";
constexpr UINT kErrorBox = MB_ICONERROR | MB_TASKMODAL | MB_TOPMOST;

constexpr int kExitNormal = 0;
constexpr int kExitError = 1;

/// Runs one step of the program; an error that it reports by exception is shown to the user.
template <typename Step>
int runReported(Step step) {
    try {
        step();
        return kExitNormal;
    } catch (const Panelix::SysException& error) {
        const std::wstring caption = L"Kelvaro - " + error.title;
        MessageBoxW(nullptr, error.message.c_str(), caption.c_str(), kErrorBox);
    } catch (const std::exception& error) {
        MessageBoxA(nullptr, error.what(), "Kelvaro - Fatal Error", kErrorBox);
    }
    return kExitError;
}

int runApplication(HINSTANCE instance) {
    // Destroyed at the end of this function, after an error was shown as well as after a normal end.
    std::unique_ptr<Kelvaro> application;
    const int constructed = runReported([&] { application = std::make_unique<Kelvaro>(instance); });
    if (constructed != kExitNormal) {
        return constructed;
    }
    return runReported([&] { application->Run(); });
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int) {
    // A number behind "-delay" that cannot be read ends the process without a message; the C runtime would
    // show a box of its own.
    _set_error_mode(_OUT_TO_STDERR);

    const Panelix::UniqueHandle instanceMutex(CreateMutexW(nullptr, FALSE, kInstanceMutex));
    if (GetLastError() == ERROR_ALREADY_EXISTS) {
        MessageBoxW(nullptr, L"Kelvaro is already running!", L"Kelvaro Error", kErrorBox);
        return kExitError;
    }
    if (const auto delayMs = startDelayMs(GetCommandLineW())) {
        Sleep(*delayMs);
    }
    return runApplication(instance);
}
