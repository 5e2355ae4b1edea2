#include <windows.h>

#include <string>

#include "app/report/sections.h"
#include "app/report/system_facts.h"
#include "framework/core/exported_function.h"
#include "framework/core/lcd_device.h"
#include "framework/core/lcd_registration.h"
#include "framework/core/lcd_sdk_abi.h"

namespace {

namespace LcdSdk = Panelix::LcdSdk;

/// The name under which Kelvaro itself announces its applet: another one would stay in the LCD software's
/// list.
constexpr wchar_t kAppletName[] = L"Kelvaro";

struct Export {
    const char* name;
    const wchar_t* label;
    const wchar_t* use;
};

constexpr Export kExports[] = {
    {"LogiLcdInit", L"LogiLcdInit", L"needed"},
    {"LogiLcdIsButtonPressed", L"LogiLcdIsButtonPressed", L"needed"},
    {"LogiLcdUpdate", L"LogiLcdUpdate", L"needed"},
    {"LogiLcdShutdown", L"LogiLcdShutdown", L"needed"},
    {"LogiLcdColorSetBackground", L"LogiLcdColorSetBackground", L"needed"},
    {"LogiLcdIsConnected", L"LogiLcdIsConnected", L"for this report only"},
    {"LogiLcdMonoSetBackground", L"LogiLcdMonoSetBackground", L"not used"},
    {"LogiLcdMonoSetText", L"LogiLcdMonoSetText", L"not used"},
    {"LogiLcdColorSetTitle", L"LogiLcdColorSetTitle", L"not used"},
    {"LogiLcdColorSetText", L"LogiLcdColorSetText", L"not used"},
};

/// Empty when there is nothing to load.
std::wstring reportRegistration(ReportWriter& writer) {
    writer.value(L"Registry key", std::wstring(L"HKLM\\") + LcdSdk::kServerBinaryKey);
    Panelix::LcdLibraryPath path;
    const LSTATUS status = Panelix::readLcdLibraryPath(path);
    if (status == ERROR_FILE_NOT_FOUND) {
        writer.value(L"Registered library", L"none: the keyboard's LCD software is not installed");
    } else if (status == ERROR_MORE_DATA) {
        writer.value(L"Registered library", L"longer than a path may be, which Kelvaro does not read");
    } else if (status != ERROR_SUCCESS) {
        writer.notLookedAt(L"Registered library", errorText(static_cast<DWORD>(status)));
    } else {
        writer.value(L"Registered library", path.data());
        return path.data();
    }
    return {};
}

void reportExports(ReportWriter& writer, HMODULE library) {
    for (const Export& entry : kExports) {
        const bool found = Panelix::exportedFunction(library, entry.name) != nullptr;
        writer.value(entry.label, (found ? L"there (" : L"missing (") + std::wstring(entry.use) + L')');
    }
}

/// The keyboard's software finds it only some time after the library's start: an answer of "no" counts after
/// three seconds.
bool waitUntilConnected(LcdSdk::LogiLcdIsConnected* isConnected) {
    constexpr int kQuestions = 30;
    constexpr DWORD kPauseMs = 100;
    for (int i = 0; i < kQuestions; ++i) {
        if (isConnected(LcdSdk::kTypeColor)) {
            return true;
        }
        Sleep(kPauseMs);
    }
    return isConnected(LcdSdk::kTypeColor);
}

void startLcd(ReportWriter& writer, HMODULE library) {
    // Ends the library when it goes, if it could be started.
    Panelix::LcdDevice lcd;
    const bool started = lcd.Init(kAppletName);
    writer.value(L"LogiLcdInit returned", started ? L"true" : L"false: Kelvaro runs in desktop mode");
    auto* const isConnected =
        Panelix::exportedFunction<LcdSdk::LogiLcdIsConnected>(library, "LogiLcdIsConnected");
    if (started && isConnected != nullptr) {
        writer.value(L"Colour LCD connected", yesNo(waitUntilConnected(isConnected)));
    }
}

}  // namespace

void reportLcd(ReportWriter& writer, bool start) {
    const std::wstring path = reportRegistration(writer);
    if (path.empty()) {
        return;
    }
    const bool there = fileExists(path);
    writer.value(L"The file", there ? L"there, " + versionText(path) : L"not there");
    // Stays in the process, like the program's own.
    const HMODULE library = Panelix::loadLcdModule(path.c_str());
    const DWORD error = GetLastError();
    if (library == nullptr) {
        writer.value(L"Loaded", L"no, " + loadErrorText(path, error));
        return;
    }
    writer.value(L"Loaded", modulePath(library));
    reportExports(writer, library);
    if (!start) {
        writer.value(L"Start of the library", L"not tried: only with --lcd");
    } else if (isKelvaroRunning()) {
        writer.value(L"Start of the library",
                     L"not tried: Kelvaro runs and has taken the keyboard; end it first");
    } else {
        startLcd(writer, library);
    }
}
