#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <regex>
#include <string>
#include <utility>
#include <vector>

#include "app/report/private_names.h"
#include "framework/core/unique_resource.h"
#include "standins/adl/virtual_radeon.h"
#include "standins/built_files.h"
#include "tests/e2e/equipped_kelvaro.h"
#include "tests/e2e/report_texts.h"
#include "tests/support/installation.h"
#include "tests/support/registry_override.h"

// The shipped report, started as a user does, with its output in a file.

namespace {

using Standins::LcdCall;
using Standins::VendorLibrary;
using Standins::vendorLibraryPath;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr char kTextIsWines[] =
    "the text has Wine's folders and error texts, and a machine without sound devices";
constexpr wchar_t kMailKey[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\UnreadMail";

std::wstring shippedReport() {
    return (Standins::outputFolder() / L"KelvaroReport.exe").wstring();
}

std::string utf8(const std::wstring& text) {
    std::string bytes(text.size() * 3 + 1, '\0');
    bytes.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8,
                                                              0,
                                                              text.data(),
                                                              static_cast<int>(text.size()),
                                                              bytes.data(),
                                                              static_cast<int>(bytes.size()),
                                                              nullptr,
                                                              nullptr)));
    return bytes;
}

/// What a program has written.
struct Printed {
    std::optional<DWORD> code;
    std::string output;
    std::string error;
};

/// A file of its own that a program writes into; gone with the object.
class OutputFile {
public:
    explicit OutputFile(const std::wstring& name) {
        wchar_t folder[MAX_PATH] = L"";
        GetTempPathW(MAX_PATH, folder);
        path_ = folder + std::to_wstring(GetCurrentProcessId()) + name + L".txt";
        SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        file_.reset(CreateFileW(path_.c_str(),
                                GENERIC_READ | GENERIC_WRITE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE,
                                &inheritable,
                                CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL,
                                nullptr));
        EXPECT_TRUE(file_) << "error " << GetLastError();
    }
    ~OutputFile() {
        file_.reset();
        DeleteFileW(path_.c_str());
    }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    HANDLE handle() const { return file_.get(); }

    std::string bytes() const {
        std::string text(1 << 16, '\0');
        DWORD read = 0;
        SetFilePointer(file_.get(), 0, nullptr, FILE_BEGIN);
        EXPECT_NE(ReadFile(file_.get(), text.data(), static_cast<DWORD>(text.size()), &read, nullptr), FALSE);
        text.resize(read);
        return text;
    }

private:
    std::wstring path_;
    Panelix::UniqueFile file_;
};

/// A report that runs.
class RunningReport {
public:
    explicit RunningReport(const std::wstring& program, const std::wstring& arguments = {})
        : number_(++started),
          program_(program, arguments, error_.handle(), output_.handle()) {}

    /// Waits for its end.
    Printed printed() const {
        Printed result;
        result.code = program_.waitForExit(std::chrono::seconds(60));
        result.output = output_.bytes();
        result.error = error_.bytes();
        return result;
    }

private:
    static inline int started = 0;

    int number_;
    OutputFile output_{L"report" + std::to_wstring(number_)};
    OutputFile error_{L"errors" + std::to_wstring(number_)};
    ChildProcess program_;
};

Printed runReport(const std::wstring& program, const std::wstring& arguments = {}) {
    return RunningReport(program, arguments).printed();
}

