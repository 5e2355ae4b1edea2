#include <windows.h>

#include <exdisp.h>
#include <shlobj.h>
#include <tlhelp32.h>
#include <wrl/client.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "app/resource_ids.h"
#include "framework/core/com_apartment.h"
#include "framework/core/command_codes.h"
#include "tests/e2e/desktop_fixture.h"
#include "tests/e2e/kelvaro_on_keyboard.h"
#include "tests/package/machine_state.h"
#include "tests/support/child_process.h"
#include "tests/support/installation.h"
#include "tests/support/lcd_registration.h"
#include "tests/support/temporary_folder.h"

// The installer on a machine of its own, which tests/package/installer.sh makes.

namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using testing::HasSubstr;

constexpr wchar_t kVersion[] = L"" KELVARO_VERSION;
constexpr wchar_t kOlderVersion[] = L"0.9.0";
constexpr wchar_t kNewerVersion[] = L"1000.0.0";

constexpr wchar_t kUninstallKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Kelvaro";
constexpr wchar_t kStartMenu[] = L"C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs\\Kelvaro";
constexpr wchar_t kUsualFolder[] = L"C:\\Program Files\\Kelvaro";

// Exit codes of the installer and the uninstaller.
constexpr DWORD kDone = 0;
constexpr DWORD kNotWritten = 2;
constexpr DWORD kRunning = 3;
constexpr DWORD kNewerInstalled = 4;
constexpr DWORD kUnsuitableFolder = 5;
constexpr DWORD kOldWindows = 6;
constexpr DWORD kForeignFolder = 7;
constexpr DWORD kSetupRuns = 8;
constexpr DWORD kBadSwitch = 9;

constexpr char kOwnText[] = "the user's own";

std::wstring environment(const wchar_t* name) {
    const wchar_t* const value = _wgetenv(name);
    EXPECT_NE(value, nullptr) << "tests/package/installer.sh starts this program";
    return value != nullptr ? value : L"";
}

/// Only the older version has it.
constexpr wchar_t kRetiredFile[] = L"Retired.txt";

/// The installer of a version. Those of other versions hold the same files; the older one has an address as
/// well.
std::wstring setupOf(const std::wstring& version) {
    return environment(L"KELVARO_SETUPS") + L"\\KelvaroSetup-" + version + L"-x64.exe";
}

/// Names of what the release installs, without the uninstaller.
std::set<std::wstring> shippedFiles() {
    std::set<std::wstring> names;
    for (const auto& entry : std::filesystem::directory_iterator(environment(L"KELVARO_SHIPPED"))) {
        names.insert(entry.path().filename().wstring());
    }
    return names;
}

std::set<std::wstring> filesIn(const std::wstring& folder) {
    std::set<std::wstring> names;
    std::error_code missing;
    for (const auto& entry : std::filesystem::directory_iterator(folder, missing)) {
        names.insert(entry.path().filename().wstring());
    }
    return names;
}

std::string bytesOf(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const std::wstring& path) {
    std::ofstream(std::filesystem::path(path)) << kOwnText;
}

std::optional<std::wstring> installed(const wchar_t* value) {
    std::array<wchar_t, 1024> text{};
    DWORD bytes = sizeof(text);
    if (RegGetValueW(HKEY_LOCAL_MACHINE, kUninstallKey, value, RRF_RT_REG_SZ, nullptr, text.data(), &bytes) !=
        ERROR_SUCCESS) {
        return std::nullopt;
    }
    return std::wstring(text.data());
}

struct Shortcut {
    std::wstring target;
    std::wstring arguments;
    /// Where the program starts.
    std::wstring folder;
};

Shortcut shortcut(const std::wstring& path) {
    const Panelix::ComApartment com;
    Microsoft::WRL::ComPtr<IShellLinkW> link;
    Microsoft::WRL::ComPtr<IPersistFile> file;
    std::array<wchar_t, MAX_PATH> target{};
    std::array<wchar_t, MAX_PATH> folder{};
    std::array<wchar_t, 1024> arguments{};
    if (FAILED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_ALL, IID_PPV_ARGS(&link))) ||
        FAILED(link.As(&file)) || FAILED(file->Load(path.c_str(), STGM_READ))) {
        return {};
    }
    link->GetPath(target.data(), static_cast<int>(target.size()), nullptr, SLGP_RAWPATH);
    link->GetArguments(arguments.data(), static_cast<int>(arguments.size()));
    link->GetWorkingDirectory(folder.data(), static_cast<int>(folder.size()));
    return {target.data(), arguments.data(), folder.data()};
}

/// How a program that was started ended.
struct Outcome {
    std::optional<DWORD> code;
    std::string words;
};

Outcome runProgram(const std::wstring& program, const std::wstring& arguments) {
    const TemporaryFolder folder;
    const std::wstring words = folder.path() + L"\\words";
    Outcome outcome;
    {
        SECURITY_ATTRIBUTES inheritable{sizeof(inheritable), nullptr, TRUE};
        const Panelix::UniqueFile file(CreateFileW(words.c_str(),
                                                   GENERIC_WRITE,
                                                   FILE_SHARE_READ,
                                                   &inheritable,
                                                   CREATE_ALWAYS,
                                                   FILE_ATTRIBUTE_NORMAL,
                                                   nullptr));
        const ChildProcess process(program, arguments, file.get());
        outcome.code = process.waitForExit(60s);
    }
    outcome.words = bytesOf(words);
    return outcome;
}

/// Installs silently; `arguments` are further ones, the folder last.
Outcome install(const std::wstring& version, const std::wstring& arguments = {}) {
    return runProgram(setupOf(version), L"/S " + arguments);
}

/// What the machine held before anything was installed. The system has made by then what it makes when a
/// program runs for the first time.
struct Machine : testing::Environment {
    void SetUp() override {
        {
            const CleanProgramEntries entries;
            const LcdRegistrationScope noLcd(L"");
            CleanProgramEntries::setInstallFolder(L"");
            const ChildProcess kelvaro(kelvaroProgram());
            PostMessageW(waitForPreview(kelvaro), WM_COMMAND, Panelix::kCommandShow, 0);
            PostMessageW(waitForPreview(kelvaro), WM_COMMAND, Panelix::kCommandExit, 0);
            EXPECT_EQ(kelvaro.waitForExit(), DWORD{0});
        }
        registry = registryContents();
        files = filesOnDrive();
    }

