#include <windows.h>

#include <xinput.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "app/report/sections.h"
#include "app/report/system_facts.h"
#include "tests/app/report/report_section.h"
#include "tests/support/import_override.h"
#include "tests/support/registry_override.h"

// What Windows itself answers, on machines that the one that runs the tests need not resemble.

namespace {

using testing::HasSubstr;
using testing::Not;

// Gamepads

struct Gamepad {
    DWORD stateError = ERROR_DEVICE_NOT_CONNECTED;
    DWORD batteryError = ERROR_SUCCESS;
    BYTE type = BATTERY_TYPE_DISCONNECTED;
    BYTE level = BATTERY_LEVEL_EMPTY;
};

std::array<Gamepad, 4> gamepads;

DWORD WINAPI tellState(DWORD number, XINPUT_STATE*) {
    return gamepads.at(number).stateError;
}

DWORD WINAPI tellBattery(DWORD number, BYTE device, XINPUT_BATTERY_INFORMATION* battery) {
    EXPECT_EQ(device, BATTERY_DEVTYPE_GAMEPAD);
    *battery = {gamepads.at(number).type, gamepads.at(number).level};
    return gamepads.at(number).batteryError;
}

class ReportOfGamepads : public ReportSection {
protected:
    ReportOfGamepads() { gamepads = {}; }

