#include "tests/support/registry_override.h"

#include <gtest/gtest.h>

namespace {

Panelix::UniqueHkey createKey(HKEY root, const std::wstring& path) {
    Panelix::UniqueHkey key;
    EXPECT_EQ(RegCreateKeyExW(root,
                              path.c_str(),
                              0,
                              nullptr,
                              REG_OPTION_NON_VOLATILE,
                              KEY_ALL_ACCESS,
                              nullptr,
                              key.put(),
                              nullptr),
              ERROR_SUCCESS);
    return key;
}

/// A key of this process's own. What an earlier process of the same id left there when it crashed goes first.
std::wstring freshPath() {
    const std::wstring path = L"Software\\KelvaroTest" + std::to_wstring(GetCurrentProcessId());
    RegDeleteTreeW(HKEY_CURRENT_USER, path.c_str());
    return path;
}

}  // namespace

RegistryOverride::RegistryOverride()
    : path_(freshPath()),
      user_(createKey(HKEY_CURRENT_USER, path_ + L"\\User")),
      machine_(createKey(HKEY_CURRENT_USER, path_ + L"\\Machine")) {
    EXPECT_EQ(RegOverridePredefKey(HKEY_LOCAL_MACHINE, machine_.get()), ERROR_SUCCESS);
    EXPECT_EQ(RegOverridePredefKey(HKEY_CURRENT_USER, user_.get()), ERROR_SUCCESS);
}

RegistryOverride::~RegistryOverride() {
    // Both go back first: the keys are deleted by their real path.
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    user_.reset();
    machine_.reset();
    RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
}

void RegistryOverride::setValue(
    HKEY root, const std::wstring& key, const wchar_t* valueName, DWORD type, const void* data, DWORD bytes) {
    const Panelix::UniqueHkey opened = createKey(root, key);
    EXPECT_EQ(RegSetValueExW(opened.get(), valueName, 0, type, static_cast<const BYTE*>(data), bytes),
              ERROR_SUCCESS);
}

void RegistryOverride::setText(HKEY root,
                               const std::wstring& key,
                               const wchar_t* valueName,
                               const std::wstring& text) {
    setValue(
        root, key, valueName, REG_SZ, text.c_str(), static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

void RegistryOverride::makeKey(HKEY root, const std::wstring& key) {
    createKey(root, key);
}
