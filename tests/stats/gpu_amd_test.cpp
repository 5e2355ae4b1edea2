#include "stats/gpu_amd.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "standins/adl/virtual_radeon.h"
#include "standins/vendor_libraries.h"
#include "tests/stats/preloaded_library.h"
#include "tests/stats/private_memory.h"
#include "tests/support/standin_session.h"
#include "tests/support/import_override.h"

namespace {

using Standins::AdlCall;
using Standins::LoggedCall;
using Standins::VendorLibrary;
using Standins::VirtualRadeon;

/// A driver with one adapter of 42 %, 1.2 GHz and 45.5 degrees.
class GpuAmdBase {
protected:
    GpuAmdBase() {
        driver_.setAdapterCount(1);
        driver_.setName(0, "Radeon Test 900");
        driver_.setFigures(0, {42, 120'000, 45'500});
    }

    std::vector<std::int64_t> firstArgumentsOf(AdlCall call) {
        std::vector<std::int64_t> arguments;
        for (const LoggedCall& logged : driver_.log().entries()) {
            if (logged.call == static_cast<std::uint32_t>(call)) {
                arguments.push_back(logged.arguments[0]);
            }
        }
        return arguments;
    }

private:
    StandinSession session_;

protected:
    VirtualRadeon driver_;
};

void (*heapFree)(void*) = nullptr;

/// What is read after it was freed shows.
void scribbleAndFree(void* memory) {
    if (memory != nullptr) {
        std::memset(memory, 0xDD, _msize(memory));
    }
    heapFree(memory);
}

class GpuAmdDriver : public GpuAmdBase, public testing::Test {
    PreloadedLibrary library_{Standins::vendorLibraryPath(VendorLibrary::Adl)};
};

TEST_F(GpuAmdDriver, EveryFigureIsRead) {
    GpuAmd gpu;
    ASSERT_TRUE(gpu.initialise());
    EXPECT_EQ(gpu.name(), L"Radeon Test 900");
    const GpuStats stats = gpu.sample();
    EXPECT_EQ(stats.load, 42);
    EXPECT_TRUE(stats.loadValid);
    EXPECT_EQ(stats.coreClock, 1'200'000u);
    EXPECT_TRUE(stats.coreClockValid);
    EXPECT_EQ(stats.temperature, 45);
    EXPECT_TRUE(stats.temperatureValid);
    EXPECT_EQ(gpu.lastError(), L"");
}

TEST_F(GpuAmdDriver, SuccessWithoutAnyAdapterInfoGivesNoName) {
    GpuAmd gpu;
    ASSERT_TRUE(gpu.initialise());
    // The driver has nothing to allocate then and returns a null array.
    driver_.setAdapterCount(0);
    EXPECT_EQ(gpu.name(), L"AMD card name failed");
}

TEST_F(GpuAmdDriver, MemoryLoadIsAlwaysAValidZero) {
    GpuAmd gpu;
    ASSERT_TRUE(gpu.initialise());
    EXPECT_EQ(gpu.sample().memoryLoad, 0);
    EXPECT_TRUE(gpu.sample().memoryLoadValid);
    driver_.setStatus(AdlCall::Overdrive6CurrentStatusGet, -1);
    driver_.setStatus(AdlCall::Overdrive6TemperatureGet, -1);
    EXPECT_TRUE(gpu.sample().memoryLoadValid);
}

TEST_F(GpuAmdDriver, TemperatureIsTruncatedTowardZero) {
    struct Case {
        int millidegrees;
        int degrees;
    };
    GpuAmd gpu;
    ASSERT_TRUE(gpu.initialise());
    for (const Case& c : {Case{45'500, 45}, Case{45'999, 45}, Case{-500, 0}, Case{-1'999, -1}, Case{0, 0}}) {
        driver_.setFigures(0, {0, 0, c.millidegrees});
        EXPECT_EQ(gpu.sample().temperature, c.degrees) << c.millidegrees;
        EXPECT_TRUE(gpu.sample().temperatureValid);
    }
}

TEST_F(GpuAmdDriver, ClockBeyondThirtyTwoBitsIsDefined) {
    driver_.setFigures(0, {0, 0x7FFF'FFFF, 0});
    GpuAmd gpu;
    ASSERT_TRUE(gpu.initialise());
    EXPECT_EQ(gpu.sample().coreClock, 0x7FFF'FFFFu * 10u);
}

TEST_F(GpuAmdDriver, FirstOfTwoAdaptersIsUsed) {
    driver_.setAdapterCount(2);
    driver_.setName(1, "Second");
    driver_.setFigures(1, {99, 99, 99'000});
    GpuAmd gpu;
    ASSERT_TRUE(gpu.initialise());
    EXPECT_EQ(gpu.name(), L"Radeon Test 900");
    EXPECT_EQ(gpu.sample().load, 42);
    EXPECT_EQ(gpu.sample().temperature, 45);
    for (const LoggedCall& call : driver_.log().entries()) {
        if (call.call == static_cast<std::uint32_t>(AdlCall::Overdrive6CurrentStatusGet) ||
            call.call == static_cast<std::uint32_t>(AdlCall::Overdrive6TemperatureGet)) {
            EXPECT_EQ(call.arguments[1], 0);
        }
    }
    EXPECT_EQ(driver_.callCount(AdlCall::AdapterActiveGet), 0u);
}

TEST_F(GpuAmdDriver, ContextIsMadeForConnectedAdaptersWithACallback) {
    GpuAmd gpu;
    ASSERT_TRUE(gpu.initialise());
    const LoggedCall create = driver_.log().entries().front();
    EXPECT_EQ(create.call, static_cast<std::uint32_t>(AdlCall::MainControlCreate));
    EXPECT_EQ(create.arguments[0], 1);
    EXPECT_EQ(create.arguments[1], 1);
}

TEST_F(GpuAmdDriver, ContextIsDestroyedOnce) {
    {
        GpuAmd gpu;
        ASSERT_TRUE(gpu.initialise());
        EXPECT_EQ(driver_.callCount(AdlCall::MainControlDestroy), 0u);
    }
    EXPECT_THAT(firstArgumentsOf(AdlCall::MainControlDestroy), testing::ElementsAre(1));
}

TEST_F(GpuAmdDriver, NoCardIsAnErrorAndDestroysTheContextOnce) {
    for (const int count : {0, -1}) {
        driver_.log().clear();
        driver_.setAdapterCount(count);
        {
            GpuAmd gpu;
            EXPECT_FALSE(gpu.initialise());
            EXPECT_EQ(gpu.lastError(), L"ADL2: No AMD card found");
            EXPECT_EQ(driver_.callCount(AdlCall::MainControlDestroy), 1u);
        }
        EXPECT_EQ(driver_.callCount(AdlCall::MainControlDestroy), 1u);
    }
}

TEST_F(GpuAmdDriver, NameThatFillsItsFieldIsTakenWhole) {
    driver_.setName(0, std::string(256, 'N'));
    GpuAmd gpu;
    ASSERT_TRUE(gpu.initialise());
    EXPECT_EQ(gpu.name(), std::wstring(256, L'N'));
}

TEST_F(GpuAmdDriver, NameIsReadBeforeTheListIsFreed) {
    const ImportOverride scribbling("msvcrt.dll", "free", scribbleAndFree);
    heapFree = scribbling.original<decltype(scribbleAndFree)>();
    GpuAmd gpu;
    ASSERT_TRUE(gpu.initialise());
    EXPECT_EQ(gpu.name(), L"Radeon Test 900");
}

TEST_F(GpuAmdDriver, FigureIsGoneWhenItCannotBeReadAnyMore) {
    GpuAmd gpu;
    ASSERT_TRUE(gpu.initialise());
    for (int round = 0; round < 2; ++round) {
        driver_.setStatus(AdlCall::Overdrive6CurrentStatusGet, 0);
        driver_.setStatus(AdlCall::Overdrive6TemperatureGet, 0);
        GpuStats stats = gpu.sample();
        EXPECT_EQ(stats.load, 42);
        EXPECT_EQ(stats.coreClock, 1'200'000u);
        EXPECT_EQ(stats.temperature, 45);

        driver_.setStatus(AdlCall::Overdrive6CurrentStatusGet, -1);
        stats = gpu.sample();
        EXPECT_EQ(stats.load, 0);
        EXPECT_EQ(stats.coreClock, 0u);
        EXPECT_FALSE(stats.loadValid || stats.coreClockValid);
        EXPECT_TRUE(stats.temperatureValid);

        driver_.setStatus(AdlCall::Overdrive6TemperatureGet, -1);
        stats = gpu.sample();
        EXPECT_EQ(stats.temperature, 0);
        EXPECT_FALSE(stats.temperatureValid);
    }
}

TEST_F(GpuAmdDriver, ListOfAdaptersIsFreed) {
    constexpr int kWarmUp = 100;
    constexpr int kRounds = 20'000;
    constexpr std::size_t kTolerance = 2 << 20;
    driver_.setAdapterCount(4);
    GpuAmd gpu;
    ASSERT_TRUE(gpu.initialise());
    for (int i = 0; i < kWarmUp; ++i) {
        gpu.name();
    }
    const std::size_t before = privateMemoryBytes();
    for (int i = 0; i < kRounds; ++i) {
        gpu.name();
    }
    // Not freed, the lists would take 120 MiB.
    EXPECT_LT(privateMemoryBytes(), before + kTolerance);
}

struct Fault {
    AdlCall call;
    const char* name;
};

void PrintTo(const Fault& fault, std::ostream* out) {
    *out << fault.name;
}

constexpr Fault kFaults[] = {
    {AdlCall::MainControlCreate, "ADL2_Main_Control_Create"},
    {AdlCall::MainControlDestroy, "ADL2_Main_Control_Destroy"},
    {AdlCall::AdapterNumberOfAdaptersGet, "ADL2_Adapter_NumberOfAdapters_Get"},
    {AdlCall::AdapterAdapterInfoX2Get, "ADL2_Adapter_AdapterInfoX2_Get"},
    {AdlCall::AdapterActiveGet, "ADL2_Adapter_Active_Get"},
    {AdlCall::Overdrive6TemperatureGet, "ADL2_Overdrive6_Temperature_Get"},
    {AdlCall::Overdrive6CurrentStatusGet, "ADL2_Overdrive6_CurrentStatus_Get"},
};

std::string nameOf(const testing::TestParamInfo<Fault>& tested) {
    return tested.param.name;
}

class GpuAmdFaults : public GpuAmdBase, public testing::TestWithParam<Fault> {};
INSTANTIATE_TEST_SUITE_P(EachFunction, GpuAmdFaults, testing::ValuesIn(kFaults), nameOf);

TEST_P(GpuAmdFaults, MissingExportIsAnError) {
    const PreloadedLibrary library(
        Standins::vendorLibraryPath(VendorLibrary::Adl, std::string("without_") + GetParam().name));
    {
        GpuAmd gpu;
        EXPECT_FALSE(gpu.initialise());
        EXPECT_EQ(gpu.lastError(), L"AMD specific APIs are missing");
        EXPECT_EQ(gpu.name(), L"AMD card name failed");
        EXPECT_FALSE(gpu.sample().loadValid);
    }
    EXPECT_TRUE(driver_.log().entries().empty());
}

void expectFailedStart(GpuAmd& gpu, const wchar_t* error) {
    EXPECT_FALSE(gpu.initialise());
    EXPECT_EQ(gpu.lastError(), error);
}

// What is left when one call fails with this status, whichever call it is.
void expectOutcome(AdlCall failing, GpuAmd& gpu) {
    if (failing == AdlCall::MainControlCreate) {
        expectFailedStart(gpu, L"Failed to initialize ADL2 context");
        return;
    }
    if (failing == AdlCall::AdapterNumberOfAdaptersGet) {
        expectFailedStart(gpu, L"ADL2: Cannot get the number of adapters");
        return;
    }
    const bool hasTemperature = failing != AdlCall::Overdrive6TemperatureGet;
    const bool hasStatus = failing != AdlCall::Overdrive6CurrentStatusGet;
    EXPECT_TRUE(gpu.initialise());
    EXPECT_EQ(gpu.name(),
              failing == AdlCall::AdapterAdapterInfoX2Get ? L"AMD card name failed" : L"Radeon Test 900");
    const GpuStats stats = gpu.sample();
    EXPECT_EQ(stats.load, hasStatus ? 42 : 0);
    EXPECT_EQ(stats.loadValid, hasStatus);
    EXPECT_EQ(stats.coreClock, hasStatus ? 1'200'000u : 0u);
    EXPECT_EQ(stats.coreClockValid, hasStatus);
    EXPECT_EQ(stats.temperature, hasTemperature ? 45 : 0);
    EXPECT_EQ(stats.temperatureValid, hasTemperature);
    EXPECT_TRUE(stats.memoryLoadValid);
}

TEST_P(GpuAmdFaults, FailedCallHasItsOwnOutcome) {
    const PreloadedLibrary library(Standins::vendorLibraryPath(VendorLibrary::Adl));
    // ADL's positive results are qualified successes, and count as failures all the same. What a failed call
    // has written does not count.
    for (const auto& [status, writes] : {std::pair(-1, false), std::pair(1, false), std::pair(-1, true)}) {
        driver_.setWritesBeforeItFails(writes);
        driver_.log().clear();
        driver_.setStatus(GetParam().call, status);
        {
            GpuAmd gpu;
            expectOutcome(GetParam().call, gpu);
        }
        // Each context that was made is destroyed once.
        const bool made = GetParam().call != AdlCall::MainControlCreate;
        EXPECT_EQ(driver_.callCount(AdlCall::MainControlDestroy), made ? 1u : 0u);
    }
}

TEST(GpuAmdAbsent, NoDriverIsAnError) {
    ASSERT_EQ(LoadLibraryW(L"atiadlxx.dll"), nullptr) << "this machine has a driver";
    GpuAmd gpu;
    EXPECT_FALSE(gpu.initialise());
    EXPECT_EQ(gpu.lastError(), L"Could not load AMD DLL");
    EXPECT_EQ(gpu.name(), L"AMD card name failed");
    EXPECT_FALSE(gpu.sample().memoryLoadValid);
}

}  // namespace