/// The text with what is the machine's own replaced by stars: the rights, Windows' version, the display
/// adapters, the amount of memory and of processors, the load, the clock, the user's own folders, and
/// the number in the name of the test's folder.
std::string normalised(std::string text) {
    const std::pair<const char*, const char*> changes[] = {
        {"\r\n", "\n"},
        {"(\n  (The report runs elevated|Windows|Wine|ANSI code page|Processors|In use|Time) +)[^\n]*",
         "$1*"},
        {"(\nCrashes\n[^\n]*\n  Folder +)[^\n]*", "$1*"},
        {"(\nDisplay adapters\n)(  [^\n]*\n)+", "$1  *\n"},
        {"(\nWindows\n[^\n]*\n  Version +)[^\n]*", "$1*"},
        {"(\n  Physical memory +)\\d+ MiB, free \\d+ MiB", "$1*"},
        {"(\n  (CPU load|Memory) +)\\d+ % +\\d+ %", "$1*"},
        // Wine 8 and Wine 10 have the folder for temporary files in different places.
        {R"(%USERPROFILE%\\AppData\\Local\\Temp\\)", R"(%USERPROFILE%\Temp\)"},
        // Who runs tests in a folder of their own gives each one within the user's.
        {"(kelvaro-\\d+\\\\)?kelvaro-test-\\d+-\\d+", "kelvaro-test-*"},
        {"(\n  Version of the library +version )[0-9.]+", "$1*"},
    };
    for (const auto& [pattern, replacement] : changes) {
        text = std::regex_replace(text, std::regex(pattern), replacement);
    }
    return text;
}

/// A path of the checkout as the report shows it: it may lie below a folder with the user's name.
std::string shown(const std::wstring& path) {
    return utf8(withoutPrivateNames(path, currentPrivateNames()));
}

/// Puts the text in the place of every "{name}".
std::string filled(std::string text, const std::string& name, const std::string& value) {
    for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + value.size())) {
        text.replace(at, name.size(), value);
    }
    return text;
}

std::wstring folderOf(const std::wstring& path) {
    return path.substr(0, path.find_last_of(L'\\'));
}

std::wstring userName() {
    wchar_t name[257] = L"";
    DWORD length = 257;
    EXPECT_NE(GetUserNameW(name, &length), FALSE);
    return name;
}

/// A machine with the stand-ins of all vendors, installed, with mail and a start entry.
class ReportWithEverything : public EquippedKelvaro {
protected:
    ReportWithEverything() {
        put(shippedReport(), L"KelvaroReport.exe");
        put(vendorLibraryPath(VendorLibrary::Adl), L"atiadlxx.dll");
        radeon.setAdapterCount(1);
        radeon.setName(0, "Radeon Test 900");
        radeon.setFigures(0, {42, 120'000, 45'500});

        Standins::CoreTempFigures cpu;
        cpu.cpuCount = 1;
        cpu.coreCount = 2;
        cpu.speedMHz = 3600.0F;
        cpu.busSpeedMHz = 100.0F;
        cpu.multiplier = 36.0F;
        cpu.vidVolts = 1.25F;
        cpu.temperatures[1] = 54.9F;
        coreTemp.setFigures(cpu);
        coreTemp.setName("Test CPU");
        coreTemp.setRunning(true);

        nvidia.setGpuCount(1);
        nvidia.setName(0, "Test GPU");
        nvidia.setFigures(0, {30, 61, 8'388'608, 6'291'456, 1'350'000});
        gamepads.setBattery(0, 3, 2);
        gamepads.setConnected(0, true);

        audio.addUsualDevices();
        audio.addDevice({.id = L"{headset}",
                         .name = L"Kopfh\u00F6rer \u2116 5 (" + userName() + L"'s Headset)",
                         .levels = {.channels = {0.5F, 0.5F}, .master = 0.5F}});
        audio.setLevels(0, {.channels = {0.4F, 0.3F}, .master = 0.4F, .muted = true});

        RegDeleteTreeW(HKEY_CURRENT_USER, kMailKey);
        addAccount(L"anna.muster@example.org", 3);
        addAccount(L"bert@example.org", 12);
        entries.setInstallFolder(folder());
        entries.setRunValue(L"\"" + machine.program() + L"\" -delay15");
    }
    ~ReportWithEverything() override {
        kelvaro.reset();
        RegDeleteTreeW(HKEY_CURRENT_USER, kMailKey);
    }

    std::wstring folder() const { return folderOf(machine.program()); }
    std::wstring program() const { return folder() + L"\\KelvaroReport.exe"; }

    void put(const std::wstring& file, const wchar_t* name) const {
        EXPECT_NE(CopyFileW(file.c_str(), (folder() + L'\\' + name).c_str(), FALSE), FALSE)
            << "error " << GetLastError();
    }

