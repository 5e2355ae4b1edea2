#include "tests/support/installation.h"

#include <array>

#include <gtest/gtest.h>

std::optional<std::wstring> runValue() {
    std::array<wchar_t, 1024> text{};
    DWORD bytes = sizeof(text);
    // RRF_RT_REG_SZ refuses every other type and ends the text when the value does not.
    if (RegGetValueW(HKEY_CURRENT_USER, kRunKey, L"Kelvaro", RRF_RT_REG_SZ, nullptr, text.data(), &bytes) !=
        ERROR_SUCCESS) {
        return std::nullopt;
    }
    return std::wstring(text.data());
}

InstallationFolder::InstallationFolder() {
    std::array<wchar_t, MAX_PATH> folder{};
    GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    path_ = folder.data() + (L"Kelvaro Test " + std::to_wstring(GetCurrentProcessId()));
    EXPECT_NE(CreateDirectoryW(path_.c_str(), nullptr), FALSE) << "error " << GetLastError();
    const Panelix::UniqueFile file(CreateFileW(
        executable().c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_TRUE(file) << "error " << GetLastError();
}

InstallationFolder::~InstallationFolder() {
    DeleteFileW(executable().c_str());
    RemoveDirectoryW(path_.c_str());
}
