// Time of one sampling pass, whole and by step, without any of the vendors' libraries and with a stand-in of
// each. XInput's stand-in takes part when it lies beside the program and, under Wine, is marked as native.

#include <windows.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "framework/core/com_apartment.h"
#include "framework/core/unique_resource.h"
#include "standins/adl/virtual_radeon.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/core_temp/published_core_temp.h"
#include "standins/core_temp/virtual_core_temp.h"
#include "standins/nvapi/virtual_nvidia.h"
#include "standins/shared_record.h"
#include "standins/vendor_libraries.h"
#include "standins/xinput/virtual_gamepad.h"
#include "stats/core_temp_reading.h"
#include "stats/cpu_load_meter.h"
#include "stats/gamepad_battery.h"
#include "stats/gpu_amd.h"
#include "stats/gpu_nvidia.h"
#include "stats/physical_memory.h"
#include "stats/system_info.h"
#include "stats/unread_mail.h"
#include "tests/benchmark/figures.h"
#include "tests/support/registry_override.h"

namespace {

using Standins::VendorLibrary;

constexpr int kBatches = 101;
constexpr int kCallsPerBatch = 22;  // Two of them walk through the mail.
constexpr std::uint32_t kCores = 8;

// The median of many batches, each averaged over its calls.
void print(const char* what, const std::function<void()>& step) {
    std::vector<double> times;
    for (int i = 0; i < kBatches; ++i) {
        times.push_back(microseconds([&step] {
                            for (int call = 0; call < kCallsPerBatch; ++call) {
                                step();
                            }
                        }) /
                        kCallsPerBatch);
    }
    printLine(what, numberText(median(times), 2, " us"));
}

// A measurement is due at most every 201 ms, so each one is timed alone.
void printCpuMeasurement() {
    constexpr int kMeasurements = 15;
    CpuLoadMeter meter;
    std::vector<double> times;
    for (int i = 0; i < kMeasurements; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(210));
        times.push_back(microseconds([&meter] { meter.sample(); }));
    }
    printLine("CPU load, measured", numberText(median(times), 2, " us"));
    print("CPU load, not yet due", [&meter] { meter.sample(); });
}

void printUpdate(SystemInfo& info) {
    print("whole update, mean of 20 without and 2 with mail", [&info] { info.update(); });
}

void addAccounts(int count) {
    // Names of decreasing length, or the walk would end early.
    for (int i = 0; i < count; ++i) {
        const DWORD unread = 1;
        RegistryOverride::setValue(HKEY_CURRENT_USER,
                                   L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\UnreadMail\\" +
                                       std::wstring(1, static_cast<wchar_t>(L'a' + i)) +
                                       std::wstring(static_cast<std::size_t>(30 - i), L'x'),
                                   L"MessageCount",
                                   REG_DWORD,
                                   &unread,
                                   sizeof(unread));
    }
}

Standins::CoreTempFigures coreTempFigures() {
    Standins::CoreTempFigures figures;
    figures.cpuCount = 1;
    figures.coreCount = kCores;
    figures.speedMHz = 3600.0F;
    figures.busSpeedMHz = 100.0F;
    figures.multiplier = 36.0F;
    figures.temperatures.fill(50.0F);
    return figures;
}

void printWithoutAny() {
    printPart("One sampling pass, without any vendor's library");
    const RegistryOverride registry;
    SystemInfo info;
    print("Core Temp", [] { readCoreTemp(nullptr); });
    printCpuMeasurement();
    print("mail, no list", [] { readUnreadMail(); });
    print("memory", [] { readPhysicalMemoryPercent(); });
    print("gamepad, none", [] { readGamepadBattery(); });
    printUpdate(info);
}

Panelix::UniqueModule load(VendorLibrary library) {
    Panelix::UniqueModule module(LoadLibraryW(Standins::vendorLibraryPath(library).c_str()));
    if (!module) {
        printLine("a stand-in is missing", "error " + std::to_string(GetLastError()));
    }
    return module;
}

void printCoreTemp() {
    const std::unique_ptr<const CoreTempLibrary> library = CoreTempLibrary::load();
    print("Core Temp's library, 8 cores", [&library] { readCoreTemp(library.get()); });
    Standins::PublishedCoreTemp published(Standins::CoreTempMapping::Original);
    published.setFigures(coreTempFigures());
    published.setName("Benchmark CPU");
    print("Core Temp's original mapping, 8 cores", [] { readCoreTemp(nullptr); });
}

template <typename Vendor>
void printGpu(const char* what) {
    Vendor gpu;
    if (gpu.initialise()) {
        print(what, [&gpu] { gpu.sample(); });
    } else {
        printLine(what, "did not start");
    }
}

void printWithAll() {
    printPart("One sampling pass, with a stand-in for each library");
    const RegistryOverride registry;
    addAccounts(3);
    Standins::VirtualCoreTemp coreTemp;
    coreTemp.setRunning(true);
    coreTemp.setName("Benchmark CPU");
    coreTemp.setFigures(coreTempFigures());
    Standins::VirtualNvidia nvidia;
    nvidia.setGpuCount(1);
    nvidia.setFigures(0, {31, 64, 8'388'608, 2'097'152, 1'800'000});
    Standins::VirtualRadeon radeon;
    radeon.setAdapterCount(1);
    Standins::VirtualGamepads gamepads;
    gamepads.setConnected(0, true);
    const Panelix::UniqueModule modules[] = {
        load(VendorLibrary::CoreTemp), load(VendorLibrary::Nvapi), load(VendorLibrary::Adl)};

    SystemInfo info;
    printCoreTemp();
    printGpu<GpuNvidia>("NVIDIA");
    printGpu<GpuAmd>("AMD");
    print("mail, 3 accounts", [] { readUnreadMail(); });
    print("memory", [] { readPhysicalMemoryPercent(); });
    print("gamepad", [] { readGamepadBattery(); });
    if (gamepads.callCount(Standins::XinputCall::GetState) == 0) {
        printLine("the gamepad was that of the system's own XInput", "-");
    }
    printUpdate(info);
    print("date and time text", [&info] { info.dateTimeText(); });
}

}  // namespace

int main() {
    Standins::useOwnSession();
    const Panelix::ComApartment com;
    const Standins::LoadedCoreAudio audio;
    printWithoutAny();
    printWithAll();
    return 0;
}
