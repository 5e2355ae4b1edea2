#include "app/settings.h"

#include <windows.h>

#include <array>
#include <string_view>
#include <utility>

#include "app/registry_places.h"
#include "app/run_entry.h"
#include "framework/core/unique_resource.h"

namespace {

using Panelix::UniqueFile;
using Panelix::UniqueHkey;

constexpr char kExecutableName[] = "\\Kelvaro.exe";

constexpr std::size_t kValueBytes = 260;

/// Bytes of a registry value, as stored; `size` of them are filled.
struct ValueBytes {
    std::array<char, kValueBytes> data;
    DWORD size;
};

UniqueHkey openKey(HKEY root, const char* path, REGSAM access) {
    UniqueHkey key;
    // A failed call may leave anything in its output.
    HKEY opened = nullptr;
    if (RegOpenKeyExA(root, path, 0, access, &opened) == ERROR_SUCCESS) {
        key.reset(opened);
    }
    return key;
}

UniqueHkey openRunKey() {
    return openKey(HKEY_CURRENT_USER, RegistryPlaces::kRunKey, KEY_QUERY_VALUE | KEY_SET_VALUE);
}

bool closeKey(UniqueHkey key) {
    return RegCloseKey(key.release()) == ERROR_SUCCESS;
}

/// ERROR_SUCCESS or the registry's error; the size is 0 then.
LSTATUS queryValue(HKEY key, const char* name, ValueBytes& value) {
    value.size = static_cast<DWORD>(value.data.size());
    const LSTATUS status = RegQueryValueExA(
        key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(value.data.data()), &value.size);
    if (status != ERROR_SUCCESS) {
        value.size = 0;
    }
    return status;
}

bool fileOpens(const std::string& path) {
    // The system would open the file that the part before a zero names.
    if (path.find('\0') != std::string::npos) {
        return false;
    }
    const UniqueFile file(CreateFileA(path.c_str(),
                                      GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr,
                                      OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL,
                                      nullptr));
    return static_cast<bool>(file);
}

bool writeEntry(HKEY runKey, std::uint32_t delaySeconds) {
    std::string path;
    if (!FindExecutablePath(path)) {
        return false;
    }
    const std::string text = runEntryText(path, delaySeconds);
    // The size leaves the terminator out; ReadSettings takes a value with or without it.
    return RegSetValueExA(runKey,
                          RegistryPlaces::kRunValue,
                          0,
                          REG_SZ,
                          reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>(text.size())) == ERROR_SUCCESS;
}

bool deleteEntry(HKEY runKey) {
    const LSTATUS status = RegDeleteValueA(runKey, RegistryPlaces::kRunValue);
    return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
}

}  // namespace

bool ReadSettings(bool& autostart, std::uint32_t& delaySeconds) {
    UniqueHkey key = openRunKey();
    if (!key) {
        return false;
    }
    ValueBytes value{};
    const LSTATUS status = queryValue(key.get(), RegistryPlaces::kRunValue, value);
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) {
        return false;
    }
    std::string_view text(value.data.data(), value.size);
    if (!text.empty() && text.back() == '\0') {
        text.remove_suffix(1);
    }
    autostart = status == ERROR_SUCCESS;
    delaySeconds = runEntryDelay(text);
    return closeKey(std::move(key));
}

bool WriteSettings(const bool& autostart, const std::uint32_t& delaySeconds) {
    UniqueHkey key = openRunKey();
    if (!key) {
        return false;
    }
    const bool done = autostart ? writeEntry(key.get(), delaySeconds) : deleteEntry(key.get());
    return closeKey(std::move(key)) && done;
}

bool FindExecutablePath(std::string& path) {
    UniqueHkey key = openKey(HKEY_LOCAL_MACHINE, RegistryPlaces::kProgramKey, KEY_QUERY_VALUE);
    if (!key) {
        return false;
    }
    ValueBytes folder{};
    if (queryValue(key.get(), RegistryPlaces::kInstallFolderValue, folder) != ERROR_SUCCESS) {
        return false;
    }
    if (!closeKey(std::move(key))) {
        return false;
    }
    // The value ends with a terminator, which is not part of the folder.
    const DWORD length = folder.size != 0 ? folder.size - 1 : 0;
    const std::string found = std::string(folder.data.data(), length) + kExecutableName;
    if (!fileOpens(found)) {
        return false;
    }
    path = found;
    return true;
}