    RegistryContents registry;
    std::set<std::wstring> files;
};

const Machine* const kMachine =
    static_cast<Machine*>(testing::AddGlobalTestEnvironment(std::make_unique<Machine>().release()));

/// A machine on which nothing is installed, and on which nothing of it may be left after the test.
class Installer : public testing::Test {
protected:
    void TearDown() override {
        if (installed(L"UninstallString")) {
            uninstall();
        }
        EXPECT_EQ(differences(kMachine->registry, registryContents()), L"");
        EXPECT_EQ(differences(kMachine->files, filesOnDrive()), L"");
    }

    /// As Windows does, which does not see the end: a copy of the uninstaller does the work.
    static void uninstall() {
        const std::wstring folder = installed(L"InstallLocation").value_or(L"");
        std::wstring line = installed(L"QuietUninstallString").value_or(L"");
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION started{};
        ASSERT_NE(CreateProcessW(
                      nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started),
                  FALSE)
            << "error " << GetLastError();
        CloseHandle(started.hThread);
        CloseHandle(started.hProcess);
        EXPECT_TRUE(waitFor([&] { return !installed(L"UninstallString"); }, 30s));
        // The files go last.
        EXPECT_TRUE(waitFor([&] { return !filesIn(folder).contains(L"Uninstall.exe"); }));
        Sleep(kRestMs);
    }

    static void expectInstalled(const std::wstring& version, const std::wstring& folder) {
        std::set<std::wstring> names = shippedFiles();
        names.insert(L"Uninstall.exe");
        if (version == kOlderVersion) {
            names.insert(kRetiredFile);
        }
        EXPECT_EQ(filesIn(folder), names);
        EXPECT_EQ(installed(L"DisplayVersion"), version);
        EXPECT_EQ(installed(L"InstallLocation"), folder);
        EXPECT_EQ(shortcut(std::wstring(kStartMenu) + L"\\Kelvaro.lnk").target, folder + L"\\Kelvaro.exe");
    }

    /// From the last file to the end of the uninstaller.
    static constexpr DWORD kRestMs = 500;

    CleanProgramEntries entries;
    LcdRegistrationScope noLcd{L""};
};

/// The installed program, running in desktop mode.
class RunningProgram {
public:
    explicit RunningProgram(const std::wstring& folder)
        : process(folder + L"\\Kelvaro.exe"),
          window(waitForPreview(process)) {
        EXPECT_NE(window, nullptr);
    }

    HWND openSettings() const {
        PostMessageW(window, WM_COMMAND, Panelix::kCommandSettings, 0);
        return waitForVisibleWindow(process.id(), L"#32770", L"Settings");
    }

    /// What a user does who wants it to start with Windows.
    void startWithWindows(const std::wstring& delay) const {
        const HWND dialog = openSettings();
        ASSERT_NE(dialog, nullptr);
        SendDlgItemMessageW(dialog, IDC_AUTOSTART, BM_CLICK, 0, 0);
        typeText(dialog, IDC_DELAY, delay);
        pressButton(dialog, IDC_SAVE);
        EXPECT_TRUE(waitUntilGone(dialog));
    }

    ChildProcess process;
    HWND window;
};

TEST_F(Installer, LeavesExactlyTheseFilesEntriesAndShortcuts) {
    ASSERT_EQ(install(kVersion).code, kDone);
    expectInstalled(kVersion, kUsualFolder);
    for (const std::wstring& name : shippedFiles()) {
        EXPECT_EQ(bytesOf(std::wstring(kUsualFolder) + L"\\" + name),
                  bytesOf(environment(L"KELVARO_SHIPPED") + L"\\" + name));
    }

    std::set<std::wstring> files = kMachine->files;
    files.insert({kUsualFolder, kStartMenu, std::wstring(kStartMenu) + L"\\Kelvaro.lnk"});
    files.insert(std::wstring(kUsualFolder) + L"\\Uninstall.exe");
    for (const std::wstring& name : shippedFiles()) {
        files.insert(std::wstring(kUsualFolder) + L"\\" + name);
    }
    if (shippedFiles().contains(L"KelvaroReport.exe")) {
        const std::wstring link = std::wstring(kStartMenu) + L"\\Kelvaro report.lnk";
        files.insert(link);
        const Shortcut report = shortcut(link);
        EXPECT_EQ(report.target, std::wstring(kUsualFolder) + L"\\KelvaroReport.exe");
        EXPECT_EQ(report.arguments, L"--save");
    }
    EXPECT_EQ(differences(files, filesOnDrive()), L"");

    RegistryContents registry = registryContents();
    const std::wstring uninstallKey =
        L"HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Kelvaro\\";
    // A number of KiB, little-endian.
    const std::wstring size = std::exchange(registry[uninstallKey + L"EstimatedSize"], L"");
    RegistryContents expected = kMachine->registry;
    const std::wstring nul(1, L'\0');
    const auto text = [&nul](const std::wstring& value) { return L"1:" + value + nul; };
    const std::wstring folder = kUsualFolder;
    expected[L"HKLM\\Software\\Kelvaro\\"];
    expected[L"HKLM\\Software\\Kelvaro\\InstallDir"] = text(folder);
    const std::wstring reporting = L"HKLM\\Software\\Microsoft\\Windows\\Windows Error Reporting\\";
    const std::wstring dumps = reporting + L"LocalDumps\\Kelvaro.exe\\";
    expected[reporting];
    expected[reporting + L"LocalDumps\\"];
    expected[dumps];
    expected[dumps + L"DumpFolder"] = L"2:%LOCALAPPDATA%\\CrashDumps" + nul;
    expected[dumps + L"DumpCount"] = L"4:03000000";
    expected[dumps + L"DumpType"] = L"4:01000000";
    expected[uninstallKey];
    expected[uninstallKey + L"DisplayName"] = text(L"Kelvaro");
    expected[uninstallKey + L"DisplayVersion"] = text(kVersion);
    expected[uninstallKey + L"Publisher"] = text(L"The Kelvaro developers");
    expected[uninstallKey + L"DisplayIcon"] = text(folder + L"\\Kelvaro.exe");
    expected[uninstallKey + L"InstallLocation"] = text(folder);
    expected[uninstallKey + L"UninstallString"] = text(L"\"" + folder + L"\\Uninstall.exe\"");
    expected[uninstallKey + L"QuietUninstallString"] = text(L"\"" + folder + L"\\Uninstall.exe\" /S");
    expected[uninstallKey + L"EstimatedSize"];
    expected[uninstallKey + L"NoModify"] = L"4:01000000";
    expected[uninstallKey + L"NoRepair"] = L"4:01000000";
    expected[uninstallKey + L"Files\\"];
    for (const std::wstring& name : filesIn(folder)) {
        // Size and checksum.
        const std::wstring path = uninstallKey + L"Files\\" + name;
        EXPECT_TRUE(registry[path].starts_with(
            L"1:" + std::to_wstring(bytesOf(folder + L"\\" + name).size()) + L' '));
        expected[path] = registry[path];
    }
    EXPECT_EQ(differences(expected, registry), L"");

    std::uintmax_t bytes = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        bytes += entry.file_size();
    }
    ASSERT_EQ(size.size(), 10U) << "a REG_DWORD";
    const unsigned long kib = std::stoul(
        size.substr(8, 2) + size.substr(6, 2) + size.substr(4, 2) + size.substr(2, 2), nullptr, 16);
    EXPECT_NEAR(static_cast<double>(kib), static_cast<double>(bytes) / 1024, 100);
}

