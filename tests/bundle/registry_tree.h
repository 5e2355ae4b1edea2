#pragma once

#include <windows.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Bundle {

struct RegistryValue {
    DWORD type = REG_NONE;
    std::vector<BYTE> data;

    bool operator==(const RegistryValue&) const = default;
};

/// What is in a key. The names are as the registry has them.
struct RegistryTree {
    std::map<std::wstring, RegistryValue> values;
    std::map<std::wstring, RegistryTree> keys;

    bool operator==(const RegistryTree&) const = default;
};

/// Nothing when the key is not there. Throws std::runtime_error when it cannot be read.
std::optional<RegistryTree> readTree(HKEY root, const std::wstring& path);

/// Makes the key what it was, or removes it for nothing. A key that stays keeps its owner and rights. Throws
/// std::runtime_error when the registry refuses.
void writeTree(HKEY root, const std::wstring& path, const std::optional<RegistryTree>& tree);

}  // namespace Bundle
