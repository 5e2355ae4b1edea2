#include "tests/support/installation.h"

#include <array>

#include <gtest/gtest.h>

#include "tests/support/registry_override.h"

namespace {

constexpr wchar_t kRunValue[] = L"Kelvaro";
constexpr wchar_t kInstallFolderValue[] = L"InstallDir";

std::optional<std::wstring> readText(HKEY root, const wchar_t* key, const wchar_t* name) {
    std::array<wchar_t, 1024> text{};
    DWORD bytes = sizeof(text);
    // RRF_RT_REG_SZ refuses every other type and ends the text when the value does not.
    if (RegGetValueW(root, key, name, RRF_RT_REG_SZ, nullptr, text.data(), &bytes) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return std::wstring(text.data());
}

void deleteValue(HKEY root, const wchar_t* key, const wchar_t* name) {
    Panelix::UniqueHkey opened;
    if (RegOpenKeyExW(root, key, 0, KEY_SET_VALUE, opened.put()) == ERROR_SUCCESS) {
        RegDeleteValueW(opened.get(), name);
    }
}

}  // namespace

std::optional<std::wstring> runValue() {
    return readText(HKEY_CURRENT_USER, kRunKey, kRunValue);
}

CleanProgramEntries::CleanProgramEntries()
    : runValue_(runValue()),
      installFolder_(readText(HKEY_LOCAL_MACHINE, kProgramKey, kInstallFolderValue)) {
    // Windows always has this key; a new Wine prefix may not.
    RegistryOverride::makeKey(HKEY_CURRENT_USER, kRunKey);
    deleteValue(HKEY_CURRENT_USER, kRunKey, kRunValue);
    removeInstallFolder();
}

CleanProgramEntries::~CleanProgramEntries() {
    deleteValue(HKEY_CURRENT_USER, kRunKey, kRunValue);
    if (runValue_) {
        setRunValue(*runValue_);
    }
    removeInstallFolder();
    if (installFolder_) {
        setInstallFolder(*installFolder_);
    }
}

void CleanProgramEntries::setRunValue(const std::wstring& text) {
    RegistryOverride::setText(HKEY_CURRENT_USER, kRunKey, kRunValue, text);
}

void CleanProgramEntries::setInstallFolder(const std::wstring& folder) {
    RegistryOverride::setText(HKEY_LOCAL_MACHINE, kProgramKey, kInstallFolderValue, folder);
}

void CleanProgramEntries::removeInstallFolder() {
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, kProgramKey);
}

InstallationFolder::InstallationFolder(const std::wstring& suffix) {
    std::array<wchar_t, MAX_PATH> folder{};
    GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    path_ = folder.data() + (L"Kelvaro Test " + std::to_wstring(GetCurrentProcessId())) + suffix;
    EXPECT_NE(CreateDirectoryW(path_.c_str(), nullptr), FALSE) << "error " << GetLastError();
    const Panelix::UniqueFile file(CreateFileW(
        executable().c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_TRUE(file) << "error " << GetLastError();
}

InstallationFolder::~InstallationFolder() {
    DeleteFileW(executable().c_str());
    RemoveDirectoryW(path_.c_str());
}