TEST_F(Installer, StartsItsProgramsInTheUsersOwnFolder) {
    ASSERT_EQ(install(kVersion).code, kDone);
    for (const std::wstring& name : filesIn(kStartMenu)) {
        EXPECT_EQ(shortcut(std::wstring(kStartMenu) + L"\\" + name).folder, L"%USERPROFILE%");
    }
}

TEST_F(Installer, WhatItInstalledFindsItselfForTheStartWithWindowsAndIsEndedToBeUninstalled) {
    ASSERT_EQ(install(kVersion).code, kDone);
    const RunningProgram kelvaro(kUsualFolder);
    kelvaro.startWithWindows(L"15");
    EXPECT_EQ(runValue(), L"\"C:\\Program Files\\Kelvaro\\Kelvaro.exe\" -delay15");
    uninstall();
    EXPECT_EQ(kelvaro.process.waitForExit(), DWORD{0});
    EXPECT_EQ(runValue(), std::nullopt);
}

TEST_F(Installer, ReplacesAnOlderVersionInItsFolderAndEndsTheProgramInDesktopMode) {
    const std::wstring folder = L"C:\\my tools\\Kelvaro 1";
    ASSERT_EQ(install(kOlderVersion, L"/D=" + folder).code, kDone);
    expectInstalled(kOlderVersion, folder);
    const RunningProgram kelvaro(folder);
    kelvaro.startWithWindows(L"");
    PostMessageW(kelvaro.window, WM_COMMAND, Panelix::kCommandShow, 0);
    ASSERT_NE(kelvaro.openSettings(), nullptr) << "an open dialog does not keep it";

    EXPECT_EQ(install(kVersion).code, kDone);
    EXPECT_EQ(kelvaro.process.waitForExit(), DWORD{0});
    expectInstalled(kVersion, folder);
    EXPECT_EQ(runValue(), L"\"" + folder + L"\\Kelvaro.exe\"");
    uninstall();
    RemoveDirectoryW(L"C:\\my tools");
}

TEST_F(Installer, StartsItWithWindowsWhenAskedAndKeepsWhatTheUserHasSet) {
    const std::wstring entry = L"\"" + std::wstring(kUsualFolder) + L"\\Kelvaro.exe\"";
    ASSERT_EQ(install(kOlderVersion).code, kDone);
    EXPECT_EQ(runValue(), std::nullopt);
    EXPECT_EQ(install(kVersion, L"/AUTOSTART=on").code, kDone);
    EXPECT_EQ(runValue(), entry + L" -delay15");
    EXPECT_EQ(install(kVersion).code, kDone) << "without the switch";
    EXPECT_EQ(runValue(), entry + L" -delay15");
    CleanProgramEntries::setRunValue(entry + L" -delay7");
    EXPECT_EQ(install(kVersion, L"/AUTOSTART=on").code, kDone);
    EXPECT_EQ(runValue(), entry + L" -delay7");
    EXPECT_EQ(install(kVersion, L"/AUTOSTART=off").code, kDone);
    EXPECT_EQ(runValue(), std::nullopt);

    const std::wstring elsewhere = L"\"C:\\Tools\\Kelvaro.exe\"";
    CleanProgramEntries::setRunValue(elsewhere);
    EXPECT_EQ(install(kVersion, L"/AUTOSTART=off").code, kDone);
    EXPECT_EQ(runValue(), elsewhere) << "starts another one";
    EXPECT_EQ(install(kVersion, L"/AUTOSTART=maybe").code, kBadSwitch);
    RegDeleteKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Kelvaro");
}

TEST_F(Installer, ListsItsSwitches) {
    const Outcome help = install(kVersion, L"/?");
    EXPECT_EQ(help.code, kDone);
    for (const char* const name : {"/S", "/FORCE", "/AUTOSTART=", "/ALLOWDOWNGRADE", "/LOG=", "/D="}) {
        EXPECT_THAT(help.words, HasSubstr(name));
    }
    EXPECT_EQ(installed(L"DisplayVersion"), std::nullopt);
}

TEST_F(Installer, WritesDownWhatItDoes) {
    const std::wstring folder = L"C:\\logs";
    std::filesystem::create_directory(folder);
    const std::wstring path = folder + L"\\the log.txt";
    const auto log = [&path] {
        const std::string bytes = bytesOf(path);
        std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
        std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
        return text;
    };
    ASSERT_EQ(install(kNewerVersion, L"/LOG=\"" + path + L"\"").code, kDone);
    EXPECT_TRUE(log().starts_with(L"\xFEFF"));
    EXPECT_THAT(log(), HasSubstr(L"Folder " + std::wstring(kUsualFolder)));
    EXPECT_TRUE(log().ends_with(L"Exit code 0\r\n"));
    EXPECT_EQ(install(kVersion, L"/LOG=\"" + path + L"\"").code, kNewerInstalled);
    EXPECT_THAT(log(), HasSubstr(L"A newer version, 1000.0.0, is installed"));
    EXPECT_TRUE(log().ends_with(L"Exit code 4\r\n"));
    EXPECT_EQ(install(kVersion, L"/LOG=" + folder + L"\\missing\\log.txt").code, kBadSwitch);
    EXPECT_EQ(installed(L"DisplayVersion"), kNewerVersion);
    std::filesystem::remove_all(folder);
}

