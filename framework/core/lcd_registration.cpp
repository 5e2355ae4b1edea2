#include "framework/core/lcd_registration.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "framework/core/lcd_sdk_abi.h"
#include "framework/core/unique_resource.h"

namespace Panelix {

namespace {

bool isFullPath(std::wstring_view path) {
    const bool onDrive = path.size() > 2 && path[1] == L':' && path[2] == L'\\';
    return onDrive || path.starts_with(L"\\\\");
}

}  // namespace

LSTATUS readLcdLibraryPath(LcdLibraryPath& path) {
    UniqueHkey key;
    const LSTATUS opened =
        RegOpenKeyExW(HKEY_LOCAL_MACHINE, LcdSdk::kServerBinaryKey, 0, KEY_READ, key.put());
    if (opened != ERROR_SUCCESS) {
        return opened;
    }
    path.fill(L'\0');
    DWORD bytes = sizeof(LcdLibraryPath);
    const LSTATUS read =
        RegQueryValueExW(key.get(), nullptr, nullptr, nullptr, reinterpret_cast<BYTE*>(path.data()), &bytes);
    if (read != ERROR_SUCCESS) {
        return read;
    }
    // The registry stores what it was given: a value that fills the buffer need not end in a zero.
    return std::find(path.begin(), path.end(), L'\0') != path.end() ? ERROR_SUCCESS : ERROR_MORE_DATA;
}

HMODULE loadLcdModule(const wchar_t* path) {
    // With slashes Windows would not find what lies beside the library.
    std::wstring text = path;
    std::replace(text.begin(), text.end(), L'/', L'\\');
    if (isFullPath(text)) {
        return LoadLibraryExW(
            text.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    }
    // A folder without a full path would count from the current directory or from the current drive.
    if (text.find_first_of(L"\\:") != std::wstring_view::npos) {
        SetLastError(ERROR_BAD_PATHNAME);
        return nullptr;
    }
    return LoadLibraryExW(
        text.c_str(), nullptr, LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
}

}  // namespace Panelix
