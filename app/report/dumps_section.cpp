#include <windows.h>

#include <shlobj.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <string>
#include <vector>

#include "app/report/sections.h"
#include "app/report/system_facts.h"
#include "framework/core/unique_resource.h"

namespace {

constexpr wchar_t kDumpSettingsKey[] =
    L"SOFTWARE\\Microsoft\\Windows\\Windows Error Reporting\\LocalDumps\\Kelvaro.exe";
/// Windows names a dump after the program and its process.
constexpr wchar_t kDumpFiles[] = L"\\Kelvaro.exe*.dmp";

/// A folder that somebody has filled must not fill the report.
constexpr std::size_t kMostFiles = 1'000;
constexpr std::size_t kMostListed = 10;

std::wstring settingsText() {
    Panelix::UniqueHkey key;
    const LSTATUS status = RegOpenKeyExW(HKEY_LOCAL_MACHINE, kDumpSettingsKey, 0, KEY_READ, key.put());
    if (status == ERROR_FILE_NOT_FOUND) {
        return L"no: the installer switches that on";
    }
    return status == ERROR_SUCCESS ? L"yes" : L"not known, " + errorText(static_cast<DWORD>(status));
}

/// In the user's own time; empty when Windows cannot tell.
std::wstring localTimeText(const FILETIME& time) {
    SYSTEMTIME universal{};
    SYSTEMTIME local{};
    if (FileTimeToSystemTime(&time, &universal) == FALSE ||
        SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local) == FALSE) {
        return {};
    }
    std::array<wchar_t, 32> text{};
    std::swprintf(text.data(),
                  text.size(),
                  L"%04d-%02d-%02d %02d:%02d",
                  local.wYear,
                  local.wMonth,
                  local.wDay,
                  local.wHour,
                  local.wMinute);
    return text.data();
}

std::wstring dumpText(const WIN32_FIND_DATAW& file) {
    const std::uint64_t bytes = (std::uint64_t{file.nFileSizeHigh} << 32) | file.nFileSizeLow;
    return std::wstring(file.cFileName) + L", " + std::to_wstring((bytes + 1023) / 1024) + L" KiB, " +
           localTimeText(file.ftLastWriteTime);
}

/// The dumps in the folder, newest first. Returns why the list ended: ERROR_NO_MORE_FILES after the last one.
DWORD listDumps(const std::wstring& folder, std::vector<WIN32_FIND_DATAW>& files) {
    WIN32_FIND_DATAW file{};
    const HANDLE search = FindFirstFileW((folder + kDumpFiles).c_str(), &file);
    if (search == INVALID_HANDLE_VALUE) {
        return GetLastError();
    }
    do {
        files.push_back(file);
    } while (files.size() < kMostFiles && FindNextFileW(search, &file) != FALSE);
    const DWORD error = files.size() < kMostFiles ? GetLastError() : ERROR_NO_MORE_FILES;
    FindClose(search);
    std::sort(files.begin(), files.end(), [](const WIN32_FIND_DATAW& one, const WIN32_FIND_DATAW& other) {
        return CompareFileTime(&one.ftLastWriteTime, &other.ftLastWriteTime) > 0;
    });
    return error;
}

}  // namespace

void reportDumps(ReportWriter& writer) {
    writer.value(L"Dumps are kept", settingsText());
    std::array<wchar_t, MAX_PATH> local{};
    const HRESULT result =
        SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, local.data());
    if (result != S_OK) {
        writer.notLookedAt(L"Folder", resultText(result));
        return;
    }
    const std::wstring folder = std::wstring(local.data()) + L"\\CrashDumps";
    writer.value(L"Folder", folder);
    std::vector<WIN32_FIND_DATAW> files;
    const DWORD error = listDumps(folder, files);
    writer.value(L"Dumps of Kelvaro", std::to_wstring(files.size()));
    for (std::size_t i = 0; i < std::min(files.size(), kMostListed); ++i) {
        writer.value(L"Dump " + std::to_wstring(i + 1), dumpText(files[i]));
    }
    if (error != ERROR_NO_MORE_FILES && error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND) {
        writer.notLookedAt(L"Further dumps", errorText(error));
    }
}