    static void addAccount(const std::wstring& name, DWORD unread) {
        RegistryOverride::setValue(HKEY_CURRENT_USER,
                                   kMailKey + (L'\\' + name),
                                   L"MessageCount",
                                   REG_DWORD,
                                   &unread,
                                   sizeof(unread));
    }

    CleanProgramEntries entries;
    Standins::VirtualRadeon radeon;
};

TEST_F(ReportWithEverything, TellsAllOfItTwiceAtOnceAndStartsTheLcdOnlyWhenAsked) {
    SKIP_ON_WINDOWS(kTextIsWines);
    const RunningReport plain(program());
    const RunningReport withLcd(program(), L"--lcd");
    const Printed printed = plain.printed();
    EXPECT_EQ(printed.code, DWORD{0});
    EXPECT_EQ(printed.error, "");
    std::string expected = filled(kWithEverything, "{lcd}", shown(vendorLibraryPath(VendorLibrary::LcdSdk)));
    expected = filled(expected, "{audio}", shown(vendorLibraryPath(VendorLibrary::CoreAudio)));
    EXPECT_EQ(normalised(printed.output), expected);

    const Printed started = withLcd.printed();
    EXPECT_EQ(started.code, DWORD{0});
    EXPECT_EQ(started.error, "");
    expected = filled(expected, kStartNotTried, kStarted);
    EXPECT_EQ(normalised(started.output), expected);
    EXPECT_EQ(keyboard.callCount(LcdCall::Init), 1U) << "only the one that was asked";
    EXPECT_EQ(keyboard.callCount(LcdCall::Shutdown), 1U);

    EXPECT_THAT(printed.output, StartsWith("Kelvaro report")) << "no byte order mark";
    EXPECT_THAT(printed.output, HasSubstr("Kopfh\xC3\xB6rer \xE2\x84\x96 5 (<user>'s Headset)\r\n"));
    EXPECT_FALSE(std::regex_search(printed.output, std::regex("[^\r]\n")));
    for (const char* name : {"anna", "example.org", "\\users\\"}) {
        EXPECT_THAT(started.output, Not(HasSubstr(name)));
    }
}

TEST_F(ReportWithEverything, ADriverThatEndsTheProcessOrTakesItsTimeDoesNoHarmToTheTextNorToKelvaro) {
    start();
    ASSERT_TRUE(waitForPasses(3));
    const std::uint64_t passes = keyboard.passCount();
    put(vendorLibraryPath(VendorLibrary::Adl, "hostile"), L"atiadlxx.dll");
    SetEnvironmentVariableW(L"KELVARO_HOSTILE", L"slow");
    const auto begin = std::chrono::steady_clock::now();
    const RunningReport slow(program());
    SetEnvironmentVariableW(L"KELVARO_HOSTILE", L"crash");
    const Printed crashed = runReport(program());
    EXPECT_EQ(crashed.code, DWORD{1});
    EXPECT_THAT(crashed.output, HasSubstr("\r\nAMD\r\n"));
    EXPECT_THAT(crashed.output, HasSubstr("Test GPU"));
    EXPECT_THAT(
        crashed.output,
        EndsWith("\r\nThe report ends here, in the section above: exception 0xC0000005 in atiadlxx.dll\r\n"));

    const Printed delayed = slow.printed();
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    EXPECT_EQ(delayed.code, DWORD{0});
    EXPECT_THAT(delayed.output, HasSubstr("Kelvaro runs now            yes\r\n"));
    EXPECT_THAT(delayed.output, HasSubstr("Start of a session          fails, result -1: ADL_ERR\r\n"));
    EXPECT_THAT(delayed.output, EndsWith("\r\nEverything could be looked at.\r\n"));

    EXPECT_TRUE(kelvaro->isRunning());
    EXPECT_TRUE(waitForPasses(passes + 3));
    EXPECT_EQ(keyboard.callCount(LcdCall::Init), 1U) << "Kelvaro's own";
}

