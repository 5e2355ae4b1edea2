#include <windows.h>

#include <cstdlib>
#include <memory>

#include "app/kelvaro.h"
#include "app/run_reported.h"
#include "app/start_delay.h"
#include "framework/core/unique_resource.h"

namespace {

constexpr wchar_t kInstanceMutex[] = L"KELVARO_G19";

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
        MessageBoxW(nullptr, L"Kelvaro is already running!", L"Kelvaro Error", kErrorBoxStyle);
        return kExitError;
    }
    if (const auto delayMs = startDelayMs(GetCommandLineW())) {
        Sleep(*delayMs);
    }
    return runApplication(instance);
}
