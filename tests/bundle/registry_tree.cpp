#include "tests/bundle/registry_tree.h"

#include <stdexcept>

#include "framework/core/unique_resource.h"
#include "standins/protected_key.h"
#include "tests/bundle/utf8.h"

namespace Bundle {

namespace {

constexpr DWORD kLongestKeyName = 256;
constexpr DWORD kLongestValueName = 16'384;

[[noreturn]] void refuse(const char* what, const std::wstring& path, LSTATUS status) {
    throw std::runtime_error(std::string(what) + " " + toUtf8(path) + ": error " + std::to_string(status));
}

RegistryValue readValue(HKEY key, const std::wstring& name, const std::wstring& path) {
    RegistryValue value;
    DWORD size = 0;
    LSTATUS status = RegQueryValueExW(key, name.c_str(), nullptr, &value.type, nullptr, &size);
    if (status == ERROR_SUCCESS) {
        value.data.resize(size);
        status = RegQueryValueExW(key, name.c_str(), nullptr, &value.type, value.data.data(), &size);
    }
    if (status != ERROR_SUCCESS) {
        refuse("Cannot read a value of", path, status);
    }
    return value;
}

RegistryTree readKey(HKEY key, const std::wstring& path) {
    RegistryTree tree;
    std::wstring name(kLongestValueName, L'\0');
    for (DWORD index = 0, length = kLongestValueName;
         RegEnumValueW(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++index, length = kLongestValueName) {
        const std::wstring found = name.substr(0, length);
        tree.values[found] = readValue(key, found, path);
    }
    for (DWORD index = 0, length = kLongestKeyName;
         RegEnumKeyExW(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++index, length = kLongestKeyName) {
        const std::wstring found = name.substr(0, length);
        Panelix::UniqueHkey child;
        const LSTATUS status = RegOpenKeyExW(key, found.c_str(), 0, KEY_READ, child.put());
        if (status != ERROR_SUCCESS) {
            refuse("Cannot open", path + L"\\" + found, status);
        }
        tree.keys[found] = readKey(child.get(), path + L"\\" + found);
    }
    return tree;
}

void writeValues(HKEY key, const RegistryTree& now, const RegistryTree& wanted, const std::wstring& path) {
    for (const auto& [name, value] : now.values) {
        if (!wanted.values.contains(name)) {
            RegDeleteValueW(key, name.c_str());
        }
    }
    for (const auto& [name, value] : wanted.values) {
        const LSTATUS status = RegSetValueExW(
            key, name.c_str(), 0, value.type, value.data.data(), static_cast<DWORD>(value.data.size()));
        if (status != ERROR_SUCCESS) {
            refuse("Cannot write a value of", path, status);
        }
    }
}

void removeTree(HKEY root, const std::wstring& path) {
    const LSTATUS status = RegDeleteTreeW(root, path.c_str());
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) {
        refuse("Cannot remove", path, status);
    }
}

}  // namespace

std::optional<RegistryTree> readTree(HKEY root, const std::wstring& path) {
    Panelix::UniqueHkey key;
    const LSTATUS status = RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.put());
    if (status == ERROR_FILE_NOT_FOUND) {
        return std::nullopt;
    }
    if (status != ERROR_SUCCESS) {
        refuse("Cannot open", path, status);
    }
    return readKey(key.get(), path);
}

void writeTree(HKEY root, const std::wstring& path, const std::optional<RegistryTree>& tree) {
    const std::optional<RegistryTree> now = readTree(root, path);
    // What is as it was is left alone: it may be one that nobody may write.
    if (now == tree) {
        return;
    }
    if (!tree) {
        removeTree(root, path);
        return;
    }
    const RegistryTree present = now.value_or(RegistryTree{});
    for (const auto& [name, key] : present.keys) {
        if (!tree->keys.contains(name)) {
            removeTree(root, path + L"\\" + name);
        }
    }
    if (!now || present.values != tree->values) {
        const Panelix::UniqueHkey key = Standins::openForWriting(root, path);
        if (!key) {
            refuse("Cannot write", path, ERROR_ACCESS_DENIED);
        }
        writeValues(key.get(), present, *tree, path);
    }
    for (const auto& [name, key] : tree->keys) {
        writeTree(root, path + L"\\" + name, key);
    }
}

}  // namespace Bundle
