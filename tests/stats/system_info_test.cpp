#include "stats/system_info.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "framework/core/com_apartment.h"
#include "framework/drawing/sys_exception.h"
#include "standins/adl/virtual_radeon.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/core_audio/virtual_audio.h"
#include "standins/core_temp/virtual_core_temp.h"
#include "standins/nvapi/virtual_nvidia.h"
#include "standins/vendor_libraries.h"
#include "standins/xinput/virtual_gamepad.h"
#include "stats/clock_text.h"
#include "tests/stats/core_temp_cases.h"
#include "tests/stats/preloaded_library.h"
#include "tests/stats/private_memory.h"
#include "tests/support/standin_session.h"
#include "tests/support/busy_processors.h"
#include "tests/support/import_override.h"
#include "tests/support/registry_override.h"
#include "tests/support/system_local_time.h"

namespace {

using Standins::AdlCall;
using Standins::CoreTempCall;
using Standins::LoggedCall;
using Standins::NvapiCall;
using Standins::VendorLibrary;
using Standins::XinputCall;

constexpr wchar_t kMailKey[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\UnreadMail";

/// A machine with a Core Temp, a card of each vendor, a gamepad and one mail account. Which of the vendors'
/// libraries are there, each test says.
class SystemInfoMachine : public testing::Test {
protected:
    SystemInfoMachine() {
        coreTemp_.setRunning(true);
        coreTemp_.setName("Test CPU");
        coreTemp_.setFigures(usualCoreTempFigures());
        nvidia_.setGpuCount(1);
        nvidia_.setName(0, "GeForce Test");
        nvidia_.setFigures(0, {31, 64, 8'388'608, 2'097'152, 1'800'000});
        radeon_.setAdapterCount(1);
        radeon_.setName(0, "Radeon Test");
        radeon_.setFigures(0, {42, 120'000, 45'500});
        gamepads_.setConnected(0, true);
        gamepads_.setBattery(0, 3, 2);
    }

    void provide(VendorLibrary library) {
        libraries_.push_back(std::make_unique<PreloadedLibrary>(Standins::vendorLibraryPath(library)));
    }

    void provideAll() {
        provide(VendorLibrary::CoreTemp);
        provide(VendorLibrary::Nvapi);
        provide(VendorLibrary::Adl);
    }

    static void setMail(DWORD count) {
        RegistryOverride::setValue(HKEY_CURRENT_USER,
                                   std::wstring(kMailKey) + L"\\someone",
                                   L"MessageCount",
                                   REG_DWORD,
                                   &count,
                                   sizeof(count));
    }

private:
    StandinSession session_;
    Panelix::ComApartment com_;
    // No sound device, whatever the machine has.
    Standins::LoadedCoreAudio audio_;
    std::vector<std::unique_ptr<PreloadedLibrary>> libraries_;

protected:
    Standins::VirtualCoreTemp coreTemp_;
    Standins::VirtualNvidia nvidia_;
    Standins::VirtualRadeon radeon_;
    Standins::VirtualGamepads gamepads_;
};

TEST_F(SystemInfoMachine, SnapshotIsEmptyBeforeTheFirstUpdate) {
    provideAll();
    const SystemInfo info;
    EXPECT_EQ(info.cpuLoad, 0u);
    EXPECT_EQ(info.cpuTemperature, 0);
    EXPECT_FALSE(info.cpuTempFahrenheit);
    EXPECT_EQ(info.cpuName, L"");
    EXPECT_EQ(info.cpuClockText, L"");
    EXPECT_EQ(info.cpuVid, 0.0F);
    EXPECT_EQ(info.memoryLoad, 0);
    EXPECT_FALSE(info.coreTempAvailable);
    EXPECT_EQ(info.gpuStats.load, 0);
    EXPECT_FALSE(info.gpuStats.loadValid);
    EXPECT_EQ(info.unreadMail, 0);
    EXPECT_EQ(info.gamepadBattery, 0);
    EXPECT_FALSE(info.dataReady);
    EXPECT_EQ(info.timeRecord.tm_year, 0);
    EXPECT_EQ(info.timeRecord.tm_mday, 0);
    // Known from the start.
    EXPECT_TRUE(info.gpuAvailable);
    EXPECT_EQ(info.gpuName, L"GeForce Test");
}

TEST_F(SystemInfoMachine, ABusyMachineShowsInTheCpuLoad) {
    SystemInfo info;
    info.update();
    EXPECT_EQ(info.cpuLoad, 0u) << "the first sample is the reference of the next";
    const BusyProcessors busy;
    // The meter samples after more than 200 ms, the average over five samples is whole after as many.
    for (int i = 0; i < 20 && info.cpuLoad == 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(230));
        info.update();
    }
    EXPECT_GT(info.cpuLoad, 0u);
    EXPECT_LE(info.cpuLoad, 100u);
}

TEST_F(SystemInfoMachine, OneUpdateFillsTheSnapshot) {
    provideAll();
    SystemInfo info;
    info.update();
    EXPECT_TRUE(info.coreTempAvailable);
    EXPECT_EQ(info.cpuTemperature, 61);
    EXPECT_EQ(info.cpuName, L"Test CPU");
    EXPECT_EQ(info.cpuClockText, L"3600.00MHz (100.00 x 36.00)");
    EXPECT_EQ(info.cpuVid, 1.125F);
    EXPECT_EQ(info.gpuStats.load, 31);
    EXPECT_EQ(info.gpuStats.temperature, 64);
    EXPECT_EQ(info.gpuStats.memoryLoad, 75);
    EXPECT_EQ(info.gpuStats.coreClock, 1'800'000u);
    EXPECT_GT(info.memoryLoad, 0);
    EXPECT_LE(info.memoryLoad, 100);
    EXPECT_EQ(info.gamepadBattery, 4);
    EXPECT_TRUE(info.dataReady);
}

TEST_F(SystemInfoMachine, NothingToReadLeavesTheFiguresUnavailable) {
    gamepads_.setConnected(0, false);
    SystemInfo info;
    info.update();
    EXPECT_FALSE(info.coreTempAvailable);
    EXPECT_EQ(info.cpuName, L"");
    EXPECT_FALSE(info.gpuAvailable);
    EXPECT_EQ(info.gpuName, L"");
    EXPECT_FALSE(info.gpuStats.loadValid || info.gpuStats.temperatureValid || info.gpuStats.memoryLoadValid ||
                 info.gpuStats.coreClockValid);
    EXPECT_EQ(info.gamepadBattery, 0);
    EXPECT_GT(info.memoryLoad, 0);
    EXPECT_TRUE(info.dataReady);
}

TEST_F(SystemInfoMachine, NvidiaIsTriedFirst) {
    provideAll();
    const SystemInfo info;
    EXPECT_EQ(info.gpuName, L"GeForce Test");
    EXPECT_TRUE(radeon_.log().entries().empty());
}

TEST_F(SystemInfoMachine, AmdIsTakenWhenNvidiaFails) {
    provideAll();
    nvidia_.setStatus(NvapiCall::EnumPhysicalGpus, -6);
    SystemInfo info;
    EXPECT_TRUE(info.gpuAvailable);
    EXPECT_EQ(info.gpuName, L"Radeon Test");
    info.update();
    EXPECT_EQ(info.gpuStats.load, 42);
    EXPECT_EQ(info.gpuStats.temperature, 45);
    EXPECT_EQ(info.gpuStats.coreClock, 1'200'000u);
    EXPECT_TRUE(info.gpuStats.memoryLoadValid);
    // The source that failed is gone already.
    EXPECT_EQ(nvidia_.callCount(NvapiCall::Unload), 1u);
}

TEST_F(SystemInfoMachine, AmdIsTakenWithoutAnNvidiaDriver) {
    provide(VendorLibrary::Adl);
    const SystemInfo info;
    EXPECT_TRUE(info.gpuAvailable);
    EXPECT_EQ(info.gpuName, L"Radeon Test");
}

TEST_F(SystemInfoMachine, NoGpuIsLeftWhenBothFail) {
    provideAll();
    nvidia_.setStatus(NvapiCall::Initialize, -6);
    radeon_.setAdapterCount(0);
    SystemInfo info;
    EXPECT_FALSE(info.gpuAvailable);
    EXPECT_EQ(info.gpuName, L"");
    info.update();
    EXPECT_FALSE(info.gpuStats.memoryLoadValid);
    EXPECT_EQ(radeon_.callCount(AdlCall::MainControlDestroy), 1u);
}

TEST_F(SystemInfoMachine, GpuSourceGoesWithTheSampler) {
    provideAll();
    {
        const SystemInfo info;
        EXPECT_EQ(nvidia_.callCount(NvapiCall::Unload), 0u);
    }
    EXPECT_EQ(nvidia_.callCount(NvapiCall::Unload), 1u);
}

TEST_F(SystemInfoMachine, EveryFigureFollowsItsSource) {
    provideAll();
    SystemInfo info;
    info.update();
    Standins::CoreTempFigures figures = usualCoreTempFigures();
    figures.temperatures[0] = 99.0F;
    figures.speedMHz = 800.0F;
    figures.vidVolts = 0.5F;
    figures.fahrenheit = true;
    coreTemp_.setFigures(figures);
    nvidia_.setFigures(0, {1, 2, 100, 97, 4});
    gamepads_.setBattery(0, 1, 0);
    info.update();
    EXPECT_EQ(info.cpuTemperature, 99);
    EXPECT_TRUE(info.cpuTempFahrenheit);
    EXPECT_EQ(info.cpuClockText, L"800.00MHz (100.00 x 36.00)");
    EXPECT_EQ(info.cpuVid, 0.5F);
    EXPECT_EQ(info.gpuStats.load, 1);
    EXPECT_EQ(info.gpuStats.temperature, 2);
    EXPECT_EQ(info.gpuStats.memoryLoad, 3);
    EXPECT_EQ(info.gpuStats.coreClock, 4u);
    EXPECT_EQ(info.gamepadBattery, 1);
}

TEST_F(SystemInfoMachine, FiguresStayWhenCoreTempEnds) {
    provideAll();
    SystemInfo info;
    info.update();
    coreTemp_.setRunning(false);
    coreTemp_.setName("Unseen");
    info.update();
    EXPECT_FALSE(info.coreTempAvailable);
    EXPECT_EQ(info.cpuName, L"Test CPU");
    EXPECT_EQ(info.cpuTemperature, 61);
    EXPECT_EQ(info.cpuVid, 1.125F);
    EXPECT_EQ(info.cpuClockText, L"3600.00MHz (100.00 x 36.00)");
    coreTemp_.setRunning(true);
    info.update();
    EXPECT_TRUE(info.coreTempAvailable);
    EXPECT_EQ(info.cpuName, L"Unseen");
}

TEST_F(SystemInfoMachine, FailedGpuCallClearsItsFigureAgain) {
    provideAll();
    SystemInfo info;
    info.update();
    nvidia_.setStatus(NvapiCall::GpuGetThermalSettings, -1);
    info.update();
    EXPECT_EQ(info.gpuStats.temperature, 0);
    EXPECT_FALSE(info.gpuStats.temperatureValid);
    EXPECT_EQ(info.gpuStats.load, 31);
}

TEST_F(SystemInfoMachine, AllGpuFiguresGoWhenAllCallsFail) {
    provideAll();
    SystemInfo info;
    info.update();
    for (const NvapiCall call : {NvapiCall::GpuGetDynamicPstatesInfoEx,
                                 NvapiCall::GpuGetThermalSettings,
                                 NvapiCall::GpuGetMemoryInfo,
                                 NvapiCall::GpuGetAllClockFrequencies}) {
        nvidia_.setStatus(call, -1);
    }
    info.update();
    EXPECT_EQ(info.gpuStats.load, 0);
    EXPECT_EQ(info.gpuStats.temperature, 0);
    EXPECT_EQ(info.gpuStats.memoryLoad, 0);
    EXPECT_EQ(info.gpuStats.coreClock, 0u);
    EXPECT_FALSE(info.gpuStats.loadValid || info.gpuStats.temperatureValid || info.gpuStats.memoryLoadValid ||
                 info.gpuStats.coreClockValid);
    EXPECT_TRUE(info.gpuAvailable);
    EXPECT_EQ(info.gpuName, L"GeForce Test");
}

TEST_F(SystemInfoMachine, MailIsReadInEveryEleventhUpdate) {
    const RegistryOverride registry;
    setMail(7);
    SystemInfo info;
    for (int i = 0; i < 10; ++i) {
        info.update();
        EXPECT_EQ(info.unreadMail, 0) << i;
    }
    info.update();
    EXPECT_EQ(info.unreadMail, 7);
    setMail(9);
    for (int i = 0; i < 10; ++i) {
        info.update();
        EXPECT_EQ(info.unreadMail, 7) << i;
    }
    info.update();
    EXPECT_EQ(info.unreadMail, 9);
}

TEST_F(SystemInfoMachine, MailIsMinusOneForAUserWithoutTheKey) {
    const RegistryOverride registry;
    SystemInfo info;
    for (int i = 0; i < 11; ++i) {
        info.update();
    }
    EXPECT_EQ(info.unreadMail, -1);
}

int mailQueries = 0;
decltype(&RegOpenKeyExW) realOpenKey = nullptr;

LSTATUS WINAPI countMailQueries(HKEY key, LPCWSTR name, DWORD options, REGSAM access, PHKEY result) {
    mailQueries += name != nullptr && std::wstring_view(name) == kMailKey ? 1 : 0;
    return realOpenKey(key, name, options, access, result);
}

TEST_F(SystemInfoMachine, MailThatCannotBeReadIsNotAskedForMoreOften) {
    const RegistryOverride registry;
    const ImportOverride keys("ADVAPI32.dll", "RegOpenKeyExW", &countMailQueries);
    realOpenKey = keys.original<decltype(RegOpenKeyExW)>();
    SystemInfo info;
    for (int update = 1; update <= 44; ++update) {
        info.update();
        ASSERT_EQ(mailQueries, update / 11) << update;
    }
    EXPECT_EQ(info.unreadMail, -1);
    setMail(4);
    for (int update = 1; update <= 11; ++update) {
        info.update();
    }
    EXPECT_EQ(info.unreadMail, 4);
}

TEST_F(SystemInfoMachine, DataReadyIsSetByEveryUpdateAndClearedByNone) {
    SystemInfo info;
    info.update();
    EXPECT_TRUE(info.dataReady);
    info.update();
    EXPECT_TRUE(info.dataReady);
    info.dataReady = false;
    info.update();
    EXPECT_TRUE(info.dataReady);
}

TEST_F(SystemInfoMachine, UpdateAsksCoreTempThenTheGpuThenTheGamepad) {
    provideAll();
    SystemInfo info;
    coreTemp_.log().clear();
    nvidia_.log().clear();
    gamepads_.log().clear();
    info.update();
    const std::vector<LoggedCall> cpu = coreTemp_.log().entries();
    const std::vector<LoggedCall> gpu = nvidia_.log().entries();
    const std::vector<LoggedCall> gamepad = gamepads_.log().entries();
    ASSERT_FALSE(cpu.empty());
    ASSERT_FALSE(gpu.empty());
    ASSERT_FALSE(gamepad.empty());
    EXPECT_LE(cpu.back().timeUs, gpu.front().timeUs);
    EXPECT_LE(gpu.back().timeUs, gamepad.front().timeUs);
    EXPECT_EQ(cpu.back().call, static_cast<std::uint32_t>(CoreTempCall::Destructor));
    std::vector<std::uint32_t> calls;
    std::transform(
        gpu.begin(), gpu.end(), std::back_inserter(calls), [](const LoggedCall& call) { return call.call; });
    EXPECT_THAT(calls,
                testing::ElementsAre(static_cast<std::uint32_t>(NvapiCall::GpuGetDynamicPstatesInfoEx),
                                     static_cast<std::uint32_t>(NvapiCall::GpuGetThermalSettings),
                                     static_cast<std::uint32_t>(NvapiCall::GpuGetMemoryInfo),
                                     static_cast<std::uint32_t>(NvapiCall::GpuGetAllClockFrequencies)));
}

/// What one sampling pass asks, in the order in which it asks. What lies behind Core Temp's and NVIDIA's
/// libraries is noted by the next of the others, when their logs have grown.
class PassOrder {
public:
    PassOrder(Standins::VirtualCoreTemp& coreTemp, Standins::VirtualNvidia& nvidia) {
        coreTemp_ = &coreTemp;
        nvidia_ = &nvidia;
        realGetProcAddress_ = times_.original<decltype(GetProcAddress)>();
        realOpenKey_ = keys_.original<decltype(RegOpenKeyExW)>();
        realMemoryStatus_ = memory_.original<decltype(GlobalMemoryStatusEx)>();
        takeDown("beginning");
    }
    ~PassOrder() { info_ = nullptr; }
    PassOrder(const PassOrder&) = delete;
    PassOrder& operator=(const PassOrder&) = delete;

