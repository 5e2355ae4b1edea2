#include "tests/support/temporary_folder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <array>

TemporaryFolder::TemporaryFolder() {
    std::array<wchar_t, MAX_PATH + 1> buffer{};
    EXPECT_NE(GetTempPathW(static_cast<DWORD>(buffer.size()), buffer.data()), 0U);
    path_ = std::wstring(buffer.data()) + L"kelvaro-test-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
            std::to_wstring(GetTickCount64());
    EXPECT_NE(CreateDirectoryW(path_.c_str(), nullptr), FALSE);
}

TemporaryFolder::~TemporaryFolder() {
    for (const std::wstring& file : files()) {
        EXPECT_NE(DeleteFileW((path_ + L"\\" + file).c_str()), FALSE);
    }
    RemoveDirectoryW(path_.c_str());
}

std::vector<std::wstring> TemporaryFolder::files() const {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((path_ + L"\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return names;
    }
    do {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            names.emplace_back(found.cFileName);
        }
    } while (FindNextFileW(search, &found) != FALSE);
    FindClose(search);
    return names;
}
