#include <windows.h>

#include <audioclient.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "app/report/library_findings.h"
#include "app/report/private_names.h"
#include "app/report/report.h"
#include "app/report/report_writer.h"
#include "app/report/sections.h"
#include "app/report/system_facts.h"
#include "framework/core/com_apartment.h"
#include "framework/core/unique_resource.h"
#include "standins/adl/virtual_radeon.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/core_audio/virtual_audio.h"
#include "standins/core_temp/virtual_core_temp.h"
#include "standins/lcd_sdk/virtual_g19.h"
#include "standins/nvapi/virtual_nvidia.h"
#include "standins/vendor_libraries.h"
#include "tests/app/report/report_section.h"
#include "tests/stats/free_handles.h"
#include "tests/stats/preloaded_library.h"
#include "tests/support/denied_key.h"
#include "tests/support/import_override.h"
#include "tests/support/installation.h"
#include "tests/support/lcd_registration.h"
#include "tests/support/registry_override.h"
#include "tests/support/temporary_folder.h"

// Single sections on machines that lack or refuse something. The whole text is a test of the shipped program.

namespace {

using Standins::AdlCall;
using Standins::AudioCall;
using Standins::LcdCall;
using Standins::NvapiCall;
using Standins::VendorLibrary;
using Standins::vendorLibraryPath;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// NVIDIA

class ReportOfNvidia : public ReportSection {
protected:
    ReportOfNvidia() {
        driver.setGpuCount(1);
        driver.setName(0, "Test GPU");
        driver.setFigures(0, {30, 61, 8'388'608, 6'291'456, 1'350'000});
        driver.setErrorText("No sensor there");
    }

    Standins::VirtualNvidia driver;
};

struct NvapiFunction {
    NvapiCall call;
    const wchar_t* text;
    /// What then has no figure.
    const wchar_t* label;
};

TEST_F(ReportOfNvidia, NamesTheFunctionThatTheDriverLacksAndItsId) {
    const PreloadedLibrary library(vendorLibraryPath(VendorLibrary::Nvapi));
    const NvapiFunction functions[] = {
        {NvapiCall::Unload, L"NvAPI_Unload (id 0xD22BDD7E)", nullptr},
        {NvapiCall::GetErrorMessage, L"NvAPI_GetErrorMessage (id 0x6C2D048C)", nullptr},
        {NvapiCall::EnumPhysicalGpus, L"NvAPI_EnumPhysicalGPUs (id 0xE5AC921F)", nullptr},
        {NvapiCall::GpuGetFullName, L"NvAPI_GPU_GetFullName (id 0xCEEE8E9F)", nullptr},
        {NvapiCall::GpuGetDynamicPstatesInfoEx,
         L"NvAPI_GPU_GetDynamicPstatesInfoEx (id 0x60DED2ED)",
         L"Load"},
        {NvapiCall::GpuGetThermalSettings, L"NvAPI_GPU_GetThermalSettings (id 0xE3640A56)", L"Temperature"},
        {NvapiCall::GpuGetMemoryInfo, L"NvAPI_GPU_GetMemoryInfo (id 0x07F9B368)", L"Video memory in use"},
        {NvapiCall::GpuGetAllClockFrequencies,
         L"NvAPI_GPU_GetAllClockFrequencies (id 0xDCB616C3)",
         L"Core clock"},
    };
    for (const NvapiFunction& function : functions) {
        driver.setMissing(function.call, true);
        write(reportNvidia);
        driver.setMissing(function.call, false);
        EXPECT_THAT(text, HasSubstr(line(L"Missing entry", function.text)));
        EXPECT_EQ(text.find(L"Missing entry"), text.rfind(L"Missing entry"));
        EXPECT_THAT(text, HasSubstr(line(L"Entries", L"1 of 8 missing")));
        if (function.label != nullptr) {
            EXPECT_THAT(text, HasSubstr(line(function.label, L"no figure")));
        }
    }
    EXPECT_THAT(writer.incomplete(), IsEmpty()) << "a finding";
}

TEST_F(ReportOfNvidia, TellsTheStatusOfACallThatFailsAndTheDriversTextForIt) {
    const PreloadedLibrary library(vendorLibraryPath(VendorLibrary::Nvapi));
    driver.setStatus(NvapiCall::GpuGetThermalSettings, -104);
    write(reportNvidia);
    EXPECT_THAT(text,
                HasSubstr(line(L"Call for the temperature",
                               L"fails, status -104: NVAPI_NOT_SUPPORTED, \"No sensor there\"")));
    EXPECT_THAT(text, HasSubstr(line(L"Call for the load", L"works")));
    EXPECT_THAT(text, HasSubstr(line(L"Temperature", L"no figure")));
    EXPECT_THAT(text, HasSubstr(line(L"Load", L"30 %")));
}

TEST_F(ReportOfNvidia, TellsTheStatusOfEachCallInItsOwnLine) {
    const PreloadedLibrary library(vendorLibraryPath(VendorLibrary::Nvapi));
    const std::pair<NvapiCall, const wchar_t*> calls[] = {
        {NvapiCall::GpuGetFullName, L"Call for the name"},
        {NvapiCall::GpuGetDynamicPstatesInfoEx, L"Call for the load"},
        {NvapiCall::GpuGetThermalSettings, L"Call for the temperature"},
        {NvapiCall::GpuGetMemoryInfo, L"Call for the memory"},
        {NvapiCall::GpuGetAllClockFrequencies, L"Call for the clock"},
    };
    std::int32_t status = -1000;
    for (const auto& [call, label] : calls) {
        driver.setStatus(call, --status);
    }
    write(reportNvidia);
    status = -1000;
    for (const auto& [call, label] : calls) {
        EXPECT_THAT(text, HasSubstr(lineStart(label, L"fails, status " + std::to_wstring(--status) + L": ")));
    }
    EXPECT_THAT(text, HasSubstr(line(L"Start of the driver", L"works")));
    EXPECT_THAT(text, HasSubstr(line(L"List of the cards", L"works")));
    driver.setStatus(NvapiCall::EnumPhysicalGpus, -2000);
    write(reportNvidia);
    EXPECT_THAT(text, HasSubstr(line(L"Start of the driver", L"works")));
    EXPECT_THAT(text, HasSubstr(lineStart(L"List of the cards", L"fails, status -2000: ")));
}

TEST_F(ReportOfNvidia, TellsWhyTheDriverDoesNotStart) {
    const PreloadedLibrary library(vendorLibraryPath(VendorLibrary::Nvapi));
    driver.setStatus(NvapiCall::Initialize, -6);
    write(reportNvidia);
    EXPECT_THAT(text,
                HasSubstr(line(L"Start of the driver",
                               L"fails, status -6: NVAPI_NVIDIA_DEVICE_NOT_FOUND, \"No sensor there\"")));
    EXPECT_THAT(text,
                HasSubstr(line(L"Driver answers", L"no, Failed to initialize Nvidia API: No sensor there")));
}

TEST_F(ReportOfNvidia, TellsALibraryThatIsNotTheDriver) {
    const PreloadedLibrary library(vendorLibraryPath(VendorLibrary::Nvapi, "without_entry"));
    write(reportNvidia);
    EXPECT_THAT(text, HasSubstr(line(L"nvapi_QueryInterface", L"missing")));
    EXPECT_THAT(text, HasSubstr(L"NVAPI_LIBRARY_NOT_FOUND"));
}

TEST_F(ReportOfNvidia, TellsADriverWithoutCards) {
    const PreloadedLibrary library(vendorLibraryPath(VendorLibrary::Nvapi));
    driver.setGpuCount(0);
    write(reportNvidia);
    EXPECT_THAT(text, HasSubstr(line(L"List of the cards", L"works")));
    EXPECT_THAT(text, HasSubstr(line(L"Call for the load", L"not called, for want of a card")));
    EXPECT_THAT(text, HasSubstr(line(L"Load", L"no figure")));
}

// AMD

/// The library that LoadLibraryExW finds; the report's own stays in the process.
std::wstring foundLibrary;

HMODULE WINAPI loadFoundLibrary(LPCWSTR, HANDLE, DWORD) {
    return LoadLibraryW(foundLibrary.c_str());
}

class ReportOfAmd : public ReportSection {
protected:
    ReportOfAmd() {
        driver.setAdapterCount(1);
        driver.setName(0, "Radeon Test 900");
        driver.setFigures(0, {42, 120'000, 45'500});
        foundLibrary = vendorLibraryPath(VendorLibrary::Adl);
    }

