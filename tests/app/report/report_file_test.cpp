#include <windows.h>

#include <shellapi.h>
#include <shlobj.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cwchar>
#include <string>
#include <vector>

#include "app/report/report.h"
#include "app/report/report_program.h"
#include "framework/core/unique_resource.h"
#include "standins/vendor_libraries.h"
#include "stats/adl_abi.h"
#include "tests/support/import_override.h"
#include "tests/support/temporary_folder.h"

// The report in a file, and one that a driver holds up.

namespace {

using Standins::VendorLibrary;
using Standins::vendorLibraryPath;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr char kMark[] = "\xEF\xBB\xBF";
constexpr char kEnd[] = "Everything could be looked at.\r\n";

std::wstring documents;
bool documentsAreTold = true;

HRESULT WINAPI tellDocuments(HWND, int folder, HANDLE, DWORD, LPWSTR path) {
    std::wcscpy(path, documents.c_str());
    // The profile is asked for as well, for its name, which must not be hidden.
    return folder == CSIDL_LOCAL_APPDATA || (folder == CSIDL_PERSONAL && documentsAreTold) ? S_OK : E_FAIL;
}

void WINAPI tellTime(LPSYSTEMTIME time) {
    *time = {2026, 3, 1, 9, 7, 5, 1, 0};
}

std::wstring openedFile;
INT_PTR openingResult = 42;

HINSTANCE WINAPI noteOpening(HWND, LPCWSTR verb, LPCWSTR file, LPCWSTR parameters, LPCWSTR, INT) {
    EXPECT_STREQ(verb, L"open");
    EXPECT_EQ(parameters, nullptr);
    openedFile = file;
    return reinterpret_cast<HINSTANCE>(openingResult);
}

void WINAPI doNotSleep(DWORD) {}

/// Runs the program with its standard outputs in files.
class ReportFile : public testing::Test {
protected:
    ReportFile() {
        documents = folder.path();
        documentsAreTold = true;
        openedFile.clear();
        openingResult = 42;
    }
    ~ReportFile() override {
        SetStdHandle(STD_OUTPUT_HANDLE, before[0]);
        SetStdHandle(STD_ERROR_HANDLE, before[1]);
    }

    Panelix::UniqueFile open(const std::wstring& name) const {
        return Panelix::UniqueFile(CreateFileW(path(name).c_str(),
                                               GENERIC_WRITE,
                                               FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                               nullptr,
                                               CREATE_ALWAYS,
                                               0,
                                               nullptr));
    }

    std::wstring path(const std::wstring& name) const { return folder.path() + L'\\' + name; }

    std::string contents(const std::wstring& name) const {
        const Panelix::UniqueFile file(CreateFileW(path(name).c_str(),
                                                   GENERIC_READ,
                                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                                   nullptr,
                                                   OPEN_EXISTING,
                                                   0,
                                                   nullptr));
        std::string text(1 << 16, '\0');
        DWORD read = 0;
        if (!file ||
            ReadFile(file.get(), text.data(), static_cast<DWORD>(text.size()), &read, nullptr) == 0) {
            return "nothing";
        }
        text.resize(read);
        return text;
    }

    int run(std::vector<const wchar_t*> arguments) {
        arguments.insert(arguments.begin(), L"KelvaroReport");
        output = open(L"output");
        errors = open(L"errors");
        SetStdHandle(STD_OUTPUT_HANDLE, output.get());
        SetStdHandle(STD_ERROR_HANDLE, errors.get());
        return runReportProgram(static_cast<int>(arguments.size()), arguments.data());
    }

