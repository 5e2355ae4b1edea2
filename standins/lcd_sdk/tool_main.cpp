// The virtual keyboard for consoles and scripts: registers the stand-in library, and takes pictures of the
// LCD.

#include <windows.h>

#include <shellapi.h>

#include <chrono>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "standins/lcd_sdk/frame_png.h"
#include "standins/lcd_sdk/gdiplus_session.h"
#include "standins/lcd_sdk/registration.h"
#include "standins/lcd_sdk/tool_options.h"
#include "standins/lcd_sdk/virtual_g19.h"
#include "standins/wait_until.h"

namespace {

using namespace Standins;

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kWrongOptions = 2;

constexpr wchar_t kLibraryFile[] = L"LogitechLcd.dll";

// A press must be seen once. The pause after it covers the ten passes of a page slide and some at rest.
constexpr std::uint32_t kPressPasses = 2;
constexpr std::uint32_t kPausePasses = 14;
// Far more than a press and its pause take, so that only a program that stands still is given up.
constexpr std::chrono::seconds kPressLimit{15};

void print(DWORD stream, const std::wstring& text) {
    const HANDLE output = GetStdHandle(stream);
    DWORD mode = 0;
    DWORD written = 0;
    if (GetConsoleMode(output, &mode) != 0) {
        WriteConsoleW(output, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
        return;
    }
    // A file or a pipe: UTF-8.
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
    WriteFile(output, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

void printError(const std::string& text) {
    print(STD_ERROR_HANDLE, L"virtual_g19_tool: " + std::wstring(text.begin(), text.end()) + L"\n");
}

std::vector<std::wstring> commandLineArguments() {
    int count = 0;
    const std::unique_ptr<wchar_t*, decltype(&LocalFree)> arguments(
        CommandLineToArgvW(GetCommandLineW(), &count), LocalFree);
    if (arguments == nullptr) {
        return {};
    }
    return {arguments.get() + 1, arguments.get() + count};
}

std::wstring libraryBesideThisProgram() {
    constexpr DWORD kLongestPath = 32'768;
    std::wstring path(kLongestPath, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), kLongestPath));
    return std::filesystem::path(path).replace_filename(kLibraryFile).wstring();
}

int reportRegistration(const RegistrationOutcome& outcome) {
    print(outcome.done ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE, outcome.message + L"\n");
    return outcome.done ? kDone : kFailed;
}

int registerBesideThisProgram(bool force) {
    const std::wstring library = libraryBesideThisProgram();
    if (GetFileAttributesW(library.c_str()) == INVALID_FILE_ATTRIBUTES) {
        return reportRegistration({false, L"There is no " + library});
    }
    return reportRegistration(registerLibrary(library, force));
}

// Presses one button and waits until the program has seen it and has come to rest. False when it stands
// still.
bool press(VirtualG19& keyboard, std::uint32_t mask) {
    keyboard.addScriptStep(mask, kPressPasses);
    keyboard.addScriptStep(0, kPausePasses);
    return waitUntil([&] { return keyboard.scriptDone() || !keyboard.programIsRunning(); }, kPressLimit);
}

int takeShot(const ToolOptions& options) {
    const GdiplusSession gdiplus;
    VirtualG19 keyboard;
    const std::uint64_t framesBefore = keyboard.frameCount();
    const auto draws = [&] { return keyboard.programIsRunning() && keyboard.frameCount() > framesBefore; };
    if (!waitUntil(draws, options.startLimit)) {
        printError("no program has drawn on the LCD within " + std::to_string(options.startLimit.count()) +
                   " seconds");
        return kFailed;
    }
    std::this_thread::sleep_for(options.runTime);
    for (const std::uint32_t mask : options.presses) {
        if (!press(keyboard, mask)) {
            printError("the program stopped drawing while buttons were pressed; it may be showing a dialog");
            return kFailed;
        }
    }
    const std::optional<G19Frame> frame = keyboard.lastFrame();
    if (!frame.has_value() || !saveFramePng(*frame, options.shotFile)) {
        printError("the picture cannot be written");
        return kFailed;
    }
    return kDone;
}

int run(const ToolOptions& options) {
    switch (options.action) {
        case ToolAction::Register:
            return registerBesideThisProgram(options.force);
        case ToolAction::Unregister:
            return reportRegistration(unregisterLibrary(libraryBesideThisProgram(), options.force));
        case ToolAction::Shot:
            return takeShot(options);
        case ToolAction::Help:
            break;
    }
    print(STD_OUTPUT_HANDLE, toolHelp());
    return kDone;
}

}  // namespace

int main() {
    try {
        return run(parseToolOptions(commandLineArguments()));
    } catch (const std::invalid_argument& error) {
        printError(error.what());
        return kWrongOptions;
    } catch (const std::exception& error) {
        printError(error.what());
        return kFailed;
    }
}
