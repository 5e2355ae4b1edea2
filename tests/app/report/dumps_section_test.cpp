#include <windows.h>

#include <shlobj.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cwchar>
#include <string>
#include <utility>

#include "app/report/sections.h"
#include "framework/core/unique_resource.h"
#include "tests/app/report/report_section.h"
#include "tests/support/import_override.h"
#include "tests/support/registry_override.h"
#include "tests/support/temporary_folder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::wstring localFolder;

HRESULT WINAPI tellLocalFolder(HWND, int folder, HANDLE, DWORD, LPWSTR path) {
    EXPECT_EQ(folder, CSIDL_LOCAL_APPDATA);
    std::wcscpy(path, localFolder.c_str());
    return localFolder.empty() ? E_FAIL : S_OK;
}

DWORD searchError = ERROR_SUCCESS;

HANDLE WINAPI refuseSearch(LPCWSTR, LPWIN32_FIND_DATAW) {
    SetLastError(searchError);
    return INVALID_HANDLE_VALUE;
}

/// A user with a CrashDumps folder.
class ReportOfDumps : public ReportSection {
protected:
    ReportOfDumps() {
        localFolder = local.path();
        EXPECT_NE(CreateDirectoryW(folder().c_str(), nullptr), FALSE);
    }
    ~ReportOfDumps() override {
        WIN32_FIND_DATAW file{};
        const HANDLE search = FindFirstFileW((folder() + L"\\*").c_str(), &file);
        do {
            DeleteFileW((folder() + L'\\' + file.cFileName).c_str());
        } while (FindNextFileW(search, &file) != FALSE);
        FindClose(search);
        RemoveDirectoryW(folder().c_str());
    }

    static std::wstring folder() { return localFolder + L"\\CrashDumps"; }

    /// A file of that size, written to on that day of November 2026 at noon of universal time.
    static void addFile(const std::wstring& name, WORD day, LONG bytes) {
        const Panelix::UniqueFile file(CreateFileW(
            (folder() + L'\\' + name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
        ASSERT_TRUE(file) << "error " << GetLastError();
        SetFilePointer(file.get(), bytes, nullptr, FILE_BEGIN);
        EXPECT_NE(SetEndOfFile(file.get()), FALSE);
        const SYSTEMTIME time{2026, 11, 0, day, 12, 0, 0, 0};
        FILETIME written{};
        EXPECT_NE(SystemTimeToFileTime(&time, &written), FALSE);
        EXPECT_NE(SetFileTime(file.get(), nullptr, nullptr, &written), FALSE);
    }

    TemporaryFolder local;
    RegistryOverride registry;
    ImportOverride folders{"shell32.dll", "SHGetFolderPathW", tellLocalFolder};
};

TEST_F(ReportOfDumps, ListsThoseOfKelvaroWithSizesAndDatesNewestFirst) {
    addFile(L"Kelvaro.exe.100.dmp", 3, 1'024);
    addFile(L"Kelvaro.exe.200.dmp", 21, 70'001);
    addFile(L"KelvaroReport.exe.300.dmp", 20, 5);
    addFile(L"Other.exe.400.dmp", 20, 5);
    write(reportDumps);
    EXPECT_THAT(text, HasSubstr(line(L"Dumps are kept", L"no: the installer switches that on")));
    EXPECT_THAT(text, HasSubstr(line(L"Folder", folder())));
    EXPECT_THAT(text, HasSubstr(line(L"Dumps of Kelvaro", L"2")));
    EXPECT_THAT(text, HasSubstr(lineStart(L"Dump 1", L"Kelvaro.exe.200.dmp, 69 KiB, 2026-11-2")));
    EXPECT_THAT(text, HasSubstr(lineStart(L"Dump 2", L"Kelvaro.exe.100.dmp, 1 KiB, 2026-11-0")));
    EXPECT_THAT(text, Not(HasSubstr(L"Report")));
    EXPECT_THAT(text, Not(HasSubstr(L"Other")));
    EXPECT_THAT(writer.incomplete(), IsEmpty());
}

TEST_F(ReportOfDumps, AreCountedAllAndListedUpToTen) {
    for (WORD day = 1; day <= 12; ++day) {
        addFile(L"Kelvaro.exe." + std::to_wstring(day) + L".dmp", day, 10);
    }
    write(reportDumps);
    EXPECT_THAT(text, HasSubstr(line(L"Dumps of Kelvaro", L"12")));
    EXPECT_THAT(text, HasSubstr(lineStart(L"Dump 1", L"Kelvaro.exe.12.dmp")));
    EXPECT_THAT(text, HasSubstr(lineStart(L"Dump 10", L"Kelvaro.exe.3.dmp")));
    EXPECT_THAT(text, Not(HasSubstr(L"Dump 11")));
}

TEST_F(ReportOfDumps, AFolderThatIsNotThereHoldsNoneAndTheSettingIsTold) {
    EXPECT_NE(RemoveDirectoryW(folder().c_str()), FALSE);
    RegistryOverride::makeKey(
        HKEY_LOCAL_MACHINE,
        L"SOFTWARE\\Microsoft\\Windows\\Windows Error Reporting\\LocalDumps\\Kelvaro.exe");
    write(reportDumps);
    EXPECT_THAT(text, HasSubstr(line(L"Dumps are kept", L"yes")));
    EXPECT_THAT(text, HasSubstr(line(L"Dumps of Kelvaro", L"0")));
    EXPECT_THAT(writer.incomplete(), IsEmpty());
}

TEST_F(ReportOfDumps, AFolderThatMayNotBeReadCouldNotBeLookedAt) {
    const ImportOverride search("kernel32.dll", "FindFirstFileW", refuseSearch);
    searchError = ERROR_ACCESS_DENIED;
    write(reportDumps);
    EXPECT_THAT(text, HasSubstr(lineStart(L"Further dumps", L"could not be looked at: error 5")));
    EXPECT_THAT(writer.incomplete(), ElementsAre(L"Title"));
}

TEST_F(ReportOfDumps, AUserWithoutAFolderForThemCouldNotBeLookedAt) {
    const std::wstring before = std::exchange(localFolder, L"");
    write(reportDumps);
    localFolder = before;
    EXPECT_THAT(text, HasSubstr(lineStart(L"Folder", L"could not be looked at: 0x80004005")));
    EXPECT_THAT(writer.incomplete(), ElementsAre(L"Title"));
}

}  // namespace
