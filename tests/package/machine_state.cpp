#include "tests/package/machine_state.h"

#include <windows.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include "framework/core/unique_resource.h"

namespace {

constexpr DWORD kMaxName = 16384;

std::wstring textOf(DWORD type, const std::vector<std::uint8_t>& bytes, DWORD size) {
    std::wstring text = std::to_wstring(type) + L':';
    if (type == REG_SZ || type == REG_EXPAND_SZ) {
        return text + std::wstring(reinterpret_cast<const wchar_t*>(bytes.data()), size / sizeof(wchar_t));
    }
    constexpr std::wstring_view kDigits = L"0123456789abcdef";
    for (DWORD i = 0; i < size; ++i) {
        text += {kDigits[bytes[i] / 16U], kDigits[bytes[i] % 16U]};
    }
    return text;
}

class RegistryReader {
public:
    explicit RegistryReader(RegistryContents& contents) : contents_(contents) {}

    void read(HKEY root, const std::wstring& path) {
        Panelix::UniqueHkey key;
        HKEY opened = nullptr;
        if (RegOpenKeyExW(root, nullptr, 0, KEY_READ, &opened) == ERROR_SUCCESS) {
            key.reset(opened);
            readKey(key.get(), path);
        }
    }

private:
    void readKey(HKEY key, const std::wstring& path) {
        contents_[path];
        readValues(key, path);
        for (DWORD i = 0;; ++i) {
            DWORD length = kMaxName;
            if (RegEnumKeyExW(key, i, name_.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
                ERROR_SUCCESS) {
                return;
            }
            readSubkey(key, path, std::wstring(name_.data(), length));
        }
    }

    void readSubkey(HKEY key, const std::wstring& path, const std::wstring& name) {
        HKEY opened = nullptr;
        // A link leads to what is read elsewhere.
        if (RegOpenKeyExW(key, name.c_str(), REG_OPTION_OPEN_LINK, KEY_READ, &opened) != ERROR_SUCCESS) {
            return;
        }
        const Panelix::UniqueHkey subkey(opened);
        readKey(subkey.get(), path + name + L'\\');
    }

    void readValues(HKEY key, const std::wstring& path) {
        for (DWORD i = 0;; ++i) {
            DWORD length = kMaxName;
            DWORD type = 0;
            auto size = static_cast<DWORD>(bytes_.size());
            const LSTATUS status =
                RegEnumValueW(key, i, name_.data(), &length, nullptr, &type, bytes_.data(), &size);
            if (status != ERROR_SUCCESS) {
                return;
            }
            contents_[path + std::wstring(name_.data(), length)] = textOf(type, bytes_, size);
        }
    }

    RegistryContents& contents_;
    std::vector<wchar_t> name_ = std::vector<wchar_t>(kMaxName);
    std::vector<std::uint8_t> bytes_ = std::vector<std::uint8_t>(1U << 20U);
};

/// What the system keeps in memory only, and what it shall do with temporary files at its next start: the
/// uninstaller's copy of itself is one of these.
bool isVolatile(const std::wstring& path) {
    return path.starts_with(L"HKLM\\Hardware\\") || path.starts_with(L"HKCU\\Volatile Environment\\") ||
           path.starts_with(L"HKCU\\Software\\Wine\\Temporary System Parameters\\") ||
           path == L"HKLM\\System\\CurrentControlSet\\Control\\Session Manager\\PendingFileRenameOperations";
}

bool isTemporary(const std::wstring& path) {
    return path.starts_with(L"C:\\users\\") && path.ends_with(L"\\Temp");
}

}  // namespace

RegistryContents registryContents() {
    RegistryContents contents;
    RegistryReader reader(contents);
    reader.read(HKEY_LOCAL_MACHINE, L"HKLM\\");
    reader.read(HKEY_CURRENT_USER, L"HKCU\\");
    std::erase_if(contents, [](const auto& entry) { return isVolatile(entry.first); });
    return contents;
}

std::set<std::wstring> filesOnDrive() {
    std::set<std::wstring> paths;
    std::error_code error;
    std::filesystem::recursive_directory_iterator walk(
        L"C:\\", std::filesystem::directory_options::skip_permission_denied, error);
    for (; walk != std::filesystem::recursive_directory_iterator(); walk.increment(error)) {
        const std::wstring path = walk->path().wstring();
        if (isTemporary(path)) {
            walk.disable_recursion_pending();
        }
        paths.insert(path);
    }
    return paths;
}

std::wstring differences(const RegistryContents& before, const RegistryContents& after) {
    std::wstring lines;
    for (const auto& [path, text] : before) {
        const auto found = after.find(path);
        if (found == after.end()) {
            lines += L"- " + path + L'\n';
        } else if (found->second != text) {
            lines += L"* " + path + L" = " + text + L" -> " + found->second + L'\n';
        }
    }
    for (const auto& [path, text] : after) {
        if (!before.contains(path)) {
            lines += L"+ " + path + (text.empty() ? L"" : L" = ") + text + L'\n';
        }
    }
    return lines;
}

std::wstring differences(const std::set<std::wstring>& before, const std::set<std::wstring>& after) {
    RegistryContents first;
    RegistryContents second;
    for (const std::wstring& path : before) {
        first[path];
    }
    for (const std::wstring& path : after) {
        second[path];
    }
    return differences(first, second);
}