    static constexpr int kStateOrdinal = 2;
    static constexpr int kBatteryOrdinal = 7;
    ImportOverride state{"xinput1_4.dll", kStateOrdinal, tellState};
    ImportOverride battery{"xinput1_4.dll", kBatteryOrdinal, tellBattery};
};

TEST_F(ReportOfGamepads, TellsEveryTypeAndLevelOfABattery) {
    const wchar_t* const types[] = {L"disconnected", L"wired", L"alkaline", L"NiMH", L"unknown, 4"};
    const wchar_t* const levels[] = {L"empty", L"low", L"medium", L"full", L"unknown, 4"};
    gamepads[0].stateError = ERROR_SUCCESS;
    for (BYTE i = 0; i < 5; ++i) {
        gamepads[0].type = i;
        gamepads[0].level = i;
        write(reportGamepad);
        EXPECT_THAT(
            text,
            HasSubstr(line(L"Gamepad 1", L"connected") +
                      line(L"", L"battery: " + std::wstring(types[i]) + L", level: " + levels[i]).substr(1)));
    }
    gamepads[0].type = BATTERY_TYPE_UNKNOWN;
    write(reportGamepad);
    EXPECT_THAT(text, HasSubstr(L"battery: unknown, 255, level: unknown, 4\n"));
}

TEST_F(ReportOfGamepads, TellsOthersThanTheFirstAndCallsThatFail) {
    gamepads[1] = {ERROR_SUCCESS, ERROR_SUCCESS, BATTERY_TYPE_ALKALINE, BATTERY_LEVEL_FULL};
    gamepads[2] = {ERROR_SUCCESS, ERROR_GEN_FAILURE};
    gamepads[3] = {ERROR_ACCESS_DENIED};
    write(reportGamepad);
    EXPECT_THAT(text, HasSubstr(line(L"Gamepad 1", L"not connected")));
    EXPECT_THAT(text, HasSubstr(line(L"Gamepad 2", L"connected, but Kelvaro shows the first one only")));
    EXPECT_THAT(text, HasSubstr(line(L"", L"battery: alkaline, level: full")));
    EXPECT_THAT(text, HasSubstr(lineStart(L"", L"XInputGetBatteryInformation fails, error 31")));
    EXPECT_THAT(text, HasSubstr(lineStart(L"Gamepad 4", L"XInputGetState fails, error 5")));
    EXPECT_THAT(text, HasSubstr(line(L"Battery, as Kelvaro shows", L"none")));
}

// CPU load and memory

BOOL WINAPI refuseTimes(LPFILETIME, LPFILETIME, LPFILETIME) {
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

DWORD WINAPI tellProcessors(WORD group) {
    return group == ALL_PROCESSOR_GROUPS ? 72 : 36;
}

TEST_F(ReportSection, OfTheCpuLoadTellsAllProcessorsAndTimesThatAreRefused) {
    const ImportOverride processors("kernel32.dll", "GetActiveProcessorCount", tellProcessors);
    write(reportCpuLoad);
    EXPECT_THAT(text, HasSubstr(line(L"Processors", L"72")));
    EXPECT_THAT(text, HasSubstr(line(L"GetSystemTimes", L"works")));
    const ImportOverride times("kernel32.dll", "GetSystemTimes", refuseTimes);
    write(reportCpuLoad);
    EXPECT_THAT(text, HasSubstr(lineStart(L"GetSystemTimes", L"fails, error 5")));
}

bool memoryIsTold = true;

BOOL WINAPI tellMemory(LPMEMORYSTATUSEX status) {
    EXPECT_EQ(status->dwLength, sizeof(MEMORYSTATUSEX));
    constexpr DWORDLONG kMebibyte = 1'048'576;
    status->dwMemoryLoad = 75;
    status->ullTotalPhys = 8'192 * kMebibyte;
    status->ullAvailPhys = 2'048 * kMebibyte;
    SetLastError(ERROR_ACCESS_DENIED);
    return memoryIsTold ? TRUE : FALSE;
}

TEST_F(ReportSection, OfTheMemoryTellsAllOfItAndWhatIsFree) {
    const ImportOverride memory("kernel32.dll", "GlobalMemoryStatusEx", tellMemory);
    memoryIsTold = true;
    write(reportMemory);
    EXPECT_EQ(text,
              L"\nTitle\n"
              L"  GlobalMemoryStatusEx        works\n"
              L"  Physical memory             8192 MiB, free 2048 MiB\n"
              L"  In use                      75 %\n");
    memoryIsTold = false;
    write(reportMemory);
    EXPECT_THAT(text, HasSubstr(lineStart(L"GlobalMemoryStatusEx", L"fails, error 5")));
    EXPECT_THAT(text, Not(HasSubstr(L"MiB")));
}

// Windows

DWORD build = 19'045;

LONG NTAPI tellVersion(OSVERSIONINFOW* version) {
    EXPECT_EQ(version->dwOSVersionInfoSize, sizeof(OSVERSIONINFOW));
    version->dwMajorVersion = 10;
    version->dwMinorVersion = 3;
    version->dwBuildNumber = build;
    return 0;
}

const char* tellWineVersion() {
    return "8.5";
}

using FindFunction = FARPROC WINAPI(HMODULE, LPCSTR);
FindFunction* findInLibrary = nullptr;

FARPROC WINAPI findVersions(HMODULE library, LPCSTR name) {
    if (IS_INTRESOURCE(name) == FALSE && std::strcmp(name, "RtlGetVersion") == 0) {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(tellVersion));
    }
    if (IS_INTRESOURCE(name) == FALSE && std::strcmp(name, "wine_get_version") == 0) {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(tellWineVersion));
    }
    return findInLibrary(library, name);
}

UINT WINAPI tellCodePage() {
    return 1250;
}

TEST_F(ReportSection, OfWindowsTellsItsVersionToTheRevision) {
    const RegistryOverride registry;
    const ImportOverride codePage("kernel32.dll", "GetACP", tellCodePage);
    const ImportOverride functions("kernel32.dll", "GetProcAddress", findVersions);
    findInLibrary = functions.original<FindFunction>();
    write(reportWindows);
    EXPECT_EQ(text,
              L"\nTitle\n"
              L"  Windows                     without a name\n"
              L"  Version                     10.3, build 19045\n"
              L"  Wine                        8.5\n"
              L"  ANSI code page              1250\n");
    const std::wstring key = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
    const DWORD revision = 3'570;
    RegistryOverride::setText(HKEY_LOCAL_MACHINE, key, L"ProductName", L"Windows 10 Pro");
    RegistryOverride::setText(HKEY_LOCAL_MACHINE, key, L"DisplayVersion", L"22H2");
    RegistryOverride::setValue(HKEY_LOCAL_MACHINE, key, L"UBR", REG_DWORD, &revision, sizeof(revision));
    write(reportWindows);
    EXPECT_THAT(text, HasSubstr(line(L"Windows", L"Windows 10 Pro")));
    EXPECT_THAT(text, HasSubstr(line(L"Version", L"10.3, build 19045.3570 (22H2)")));
}