TEST_F(Installer, MovesAnOlderVersionToTheFolderThatIsAskedFor) {
    const std::wstring old = L"C:\\old";
    const std::wstring folder = L"C:\\new";
    ASSERT_EQ(install(kOlderVersion, L"/D=" + old).code, kDone);
    writeFile(old + L"\\notes.txt");
    CleanProgramEntries::setRunValue(L"\"" + old + L"\\Kelvaro.exe\" -delay7");
    EXPECT_EQ(install(kVersion, L"/D=" + folder).code, kDone);
    expectInstalled(kVersion, folder);
    EXPECT_EQ(runValue(), L"\"" + folder + L"\\Kelvaro.exe\" -delay7");
    EXPECT_EQ(filesIn(old), std::set<std::wstring>{L"notes.txt"});
    std::filesystem::remove_all(old);
}

TEST_F(Installer, ReplacesAVersionInTheSameFolderUnderAnotherName) {
    // tests/package/installer.sh made the folder, and the link and the drive letter that lead to it.
    const std::wstring folder = L"C:\\real folder\\Kelvaro";
    std::array<wchar_t, MAX_PATH> shortName{};
    ASSERT_NE(GetShortPathNameW(L"C:\\real folder", shortName.data(), MAX_PATH), 0U);
    for (const std::wstring& name : {std::wstring(L"C:\\linked folder\\Kelvaro"),
                                     std::wstring(shortName.data()) + L"\\Kelvaro",
                                     std::wstring(L"S:\\Kelvaro")}) {
        SCOPED_TRACE(testing::PrintToString(name));
        ASSERT_NE(name, folder);
        ASSERT_EQ(install(kOlderVersion, L"/D=" + folder).code, kDone);
        CleanProgramEntries::setRunValue(L"\"" + folder + L"\\Kelvaro.exe\" -delay7");
        EXPECT_EQ(install(kVersion, L"/D=" + name).code, kDone);
        expectInstalled(kVersion, name);
        EXPECT_EQ(runValue(), L"\"" + name + L"\\Kelvaro.exe\" -delay7");
        // The uninstaller, too, may be reached by another name.
        EXPECT_EQ(runProgram(folder + L"\\Uninstall.exe", L"/S _?=" + folder).code, kDone);
        EXPECT_EQ(installed(L"UninstallString"), std::nullopt);
        std::filesystem::remove_all(folder);
    }
}

TEST_F(Installer, ReplacesANewerVersionOnlyWhenAsked) {
    ASSERT_EQ(install(kNewerVersion).code, kDone);
    const Outcome refused = install(kVersion);
    EXPECT_EQ(refused.code, kNewerInstalled);
    EXPECT_THAT(refused.words, HasSubstr("A newer version, 1000.0.0, is installed"));
    expectInstalled(kNewerVersion, kUsualFolder);
    EXPECT_EQ(install(kVersion, L"/ALLOWDOWNGRADE").code, kDone);
    expectInstalled(kVersion, kUsualFolder);
}

TEST_F(Installer, TakesAFolderThatTheAnsiCodePageHas) {
    const std::wstring folder = L"C:\\\u00dcbung und Gr\u00f6\u00dfe";
    ASSERT_EQ(install(kVersion, L"/D=" + folder + L"\\").code, kDone);
    expectInstalled(kVersion, folder);
    const RunningProgram kelvaro(folder);
    kelvaro.startWithWindows(L"3");
    EXPECT_EQ(runValue(), L"\"" + folder + L"\\Kelvaro.exe\" -delay3");
}

TEST_F(Installer, RefusesAFolderThatTheProgramCouldNotUse) {
    const std::wstring longest = L"C:\\" + std::wstring(100, L'a') + L'\\' + std::wstring(131, L'b');
    ASSERT_EQ(longest.size(), 235U);
    for (const std::wstring& folder : {
             std::wstring(L"C:\\\u0416"),  // not in the code page
             std::wstring(L"C:\\\u0100"),  // in it as another letter only
             std::wstring(L"C:\\"),
             std::wstring(L"C:"),
             std::wstring(L"\"C:\\quoted\""),
             longest + L"b",
         }) {
        const Outcome refused = install(kVersion, L"/D=" + folder);
        EXPECT_EQ(refused.code, kUnsuitableFolder);
        EXPECT_THAT(refused.words, HasSubstr("folder"));
        EXPECT_EQ(installed(L"DisplayVersion"), std::nullopt);
    }
    ASSERT_EQ(install(kVersion, L"/D=" + longest).code, kDone);
    const RunningProgram kelvaro(longest);
    kelvaro.startWithWindows(L"999");
    EXPECT_EQ(runValue(), L"\"" + longest + L"\\Kelvaro.exe\" -delay999");
    const HWND dialog = kelvaro.openSettings();
    EXPECT_TRUE(waitFor([dialog] { return textOf(GetDlgItem(dialog, IDC_DELAY)) == L"999"; }))
        << "is read back";
    uninstall();
    std::filesystem::remove_all(L"C:\\" + std::wstring(100, L'a'));
}

TEST_F(Installer, RefusesAFolderThatHoldsOtherFiles) {
    const std::wstring folder = L"C:\\documents of mine";
    std::filesystem::create_directory(folder);
    for (const wchar_t* const name : {L"README.txt", L"Uninstall.exe", L"novel.txt"}) {
        SCOPED_TRACE(testing::PrintToString(name));
        writeFile(folder + L"\\" + name);
        const Outcome refused = install(kVersion, L"/D=" + folder);
        EXPECT_EQ(refused.code, kForeignFolder);
        EXPECT_THAT(refused.words, HasSubstr("is not empty: it has"));
        EXPECT_EQ(filesIn(folder), std::set<std::wstring>{name});
        EXPECT_EQ(bytesOf(folder + L"\\" + name), kOwnText);
        EXPECT_EQ(installed(L"DisplayVersion"), std::nullopt);
        DeleteFileW((folder + L"\\" + name).c_str());
    }
    ASSERT_EQ(install(kVersion, L"/D=" + folder).code, kDone) << "the folder is empty now";
    expectInstalled(kVersion, folder);
}