TEST_F(ReportWithEverything, ACrashInALibraryThatIsCalledAfterTheUserDoesNotTellTheName) {
    put(vendorLibraryPath(VendorLibrary::Adl, "hostile"), L"atiadlxx.dll");
    const std::wstring name = L"overlay of " + userName() + L".dll";
    put(vendorLibraryPath(VendorLibrary::Adl, "hostile"), name.c_str());
    SetEnvironmentVariableW(L"KELVARO_HOSTILE", L"elsewhere");
    SetEnvironmentVariableW(L"KELVARO_HOSTILE_LIBRARY", (folder() + L'\\' + name).c_str());
    const Printed crashed = runReport(program());
    EXPECT_EQ(crashed.code, DWORD{1});
    EXPECT_THAT(crashed.output,
                EndsWith("\r\nThe report ends here, in the section above: exception 0xC0000005 in " +
                         shown(name) + "\r\n"));
}

/// The same machine as it is, without any of it. Wine's own sound system has no devices there.
class ReportWithNothing : public testing::Test {
protected:
    ReportWithNothing() {
        EXPECT_NE(CopyFileW(shippedReport().c_str(), program().c_str(), FALSE), FALSE);
        RegDeleteTreeW(HKEY_CURRENT_USER, kMailKey);
    }

    std::wstring program() const { return folder.path() + L"\\KelvaroReport.exe"; }

    StandinSession session;
    TemporaryFolder folder;
    LcdRegistrationScope registration{L""};
    CleanProgramEntries entries;
};

TEST_F(ReportWithNothing, TellsThatNothingIsThere) {
    SKIP_ON_WINDOWS(kTextIsWines);
    const Printed printed = runReport(program(), L"--lcd");
    EXPECT_EQ(printed.code, DWORD{0}) << "what is missing is a finding";
    EXPECT_EQ(printed.error, "");
    EXPECT_EQ(normalised(printed.output), kWithNothing);
}

/// Starts the report with that as its output and gives its exit code.
std::optional<DWORD> codeWithOutput(const std::wstring& program,
                                    HANDLE output,
                                    const std::wstring& arguments = {}) {
    const ChildProcess report(program, arguments, nullptr, output);
    return report.waitForExit(std::chrono::seconds(60));
}

TEST_F(ReportWithNothing, IsIncompleteWhenNobodyReadsIt) {
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    ASSERT_NE(CreatePipe(&reader, &writer, &inheritable, 0), FALSE);
    Panelix::UniqueHandle(reader).reset();
    const Panelix::UniqueHandle pipe(writer);
    EXPECT_EQ(codeWithOutput(program(), pipe.get()), DWORD{1});
    EXPECT_EQ(codeWithOutput(program(), pipe.get(), L"--help"), DWORD{1});
}

TEST_F(ReportWithNothing, IsIncompleteOnAFullDisk) {
    SKIP_ON_WINDOWS("the full disk is a device file of the host");
    SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const Panelix::UniqueFile full(CreateFileW(L"Z:\\dev\\full",
                                               GENERIC_WRITE,
                                               FILE_SHARE_READ | FILE_SHARE_WRITE,
                                               &inheritable,
                                               OPEN_EXISTING,
                                               0,
                                               nullptr));
    ASSERT_TRUE(full) << "error " << GetLastError();
    EXPECT_EQ(codeWithOutput(program(), full.get()), DWORD{1});
    EXPECT_EQ(codeWithOutput(program(), full.get(), L"--help"), DWORD{1});
}

TEST_F(ReportWithNothing, RefusesAnUnknownOptionAndPrintsItsHelp) {
    const RunningReport refused(program(), L"--lcd --foo");
    const Printed help = runReport(program(), L"--help");
    EXPECT_EQ(help.code, DWORD{0});
    EXPECT_THAT(help.output, StartsWith("Usage: KelvaroReport [--lcd] [--output FILE | --save]\r\n"));
    EXPECT_THAT(help.output, Not(HasSubstr("NVIDIA")));
    EXPECT_EQ(help.error, "");
    const Printed printed = refused.printed();
    EXPECT_EQ(printed.code, DWORD{2});
    EXPECT_EQ(printed.output, "");
    EXPECT_EQ(printed.error, "KelvaroReport: unknown option '--foo'; --help lists the options\r\n");
}

}  // namespace
