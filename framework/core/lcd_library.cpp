#include "framework/core/lcd_library.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "framework/core/exported_function.h"
#include "framework/core/lcd_sdk_abi.h"
#include "framework/core/unique_resource.h"

namespace Panelix {

namespace {

/// Longest path that is taken from the registration, in characters, terminator included.
constexpr std::size_t kPathCapacity = 260;

/// The library's entries as far as they were found.
struct LcdEntries {
    LcdSdk::LogiLcdInit* init = nullptr;
    LcdSdk::LogiLcdIsButtonPressed* isButtonPressed = nullptr;
    LcdSdk::LogiLcdUpdate* update = nullptr;
    LcdSdk::LogiLcdShutdown* shutdown = nullptr;
    LcdSdk::LogiLcdColorSetBackground* colorSetBackground = nullptr;
};

/// One library per process, as the vendor's own state is per process too.
LcdEntries entries;

using LibraryPath = std::array<wchar_t, kPathCapacity>;

bool readLibraryPath(LibraryPath& path) {
    UniqueHkey key;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, LcdSdk::kServerBinaryKey, 0, KEY_READ, key.put()) !=
        ERROR_SUCCESS) {
        return false;
    }
    path.fill(L'\0');
    DWORD bytes = sizeof(LibraryPath);
    if (RegQueryValueExW(
            key.get(), nullptr, nullptr, nullptr, reinterpret_cast<BYTE*>(path.data()), &bytes) !=
        ERROR_SUCCESS) {
        return false;
    }
    // The registry stores what it was given: a value that fills the buffer need not end in a zero.
    return std::find(path.begin(), path.end(), L'\0') != path.end();
}

bool isFullPath(std::wstring_view path) {
    const bool onDrive = path.size() > 2 && path[1] == L':' && (path[2] == L'\\' || path[2] == L'/');
    return onDrive || path.starts_with(L"\\\\");
}

/// Null when the library does not load. Nothing is taken from the current directory or along PATH, where
/// anybody may have put it: neither the library nor what it needs itself.
HMODULE loadLibrary(const wchar_t* path) {
    const std::wstring_view text = path;
    if (isFullPath(text)) {
        return LoadLibraryExW(
            path, nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    }
    // A folder without a full path would count from the current directory or from the current drive.
    if (text.find_first_of(L"\\/:") != std::wstring_view::npos) {
        return nullptr;
    }
    return LoadLibraryExW(path, nullptr, LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
}

template <typename Function>
void lookUp(HMODULE library, const char* name, Function*& slot) {
    slot = exportedFunction<Function>(library, name);
}

}  // namespace

bool LoadLcdLibrary(const wchar_t* friendlyName, int lcdType) {
    LibraryPath path;
    if (!readLibraryPath(path)) {
        return false;
    }
    const HMODULE library = loadLibrary(path.data());
    if (library == nullptr) {
        return false;
    }
    lookUp(library, "LogiLcdInit", entries.init);
    lookUp(library, "LogiLcdIsButtonPressed", entries.isButtonPressed);
    lookUp(library, "LogiLcdUpdate", entries.update);
    lookUp(library, "LogiLcdShutdown", entries.shutdown);
    lookUp(library, "LogiLcdColorSetBackground", entries.colorSetBackground);
    return entries.init != nullptr && entries.init(friendlyName, lcdType);
}

bool lcdIsButtonPressed(int mask) {
    return entries.isButtonPressed != nullptr && entries.isButtonPressed(mask);
}

void lcdUpdate() {
    if (entries.update != nullptr) {
        entries.update();
    }
}

void lcdShutdown() {
    if (entries.shutdown != nullptr) {
        entries.shutdown();
    }
}

void lcdSetColorBackground(std::uint8_t* frame) {
    if (entries.colorSetBackground != nullptr) {
        entries.colorSetBackground(frame);
    }
}

}  // namespace Panelix
