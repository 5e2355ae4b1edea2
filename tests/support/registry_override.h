#pragma once

#include <windows.h>

#include <string>

#include "framework/core/unique_resource.h"

/// For as long as it lives, HKEY_CURRENT_USER and HKEY_LOCAL_MACHINE of this process lead to two empty keys
/// of the test's own, which go with it. One at a time per process.
class RegistryOverride {
public:
    RegistryOverride();
    ~RegistryOverride();
    RegistryOverride(const RegistryOverride&) = delete;
    RegistryOverride& operator=(const RegistryOverride&) = delete;

    /// Writes one value, making the key when it is not there. Fails the test when the registry refuses.
    static void setValue(HKEY root,
                         const std::wstring& key,
                         const wchar_t* valueName,
                         DWORD type,
                         const void* data,
                         DWORD bytes);

    /// Writes a REG_SZ with its terminator. A null name is the key's default value.
    static void setText(HKEY root,
                        const std::wstring& key,
                        const wchar_t* valueName,
                        const std::wstring& text);

    /// Makes an empty key.
    static void makeKey(HKEY root, const std::wstring& key);

private:
    std::wstring path_;
    Panelix::UniqueHkey user_;
    Panelix::UniqueHkey machine_;
};