TEST_F(Installer, RefusesAFolderThatBelongsToWindows) {
    for (const wchar_t* const folder :
         {L"C:\\windows", L"C:\\windows\\Kelvaro", L"C:\\windows\\system32\\a\\b"}) {
        const Outcome refused = install(kVersion, std::wstring(L"/D=") + folder);
        EXPECT_EQ(refused.code, kForeignFolder);
        EXPECT_THAT(refused.words, HasSubstr("belongs to Windows"));
        EXPECT_EQ(installed(L"DisplayVersion"), std::nullopt);
    }
}

TEST_F(Installer, TakesAFolderWithCoreTempsLibraryAndWithFilesOfAnInstallationThatWasCutShort) {
    const std::wstring library = std::wstring(kUsualFolder) + L"\\GetCoreTempInfo.dll";
    std::filesystem::create_directory(kUsualFolder);
    writeFile(library);
    std::filesystem::copy_file(environment(L"KELVARO_SHIPPED") + L"\\README.txt",
                               std::wstring(kUsualFolder) + L"\\README.txt");
    EXPECT_EQ(install(kVersion).code, kDone);
    EXPECT_EQ(installed(L"DisplayVersion"), kVersion);
    uninstall();
    EXPECT_EQ(filesIn(kUsualFolder), std::set<std::wstring>{L"GetCoreTempInfo.dll"});
    std::filesystem::remove_all(kUsualFolder);
}

TEST_F(Installer, DeletesNoFileThatTheUserPutInThePlaceOfItsOwn) {
    const std::wstring old = L"C:\\old";
    ASSERT_EQ(install(kOlderVersion, L"/D=" + old).code, kDone);
    writeFile(old + L"\\README.txt");
    ASSERT_EQ(install(kVersion, std::wstring(L"/D=") + kUsualFolder).code, kDone);
    EXPECT_EQ(filesIn(old), std::set<std::wstring>{L"README.txt"});
    EXPECT_EQ(bytesOf(old + L"\\README.txt"), kOwnText);
    std::filesystem::remove_all(old);

    const std::wstring changed = std::wstring(kUsualFolder) + L"\\CHANGELOG.txt";
    writeFile(changed);
    uninstall();
    EXPECT_EQ(filesIn(kUsualFolder), std::set<std::wstring>{L"CHANGELOG.txt"});
    EXPECT_EQ(bytesOf(changed), kOwnText);
    std::filesystem::remove_all(kUsualFolder);
}

/// The installer with its page on which the folder is chosen.
class FolderPage {
public:
    FolderPage() : setup_(setupOf(kVersion), L"/D=C:\\elsewhere") {
        EXPECT_TRUE(waitFor([this] {
            window_ = findWindow(id(), L"#32770");
            return window_ != nullptr && IsWindowVisible(window_) != FALSE && folderBox() != nullptr;
        }));
    }

    std::wstring folder() const { return textOf(folderBox()); }
    void setFolder(const wchar_t* folder) const {
        SendMessageW(folderBox(), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(folder));
    }
    void browse() const { PostMessageW(GetParent(folderBox()), WM_COMMAND, kBrowseButton, 0); }
    void install() const { pressButton(window_, IDOK); }
    DWORD id() const { return setup_.id(); }
    std::optional<DWORD> waitForExit() const { return setup_.waitForExit(60s); }

    /// Waits for the last page and returns its check box with this text.
    HWND checkBoxOfLastPage(const wchar_t* text) const {
        HWND box = nullptr;
        waitFor(
            [&] {
                for (HWND page = nullptr; box == nullptr;) {
                    page = FindWindowExW(window_, page, L"#32770", nullptr);
                    if (page == nullptr) {
                        break;
                    }
                    box = FindWindowExW(page, nullptr, L"Button", text);
                }
                return box != nullptr && IsWindowVisible(box) != FALSE;
            },
            60s);
        return box;
    }
    /// On the last page.
    void finish() const { pressButton(window_, IDOK); }

    /// Waits for a box or dialog of the installer.
    HWND waitForBox() const {
        HWND box = nullptr;
        waitFor([&] {
            box = findWindow(id(), L"#32770");
            return box != nullptr && GetWindow(box, GW_OWNER) == window_ && IsWindowVisible(box) != FALSE;
        });
        return box;
    }

private:
    static constexpr int kFolderBox = 1019;
    static constexpr int kBrowseButton = 1001;

    HWND folderBox() const {
        HWND box = nullptr;
        for (HWND page = nullptr; box == nullptr;) {
            page = FindWindowExW(window_, page, L"#32770", nullptr);
            if (page == nullptr) {
                break;
            }
            box = GetDlgItem(page, kFolderBox);
        }
        return box;
    }

    HWND window_ = nullptr;
    ChildProcess setup_;
};

TEST_F(Installer, MakesAChosenFolderOneOfItsOwn) {
    const FolderPage page;
    EXPECT_EQ(page.folder(), L"C:\\elsewhere");
    page.setFolder(L"C:\\windows");
    page.install();
    const HWND box = page.waitForBox();
    constexpr int kBoxText = 0xFFFF;
    EXPECT_THAT(textOf(GetDlgItem(box, kBoxText)), HasSubstr(L"belongs to Windows"));
    pressButton(box, IDOK);
    EXPECT_TRUE(waitUntilGone(box));
    EXPECT_EQ(page.folder(), L"C:\\windows") << "the page stays";

    page.setFolder(L"C:\\real folder");
    page.browse();
    pressButton(page.waitForBox(), IDOK);
    EXPECT_TRUE(waitFor([&page] { return page.folder() == L"C:\\real folder\\Kelvaro"; }))
        << testing::PrintToString(page.folder());
}

TEST_F(Installer, OffersTheStartWithWindowsOnItsLastPage) {
    for (const auto& [shown, expected] :
         {std::pair(BST_UNCHECKED, std::optional(L"\"C:\\elsewhere\\Kelvaro.exe\" -delay15"s)),
          std::pair(BST_CHECKED, std::optional<std::wstring>())}) {
        const FolderPage page;
        page.install();
        const HWND startNow = page.checkBoxOfLastPage(L"Start Kelvaro");
        const HWND startWithWindows =
            page.checkBoxOfLastPage(L"Start Kelvaro with Windows, after 15 seconds");
        ASSERT_TRUE(startNow != nullptr && startWithWindows != nullptr);
        EXPECT_EQ(SendMessageW(startWithWindows, BM_GETCHECK, 0, 0), shown);
        SendMessageW(startNow, BM_CLICK, 0, 0);
        SendMessageW(startWithWindows, BM_CLICK, 0, 0);
        page.finish();
        EXPECT_EQ(page.waitForExit(), kDone);
        EXPECT_EQ(runValue(), expected);
        expectInstalled(kVersion, L"C:\\elsewhere");
    }
}