TEST_F(ReportSection, OfWindowsNamesWindows11ByItsBuildWhereTheRegistryNamesWindows10) {
    const RegistryOverride registry;
    const ImportOverride functions("kernel32.dll", "GetProcAddress", findVersions);
    findInLibrary = functions.original<FindFunction>();
    const std::wstring key = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
    const auto expectName = [&](DWORD number, const wchar_t* told, const wchar_t* shown) {
        build = number;
        RegistryOverride::setText(HKEY_LOCAL_MACHINE, key, L"ProductName", told);
        write(reportWindows);
        EXPECT_THAT(text, HasSubstr(line(L"Windows", shown)));
    };
    expectName(22'000, L"Windows 10 Pro", L"Windows 11 Pro");
    expectName(26'100, L"Windows 10 Home", L"Windows 11 Home");
    expectName(26'100, L"Windows 11 Home", L"Windows 11 Home");
    expectName(26'100, L"Windows Server 2025", L"Windows Server 2025");
    expectName(21'999, L"Windows 10 Pro", L"Windows 10 Pro");
    build = 19'045;
}

// Display adapters

constexpr wchar_t kDriversKey[] =
    L"SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e968-e325-11ce-bfc1-08002be10318}";

void addDriver(const wchar_t* subkey, const wchar_t* value, const std::wstring& told) {
    RegistryOverride::setText(HKEY_LOCAL_MACHINE, std::wstring(kDriversKey) + L'\\' + subkey, value, told);
}

DWORD outputs = 0;

/// The first adapter has two outputs.
BOOL WINAPI tellOutput(LPCWSTR, DWORD number, PDISPLAY_DEVICEW device, DWORD) {
    EXPECT_EQ(device->cb, sizeof(DISPLAY_DEVICEW));
    std::wcscpy(device->DeviceString, number < 2 ? L"Test GPU" : L"Mirror");
    return number < outputs ? TRUE : FALSE;
}

class ReportOfDisplayAdapters : public ReportSection {
protected:
    RegistryOverride registry;
    ImportOverride displays{"user32.dll", "EnumDisplayDevicesW", tellOutput};
};

TEST_F(ReportOfDisplayAdapters, TellsTheDriverOfEachAndWhichAreNotInTheMachineNow) {
    outputs = 3;
    addDriver(L"0000", L"DriverDesc", L"Test GPU");
    addDriver(L"0000", L"DriverVersion", L"31.0.15.3640");
    addDriver(L"0000", L"DriverDate", L"6-8-2023");
    addDriver(L"0003", L"DriverDesc", L"Old GPU");
    addDriver(L"Properties", L"Something", L"else");
    write(reportDisplayAdapters);
    EXPECT_EQ(text,
              L"\nTitle\n"
              L"  Adapters                    2\n"
              L"  Adapter 1                   Test GPU\n"
              L"  Driver                      31.0.15.3640 of 6-8-2023\n"
              L"  Adapter 2                   Old GPU, not in the machine now\n"
              L"  Driver                      without a version\n");
}

TEST_F(ReportOfDisplayAdapters, WithoutDriversOrOutputsAreAFinding) {
    outputs = 0;
    write(reportDisplayAdapters);
    EXPECT_THAT(text, HasSubstr(line(L"Adapters", L"no driver is installed")));
    addDriver(L"0000", L"DriverDesc", L"Test GPU");
    write(reportDisplayAdapters);
    EXPECT_THAT(text, HasSubstr(line(L"Adapter 1", L"Test GPU, not in the machine now")));
    EXPECT_THAT(writer.incomplete(), testing::IsEmpty());
}

TEST_F(ReportOfDisplayAdapters, AreNoMoreThanSixtyFour) {
    outputs = 0xFFFF'FFFF;
    for (int i = 100; i < 170; ++i) {
        addDriver(std::to_wstring(i).c_str(), L"DriverDesc", L"Test GPU");
    }
    write(reportDisplayAdapters);
    EXPECT_THAT(text, HasSubstr(line(L"Adapters", L"64")));
}

// Rights

DWORD elevated = 0;
bool elevationIsTold = true;

BOOL WINAPI tellElevation(HANDLE, TOKEN_INFORMATION_CLASS kind, LPVOID record, DWORD bytes, PDWORD) {
    EXPECT_EQ(kind, TokenElevation);
    EXPECT_EQ(bytes, sizeof(TOKEN_ELEVATION));
    static_cast<TOKEN_ELEVATION*>(record)->TokenIsElevated = elevated;
    SetLastError(ERROR_ACCESS_DENIED);
    return elevationIsTold ? TRUE : FALSE;
}

TEST_F(ReportSection, OfTheProgramTellsWhetherItRunsElevated) {
    const ImportOverride token("advapi32.dll", "GetTokenInformation", tellElevation);
    elevationIsTold = true;
    for (const DWORD is : {0U, 1U}) {
        elevated = is;
        write(reportProgram);
        EXPECT_THAT(text, HasSubstr(line(L"The report runs elevated", is != 0 ? L"yes" : L"no")));
    }
    elevationIsTold = false;
    write(reportProgram);
    EXPECT_THAT(text, HasSubstr(lineStart(L"The report runs elevated", L"the system does not say, error 5")));
}

// Files

VS_FIXEDFILEINFO versionRecord{};
UINT versionRecordBytes = sizeof(versionRecord);

DWORD WINAPI tellRecordSize(LPCWSTR, LPDWORD) {
    return sizeof(versionRecord);
}

BOOL WINAPI giveRecord(LPCWSTR, DWORD, DWORD, LPVOID) {
    return TRUE;
}

BOOL WINAPI findRecord(LPCVOID, LPCWSTR block, LPVOID* record, PUINT bytes) {
    EXPECT_STREQ(block, L"\\");
    *record = &versionRecord;
    *bytes = versionRecordBytes;
    return TRUE;
}

TEST_F(ReportSection, AVersionHasItsFourNumbersInTheirOrder) {
    const ImportOverride size("version.dll", "GetFileVersionInfoSizeW", tellRecordSize);
    const ImportOverride record("version.dll", "GetFileVersionInfoW", giveRecord);
    const ImportOverride query("version.dll", "VerQueryValueW", findRecord);
    versionRecord.dwFileVersionMS = MAKELONG(2, 1);
    versionRecord.dwFileVersionLS = MAKELONG(65'535, 3);
    versionRecord.dwProductVersionMS = MAKELONG(6, 5);
    EXPECT_EQ(versionText(L"x.dll"), L"version 1.2.3.65535");
    versionRecordBytes = sizeof(versionRecord) - 1;
    EXPECT_EQ(versionText(L"x.dll"), L"no version record");
}

/// Identities of the files that are asked for, one after the other.
std::array<BY_HANDLE_FILE_INFORMATION, 2> identities;
std::size_t asked = 0;

BOOL WINAPI tellIdentity(HANDLE, LPBY_HANDLE_FILE_INFORMATION identity) {
    *identity = identities.at(asked++ % identities.size());
    return TRUE;
}

TEST_F(ReportSection, FilesAreTheSameOnlyOnOneVolumeAndWithOneIndex) {
    const ImportOverride information("kernel32.dll", "GetFileInformationByHandle", tellIdentity);
    const std::wstring file = modulePath(nullptr);
    identities = {};
    EXPECT_TRUE(isSameFile(file, file));
    for (const auto member : {&BY_HANDLE_FILE_INFORMATION::dwVolumeSerialNumber,
                              &BY_HANDLE_FILE_INFORMATION::nFileIndexHigh,
                              &BY_HANDLE_FILE_INFORMATION::nFileIndexLow}) {
        identities = {};
        identities[1].*member = 1;
        EXPECT_FALSE(isSameFile(file, file));
    }
}

}  // namespace
