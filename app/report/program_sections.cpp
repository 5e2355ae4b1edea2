#include <windows.h>

#include <array>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "app/registry_places.h"
#include "app/report/library_findings.h"
#include "app/report/sections.h"
#include "app/report/system_facts.h"
#include "app/settings.h"
#include "app/version.h"
#include "framework/core/exported_function.h"
#include "framework/core/unique_resource.h"
#include "stats/ansi_text.h"

namespace {

using Panelix::UniqueHandle;
using Panelix::UniqueHkey;

constexpr wchar_t kProgramFile[] = L"\\Kelvaro.exe";
/// The switches of Task Manager for what starts with Windows: binary values of the Run values' names.
constexpr wchar_t kSwitchesKey[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\Run";
constexpr wchar_t kSwitch[] = L"Kelvaro";
constexpr wchar_t kWindowsKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
/// The first build of Windows 11. Its name in the registry is still that of Windows 10.
constexpr DWORD kFirstBuildOf11 = 22'000;
constexpr wchar_t kOldName[] = L"Windows 10";
constexpr wchar_t kNewName[] = L"Windows 11";
/// As long as the program reads it, in bytes.
constexpr std::size_t kEntryBytes = 260;

std::wstring besideReport() {
    return programFolder() + kProgramFile;
}

/// A value of the key that Windows describes itself in; empty when there is none of that type.
std::wstring windowsText(const wchar_t* name) {
    std::array<wchar_t, 64> text{};
    DWORD bytes = sizeof(text);
    return RegGetValueW(HKEY_LOCAL_MACHINE, kWindowsKey, name, RRF_RT_REG_SZ, nullptr, text.data(), &bytes) ==
                   ERROR_SUCCESS
               ? std::wstring(text.data())
               : std::wstring();
}

DWORD windowsRevision() {
    DWORD revision = 0;
    DWORD bytes = sizeof(revision);
    RegGetValueW(HKEY_LOCAL_MACHINE, kWindowsKey, L"UBR", RRF_RT_REG_DWORD, nullptr, &revision, &bytes);
    return revision;
}

/// What the system itself tells, whatever a program's manifest or its compatibility settings say. All zero
/// when it does not.
OSVERSIONINFOW windowsVersion() {
    using GetVersion = LONG NTAPI(OSVERSIONINFOW*);
    auto* const getVersion =
        Panelix::exportedFunction<GetVersion>(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion");
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof(version);
    return getVersion != nullptr && getVersion(&version) == 0 ? version : OSVERSIONINFOW{};
}

std::wstring windowsNameText(const OSVERSIONINFOW& version) {
    std::wstring name = windowsText(L"ProductName");
    if (version.dwBuildNumber >= kFirstBuildOf11 && name.starts_with(kOldName)) {
        name.replace(0, std::size(kOldName) - 1, kNewName);
    }
    return name.empty() ? L"without a name" : name;
}

std::wstring windowsVersionText(const OSVERSIONINFOW& version) {
    if (version.dwMajorVersion == 0) {
        return L"unknown";
    }
    std::wstring text = std::to_wstring(version.dwMajorVersion) + L'.' +
                        std::to_wstring(version.dwMinorVersion) + L", build " +
                        std::to_wstring(version.dwBuildNumber);
    if (const DWORD revision = windowsRevision(); revision != 0) {
        text += L'.' + std::to_wstring(revision);
    }
    if (const std::wstring release = windowsText(L"DisplayVersion"); !release.empty()) {
        text += L" (" + release + L')';
    }
    return text;
}

std::wstring wineText() {
    using GetWineVersion = const char*();
    auto* const getVersion =
        Panelix::exportedFunction<GetWineVersion>(GetModuleHandleW(L"ntdll.dll"), "wine_get_version");
    return getVersion != nullptr ? wideFromAscii(getVersion()) : L"no";
}

/// Whether this program, and so not always Kelvaro, has an administrator's rights.
std::wstring elevationText() {
    UniqueHandle token;
    TOKEN_ELEVATION elevation{};
    DWORD bytes = 0;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.put()) == FALSE ||
        GetTokenInformation(token.get(), TokenElevation, &elevation, sizeof(elevation), &bytes) == FALSE) {
        return L"the system does not say, " + errorText(GetLastError());
    }
    return yesNo(elevation.TokenIsElevated != 0);
}

struct Entry {
    LSTATUS status;
    DWORD type;
    std::string text;
};

/// Reads a text as the program does, in the ANSI code page.
Entry readEntry(HKEY root, const char* path, const char* name) {
    Entry entry{};
    UniqueHkey key;
    entry.status = RegOpenKeyExA(root, path, 0, KEY_QUERY_VALUE, key.put());
    if (entry.status != ERROR_SUCCESS) {
        return entry;
    }
    std::array<char, kEntryBytes> bytes{};
    auto size = static_cast<DWORD>(bytes.size());
    entry.status =
        RegQueryValueExA(key.get(), name, nullptr, &entry.type, reinterpret_cast<BYTE*>(bytes.data()), &size);
    if (entry.status == ERROR_SUCCESS) {
        entry.text =
            std::string_view(bytes.data(), size).substr(0, std::string_view(bytes.data(), size).find('\0'));
    }
    return entry;
}

/// False when there is no text to go on with.
bool reportEntry(ReportWriter& writer, const wchar_t* label, const Entry& entry) {
    if (entry.status == ERROR_FILE_NOT_FOUND) {
        writer.value(label, L"not there");
        return false;
    }
    if (entry.status == ERROR_MORE_DATA) {
        writer.value(label,
                     L"longer than " + std::to_wstring(kEntryBytes) + L" bytes, which Kelvaro does not read");
        return false;
    }
    if (entry.status != ERROR_SUCCESS) {
        writer.notLookedAt(label, errorText(static_cast<DWORD>(entry.status)));
        return false;
    }
    const std::wstring text = wideFromAnsi(entry.text);
    const bool isText = entry.type == REG_SZ || entry.type == REG_EXPAND_SZ;
    writer.value(label, isText ? text : L"of type " + std::to_wstring(entry.type) + L" and not a text");
    return isText;
}

/// The program that a start command starts: what stands in quotes at its beginning, or else its first word.
std::wstring startedProgram(const std::wstring& command) {
    if (command.starts_with(L'"')) {
        return command.substr(1, command.find(L'"', 1) - 1);
    }
    return command.substr(0, command.find(L' '));
}

std::wstring pointsText(const std::wstring& program) {
    if (isSameFile(program, besideReport())) {
        return L"yes";
    }
    return fileExists(program) ? L"no, but at a file that is there" : L"no, and the file is not there";
}

/// Whether Task Manager's switch is off, and a line about it. Off is a first byte that is odd; without a
/// value the switch is on.
bool reportSwitch(ReportWriter& writer) {
    constexpr const wchar_t* kLabel = L"Switch in Task Manager";
    std::array<BYTE, 64> bytes{};
    auto size = static_cast<DWORD>(bytes.size());
    const LSTATUS status = RegGetValueW(
        HKEY_CURRENT_USER, kSwitchesKey, kSwitch, RRF_RT_REG_BINARY, nullptr, bytes.data(), &size);
    if (status == ERROR_FILE_NOT_FOUND) {
        writer.value(kLabel, L"not there, which is on");
    } else if (status == ERROR_UNSUPPORTED_TYPE || status == ERROR_MORE_DATA) {
        writer.value(kLabel, L"in a form that is not known");
    } else if (status != ERROR_SUCCESS) {
        writer.notLookedAt(kLabel, errorText(static_cast<DWORD>(status)));
    } else {
        const bool off = size > 0 && bytes.front() % 2 != 0;
        writer.value(kLabel, off ? L"off" : L"on");
        return off;
    }
    return false;
}

}  // namespace