TEST_F(Installer, LeavesWhatIsNotItsOwn) {
    ASSERT_EQ(install(kVersion).code, kDone);
    const std::wstring note = std::wstring(kUsualFolder) + L"\\notes.txt";
    writeFile(note);
    const std::wstring elsewhere = L"\"C:\\Program Files\\Kelvaro 2\\Kelvaro.exe\"";
    CleanProgramEntries::setRunValue(elsewhere);
    uninstall();
    EXPECT_EQ(filesIn(kUsualFolder), std::set<std::wstring>{L"notes.txt"});
    EXPECT_EQ(runValue(), elsewhere);
    RegDeleteKeyValueW(HKEY_CURRENT_USER, kRunKey, L"Kelvaro");
    std::filesystem::remove_all(kUsualFolder);
}

TEST_F(Installer, DoesNotReplaceAFileThatAnotherUserRuns) {
    ASSERT_EQ(install(kOlderVersion).code, kDone);
    {
        // The mutex of another session is not seen; the file is in use all the same.
        const Panelix::UniqueFile file(CreateFileW(L"C:\\Program Files\\Kelvaro\\Kelvaro.exe",
                                                   GENERIC_READ,
                                                   FILE_SHARE_READ,
                                                   nullptr,
                                                   OPEN_EXISTING,
                                                   FILE_ATTRIBUTE_NORMAL,
                                                   nullptr));
        const Outcome refused = install(kVersion);
        EXPECT_EQ(refused.code, kRunning);
        EXPECT_THAT(refused.words, HasSubstr("is in use"));
        const Outcome kept = runProgram(std::wstring(kUsualFolder) + L"\\Uninstall.exe",
                                        L"/S _?=" + std::wstring(kUsualFolder));
        EXPECT_EQ(kept.code, kRunning);
        EXPECT_THAT(kept.words, HasSubstr("is in use"));
    }
    expectInstalled(kOlderVersion, kUsualFolder);
}

/// A program that was loaded and does nothing: its file is in use.
class SuspendedProgram {
public:
    explicit SuspendedProgram(const std::wstring& path) {
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION started{};
        EXPECT_NE(CreateProcessW(path.c_str(),
                                 nullptr,
                                 nullptr,
                                 nullptr,
                                 FALSE,
                                 CREATE_SUSPENDED | CREATE_NO_WINDOW,
                                 nullptr,
                                 nullptr,
                                 &startup,
                                 &started),
                  FALSE)
            << "error " << GetLastError();
        process_.reset(started.hProcess);
        CloseHandle(started.hThread);
    }
    ~SuspendedProgram() {
        TerminateProcess(process_.get(), 0);
        WaitForSingleObject(process_.get(), INFINITE);
    }
    SuspendedProgram(const SuspendedProgram&) = delete;
    SuspendedProgram& operator=(const SuspendedProgram&) = delete;

private:
    Panelix::UniqueHandle process_;
};

TEST_F(Installer, TouchesNothingWhileOneOfItsProgramsRuns) {
    ASSERT_EQ(install(kOlderVersion).code, kDone);
    const RegistryContents registry = registryContents();
    const std::set<std::wstring> files = filesOnDrive();
    for (const std::wstring& name : shippedFiles()) {
        if (!name.ends_with(L".exe")) {
            continue;
        }
        SCOPED_TRACE(testing::PrintToString(name));
        const SuspendedProgram program(std::wstring(kUsualFolder) + L"\\" + name);
        const Outcome refused = install(kVersion);
        EXPECT_EQ(refused.code, kRunning);
        EXPECT_THAT(refused.words, HasSubstr("is in use"));
        const Outcome moved = install(kVersion, L"/D=C:\\elsewhere");
        EXPECT_EQ(moved.code, kRunning);
        const Outcome kept = runProgram(std::wstring(kUsualFolder) + L"\\Uninstall.exe",
                                        L"/S _?=" + std::wstring(kUsualFolder));
        EXPECT_EQ(kept.code, kRunning);
        EXPECT_EQ(differences(registry, registryContents()), L"");
        EXPECT_EQ(differences(files, filesOnDrive()), L"");
    }
}

/// Bytes of all files in the usual folder.
std::map<std::wstring, std::string> installedBytes() {
    std::map<std::wstring, std::string> bytes;
    for (const std::wstring& name : filesIn(kUsualFolder)) {
        bytes[name] = bytesOf(std::wstring(kUsualFolder) + L"\\" + name);
    }
    return bytes;
}

TEST_F(Installer, LeavesTheOldVersionWhenAFileCannotBeWritten) {
    ASSERT_EQ(install(kOlderVersion).code, kDone);
    const std::map<std::wstring, std::string> before = installedBytes();
    // Where the new file, and where the old one shall go, is a folder that is not empty.
    for (const wchar_t* const place : {L"Kelvaro.new", L"Kelvaro.old"}) {
        SCOPED_TRACE(testing::PrintToString(place));
        const std::wstring folder = std::wstring(kUsualFolder) + L"\\" + place;
        const std::wstring obstacle = folder + L"\\README.txt";
        std::filesystem::create_directories(obstacle);
        writeFile(obstacle + L"\\mine.txt");
        const Outcome failed = install(kVersion);
        EXPECT_EQ(failed.code, kNotWritten);
        EXPECT_THAT(failed.words, HasSubstr("What was installed before is as it was."));
        EXPECT_EQ(bytesOf(obstacle + L"\\mine.txt"), kOwnText);
        std::filesystem::remove_all(folder);
        EXPECT_EQ(installedBytes(), before);
        expectInstalled(kOlderVersion, kUsualFolder);
        RunningProgram kelvaro(kUsualFolder);
        PostMessageW(kelvaro.window, WM_COMMAND, Panelix::kCommandExit, 0);
        EXPECT_EQ(kelvaro.process.waitForExit(), DWORD{0});
    }
    ASSERT_EQ(install(kVersion).code, kDone);
    expectInstalled(kVersion, kUsualFolder);
}