    Standins::VirtualRadeon driver;
    ImportOverride loader{"kernel32.dll", "LoadLibraryExW", loadFoundLibrary};
};

TEST_F(ReportOfAmd, NamesTheEntryThatTheDriverLacks) {
    for (const std::string missing : {"ADL2_Main_Control_Create",
                                      "ADL2_Main_Control_Destroy",
                                      "ADL2_Adapter_NumberOfAdapters_Get",
                                      "ADL2_Adapter_AdapterInfoX2_Get",
                                      "ADL2_Adapter_Active_Get",
                                      "ADL2_Overdrive6_Temperature_Get",
                                      "ADL2_Overdrive6_CurrentStatus_Get"}) {
        foundLibrary = vendorLibraryPath(VendorLibrary::Adl, "without_" + missing);
        write(reportAmd);
        EXPECT_THAT(text, HasSubstr(line(L"Loaded", foundLibrary)));
        EXPECT_THAT(text, HasSubstr(line(L"Entries", L"1 of 7 missing")));
        EXPECT_THAT(text, HasSubstr(line(L"Missing entry", std::wstring(missing.begin(), missing.end()))));
        EXPECT_THAT(text, HasSubstr(line(L"Driver answers", L"no, AMD specific APIs are missing")));
    }
    EXPECT_THAT(writer.incomplete(), IsEmpty()) << "a finding";
}

TEST_F(ReportOfAmd, TellsTheResultOfEachCallInItsOwnLine) {
    driver.setStatus(AdlCall::AdapterAdapterInfoX2Get, -3);
    driver.setStatus(AdlCall::Overdrive6CurrentStatusGet, -99);
    driver.setStatus(AdlCall::Overdrive6TemperatureGet, -1);
    write(reportAmd);
    EXPECT_THAT(text, HasSubstr(line(L"Start of a session", L"works")));
    EXPECT_THAT(text, HasSubstr(line(L"Number of adapters", L"works")));
    EXPECT_THAT(text, HasSubstr(line(L"Call for the name", L"fails, result -3: ADL_ERR_INVALID_PARAM")));
    EXPECT_THAT(text, HasSubstr(line(L"Call for load and clock", L"fails, result -99")));
    EXPECT_THAT(text, HasSubstr(line(L"Call for the temperature", L"fails, result -1: ADL_ERR")));
    EXPECT_THAT(text, HasSubstr(line(L"Name", L"AMD card name failed")));
    EXPECT_THAT(text, HasSubstr(line(L"Temperature", L"no figure")));
    EXPECT_THAT(text, HasSubstr(line(L"Core clock", L"no figure")));

    driver.setStatus(AdlCall::AdapterNumberOfAdaptersGet, -5);
    write(reportAmd);
    EXPECT_THAT(text, HasSubstr(line(L"Start of a session", L"works")));
    EXPECT_THAT(text, HasSubstr(line(L"Number of adapters", L"fails, result -5: ADL_ERR_INVALID_ADL_IDX")));
    EXPECT_EQ(driver.callCount(AdlCall::MainControlCreate), 2U);
    EXPECT_EQ(driver.callCount(AdlCall::MainControlDestroy), 2U) << "each session that was started ends";

    driver.setStatus(AdlCall::MainControlCreate, -10);
    write(reportAmd);
    EXPECT_THAT(text, HasSubstr(line(L"Start of a session", L"fails, result -10: ADL_ERR_DISABLED_ADAPTER")));
    EXPECT_THAT(text, HasSubstr(line(L"Number of adapters", L"not called, for want of a session")));
}

TEST_F(ReportOfAmd, GarbageStaysInItsLine) {
    driver.setAdapterCount(2'147'483'647);
    driver.setName(0, std::string(256, '\n'));
    driver.setFigures(0, {-2'147'483'647, -1, 2'147'483'647});
    write(reportAmd);
    EXPECT_THAT(text, HasSubstr(line(L"Adapters", L"2147483647")));
    EXPECT_THAT(text, HasSubstr(line(L"Name", std::wstring(256, L'?'))));
    EXPECT_THAT(text, HasSubstr(line(L"Load", L"-2147483647 %")));
    EXPECT_THAT(text, HasSubstr(line(L"Temperature", L"2147483 \u00B0C")));
}

// Core Temp

class ReportOfCoreTemp : public ReportSection {};

TEST_F(ReportOfCoreTemp, NamesTheMemberThatTheLibraryLacks) {
    const std::pair<const char*, const wchar_t*> members[] = {
        {"Constructor", L"??0"},
        {"Destructor", L"??1"},
        {"GetData", L"?GetData"},
        {"IsFahrenheit", L"?IsFahrenheit"},
        {"GetCPUName", L"?GetCPUName"},
        {"GetCPUSpeed", L"?GetCPUSpeed"},
        {"GetFSBSpeed", L"?GetFSBSpeed"},
        {"GetMultiplier", L"?GetMultiplier"},
        {"GetVID", L"?GetVID"},
        {"GetCPUCount", L"?GetCPUCount"},
        {"GetCoreCount", L"?GetCoreCount"},
        {"GetTemp", L"?GetTemp"},
    };
    for (const auto& [missing, decorated] : members) {
        const PreloadedLibrary library(
            vendorLibraryPath(VendorLibrary::CoreTemp, std::string("without_") + missing));
        write(reportCoreTemp);
        EXPECT_THAT(text, HasSubstr(line(L"Entries", L"1 of 12 missing")));
        EXPECT_THAT(text, HasSubstr(lineStart(L"Missing entry", decorated)));
        EXPECT_THAT(text, HasSubstr(line(L"Read through", L"the shared memory")));
    }
}

// LCD

DWORD mutexError = ERROR_SUCCESS;
DWORD mutexAccess = 0;

/// Kelvaro runs unless the error is that there is no such mutex.
HANDLE WINAPI refuseMutex(DWORD access, BOOL, LPCWSTR name) {
    EXPECT_STREQ(name, L"KELVARO_G19");
    mutexAccess = access;
    SetLastError(mutexError);
    return nullptr;
}

class ReportOfTheLcd : public ReportSection {
protected:
    ReportOfTheLcd() { mutexError = ERROR_FILE_NOT_FOUND; }

    void write(bool start) {
        ReportSection::write([&](ReportWriter& each) { reportLcd(each, start); });
    }

    RegistryOverride registry;
    Standins::VirtualG19 keyboard;
    ImportOverride mutex{"kernel32.dll", "OpenMutexW", refuseMutex};
};

TEST_F(ReportOfTheLcd, NeverStartsTheLibraryUnasked) {
    registerLcdLibrary(vendorLibraryPath(VendorLibrary::LcdSdk));
    write(false);
    EXPECT_THAT(text, HasSubstr(line(L"LogiLcdInit", L"there (needed)")));
    EXPECT_THAT(text, HasSubstr(line(L"LogiLcdColorSetText", L"there (not used)")));
    EXPECT_THAT(text, HasSubstr(line(L"Start of the library", L"not tried: only with --lcd")));
    EXPECT_THAT(keyboard.calls(), IsEmpty());
}

TEST_F(ReportOfTheLcd, StartsAndEndsTheLibraryOnceWhenAsked) {
    registerLcdLibrary(vendorLibraryPath(VendorLibrary::LcdSdk));
    write(true);
    EXPECT_THAT(text, HasSubstr(line(L"LogiLcdInit returned", L"true")));
    EXPECT_THAT(text, HasSubstr(line(L"Colour LCD connected", L"yes")));
    EXPECT_EQ(keyboard.initRecord().name, L"Kelvaro");
    std::vector<LcdCall> calls;
    for (const Standins::LcdCallEntry& entry : keyboard.calls()) {
        calls.push_back(entry.call);
    }
    EXPECT_THAT(calls, ElementsAre(LcdCall::Init, LcdCall::IsConnected, LcdCall::Shutdown));
}

int pauses = 0;
/// After so many pauses the keyboard is there.
int pausesUntilConnected = 0;
Standins::VirtualG19* keyboardThatComes = nullptr;

void WINAPI countPause(DWORD milliseconds) {
    EXPECT_EQ(milliseconds, DWORD{100});
    if (++pauses == pausesUntilConnected) {
        keyboardThatComes->setConnected(true);
    }
}

TEST_F(ReportOfTheLcd, WaitsThreeSecondsForAKeyboardThatIsSlowToCome) {
    registerLcdLibrary(vendorLibraryPath(VendorLibrary::LcdSdk));
    const ImportOverride pause("kernel32.dll", "Sleep", countPause);
    keyboardThatComes = &keyboard;
    for (const int number : {1, 30, 31}) {
        keyboard.setConnected(false);
        pauses = 0;
        pausesUntilConnected = number;
        write(true);
        EXPECT_EQ(pauses, std::min(number, 30));
        EXPECT_THAT(text, HasSubstr(line(L"Colour LCD connected", number <= 30 ? L"yes" : L"no")));
    }
}

TEST_F(ReportOfTheLcd, LeavesTheKeyboardToAKelvaroThatRuns) {
    registerLcdLibrary(vendorLibraryPath(VendorLibrary::LcdSdk));
    mutexError = ERROR_ACCESS_DENIED;
    write(true);
    EXPECT_THAT(text,
                HasSubstr(line(L"Start of the library",
                               L"not tried: Kelvaro runs and has taken the keyboard; end it first")));
    EXPECT_THAT(keyboard.calls(), IsEmpty());
}

TEST_F(ReportOfTheLcd, DoesNotEndALibraryThatRefusedToStart) {
    registerLcdLibrary(vendorLibraryPath(VendorLibrary::LcdSdk));
    keyboard.setRefuseInit(true);
    write(true);
    EXPECT_THAT(text, HasSubstr(line(L"LogiLcdInit returned", L"false: Kelvaro runs in desktop mode")));
    EXPECT_EQ(keyboard.callCount(LcdCall::Shutdown), 0U);
}

TEST_F(ReportOfTheLcd, TellsAFileThatIsNotThereOneThatIsNoLibraryAndAPathThatIsTooLong) {
    registerLcdLibrary(L"C:\\nowhere\\LogitechLcd.dll");
    write(true);
    EXPECT_THAT(text, HasSubstr(line(L"Registered library", L"C:\\nowhere\\LogitechLcd.dll")));
    EXPECT_THAT(text, HasSubstr(line(L"The file", L"not there")));
    EXPECT_THAT(text, HasSubstr(L"Loaded                      no, error "));

    const InstallationFolder folder;
    registerLcdLibrary(folder.executable());
    write(true);
    EXPECT_THAT(text, HasSubstr(line(L"The file", L"there, no version record")));
    EXPECT_THAT(text, HasSubstr(L"Loaded                      no, error "));

    registerLcdLibrary(std::wstring(260, L'x'));
    write(true);
    EXPECT_THAT(
        text,
        HasSubstr(line(L"Registered library", L"longer than a path may be, which Kelvaro does not read")));
    EXPECT_THAT(writer.incomplete(), IsEmpty()) << "findings";
}

/// A copy of the stand-in with another machine in its header.
std::wstring libraryFor(WORD machine, const TemporaryFolder& folder) {
    const std::wstring path = folder.path() + L"\\LogitechLcd" + std::to_wstring(machine) + L".dll";
    EXPECT_NE(CopyFileW(vendorLibraryPath(VendorLibrary::LcdSdk).c_str(), path.c_str(), FALSE), FALSE);
    const Panelix::UniqueFile file(CreateFileW(
        path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(file) << "error " << GetLastError();
    IMAGE_DOS_HEADER start{};
    DWORD bytes = 0;
    EXPECT_NE(ReadFile(file.get(), &start, sizeof(start), &bytes, nullptr), FALSE);
    SetFilePointer(file.get(), start.e_lfanew + static_cast<LONG>(sizeof(DWORD)), nullptr, FILE_BEGIN);
    EXPECT_NE(WriteFile(file.get(), &machine, sizeof(machine), &bytes, nullptr), FALSE);
    return path;
}

TEST_F(ReportOfTheLcd, TellsTheMachineThatALibraryIsMadeForWhenItIsAnotherOne) {
    const TemporaryFolder folder;
    const std::pair<WORD, const wchar_t*> machines[] = {
        {IMAGE_FILE_MACHINE_I386, L"x86 (32 bits)"},
        {IMAGE_FILE_MACHINE_ARM64, L"ARM64"},
        {IMAGE_FILE_MACHINE_IA64, L"machine 512"},
    };
    for (const auto& [machine, name] : machines) {
        registerLcdLibrary(libraryFor(machine, folder));
        write(true);
        EXPECT_THAT(text,
                    HasSubstr(lineStart(
                        L"Loaded",
                        L"no, it is made for " + std::wstring(name) + L" and Kelvaro for x64, error 193")));
    }
}

TEST_F(ReportSection, OfALibraryTellsTheMachineOfTheFileThatIsFoundFirst) {
    const TemporaryFolder folder;
    const std::wstring path = libraryFor(IMAGE_FILE_MACHINE_I386, folder);
    const std::wstring file = path.substr(path.find_last_of(L'\\') + 1);
    write([&](ReportWriter& each) {
        reportLibrary(each, file.c_str(), {L"C:\\nowhere", folder.path()}, nullptr, ERROR_BAD_EXE_FORMAT);
    });
    EXPECT_THAT(text, HasSubstr(lineStart(L"Loaded", L"no, it is made for x86 (32 bits) and Kelvaro")));
    write([&](ReportWriter& each) {
        reportLibrary(each, file.c_str(), {folder.path()}, nullptr, ERROR_MOD_NOT_FOUND);
    });
    EXPECT_THAT(text, HasSubstr(lineStart(L"Loaded", L"no, error 126")));
    write([&](ReportWriter& each) {
        reportLibrary(each, file.c_str(), {L"C:\\nowhere"}, nullptr, ERROR_BAD_EXE_FORMAT);
    });
    EXPECT_THAT(text, HasSubstr(lineStart(L"Loaded", L"no, error 193")));
}

TEST_F(ReportOfTheLcd, NamesTheExportThatTheLibraryLacksAndNoOther) {
    for (const std::string missing : {"LogiLcdInit",
                                      "LogiLcdIsConnected",
                                      "LogiLcdIsButtonPressed",
                                      "LogiLcdUpdate",
                                      "LogiLcdShutdown",
                                      "LogiLcdMonoSetBackground",
                                      "LogiLcdMonoSetText",
                                      "LogiLcdColorSetBackground",
                                      "LogiLcdColorSetTitle",
                                      "LogiLcdColorSetText"}) {
        const std::uint64_t starts = keyboard.callCount(LcdCall::Init);
        const std::uint64_t ends = keyboard.callCount(LcdCall::Shutdown);
        registerLcdLibrary(vendorLibraryPath(VendorLibrary::LcdSdk, "without_" + missing));
        write(true);
        EXPECT_THAT(text, HasSubstr(lineStart(std::wstring(missing.begin(), missing.end()), L"missing (")));
        EXPECT_EQ(text.find(L"missing ("), text.rfind(L"missing ("));
        EXPECT_EQ(keyboard.callCount(LcdCall::Init) - starts, missing == "LogiLcdInit" ? 0U : 1U);
        EXPECT_EQ(keyboard.callCount(LcdCall::Shutdown) - ends,
                  missing == "LogiLcdInit" || missing == "LogiLcdShutdown" ? 0U : 1U)
            << missing;
    }
}

// Mail

using RegEnumKey = decltype(RegEnumKeyExW);

class ReportOfMail : public ReportSection {
protected:
    static void addAccount(const std::wstring& name, DWORD unread) {
        RegistryOverride::setValue(
            HKEY_CURRENT_USER, key(name), L"MessageCount", REG_DWORD, &unread, sizeof(unread));
    }
    static std::wstring key(const std::wstring& name) {
        return L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\UnreadMail\\" + name;
    }

    RegistryOverride registry;
};

TEST_F(ReportOfMail, CountsAccountsAndMailsWithoutAnyName) {
    addAccount(L"anna.muster@example.org", 3);
    addAccount(L"bert@example.org", 12);
    write(reportMail);
    EXPECT_EQ(text,
              L"\nTitle\n"
              L"  Accounts                    2\n"
              L"  Unread in account 1         3\n"
              L"  Unread in account 2         12\n"
              L"  Unread, as Kelvaro counts   15\n");
}

TEST_F(ReportOfMail, TellsAnAccountWithoutACount) {
    RegistryOverride::makeKey(HKEY_CURRENT_USER, key(L"anna@example.org"));
    write(reportMail);
    EXPECT_THAT(text, HasSubstr(L"  Unread in account 1         no count, error 2"));
    EXPECT_THAT(text, HasSubstr(line(L"Unread, as Kelvaro counts", L"not available")));
    EXPECT_THAT(text, Not(HasSubstr(L"anna")));
    EXPECT_THAT(writer.incomplete(), IsEmpty());
}

TEST_F(ReportOfMail, ListsAccountsWhoseNamesBecomeLonger) {
    addAccount(L"a", 1);
    addAccount(L"b@example.org", 2);
    addAccount(L"c." + std::wstring(200, L'c') + L"@example.org", 3);
    addAccount(L"d", 4);
    write(reportMail);
    EXPECT_EQ(text,
              L"\nTitle\n"
              L"  Accounts                    4\n"
              L"  Unread in account 1         1\n"
              L"  Unread in account 2         2\n"
              L"  Unread in account 3         3\n"
              L"  Unread in account 4         4\n"
              // Kelvaro's own walk takes the length of each name as the most that the next one may have.
              L"  Unread, as Kelvaro counts   1\n");
}

TEST_F(ReportOfMail, TellsAnAccountThatMayNotBeRead) {
    addAccount(L"anna@example.org", 3);
    addAccount(L"bert@example.org", 12);
    const DeniedKey denied(key(L"anna@example.org"));
    write(reportMail);
    EXPECT_THAT(text, HasSubstr(lineStart(L"Unread in account 1", L"no count, error 5")));
    EXPECT_THAT(text, HasSubstr(line(L"Unread in account 2", L"12")));
}

DWORD accountsThatAreTold = 0;
RegEnumKey* enumerate = nullptr;

LSTATUS WINAPI refuseFurtherKeys(HKEY key,
                                 DWORD index,
                                 LPWSTR name,
                                 LPDWORD length,
                                 LPDWORD reserved,
                                 LPWSTR className,
                                 LPDWORD classLength,
                                 PFILETIME written) {
    return index < accountsThatAreTold
               ? enumerate(key, index, name, length, reserved, className, classLength, written)
               : ERROR_ACCESS_DENIED;
}

TEST_F(ReportOfMail, AListThatEndsTooSoonCouldNotBeLookedAt) {
    addAccount(L"anna@example.org", 3);
    addAccount(L"bert@example.org", 12);
    const ImportOverride enumeration("advapi32.dll", "RegEnumKeyExW", refuseFurtherKeys);
    enumerate = enumeration.original<RegEnumKey>();
    accountsThatAreTold = 1;
    write(reportMail);
    EXPECT_THAT(text, HasSubstr(line(L"Accounts", L"1")));
    EXPECT_THAT(text, HasSubstr(line(L"Unread in account 1", L"3")));
    EXPECT_THAT(text, HasSubstr(lineStart(L"Further accounts", L"could not be looked at: error 5")));
    EXPECT_THAT(writer.incomplete(), ElementsAre(L"Title"));
}

// Start with Windows

class ReportOfTheStart : public ReportSection {
protected:
    ReportOfTheStart() { RegistryOverride::makeKey(HKEY_CURRENT_USER, kRunKey); }

    static void setRun(const std::wstring& value) {
        RegistryOverride::setText(HKEY_CURRENT_USER, kRunKey, L"Kelvaro", value);
    }

    RegistryOverride registry;
};

TEST_F(ReportOfTheStart, TellsAnEntryThatPointsElsewhere) {
    const InstallationFolder folder;
    setRun(L"\"" + folder.executable() + L"\" -delay15");
    RegistryOverride::setText(HKEY_LOCAL_MACHINE, kProgramKey, L"InstallDir", folder.path());
    write(reportStart);
    EXPECT_EQ(text,
              L"\nTitle\n"
              L"  Run entry                   \"" +
                  folder.executable() +
                  L"\" -delay15\n"
                  L"  Points at Kelvaro.exe here  no, but at a file that is there\n"
                  L"  Switch in Task Manager      not there, which is on\n"
                  L"  Starts with Windows         yes\n"
                  L"  Delay                       15 s\n"
                  L"  InstallDir                  " +
                  folder.path() +
                  L"\n"
                  L"  Installed program           " +
                  folder.executable() +
                  L"\n"
                  L"  It is Kelvaro.exe here      no\n");
}

TEST_F(ReportOfTheStart, KnowsAFileByWhatItIsAndNotByHowItsPathIsWritten) {
    const InstallationFolder folder;
    const InstallationFolder other(L" other");
    std::wstring capitals = folder.executable();
    CharUpperW(capitals.data());
    EXPECT_TRUE(isSameFile(folder.executable(), capitals));
    EXPECT_TRUE(isSameFile(folder.executable(), folder.path() + L"/.\\kelvaro.exe"));
    EXPECT_FALSE(isSameFile(folder.executable(), other.executable()));
    EXPECT_FALSE(isSameFile(folder.executable(), folder.executable() + L"x"));
    EXPECT_FALSE(isSameFile(L"C:\\nowhere\\a", L"C:\\nowhere\\a"));
}

TEST_F(ReportOfTheStart, TellsAnEntryThatPointsNowhereWithOrWithoutQuotes) {
    setRun(L"\"C:\\no such folder\\Kelvaro.exe\"");
    write(reportStart);
    EXPECT_THAT(text, HasSubstr(line(L"Points at Kelvaro.exe here", L"no, and the file is not there")));
    setRun(L"C:\\nowhere\\Kelvaro.exe -delay 3");
    write(reportStart);
    EXPECT_THAT(text, HasSubstr(line(L"Points at Kelvaro.exe here", L"no, and the file is not there")));
    setRun(L"\"");
    write(reportStart);
    EXPECT_THAT(text, HasSubstr(line(L"Points at Kelvaro.exe here", L"no, and the file is not there")));
}

TEST_F(ReportOfTheStart, TellsAnEntryThatKelvaroCannotRead) {
    setRun(std::wstring(300, L'x'));
    write(reportStart);
    EXPECT_THAT(text, HasSubstr(line(L"Run entry", L"longer than 260 bytes, which Kelvaro does not read")));
    EXPECT_THAT(text, HasSubstr(line(L"Settings", L"cannot be read: the dialog shows neither of them")));
    const DWORD number = 7;
    RegistryOverride::setValue(HKEY_CURRENT_USER, kRunKey, L"Kelvaro", REG_DWORD, &number, sizeof(number));
    write(reportStart);
    EXPECT_THAT(text, HasSubstr(line(L"Run entry", L"of type 4 and not a text")));
    EXPECT_THAT(writer.incomplete(), IsEmpty());
}

TEST_F(ReportOfTheStart, AnEntryThatMayNotBeReadCouldNotBeLookedAt) {
    setRun(L"\"C:\\Kelvaro.exe\"");
    const DeniedKey denied(kRunKey);
    write(reportStart);
    EXPECT_THAT(text, HasSubstr(lineStart(L"Run entry", L"could not be looked at: error 5")));
    EXPECT_THAT(text, HasSubstr(line(L"Settings", L"cannot be read: the dialog shows neither of them")));
    EXPECT_THAT(text, HasSubstr(line(L"InstallDir", L"not there")));
    EXPECT_THAT(writer.incomplete(), ElementsAre(L"Title"));
}

TEST_F(ReportOfTheStart, AnEntryIsReadAsFarAsKelvaroReadsIt) {
    // 260 bytes with the terminator, which is read, and one more.
    setRun(std::wstring(259, L'x'));
    write(reportStart);
    EXPECT_THAT(text, HasSubstr(line(L"Run entry", std::wstring(259, L'x'))));
    EXPECT_THAT(text, HasSubstr(line(L"Starts with Windows", L"yes")));
    setRun(std::wstring(260, L'x'));
    write(reportStart);
    EXPECT_THAT(text, HasSubstr(line(L"Run entry", L"longer than 260 bytes, which Kelvaro does not read")));
}

constexpr wchar_t kSwitchesKey[] =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\StartupApproved\\Run";

void setSwitch(const std::vector<BYTE>& bytes, DWORD type = REG_BINARY) {
    RegistryOverride::setValue(
        HKEY_CURRENT_USER, kSwitchesKey, L"Kelvaro", type, bytes.data(), static_cast<DWORD>(bytes.size()));
}

TEST_F(ReportOfTheStart, TheSwitchInTaskManagerWinsOverTheEntry) {
    setRun(L"\"C:\\Kelvaro.exe\"");
    for (const BYTE off : {BYTE{1}, BYTE{3}, BYTE{7}}) {
        setSwitch({off, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8});
        write(reportStart);
        EXPECT_THAT(text, HasSubstr(line(L"Switch in Task Manager", L"off")));
        EXPECT_THAT(text, HasSubstr(line(L"Starts with Windows", L"no: it is switched off in Task Manager")));
    }
    for (const BYTE on : {BYTE{0}, BYTE{2}, BYTE{6}}) {
        setSwitch({on, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0});
        write(reportStart);
        EXPECT_THAT(text, HasSubstr(line(L"Switch in Task Manager", L"on")));
        EXPECT_THAT(text, HasSubstr(line(L"Starts with Windows", L"yes")));
    }
    setSwitch({});
    write(reportStart);
    EXPECT_THAT(text, HasSubstr(line(L"Switch in Task Manager", L"on")));
    EXPECT_THAT(writer.incomplete(), IsEmpty());
}

TEST_F(ReportOfTheStart, ASwitchOfAnotherFormIsToldAndOneThatMayNotBeReadCouldNotBeLookedAt) {
    setRun(L"\"C:\\Kelvaro.exe\"");
    for (const DWORD type : {DWORD{REG_BINARY}, DWORD{REG_SZ}}) {
        setSwitch(std::vector<BYTE>(type == REG_BINARY ? 65 : 2, 1), type);
        write(reportStart);
        EXPECT_THAT(text, HasSubstr(line(L"Switch in Task Manager", L"in a form that is not known")));
        EXPECT_THAT(text, HasSubstr(line(L"Starts with Windows", L"yes")));
    }
    EXPECT_THAT(writer.incomplete(), IsEmpty());
    const DeniedKey denied(kSwitchesKey);
    write(reportStart);
    EXPECT_THAT(text, HasSubstr(lineStart(L"Switch in Task Manager", L"could not be looked at: error 5")));
    EXPECT_THAT(writer.incomplete(), ElementsAre(L"Title"));
}

// Program

std::wstring programsPath;

DWORD WINAPI tellProgramsPath(HMODULE, LPWSTR buffer, DWORD capacity) {
    const std::size_t length = std::min<std::size_t>(programsPath.size(), capacity);
    programsPath.copy(buffer, length);
    if (length < capacity) {
        buffer[length] = L'\0';
    } else {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
    }
    return static_cast<DWORD>(length);
}

TEST_F(ReportSection, AProgramsPathIsToldToItsEnd) {
    const ImportOverride path("kernel32.dll", "GetModuleFileNameW", tellProgramsPath);
    constexpr std::size_t kShort = MAX_PATH;
    for (const std::size_t length : {kShort - 2, kShort - 1, kShort, kShort + 1, 2 * kShort, 8 * kShort}) {
        programsPath = L"C:\\folder\\";
        programsPath.append(length - programsPath.size() - 4, L'x').append(L".exe");
        ASSERT_EQ(programsPath.size(), length);
        EXPECT_EQ(modulePath(nullptr), programsPath);
        EXPECT_EQ(programFolder(), L"C:\\folder");
        // The value itself is cut.
        write(reportProgram);
        EXPECT_THAT(text,
                    HasSubstr(lineStart(L"Report", programsPath.substr(0, ReportWriter::kLongestValue))));
    }
}

TEST_F(ReportSection, AProgramWhoseMutexIsDeniedRuns) {
    const ImportOverride mutex("kernel32.dll", "OpenMutexW", refuseMutex);
    mutexError = ERROR_ACCESS_DENIED;
    write(reportProgram);
    EXPECT_THAT(text, HasSubstr(line(L"Kelvaro runs now", L"yes")));
    EXPECT_EQ(mutexAccess, DWORD{SYNCHRONIZE});
    mutexError = ERROR_FILE_NOT_FOUND;
    write(reportProgram);
    EXPECT_THAT(text, HasSubstr(line(L"Kelvaro runs now", L"no")));
}

HANDLE WINAPI denyMapping(DWORD, BOOL, LPCWSTR) {
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
}

TEST_F(ReportOfCoreTemp, TellsASharedMemoryThatIsDenied) {
    const ImportOverride mapping("kernel32.dll", "OpenFileMappingW", denyMapping);
    write(reportCoreTemp);
    EXPECT_THAT(text, HasSubstr(lineStart(L"Shared memory, extended", L"does not open, error 5")));
    EXPECT_THAT(text, HasSubstr(lineStart(L"Shared memory, original", L"does not open, error 5")));
    EXPECT_THAT(text, HasSubstr(lineStart(L"Core Temp answers", L"no: it does not run")));
}

TEST_F(ReportOfTheStart, LeavesNoKeyAndNoFileOpen) {
    const InstallationFolder folder;
    setRun(L"\"" + folder.executable() + L"\"");
    RegistryOverride::setText(HKEY_LOCAL_MACHINE, kProgramKey, L"InstallDir", folder.path());
    RegistryOverride::makeKey(HKEY_CURRENT_USER,
                              L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\UnreadMail\\anna");
    const auto writeAll = [](ReportWriter& each) {
        reportProgram(each);
        reportStart(each);
        reportMail(each);
        currentPrivateNames();
    };
    write(writeAll);
    const std::uintptr_t before = greatestOfNextHandles();
    for (int i = 0; i < 50; ++i) {
        write(writeAll);
    }
    EXPECT_EQ(greatestOfNextHandles(), before);
}

LSTATUS WINAPI refuseKeyA(HKEY, LPCSTR, DWORD, REGSAM, PHKEY) {
    return ERROR_ACCESS_DENIED;
}

LSTATUS WINAPI refuseKeyW(HKEY, LPCWSTR, DWORD, REGSAM, PHKEY) {
    return ERROR_ACCESS_DENIED;
}

TEST_F(ReportSection, ARegistryThatRefusesCouldNotBeLookedAt) {
    const ImportOverride narrow("advapi32.dll", "RegOpenKeyExA", refuseKeyA);
    const ImportOverride wide("advapi32.dll", "RegOpenKeyExW", refuseKeyW);
    const std::function<void(ReportWriter&)> sections[] = {
        reportStart, reportMail, reportDisplayAdapters, [](ReportWriter& each) { reportLcd(each, true); }};
    for (const auto& section : sections) {
        ReportWriter each([this](std::wstring_view part) { text += part; },
                          [](std::wstring value) { return value; });
        each.section(L"Refused", [&] { section(each); });
        EXPECT_THAT(each.incomplete(), ElementsAre(L"Refused"));
        EXPECT_THAT(text, HasSubstr(L"could not be looked at: error 5"));
        text.clear();
    }
}

// Sound

class ReportOfSound : public ReportSection {
protected:
    Panelix::ComApartment apartment;
    Standins::VirtualAudio audio;
    Standins::LoadedCoreAudio server;
};

TEST_F(ReportOfSound, TellsWhichCallFailsAndWhy) {
    audio.addUsualDevices();
    audio.setLevels(0, {.channels = {0.6F, 0.3F}, .master = 0.7F});
    write(reportSound);
    EXPECT_THAT(text, HasSubstr(line(L"Volume left", L"60 %")));
    EXPECT_THAT(text, HasSubstr(line(L"Volume right", L"30 %")));
    EXPECT_THAT(text, HasSubstr(line(L"Volume master", L"70 %")));
    EXPECT_THAT(text, HasSubstr(line(L"Speaker muted", L"no")));

    audio.failCall(AudioCall::GetMute, {.result = AUDCLNT_E_DEVICE_INVALIDATED});
    audio.failCall(AudioCall::GetChannelVolumeLevelScalar, {.result = E_NOTIMPL, .skip = 1, .times = 1});
    write(reportSound);
    EXPECT_THAT(text, HasSubstr(line(L"Volume left", L"60 %")));
    EXPECT_THAT(text, HasSubstr(L"\n  Volume right                fails, 0x80004001"));
    EXPECT_THAT(text, HasSubstr(line(L"Speaker muted", L"fails, 0x88890004: AUDCLNT_E_DEVICE_INVALIDATED")));
    EXPECT_THAT(text, HasSubstr(line(L"Default device can be set", L"yes")));
    EXPECT_THAT(writer.incomplete(), IsEmpty());
}

TEST_F(ReportOfSound, TellsDevicesThatCannotBeHad) {
    audio.addUsualDevices();
    audio.failCall(AudioCall::EnumAudioEndpoints, {.result = E_ACCESSDENIED});
    audio.failCall(AudioCall::GetDefaultAudioEndpoint, {.result = E_ACCESSDENIED});
    write(reportSound);
    EXPECT_THAT(text, HasSubstr(L"\n  Speakers                    cannot be listed, 0x80070005"));
    EXPECT_THAT(text, HasSubstr(L"\n  Default speaker             the system does not say, 0x80070005"));
}

LSTATUS registryStatus = ERROR_SUCCESS;

LSTATUS WINAPI refuseValue(HKEY, LPCWSTR, LPCWSTR, DWORD, LPDWORD, PVOID, LPDWORD) {
    return registryStatus;
}

TEST_F(ReportOfSound, TellsWhetherItsLibraryIsNotRegisteredOrCannotBeLookedAt) {
    const ImportOverride values("advapi32.dll", "RegGetValueW", refuseValue);
    registryStatus = ERROR_FILE_NOT_FOUND;
    write(reportSound);
    EXPECT_THAT(text, HasSubstr(line(L"Core Audio's library", L"not registered")));
    EXPECT_THAT(writer.incomplete(), IsEmpty());
    registryStatus = ERROR_ACCESS_DENIED;
    write(reportSound);
    EXPECT_THAT(text, HasSubstr(lineStart(L"Core Audio's library", L"could not be looked at: error 5")));
    EXPECT_THAT(writer.incomplete(), ElementsAre(L"Title"));
}

TEST_F(ReportOfSound, ListsNoMoreThanAHundredDevices) {
    audio.addUsualDevices();
    audio.setCountAnswer(4'000'000'000U);
    write(reportSound);
    EXPECT_THAT(text, HasSubstr(line(L"Speakers", L"4000000000 active")));
    EXPECT_THAT(text, HasSubstr(lineStart(L"Speaker 100", L"gone, ")));
    EXPECT_THAT(text, HasSubstr(lineStart(L"Microphone 100", L"gone, ")));
    EXPECT_THAT(text, Not(HasSubstr(L" 101 ")));
}

TEST_F(ReportOfSound, WithoutAnEnumeratorCouldNotBeLookedAt) {
    audio.failCall(AudioCall::CreateEnumerator, {.result = E_OUTOFMEMORY});
    write(reportSound);
    EXPECT_THAT(text, HasSubstr(L"\n  Devices                     could not be looked at: 0x8007000E"));
    EXPECT_THAT(writer.incomplete(), ElementsAre(L"Title"));
}

TEST_F(ReportOfSound, ChangesNothing) {
    audio.addUsualDevices();
    write([](ReportWriter& each) {
        reportSound(each);
        reportFigures(each);
    });
    EXPECT_THAT(writer.incomplete(), IsEmpty());
    EXPECT_EQ(audio.callCount(AudioCall::SetDefaultEndpoint), 0U);
    EXPECT_EQ(audio.callCount(AudioCall::SetChannelVolumeLevelScalar), 0U);
    EXPECT_EQ(audio.callCount(AudioCall::SetMute), 0U);
    EXPECT_EQ(audio.liveObjects(), 0);
}

// Figures

/// A machine whose figures change from one sample to the next: the sampler's first one is not shown.
class ReportOfFigures : public ReportOfSound {
protected:
    ReportOfFigures() {
        audio.addUsualDevices();
        nvidia.setGpuCount(1);
        nvidia.setName(0, "Test GPU");
        coreTemp.setRunning(true);
        running = this;
        sleep = pause.original<decltype(Sleep)>();
    }
    ~ReportOfFigures() override { running = nullptr; }

    static void WINAPI changeAndSleep(DWORD milliseconds) {
        running->change(++running->samples);
        sleep(milliseconds);
    }

    /// Everything is 10 times the sample's number, or a little more.
    void change(int sample) {
        const auto tens = static_cast<float>(10 * sample);
        const float scalar = tens / 100.0F + 0.002F;
        audio.setLevels(
            0, {.channels = {scalar, scalar + 0.01F}, .master = scalar + 0.02F, .muted = sample == 2});
        audio.setLevels(3, {.channels = {0.5F}, .master = 0.5F, .muted = sample == 3});
        EXPECT_TRUE(audio.settle());
        const auto number = static_cast<std::uint32_t>(10 * sample);
        nvidia.setFigures(0,
                          {number + 1,
                           static_cast<std::int32_t>(number) + 2,
                           1'000,
                           1'000 - 10 * (number + 3),
                           number + 4});
        if (sample == 3) {
            nvidia.setStatus(NvapiCall::GpuGetThermalSettings, -104);
        }
        Standins::CoreTempFigures cpu;
        cpu.cpuCount = 1;
        cpu.coreCount = 1;
        cpu.fahrenheit = sample == 3;
        cpu.speedMHz = tens + 5.0F;
        cpu.busSpeedMHz = tens + 6.0F;
        cpu.multiplier = tens + 7.0F;
        cpu.vidVolts = tens + 8.0F;
        cpu.temperatures[0] = tens + 9.0F;
        coreTemp.setFigures(cpu);
    }

    /// A line of the section's table.
    static std::wstring row(const std::wstring& label, std::wstring first, const std::wstring& second) {
        first.resize(30, L' ');
        return line(label, first + second);
    }

    static inline ReportOfFigures* running = nullptr;
    static inline decltype(Sleep)* sleep = nullptr;

    int samples = 0;
    Standins::VirtualNvidia nvidia;
    Standins::VirtualCoreTemp coreTemp;
    PreloadedLibrary nvidiaLibrary{vendorLibraryPath(VendorLibrary::Nvapi)};
    PreloadedLibrary coreTempLibrary{vendorLibraryPath(VendorLibrary::CoreTemp)};
    ImportOverride pause{"kernel32.dll", "Sleep", changeAndSleep};
};

TEST_F(ReportOfFigures, StandBesideOneAnotherInTheOrderOfTheirSamples) {
    write(reportFigures);
    EXPECT_EQ(samples, 3);
    EXPECT_THAT(text, HasSubstr(line(L"GPU", L"Test GPU")));
    EXPECT_THAT(text, HasSubstr(row(L"Sample", L"first", L"second")));
    EXPECT_THAT(text, HasSubstr(row(L"CPU clock", L"25.00MHz (26.00 x 27.00)", L"35.00MHz (36.00 x 37.00)")));
    EXPECT_THAT(text, HasSubstr(row(L"CPU voltage", L"28.000000 V", L"38.000000 V")));
    EXPECT_THAT(text, HasSubstr(row(L"CPU temperature", L"29 \u00B0C", L"39 \u00B0F")));
    EXPECT_THAT(text, HasSubstr(row(L"GPU load", L"21 %", L"31 %")));
    EXPECT_THAT(text, HasSubstr(row(L"GPU clock", L"24 kHz", L"34 kHz")));
    EXPECT_THAT(text, HasSubstr(row(L"GPU temperature", L"22 \u00B0C", L"-")));
    EXPECT_THAT(text, HasSubstr(row(L"Video memory", L"23 %", L"33 %")));
    EXPECT_THAT(text, HasSubstr(row(L"Volume left", L"20 %", L"30 %")));
    EXPECT_THAT(text, HasSubstr(row(L"Volume right", L"21 %", L"31 %")));
    EXPECT_THAT(text, HasSubstr(row(L"Volume master", L"22 %", L"32 %")));
    EXPECT_THAT(text, HasSubstr(row(L"Speaker muted", L"yes", L"no")));
    EXPECT_THAT(text, HasSubstr(row(L"Microphone muted", L"no", L"yes")));
}

// The whole

HRESULT WINAPI refuseCom(LPVOID) {
    return E_FAIL;
}

TEST_F(ReportSection, WithoutComTheReportIsIncompleteAndGoesToItsEnd) {
    const RegistryOverride registry;
    const ImportOverride com("ole32.dll", "CoInitialize", refuseCom);
    std::vector<std::wstring> lines;
    EXPECT_EQ(writeReport({}, [&](std::wstring_view each) { lines.emplace_back(each); }), kExitIncomplete);
    EXPECT_THAT(lines, testing::Contains(L"AMD"));
    EXPECT_THAT(lines,
                testing::Contains(L"  Could not be looked at      Cannot initialise COM library").Times(2));
    EXPECT_EQ(lines.back(), L"Not everything could be looked at: Sound, Figures, two samples");
}

}  // namespace