void reportProgram(ReportWriter& writer) {
    writer.value(L"Version", L"" KELVARO_VERSION_TEXT);
    writer.value(L"Report", modulePath(nullptr));
    writer.value(L"The report runs elevated", elevationText());
    const std::wstring program = besideReport();
    writer.value(L"Kelvaro.exe beside it", fileExists(program) ? versionText(program) : L"not there");
    writer.value(L"Kelvaro runs now", yesNo(isKelvaroRunning()));
}

void reportWindows(ReportWriter& writer) {
    const OSVERSIONINFOW version = windowsVersion();
    writer.value(L"Windows", windowsNameText(version));
    writer.value(L"Version", windowsVersionText(version));
    writer.value(L"Wine", wineText());
    writer.value(L"ANSI code page", std::to_wstring(GetACP()));
}

void reportStart(ReportWriter& writer) {
    const Entry run = readEntry(HKEY_CURRENT_USER, RegistryPlaces::kRunKey, RegistryPlaces::kRunValue);
    if (reportEntry(writer, L"Run entry", run)) {
        writer.value(L"Points at Kelvaro.exe here", pointsText(startedProgram(wideFromAnsi(run.text))));
    }
    const bool switchedOff = reportSwitch(writer);
    bool autostart = false;
    std::uint32_t delaySeconds = 0;
    if (ReadSettings(autostart, delaySeconds)) {
        writer.value(L"Starts with Windows",
                     autostart && switchedOff ? L"no: it is switched off in Task Manager" : yesNo(autostart));
        writer.value(L"Delay", std::to_wstring(delaySeconds) + L" s");
    } else {
        writer.value(L"Settings", L"cannot be read: the dialog shows neither of them");
    }
    const Entry folder =
        readEntry(HKEY_LOCAL_MACHINE, RegistryPlaces::kProgramKey, RegistryPlaces::kInstallFolderValue);
    reportEntry(writer, L"InstallDir", folder);
    std::string path;
    if (FindExecutablePath(path)) {
        writer.value(L"Installed program", wideFromAnsi(path));
        writer.value(L"It is Kelvaro.exe here", yesNo(isSameFile(wideFromAnsi(path), besideReport())));
    } else {
        writer.value(L"Installed program", L"not found: the start with Windows cannot be set");
    }
}