TEST_F(Installer, GoesOnAfterAnInstallationThatWasCutShort) {
    ASSERT_EQ(install(kOlderVersion).code, kDone);
    const std::wstring folder = kUsualFolder;
    std::filesystem::create_directory(folder + L"\\Kelvaro.new");
    writeFile(folder + L"\\Kelvaro.new\\Kelvaro.exe");
    std::filesystem::create_directory(folder + L"\\Kelvaro.old");
    std::filesystem::rename(folder + L"\\Kelvaro.exe", folder + L"\\Kelvaro.old\\Kelvaro.exe");
    ASSERT_EQ(install(kVersion).code, kDone);
    expectInstalled(kVersion, folder);
}

TEST_F(Installer, KeepsAFileThatTheUserChangedUnderAnotherName) {
    ASSERT_EQ(install(kOlderVersion).code, kDone);
    const std::wstring readme = std::wstring(kUsualFolder) + L"\\README.txt";
    for (const wchar_t* const kept : {L".1", L".2"}) {
        writeFile(readme);
        ASSERT_EQ(install(kVersion).code, kDone);
        EXPECT_EQ(bytesOf(readme), bytesOf(environment(L"KELVARO_SHIPPED") + L"\\README.txt"));
        EXPECT_EQ(bytesOf(readme + kept), kOwnText);
    }
    DeleteFileW((readme + L".1").c_str());
    DeleteFileW((readme + L".2").c_str());
    expectInstalled(kVersion, kUsualFolder);
}

TEST_F(Installer, ReplacesAndMovesTheFirstVersionWhichKeptNoList) {
    for (const wchar_t* const folder : {L"C:\\first", L"C:\\second"}) {
        SCOPED_TRACE(testing::PrintToString(folder));
        ASSERT_EQ(install(L"first", L"/D=C:\\first").code, kDone);
        writeFile(L"C:\\first\\notes.txt");
        EXPECT_EQ(install(kVersion, std::wstring(L"/D=") + folder).code, kDone);
        EXPECT_EQ(bytesOf(L"C:\\first\\notes.txt"), kOwnText);
        DeleteFileW(L"C:\\first\\notes.txt");
        expectInstalled(kVersion, folder);
        uninstall();
        std::filesystem::remove_all(L"C:\\first");
    }
}

TEST_F(Installer, RemovesWhatTheOlderVersionHad) {
    ASSERT_EQ(install(kOlderVersion).code, kDone);
    expectInstalled(kOlderVersion, kUsualFolder);
    EXPECT_EQ(installed(L"HelpLink"), L"https://kelvaro.example");
    EXPECT_EQ(installed(L"URLInfoAbout"), L"https://kelvaro.example");
    ASSERT_EQ(install(kVersion).code, kDone);
    expectInstalled(kVersion, kUsualFolder);
    EXPECT_EQ(installed(L"HelpLink"), std::nullopt);
    EXPECT_EQ(installed(L"URLInfoAbout"), std::nullopt);
}

TEST_F(Installer, RefusesToRunTwiceAtATime) {
    ASSERT_EQ(install(kOlderVersion).code, kDone);
    {
        const FolderPage first;
        const Outcome second = install(kVersion);
        EXPECT_EQ(second.code, kSetupRuns);
        EXPECT_THAT(second.words, HasSubstr("Another Kelvaro Setup is running"));
        const Outcome third = runProgram(std::wstring(kUsualFolder) + L"\\Uninstall.exe",
                                         L"/S _?=" + std::wstring(kUsualFolder));
        EXPECT_EQ(third.code, kSetupRuns);
        expectInstalled(kOlderVersion, kUsualFolder);
    }
    EXPECT_EQ(install(kVersion).code, kDone);
}

TEST_F(Installer, KeepsAnAdministratorsOwnSettingsForDumps) {
    constexpr wchar_t kAll[] = L"Software\\Microsoft\\Windows\\Windows Error Reporting\\LocalDumps";
    constexpr wchar_t kOwn[] =
        L"Software\\Microsoft\\Windows\\Windows Error Reporting\\LocalDumps\\Kelvaro.exe";
    constexpr DWORD kFull = 2;
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kAll, L"DumpType", REG_DWORD, &kFull, sizeof(kFull));
    const RegistryContents all = registryContents();
    ASSERT_EQ(install(kVersion).code, kDone);
    uninstall();
    EXPECT_EQ(differences(all, registryContents()), L"");

    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kOwn, L"DumpType", REG_DWORD, &kFull, sizeof(kFull));
    const RegistryContents own = registryContents();
    ASSERT_EQ(install(kVersion).code, kDone);
    uninstall();
    EXPECT_EQ(differences(own, registryContents()), L"");
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\Windows\\Windows Error Reporting");
}

TEST_F(Installer, RefusesAWindowsBeforeItsTime) {
    constexpr wchar_t kSettings[] = L"Software\\Wine\\AppDefaults\\KelvaroSetup-" KELVARO_VERSION L"-x64.exe";
    RegSetKeyValueW(HKEY_CURRENT_USER, kSettings, L"Version", REG_SZ, L"win7", sizeof(L"win7"));
    const Outcome refused = install(kVersion);
    RegDeleteKeyValueW(HKEY_CURRENT_USER, kSettings, L"Version");
    EXPECT_EQ(refused.code, kOldWindows);
    EXPECT_THAT(refused.words, HasSubstr("Kelvaro needs Windows 8 or later"));
}

/// With a folder in which libraries lie whose names programs look for.
class InstallerAmongLibraries : public Installer {
protected:
    InstallerAmongLibraries() {
        const std::wstring library = environment(L"KELVARO_PLANTED_LIBRARY");
        for (const wchar_t* const name : kNames) {
            std::filesystem::copy_file(library, folder.path() + L"\\" + name + L".dll");
        }
    }

    /// Puts a program into the folder. Wine looks for its own libraries first, which Windows does not.
    std::wstring place(const std::wstring& program) {
        const std::wstring path = folder.path() + L"\\" + std::filesystem::path(program).filename().wstring();
        std::filesystem::copy_file(program, path);
        return path;
    }