    const std::array<HANDLE, 2> before{GetStdHandle(STD_OUTPUT_HANDLE), GetStdHandle(STD_ERROR_HANDLE)};
    TemporaryFolder folder;
    Panelix::UniqueFile output;
    Panelix::UniqueFile errors;
    ImportOverride folders{"shell32.dll", "SHGetFolderPathW", tellDocuments};
    ImportOverride opening{"shell32.dll", "ShellExecuteW", noteOpening};
    ImportOverride clock{"kernel32.dll", "GetLocalTime", tellTime};
    ImportOverride pause{"kernel32.dll", "Sleep", doNotSleep};
};

TEST_F(ReportFile, HoldsTheWholeTextInUtf8WithItsMarkAndReplacesAnOlderOne) {
    open(L"r.txt").reset();
    const std::wstring file = path(L"r.txt");
    EXPECT_EQ(run({L"--output", file.c_str()}), kExitComplete);
    const std::string text = contents(L"r.txt");
    EXPECT_THAT(text, StartsWith(std::string(kMark) + "Kelvaro report: what"));
    EXPECT_THAT(text, EndsWith(kEnd));
    EXPECT_THAT(contents(L"output"), StartsWith("The report goes to "));
    EXPECT_THAT(contents(L"output"), Not(HasSubstr("NVIDIA")));
    EXPECT_EQ(contents(L"errors"), "");
    EXPECT_THAT(openedFile, IsEmpty());
}

TEST_F(ReportFile, ThatMayNotBeWrittenStaysAsItIsAndIsRefusedInOneSentence) {
    const std::wstring file = path(L"r.txt");
    DWORD bytes = 0;
    EXPECT_NE(WriteFile(open(L"r.txt").get(), "mine", 4, &bytes, nullptr), FALSE);
    {
        const Panelix::UniqueFile inUse(
            CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        EXPECT_EQ(run({L"--output", file.c_str()}), kExitIncomplete);
    }
    EXPECT_EQ(contents(L"r.txt"), "mine");
    EXPECT_EQ(contents(L"output"), "");
    EXPECT_THAT(contents(L"errors"), StartsWith("KelvaroReport: '"));
    EXPECT_THAT(contents(L"errors"), HasSubstr("r.txt' cannot be written: error 32"));

    for (const std::wstring& nowhere : {folder.path(), path(L"none\\r.txt")}) {
        EXPECT_EQ(run({L"--output", nowhere.c_str()}), kExitIncomplete);
        EXPECT_THAT(contents(L"errors"), HasSubstr("' cannot be written: error "));
    }
    EXPECT_EQ(run({L"--output"}), kExitWrongCommandLine);
    EXPECT_EQ(contents(L"errors"),
              "KelvaroReport: --output needs the name of a file; --help lists the options\r\n");
}

TEST_F(ReportFile, IsSavedInDocumentsUnderTheDateAndOpened) {
    const std::wstring name = L"Kelvaro report 2026-03-09 07.05.01.txt";
    EXPECT_EQ(run({L"--save"}), kExitComplete);
    EXPECT_THAT(contents(name), StartsWith(std::string(kMark) + "Kelvaro report: what"));
    EXPECT_THAT(contents(name), EndsWith(kEnd));
    EXPECT_EQ(openedFile, path(name));
    EXPECT_EQ(contents(L"errors"), "");

    // One of the same second stays as it is.
    openedFile.clear();
    EXPECT_EQ(run({L"--save"}), kExitIncomplete);
    EXPECT_THAT(contents(L"errors"), HasSubstr("' cannot be written: error 80"));
    EXPECT_THAT(openedFile, IsEmpty());
    EXPECT_THAT(contents(name), StartsWith(std::string(kMark) + "Kelvaro report: what"));
}

TEST_F(ReportFile, ThatCannotBeOpenedOrHasNoPlaceIsTold) {
    openingResult = SE_ERR_NOASSOC;
    EXPECT_EQ(run({L"--save"}), kExitComplete);
    EXPECT_THAT(contents(L"errors"), EndsWith("cannot be opened; it is written all the same\r\n"));
    documentsAreTold = false;
    EXPECT_EQ(run({L"--save"}), kExitIncomplete);
    EXPECT_EQ(contents(L"errors"), "KelvaroReport: Windows does not tell where Documents is\r\n");
}

// A driver that does not return

decltype(LoadLibraryExW)* loadLibrary = nullptr;

HMODULE WINAPI loadHostileDriver(LPCWSTR file, HANDLE reserved, DWORD flags) {
    return std::wcscmp(file, Adl::kLibraryFile) == 0
               ? LoadLibraryW(vendorLibraryPath(VendorLibrary::Adl, "hostile").c_str())
               : loadLibrary(file, reserved, flags);
}

decltype(WaitForSingleObject)* waitForObject = nullptr;

/// From the moment on that the driver hangs the watch's seconds are short.
DWORD WINAPI waitShorter(HANDLE object, DWORD milliseconds) {
    std::array<wchar_t, 16> state{};
    GetEnvironmentVariableW(L"KELVARO_HOSTILE", state.data(), static_cast<DWORD>(state.size()));
    const bool hangs = std::wcscmp(state.data(), L"hangs") == 0;
    return waitForObject(object, hangs && milliseconds == 1'000 ? 1 : milliseconds);
}

int endedWith = -1;

/// The driver goes on, so that the test can.
BOOL WINAPI endHanging(HANDLE, UINT code) {
    endedWith = static_cast<int>(code);
    SetEnvironmentVariableW(L"KELVARO_HOSTILE", nullptr);
    return TRUE;
}

TEST_F(ReportFile, ThatADriverHoldsUpSaysSoInItsSectionAndTheProcessEndsWithOne) {
    const ImportOverride loading("kernel32.dll", "LoadLibraryExW", loadHostileDriver);
    loadLibrary = loading.original<decltype(LoadLibraryExW)>();
    const ImportOverride waiting("kernel32.dll", "WaitForSingleObject", waitShorter);
    waitForObject = waiting.original<decltype(WaitForSingleObject)>();
    const ImportOverride ending("kernel32.dll", "TerminateProcess", endHanging);
    SetEnvironmentVariableW(L"KELVARO_HOSTILE", L"hang");
    endedWith = -1;
    const std::wstring file = path(L"r.txt");
    run({L"--output", file.c_str()});
    EXPECT_EQ(endedWith, 1);
    const std::string text = contents(L"r.txt");
    const std::string note =
        "\r\n\r\nThe report ends here, in the section above: a call has not returned for 15 seconds\r\n";
    EXPECT_THAT(text, HasSubstr(note));
    const std::string above = text.substr(0, text.find(note));
    EXPECT_THAT(above.substr(above.rfind("\r\n\r\n")), StartsWith("\r\n\r\nAMD\r\n"));
    EXPECT_THAT(contents(L"output"), EndsWith("It ends early: a call has not returned for 15 seconds\r\n"));
}

}  // namespace