    /// The sampler whose dataReady is looked at by every note.
    static void watch(SystemInfo& info) {
        info_ = &info;
        info.dataReady = false;
        takeDown("beginning");
        notes_.clear();
    }

    static void takeDown(const std::string& what) {
        const std::size_t cpuCalls = coreTemp_->log().entries().size();
        const std::size_t gpuCalls = nvidia_->log().entries().size();
        if (cpuCalls != cpuCalls_) {
            notes_.push_back("Core Temp");
        }
        if (gpuCalls != gpuCalls_) {
            notes_.push_back("GPU");
        }
        cpuCalls_ = cpuCalls;
        gpuCalls_ = gpuCalls;
        notes_.push_back(what);
        if (info_ != nullptr && info_->dataReady) {
            notes_.push_back("data ready");
        }
    }

    static const std::vector<std::string>& notes() { return notes_; }

private:
    static BOOL WINAPI getSystemTimes(LPFILETIME idle, LPFILETIME kernel, LPFILETIME user) {
        takeDown("CPU load");
        return ::GetSystemTimes(idle, kernel, user);
    }
    static FARPROC WINAPI getProcAddress(HMODULE module, LPCSTR name) {
        if (HIWORD(reinterpret_cast<ULONG_PTR>(name)) != 0 && std::string_view(name) == "GetSystemTimes") {
            return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&getSystemTimes));
        }
        return realGetProcAddress_(module, name);
    }
    static LSTATUS WINAPI openKey(HKEY key, LPCWSTR name, DWORD options, REGSAM access, PHKEY result) {
        if (name != nullptr && std::wstring_view(name) == kMailKey) {
            takeDown("mail");
        }
        return realOpenKey_(key, name, options, access, result);
    }
    static BOOL WINAPI memoryStatus(LPMEMORYSTATUSEX status) {
        takeDown("memory");
        return realMemoryStatus_(status);
    }
    static DWORD WINAPI gamepadState(DWORD /*user*/, void* /*state*/) {
        takeDown("gamepad");
        return ERROR_SUCCESS;
    }
    static DWORD WINAPI gamepadBattery(DWORD /*user*/, BYTE /*device*/, void* /*battery*/) {
        takeDown("gamepad's battery");
        return ERROR_SUCCESS;
    }

    static inline Standins::VirtualCoreTemp* coreTemp_ = nullptr;
    static inline Standins::VirtualNvidia* nvidia_ = nullptr;
    static inline SystemInfo* info_ = nullptr;
    static inline std::size_t cpuCalls_ = 0;
    static inline std::size_t gpuCalls_ = 0;
    static inline std::vector<std::string> notes_;

    const ImportOverride times_{"KERNEL32.dll", "GetProcAddress", &getProcAddress};
    const ImportOverride keys_{"ADVAPI32.dll", "RegOpenKeyExW", &openKey};
    const ImportOverride memory_{"KERNEL32.dll", "GlobalMemoryStatusEx", &memoryStatus};
    const ImportOverride state_{"XINPUT1_4.dll", 2, &gamepadState};
    const ImportOverride battery_{"XINPUT1_4.dll", 7, &gamepadBattery};

    static inline decltype(&GetProcAddress) realGetProcAddress_ = nullptr;
    static inline decltype(&RegOpenKeyExW) realOpenKey_ = nullptr;
    static inline decltype(&GlobalMemoryStatusEx) realMemoryStatus_ = nullptr;
};

