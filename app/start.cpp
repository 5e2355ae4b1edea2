#include "app/start.h"

#include <cstdlib>
#include <exception>
#include <memory>

#include "app/kelvaro.h"
#include "app/library_loading.h"
#include "app/run_reported.h"
#include "app/start_delay.h"
#include "framework/core/unique_resource.h"

namespace {

/// In place of abort(), which ends with the same code but not silently: the C runtime shows a box in a
/// program with windows, and then reports a fault to Windows, whose error reporting may show a dialog of its
/// own.
[[noreturn]] void endSilently() noexcept {
    std::_Exit(kExitAbnormal);
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

int startKelvaro(HINSTANCE instance) {
    prepareLibraryLoading();
    const Panelix::UniqueHandle instanceMutex(CreateMutexW(nullptr, FALSE, kInstanceMutex));
    if (GetLastError() == ERROR_ALREADY_EXISTS) {
        MessageBoxW(nullptr, L"Kelvaro is already running!", L"Kelvaro Error", kErrorBoxStyle);
        return kExitError;
    }
    // A number after "-delay" that cannot be read ends the process here.
    std::set_terminate(endSilently);
    if (const auto delayMs = startDelayMs(GetCommandLineW())) {
        Sleep(*delayMs);
    }
    return runApplication(instance);
}