    std::set<std::wstring> loaded() const {
        std::set<std::wstring> names;
        for (const std::wstring& file : folder.files()) {
            if (file.ends_with(L".dll.loaded")) {
                names.insert(file.substr(0, file.find(L'.')));
            }
        }
        return names;
    }

    /// Not those that Windows takes from its own folder in any case, nor the two that Wine's user32 loads
    /// from anywhere, before the program can object: version and uxtheme.
    static constexpr std::array kNames = {
        L"apphelp", L"clbcatq",  L"cryptbase", L"cryptsp",  L"dwmapi",   L"edputil",  L"iphlpapi",
        L"mpr",     L"msimg32",  L"msftedit",  L"netapi32", L"ntmarta",  L"oleacc",   L"profapi",
        L"propsys", L"riched20", L"riched32",  L"secur32",  L"setupapi", L"shfolder", L"srvcli",
        L"urlmon",  L"userenv",  L"usp10",     L"winmm",    L"wtsapi32",
    };
    TemporaryFolder folder;
};

TEST_F(InstallerAmongLibraries, LoadsNoneOfThem) {
    std::wstring names;
    for (const wchar_t* const name : kNames) {
        names += std::wstring(L" ") + name;
    }
    EXPECT_EQ(runProgram(place(environment(L"KELVARO_CARELESS_PROGRAM")), names).code, DWORD{0});
    EXPECT_EQ(loaded().size(), kNames.size()) << "what a program without care loads";
    for (const std::wstring& name : loaded()) {
        DeleteFileW((folder.path() + L"\\" + name + L".dll.loaded").c_str());
    }

    EXPECT_EQ(runProgram(place(setupOf(kVersion)), L"/S").code, kDone);
    EXPECT_EQ(loaded(), std::set<std::wstring>{});
    expectInstalled(kVersion, kUsualFolder);
}

/// The same machine, with a keyboard that the program shows itself on.
class InstallerWithKeyboard : public KelvaroOnTheKeyboard {
protected:
    static DWORD uninstallQuietly(const std::wstring& arguments) {
        const std::wstring folder = kUsualFolder;
        return runProgram(folder + L"\\Uninstall.exe", L"/S " + arguments + L" _?=" + folder)
            .code.value_or(STILL_ACTIVE);
    }
};

/// The file name of the process that started the running process of this file name; empty when there is none.
std::wstring parentOf(const std::wstring& name) {
    const Panelix::UniqueFile snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    std::map<DWORD, std::wstring> names;
    DWORD parent = 0;
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof(entry);
    for (BOOL more = Process32FirstW(snapshot.get(), &entry); more != FALSE;
         more = Process32NextW(snapshot.get(), &entry)) {
        names[entry.th32ProcessID] = entry.szExeFile;
        if (name == entry.szExeFile) {
            parent = entry.th32ParentProcessID;
        }
    }
    return parent != 0 ? names[parent] : L"";
}

/// Whether the session has a shell that other programs can reach. Wine's starts with the first window and
/// cannot be reached when COM was not ready then.
bool shellIsThere() {
    const Panelix::ComApartment com;
    Microsoft::WRL::ComPtr<IUnknown> windows;
    const bool there =
        SUCCEEDED(CoCreateInstance(CLSID_ShellWindows, nullptr, CLSCTX_LOCAL_SERVER, IID_PPV_ARGS(&windows)));
    std::cout << "the shell " << (there ? "can" : "cannot") << " be reached\n";
    return there;
}

TEST_F(InstallerWithKeyboard, EndsTheProgramOnTheLcdWhenForcedAndOnlyTheShellStartsTheNewOne) {
    const CleanProgramEntries entries;
    ASSERT_EQ(install(kOlderVersion).code, kDone);
    const ChildProcess kelvaro(std::wstring(kUsualFolder) + L"\\Kelvaro.exe");
    ASSERT_TRUE(waitForPasses(5));

    const bool shell = shellIsThere();
    const Outcome outcome = install(kVersion, L"/FORCE");
    EXPECT_EQ(outcome.code, kDone);
    EXPECT_FALSE(kelvaro.isRunning());
    EXPECT_EQ(installed(L"DisplayVersion"), kVersion);
    if (shell) {
        EXPECT_EQ(outcome.words, "");
        EXPECT_TRUE(waitFor([] { return parentOf(L"Kelvaro.exe") == L"explorer.exe"; }))
            << "not the installer with its rights";
    } else {
        EXPECT_THAT(outcome.words, HasSubstr("could not be started as the user who is logged on"));
        EXPECT_EQ(parentOf(L"Kelvaro.exe"), L"");
    }

    EXPECT_EQ(uninstallQuietly(L"/FORCE"), kDone);
    EXPECT_EQ(parentOf(L"Kelvaro.exe"), L"");
    std::filesystem::remove_all(kUsualFolder);
}

TEST_F(InstallerWithKeyboard, RefusesToEndTheProgramOnTheLcd) {
    const CleanProgramEntries entries;
    ASSERT_EQ(install(kOlderVersion).code, kDone);
    const ChildProcess kelvaro(std::wstring(kUsualFolder) + L"\\Kelvaro.exe");
    ASSERT_TRUE(waitForPasses(5));

    const Outcome refused = install(kVersion);
    EXPECT_EQ(refused.code, kRunning);
    EXPECT_THAT(refused.words, HasSubstr("End it there first: Exit Applet on its options page."));
    const Outcome kept =
        runProgram(std::wstring(kUsualFolder) + L"\\Uninstall.exe", L"/S _?=" + std::wstring(kUsualFolder));
    EXPECT_EQ(kept.code, kRunning);
    EXPECT_TRUE(kelvaro.isRunning());
    EXPECT_EQ(installed(L"DisplayVersion"), kOlderVersion);

    exitByButtons();
    EXPECT_EQ(kelvaro.waitForExit(), DWORD{0});
    EXPECT_EQ(install(kVersion).code, kDone);
    EXPECT_EQ(installed(L"DisplayVersion"), kVersion);
    const Outcome gone =
        runProgram(std::wstring(kUsualFolder) + L"\\Uninstall.exe", L"/S _?=" + std::wstring(kUsualFolder));
    EXPECT_EQ(gone.code, kDone);
    EXPECT_EQ(installed(L"DisplayVersion"), std::nullopt);
    std::filesystem::remove_all(kUsualFolder);
}

}  // namespace