TEST_F(SystemInfoMachine, EachUpdateAsksInItsOrderAndIsReadyLast) {
    provideAll();
    const RegistryOverride registry;
    setMail(7);
    const PassOrder order(coreTemp_, nvidia_);
    SystemInfo info;
    for (int i = 0; i < 10; ++i) {
        info.update();
    }
    // The CPU load is measured when more than 200 ms have passed, the mail is read in the eleventh update.
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    PassOrder::watch(info);
    info.update();
    EXPECT_THAT(PassOrder::notes(),
                testing::ElementsAre(
                    "Core Temp", "CPU load", "GPU", "mail", "memory", "gamepad", "gamepad's battery"));
    EXPECT_TRUE(info.dataReady);
    PassOrder::takeDown("end");
    EXPECT_EQ(PassOrder::notes().at(7), "end") << "something was asked after the gamepad";
}

DWORD memoryStatusLength = 0;

// A quarter of the memory is in use, whatever the system's own percentage and the other memories say.
BOOL WINAPI quarterInUse(LPMEMORYSTATUSEX status) {
    memoryStatusLength = status->dwLength;
    *status = {.dwLength = status->dwLength,
               .dwMemoryLoad = 91,
               .ullTotalPhys = 16'000'000'000,
               .ullAvailPhys = 12'000'000'000,
               .ullTotalPageFile = 16'000'000'000,
               .ullAvailPageFile = 8'000'000'000,
               .ullTotalVirtual = 16'000'000'000,
               .ullAvailVirtual = 4'000'000'000,
               .ullAvailExtendedVirtual = 1'000'000'000};
    return TRUE;
}

TEST_F(SystemInfoMachine, MemoryIsCountedFromTheTwoTotals) {
    const ImportOverride memory("KERNEL32.dll", "GlobalMemoryStatusEx", &quarterInUse);
    SystemInfo info;
    info.update();
    EXPECT_EQ(info.memoryLoad, 25);
    EXPECT_EQ(memoryStatusLength, 64U);
}

TEST_F(SystemInfoMachine, EndsTheNoticesBeforeTheGpuSource) {
    provideAll();
    Standins::VirtualAudio audio;
    audio.addUsualDevices();
    SystemInfo{};
    std::vector<std::uint64_t> endsUs;
    for (const Standins::AudioCallEntry& call : audio.calls()) {
        if (call.call == Standins::AudioCall::UnregisterControlChangeNotify) {
            endsUs.push_back(call.timeUs);
        }
    }
    ASSERT_EQ(endsUs.size(), 2u);
    const LoggedCall unload = nvidia_.log().entries().back();
    ASSERT_EQ(unload.call, static_cast<std::uint32_t>(NvapiCall::Unload));
    EXPECT_LE(endsUs[1], unload.timeUs);
    EXPECT_EQ(audio.liveObjects(), 0);
}

TEST_F(SystemInfoMachine, TickUpdatesAtOnceAndThenEvery300Ms) {
    SystemInfo info;
    info.tickAt(1'000'000);
    EXPECT_TRUE(info.dataReady);
    info.dataReady = false;
    info.tickAt(1'000'299);
    EXPECT_FALSE(info.dataReady);
    info.tickAt(1'000'300);
    EXPECT_TRUE(info.dataReady);
}

TEST_F(SystemInfoMachine, DateTimeTextIsTheLocalTime) {
    SystemInfo info;
    // The second may change in between.
    for (int attempt = 0; attempt < 10; ++attempt) {
        const std::tm local = systemLocalTime();
        const std::wstring text = info.dateTimeText();
        if (systemLocalTime().tm_sec == local.tm_sec) {
            EXPECT_EQ(text, clockText(local));
            EXPECT_EQ(info.timeRecord.tm_sec, local.tm_sec);
            EXPECT_EQ(info.timeRecord.tm_hour, local.tm_hour);
            EXPECT_EQ(info.timeRecord.tm_year, local.tm_year);
            EXPECT_EQ(info.timeRecord.tm_yday, local.tm_yday);
            return;
        }
    }
    FAIL() << "ten readings of the clock took longer than a second each";
}

TEST_F(SystemInfoMachine, UpdatesLeakNothing) {
    constexpr int kWarmUp = 1'000;
    constexpr int kUpdates = 5'000;
    constexpr std::size_t kTolerance = 2 << 20;
    const RegistryOverride registry;
    setMail(3);
    provideAll();
    SystemInfo info;
    for (int i = 0; i < kWarmUp; ++i) {
        info.update();
    }
    const std::size_t before = privateMemoryBytes();
    for (int i = 0; i < kUpdates; ++i) {
        info.update();
    }
    EXPECT_LT(privateMemoryBytes(), before + kTolerance);
}

TEST_F(SystemInfoMachine, SamplersLeakNothing) {
    constexpr int kWarmUp = 20;
    constexpr int kSamplers = 500;
    constexpr std::size_t kTolerance = 2 << 20;
    provideAll();
    const auto makeOne = [] {
        SystemInfo info;
        info.update();
    };
    for (int i = 0; i < kWarmUp; ++i) {
        makeOne();
    }
    const std::size_t before = privateMemoryBytes();
    for (int i = 0; i < kSamplers; ++i) {
        makeOne();
    }
    EXPECT_LT(privateMemoryBytes(), before + kTolerance);
    EXPECT_EQ(nvidia_.callCount(NvapiCall::Initialize), nvidia_.callCount(NvapiCall::Unload));
    EXPECT_EQ(coreTemp_.callCount(CoreTempCall::Constructor), coreTemp_.callCount(CoreTempCall::Destructor));
}

TEST(SystemInfo, MissingDeviceEnumeratorIsFatal) {
    // Without COM on the thread there is none to be had.
    try {
        const SystemInfo info;
        FAIL() << "no exception";
    } catch (const Panelix::SysException& error) {
        EXPECT_EQ(error.title, L"System Info Error");
        EXPECT_EQ(error.message, L"Could not create Audio Device Enumerator");
    }
}

}  // namespace
