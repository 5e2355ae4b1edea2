#include "stats/gpu_nvidia.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "standins/nvapi/virtual_nvidia.h"
#include "standins/vendor_libraries.h"
#include "tests/stats/preloaded_library.h"
#include "tests/support/standin_session.h"
#include "tests/support/virtual_time.h"

namespace {

using Standins::LoggedCall;
using Standins::NvapiCall;
using Standins::VendorLibrary;
using Standins::VirtualNvidia;

struct NamedCall {
    NvapiCall call;
    const char* name;
};

constexpr NamedCall kCalls[] = {
    {NvapiCall::Initialize, "Initialize"},
    {NvapiCall::Unload, "Unload"},
    {NvapiCall::GetErrorMessage, "GetErrorMessage"},
    {NvapiCall::EnumPhysicalGpus, "EnumPhysicalGPUs"},
    {NvapiCall::GpuGetFullName, "GPU_GetFullName"},
    {NvapiCall::GpuGetDynamicPstatesInfoEx, "GPU_GetDynamicPstatesInfoEx"},
    {NvapiCall::GpuGetThermalSettings, "GPU_GetThermalSettings"},
    {NvapiCall::GpuGetMemoryInfo, "GPU_GetMemoryInfo"},
    {NvapiCall::GpuGetAllClockFrequencies, "GPU_GetAllClockFrequencies"},
};

void PrintTo(const NamedCall& call, std::ostream* out) {
    *out << call.name;
}

/// A driver with one card of 31 %, 64 degrees, three quarters of its memory in use and 1.8 GHz.
class GpuNvidiaBase {
protected:
    GpuNvidiaBase() {
        driver_.setGpuCount(1);
        driver_.setName(0, "GeForce Test 9000");
        driver_.setFigures(0, {31, 64, 8'388'608, 2'097'152, 1'800'000});
        driver_.setErrorText("the driver's text");
    }

    std::vector<LoggedCall> callsOf(NvapiCall call) {
        std::vector<LoggedCall> calls;
        for (const LoggedCall& logged : driver_.log().entries()) {
            if (logged.call == static_cast<std::uint32_t>(call)) {
                calls.push_back(logged);
            }
        }
        return calls;
    }

    /// Calls that were about the card with this handle, or with any.
    std::size_t callsAbout(std::optional<std::int64_t> handle) {
        const std::vector<LoggedCall> calls = driver_.log().entries();
        return static_cast<std::size_t>(
            std::count_if(calls.begin(), calls.end(), [&handle](const LoggedCall& logged) {
                return logged.call >= static_cast<std::uint32_t>(NvapiCall::GpuGetFullName) &&
                       logged.arguments[0] == handle.value_or(logged.arguments[0]);
            }));
    }

private:
    StandinSession session_;

protected:
    VirtualNvidia driver_;
};

constexpr std::int32_t kHandleInvalidated = -10;
constexpr std::size_t kFigureCalls = 4;

bool isAnyValid(const GpuStats& stats) {
    return stats.loadValid || stats.temperatureValid || stats.memoryLoadValid || stats.coreClockValid;
}

class GpuNvidiaDriver : public GpuNvidiaBase, public testing::Test {
    PreloadedLibrary library_{Standins::vendorLibraryPath(VendorLibrary::Nvapi)};
};

void expectCardsFigures(const GpuStats& stats) {
    EXPECT_EQ(stats.load, 31);
    EXPECT_TRUE(stats.loadValid);
    EXPECT_EQ(stats.temperature, 64);
    EXPECT_TRUE(stats.temperatureValid);
    EXPECT_EQ(stats.memoryLoad, 75);
    EXPECT_TRUE(stats.memoryLoadValid);
    EXPECT_EQ(stats.coreClock, 1'800'000u);
    EXPECT_TRUE(stats.coreClockValid);
}

// Every figure of the card but that of the call that does not work.
void expectCardsFiguresWithout(NvapiCall broken, const GpuStats& stats) {
    const bool load = broken != NvapiCall::GpuGetDynamicPstatesInfoEx;
    const bool temperature = broken != NvapiCall::GpuGetThermalSettings;
    const bool memory = broken != NvapiCall::GpuGetMemoryInfo;
    const bool clock = broken != NvapiCall::GpuGetAllClockFrequencies;
    EXPECT_EQ(stats.load, load ? 31 : 0);
    EXPECT_EQ(stats.loadValid, load);
    EXPECT_EQ(stats.temperature, temperature ? 64 : 0);
    EXPECT_EQ(stats.temperatureValid, temperature);
    EXPECT_EQ(stats.memoryLoad, memory ? 75 : 0);
    EXPECT_EQ(stats.memoryLoadValid, memory);
    EXPECT_EQ(stats.coreClock, clock ? 1'800'000u : 0u);
    EXPECT_EQ(stats.coreClockValid, clock);
}

TEST_F(GpuNvidiaDriver, EveryFigureIsRead) {
    GpuNvidia gpu;
    ASSERT_TRUE(gpu.initialise());
    EXPECT_EQ(gpu.name(), L"GeForce Test 9000");
    expectCardsFigures(gpu.sample());
    EXPECT_EQ(gpu.lastError(), L"");
}

TEST_F(GpuNvidiaDriver, FiguresFollowTheCard) {
    GpuNvidia gpu;
    ASSERT_TRUE(gpu.initialise());
    gpu.sample();
    driver_.setFigures(0, {100, -7, 1000, 1000, 300'000});
    const GpuStats stats = gpu.sample();
    EXPECT_EQ(stats.load, 100);
    EXPECT_EQ(stats.temperature, -7);
    EXPECT_EQ(stats.memoryLoad, 0);
    EXPECT_TRUE(stats.memoryLoadValid);
    EXPECT_EQ(stats.coreClock, 300'000u);
}

TEST_F(GpuNvidiaDriver, OnlyTheFirstOfTwoCardsIsUsed) {
    driver_.setGpuCount(2);
    driver_.setName(1, "Second");
    driver_.setFigures(1, {99, 99, 100, 1, 99});
    GpuNvidia gpu;
    ASSERT_TRUE(gpu.initialise());
    EXPECT_EQ(gpu.name(), L"GeForce Test 9000");
    expectCardsFigures(gpu.sample());
    for (const LoggedCall& call : driver_.log().entries()) {
        EXPECT_NE(call.arguments[0], driver_.gpuHandle(1));
    }
}

TEST_F(GpuNvidiaDriver, ThereIsRoomForSixtyFourCards) {
    driver_.setGpuCount(64);
    GpuNvidia gpu;
    ASSERT_TRUE(gpu.initialise());
    expectCardsFigures(gpu.sample());
}

TEST_F(GpuNvidiaDriver, EnumerationWithoutCardsIsNotLookedAtFurther) {
    driver_.setGpuCount(0);
    GpuNvidia gpu;
    EXPECT_TRUE(gpu.initialise());
    EXPECT_EQ(gpu.name(), L"");
    EXPECT_FALSE(isAnyValid(gpu.sample()));
}

TEST_F(GpuNvidiaDriver, StaleHandleIsReplacedInTheSameReading) {
    GpuNvidia gpu;
    ASSERT_TRUE(gpu.initialise());
    gpu.sample();
    for (int change = 1; change <= 3; ++change) {
        const std::int64_t stale = driver_.gpuHandle(0);
        driver_.invalidateHandles();
        driver_.log().clear();
        expectCardsFigures(gpu.sample());
        EXPECT_NE(driver_.gpuHandle(0), stale);
        EXPECT_EQ(driver_.callCount(NvapiCall::EnumPhysicalGpus), 1u);
        EXPECT_EQ(callsAbout(stale), 1u) << "the one that is told";
        EXPECT_EQ(callsAbout(driver_.gpuHandle(0)), kFigureCalls);
        // And with the new handle no more is to be done.
        driver_.log().clear();
        expectCardsFigures(gpu.sample());
        EXPECT_EQ(driver_.callCount(NvapiCall::EnumPhysicalGpus), 0u);
    }
}

TEST_F(GpuNvidiaDriver, StaleHandleIsNotUsedWhileTheEnumerationFails) {
    for (const bool writes : {false, true}) {
        driver_.setWritesBeforeItFails(writes);
        GpuNvidia gpu;
        ASSERT_TRUE(gpu.initialise());
        driver_.invalidateHandles();
        driver_.setStatus(NvapiCall::EnumPhysicalGpus, -1);
        driver_.log().clear();
        EXPECT_FALSE(isAnyValid(gpu.sample()));
        EXPECT_EQ(callsAbout(std::nullopt), 1u) << "the one that is told";
        // Once for each reading from then on, and nothing else.
        for (std::uint64_t reading = 2; reading <= 4; ++reading) {
            EXPECT_FALSE(isAnyValid(gpu.sample()));
            EXPECT_EQ(driver_.callCount(NvapiCall::EnumPhysicalGpus), reading);
            EXPECT_EQ(callsAbout(std::nullopt), 1u);
        }
        driver_.setStatus(NvapiCall::EnumPhysicalGpus, 0);
        expectCardsFigures(gpu.sample());
        EXPECT_EQ(driver_.callCount(NvapiCall::EnumPhysicalGpus), 5u);
        expectCardsFigures(gpu.sample());
        EXPECT_EQ(driver_.callCount(NvapiCall::EnumPhysicalGpus), 5u);
    }
}

TEST_F(GpuNvidiaDriver, CardThatWasTakenAwayIsReadAgainWhenItIsBack) {
    GpuNvidia gpu;
    ASSERT_TRUE(gpu.initialise());
    driver_.invalidateHandles();
    driver_.setGpuCount(0);
    EXPECT_FALSE(isAnyValid(gpu.sample()));
    EXPECT_FALSE(isAnyValid(gpu.sample()));
    driver_.setGpuCount(1);
    expectCardsFigures(gpu.sample());
}

TEST_F(GpuNvidiaDriver, NameIsReadThroughANewHandleWhenTheFirstIsStale) {
    driver_.setWritesBeforeItFails(true);
    GpuNvidia gpu;
    ASSERT_TRUE(gpu.initialise());
    driver_.invalidateHandles();
    EXPECT_EQ(gpu.name(), L"GeForce Test 9000");
    driver_.invalidateHandles();
    driver_.setStatus(NvapiCall::EnumPhysicalGpus, -6);
    EXPECT_EQ(gpu.name(), L"");
    driver_.setStatus(NvapiCall::EnumPhysicalGpus, 0);
    EXPECT_EQ(gpu.name(), L"GeForce Test 9000");
}

TEST_F(GpuNvidiaDriver, StructuresCarryTheirVersionWords) {
    GpuNvidia gpu;
    ASSERT_TRUE(gpu.initialise());
    gpu.sample();
    const std::int64_t card = driver_.gpuHandle(0);
    const auto only = [this](NvapiCall call) {
        const std::vector<LoggedCall> calls = callsOf(call);
        EXPECT_EQ(calls.size(), 1u);
        return calls.empty() ? LoggedCall{} : calls.front();
    };
    EXPECT_THAT(only(NvapiCall::GpuGetDynamicPstatesInfoEx).arguments,
                testing::ElementsAre(card, 0x0001'0048, 0, 0, 0));
    // Sensor 0.
    EXPECT_THAT(only(NvapiCall::GpuGetThermalSettings).arguments,
                testing::ElementsAre(card, 0x0002'0044, 0, 0, 0));
    EXPECT_THAT(only(NvapiCall::GpuGetMemoryInfo).arguments,
                testing::ElementsAre(card, 0x0003'0020, 0, 0, 0));
    // Clock type 0, the current clocks, and no reserved bit.
    EXPECT_THAT(only(NvapiCall::GpuGetAllClockFrequencies).arguments,
                testing::ElementsAre(card, 0x0003'0108, 0, 0, 0));
}

TEST_F(GpuNvidiaDriver, CardWithoutMemoryHasAMemoryLoadOfZero) {
    driver_.setFigures(0, {31, 64, 0, 0, 1'800'000});
    GpuNvidia gpu;
    ASSERT_TRUE(gpu.initialise());
    EXPECT_EQ(gpu.sample().memoryLoad, 0);
    EXPECT_TRUE(gpu.sample().memoryLoadValid);
}

TEST_F(GpuNvidiaDriver, MoreFreeMemoryThanThereIsGivesZero) {
    driver_.setFigures(0, {31, 64, 1, 4'294'967'295, 1'800'000});
    GpuNvidia gpu;
    ASSERT_TRUE(gpu.initialise());
    EXPECT_EQ(gpu.sample().memoryLoad, 0);
}

TEST_F(GpuNvidiaDriver, NameThatFillsItsFieldIsTakenWhole) {
    driver_.setName(0, std::string(64, 'N'));
    GpuNvidia gpu;
    ASSERT_TRUE(gpu.initialise());
    EXPECT_EQ(gpu.name(), std::wstring(64, L'N'));
}

TEST_F(GpuNvidiaDriver, ErrorTextThatFillsItsFieldIsTakenWhole) {
    driver_.setErrorText(std::string(64, 'E'));
    driver_.setStatus(NvapiCall::Initialize, -6);
    GpuNvidia gpu;
    EXPECT_FALSE(gpu.initialise());
    EXPECT_EQ(gpu.lastError(), L"Failed to initialize Nvidia API: " + std::wstring(64, L'E'));
}

TEST_F(GpuNvidiaDriver, FailedStartShowsTheDriversText) {
    driver_.setStatus(NvapiCall::Initialize, -6);
    GpuNvidia gpu;
    EXPECT_FALSE(gpu.initialise());
    EXPECT_EQ(gpu.lastError(), L"Failed to initialize Nvidia API: the driver's text");
    ASSERT_EQ(callsOf(NvapiCall::GetErrorMessage).size(), 1u);
    EXPECT_EQ(callsOf(NvapiCall::GetErrorMessage).front().arguments[0], -6);
    EXPECT_EQ(driver_.callCount(NvapiCall::EnumPhysicalGpus), 0u);
}

TEST_F(GpuNvidiaDriver, FailedEnumerationShowsTheDriversText) {
    driver_.setStatus(NvapiCall::EnumPhysicalGpus, -6);
    GpuNvidia gpu;
    EXPECT_FALSE(gpu.initialise());
    EXPECT_EQ(gpu.lastError(), L"Failed to get primary GPU: the driver's text");
}

TEST_F(GpuNvidiaDriver, StatusNameStandsInForADriversTextThatFails) {
    driver_.setStatus(NvapiCall::GetErrorMessage, -5);
    driver_.setStatus(NvapiCall::EnumPhysicalGpus, -6);
    GpuNvidia gpu;
    EXPECT_FALSE(gpu.initialise());
    EXPECT_EQ(gpu.lastError(), L"Failed to get primary GPU: NVAPI_NVIDIA_DEVICE_NOT_FOUND");
}

TEST_F(GpuNvidiaDriver, NvapiIsUnloadedOnceAfterSuccess) {
    {
        GpuNvidia gpu;
        ASSERT_TRUE(gpu.initialise());
        EXPECT_EQ(driver_.callCount(NvapiCall::Unload), 0u);
    }
    EXPECT_EQ(driver_.callCount(NvapiCall::Initialize), 1u);
    EXPECT_EQ(driver_.callCount(NvapiCall::Unload), 1u);
}

TEST_F(GpuNvidiaDriver, NvapiIsUnloadedOnceAfterAFailedStart) {
    driver_.setStatus(NvapiCall::Initialize, -1);
    {
        GpuNvidia gpu;
        ASSERT_FALSE(gpu.initialise());
        EXPECT_EQ(driver_.callCount(NvapiCall::Unload), 0u);
        EXPECT_FALSE(isAnyValid(gpu.sample()));
        EXPECT_EQ(gpu.name(), L"");
    }
    EXPECT_EQ(driver_.callCount(NvapiCall::Unload), 1u);
    EXPECT_EQ(driver_.callCount(NvapiCall::EnumPhysicalGpus), 0u);
}

TEST_F(GpuNvidiaDriver, NvapiIsUnloadedOnceAfterAFailedEnumeration) {
    driver_.setStatus(NvapiCall::EnumPhysicalGpus, -6);
    {
        GpuNvidia gpu;
        ASSERT_FALSE(gpu.initialise());
    }
    EXPECT_EQ(driver_.callCount(NvapiCall::Initialize), 1u);
    EXPECT_EQ(driver_.callCount(NvapiCall::Unload), 1u);
}

TEST_F(GpuNvidiaDriver, SecondSourceStartsAfterTheFirstHasGone) {
    for (int source = 0; source < 3; ++source) {
        GpuNvidia gpu;
        ASSERT_TRUE(gpu.initialise());
        expectCardsFigures(gpu.sample());
    }
    EXPECT_EQ(driver_.callCount(NvapiCall::Initialize), 3u);
    EXPECT_EQ(driver_.callCount(NvapiCall::Unload), 3u);
}

constexpr NvapiCall kFigures[] = {NvapiCall::GpuGetDynamicPstatesInfoEx,
                                  NvapiCall::GpuGetThermalSettings,
                                  NvapiCall::GpuGetMemoryInfo,
                                  NvapiCall::GpuGetAllClockFrequencies};

/// A driver that is lost to the program while it runs. Readings are 300 ms apart, at virtual time.
class GpuNvidiaLostDriver : public GpuNvidiaDriver {
protected:
    GpuNvidiaLostDriver() {
        EXPECT_TRUE(gpu_->initialise());
        expectCardsFigures(gpu_->sample());
        driver_.log().clear();
    }

    GpuStats read() {
        time_.pass(VirtualTime::Milliseconds(300));
        return gpu_->sample();
    }

    std::uint64_t starts() { return driver_.callCount(NvapiCall::Initialize); }

    void failEveryFigure(std::int32_t status) {
        for (const NvapiCall call : kFigures) {
            driver_.setStatus(call, status);
        }
    }

    /// The times of Initialize, in milliseconds since the first reading of this call.
    std::vector<std::int64_t> startsDuring(std::int64_t milliseconds) {
        std::vector<std::int64_t> times;
        for (std::int64_t passed = 0; passed < milliseconds; passed += 300) {
            const std::uint64_t before = starts();
            EXPECT_FALSE(isAnyValid(read()));
            if (starts() != before) {
                times.push_back(passed);
            }
        }
        return times;
    }

    /// One Unload for each Initialize, the first of which was before the log was cleared.
    void expectBalanced() {
        gpu_.reset();
        EXPECT_EQ(driver_.callCount(NvapiCall::Unload), starts() + 1);
    }

    VirtualTime time_;
    std::unique_ptr<GpuNvidia> gpu_ = std::make_unique<GpuNvidia>();
};

/// With each status that a lost driver answers.
class GpuNvidiaLostDriverStatuses : public GpuNvidiaLostDriver,
                                    public testing::WithParamInterface<std::int32_t> {};
INSTANTIATE_TEST_SUITE_P(, GpuNvidiaLostDriverStatuses, testing::Values(-4, -6, -8), [](const auto& test) {
    return "Minus" + std::to_string(-test.param);
});

TEST_P(GpuNvidiaLostDriverStatuses, IsStartedAnewInTheSameReading) {
    for (std::uint64_t update = 1; update <= 3; ++update) {
        driver_.replaceDriver(GetParam());
        driver_.setFigures(0, {31, 64, 8'388'608, 2'097'152, 1'800'000});
        expectCardsFigures(read());
        EXPECT_EQ(starts(), update);
        EXPECT_EQ(driver_.callCount(NvapiCall::Unload), update);
        // And no more is to be done.
        driver_.setFigures(0, {50, 60, 1000, 500, 300'000});
        for (int i = 0; i < 20; ++i) {
            EXPECT_EQ(read().load, 50);
        }
        EXPECT_EQ(starts(), update);
    }
    expectBalanced();
}

TEST_P(GpuNvidiaLostDriverStatuses, IsNotStartedAnewWhileOneFigureIsRead) {
    for (const NvapiCall good : kFigures) {
        failEveryFigure(GetParam());
        driver_.setStatus(good, 0);
        for (int i = 0; i < 300; ++i) {
            EXPECT_TRUE(isAnyValid(read()));
        }
        // Another failure is life too: a card that sleeps, a call that the card does not support.
        for (const std::int32_t other : {-1, -104, -108, -220}) {
            driver_.setStatus(good, other);
            EXPECT_FALSE(isAnyValid(read()));
            EXPECT_FALSE(isAnyValid(read()));
        }
    }
    EXPECT_EQ(starts(), 0u);
    EXPECT_EQ(driver_.callCount(NvapiCall::Unload), 0u);
}

TEST_P(GpuNvidiaLostDriverStatuses, IsTriedAgainAfterPausesThatDoubleUpToAMinute) {
    driver_.replaceDriver(GetParam());
    driver_.setStatus(NvapiCall::Initialize, GetParam());
    // To the first reading after 4, 8, 16, 32, 60 and 60 seconds.
    const std::vector<std::int64_t> expected{0, 4'200, 12'300, 28'500, 60'600, 120'600, 180'600};
    EXPECT_EQ(startsDuring(200'000), expected);
    // No function of the driver's is called that it was not asked for.
    EXPECT_EQ(driver_.callCount(NvapiCall::EnumPhysicalGpus), 0u);
    driver_.setStatus(NvapiCall::Initialize, 0);
    int readings = 1;
    while (!isAnyValid(read()) && readings < 1000) {
        ++readings;
    }
    EXPECT_LE(readings, 200) << "a minute";
    expectCardsFigures(read());
    expectBalanced();
}

TEST_P(GpuNvidiaLostDriverStatuses, IsTriedAgainWhenOnlyTheListOfCardsFails) {
    driver_.replaceDriver(GetParam());
    driver_.setStatus(NvapiCall::EnumPhysicalGpus, GetParam());
    const std::vector<std::int64_t> expected{0, 4'200, 12'300};
    EXPECT_EQ(startsDuring(28'000), expected);
    driver_.setStatus(NvapiCall::EnumPhysicalGpus, 0);
    expectCardsFigures(read());
    expectBalanced();
}

TEST_P(GpuNvidiaLostDriverStatuses, IsTriedAgainWhenTheFiguresGoOnFailingAfterwards) {
    failEveryFigure(GetParam());
    const std::vector<std::int64_t> expected{0, 4'200, 12'300};
    EXPECT_EQ(startsDuring(28'000), expected);
    expectBalanced();
}

TEST_F(GpuNvidiaLostDriver, ThatComesBackAndGoesEveryTimeIsNotStartedMoreThanOnceInFourSeconds) {
    for (int reading = 0; reading < 200; ++reading) {
        failEveryFigure(reading % 2 == 0 ? -4 : 0);
        read();
    }
    // One minute.
    EXPECT_GE(starts(), 10u);
    EXPECT_LE(starts(), 15u);
    expectBalanced();
}

TEST_F(GpuNvidiaLostDriver, SleepingCardIsNoLostDriver) {
    failEveryFigure(-220);
    EXPECT_EQ(startsDuring(120'000), std::vector<std::int64_t>{});
    failEveryFigure(0);
    expectCardsFigures(read());
}

TEST_F(GpuNvidiaLostDriver, FunctionThatTheDriverLacksSaysNothing) {
    driver_.setMissing(NvapiCall::GpuGetMemoryInfo, true);
    driver_.replaceDriver(-4);
    expectCardsFiguresWithout(NvapiCall::GpuGetMemoryInfo, read());
    driver_.replaceDriver(-6);
    time_.pass(VirtualTime::Milliseconds(5'000));
    expectCardsFiguresWithout(NvapiCall::GpuGetMemoryInfo, read());
    EXPECT_EQ(starts(), 2u);
    expectBalanced();
}

TEST_F(GpuNvidiaLostDriver, FunctionsOfTheNewDriverAreAskedForAnew) {
    driver_.replaceDriver(-4);
    driver_.setMissing(NvapiCall::GpuGetThermalSettings, true);
    expectCardsFiguresWithout(NvapiCall::GpuGetThermalSettings, read());
    EXPECT_EQ(driver_.callCount(NvapiCall::GpuGetThermalSettings), 1u) << "the old one's";
}

TEST_F(GpuNvidiaLostDriver, NewDriverWithoutInitializeIsNotUnloadedAndTriedAgain) {
    driver_.replaceDriver(-4);
    driver_.setMissing(NvapiCall::Initialize, true);
    EXPECT_EQ(startsDuring(28'000), std::vector<std::int64_t>{});
    EXPECT_EQ(driver_.callCount(NvapiCall::Unload), 1u);
    driver_.setMissing(NvapiCall::Initialize, false);
    time_.pass(VirtualTime::Milliseconds(60'000));
    expectCardsFigures(read());
    expectBalanced();
}

TEST_F(GpuNvidiaLostDriver, NightInStandbyIsNoPause) {
    driver_.replaceDriver(-6);
    driver_.setStatus(NvapiCall::Initialize, -6);
    EXPECT_FALSE(isAnyValid(read()));
    time_.standBy(std::chrono::hours(8));
    EXPECT_FALSE(isAnyValid(read()));
    EXPECT_EQ(starts(), 1u);
}

class GpuNvidiaFaults : public GpuNvidiaBase, public testing::TestWithParam<NamedCall> {
    PreloadedLibrary library_{Standins::vendorLibraryPath(VendorLibrary::Nvapi)};
};

INSTANTIATE_TEST_SUITE_P(EachFunction,
                         GpuNvidiaFaults,
                         testing::ValuesIn(kCalls),
                         [](const testing::TestParamInfo<NamedCall>& tested) {
                             return std::string(tested.param.name);
                         });

TEST_P(GpuNvidiaFaults, MissingFunctionCostsItsOwnFigureOnly) {
    const NvapiCall missing = GetParam().call;
    driver_.setMissing(missing, true);
    {
        GpuNvidia gpu;
        if (missing == NvapiCall::Initialize) {
            EXPECT_FALSE(gpu.initialise());
            // A library that does not start is not asked for texts.
            EXPECT_EQ(gpu.lastError(), L"Failed to initialize Nvidia API: NVAPI_NO_IMPLEMENTATION");
        } else if (missing == NvapiCall::EnumPhysicalGpus) {
            EXPECT_FALSE(gpu.initialise());
            EXPECT_EQ(gpu.lastError(), L"Failed to get primary GPU: the driver's text");
            EXPECT_EQ(callsOf(NvapiCall::GetErrorMessage).front().arguments[0], -3);
        } else {
            EXPECT_TRUE(gpu.initialise());
            EXPECT_EQ(gpu.name(), missing == NvapiCall::GpuGetFullName ? L"" : L"GeForce Test 9000");
            expectCardsFiguresWithout(missing, gpu.sample());
        }
    }
    EXPECT_EQ(driver_.callCount(missing), 0u);
}

TEST_P(GpuNvidiaFaults, MissingTextFunctionLeavesTheStatusName) {
    driver_.setMissing(NvapiCall::GetErrorMessage, true);
    driver_.setStatus(GetParam().call, -104);
    GpuNvidia gpu;
    if (GetParam().call == NvapiCall::Initialize) {
        EXPECT_FALSE(gpu.initialise());
        EXPECT_EQ(gpu.lastError(), L"Failed to initialize Nvidia API: NVAPI_NOT_SUPPORTED");
    } else if (GetParam().call == NvapiCall::EnumPhysicalGpus) {
        EXPECT_FALSE(gpu.initialise());
        EXPECT_EQ(gpu.lastError(), L"Failed to get primary GPU: NVAPI_NOT_SUPPORTED");
    } else {
        EXPECT_TRUE(gpu.initialise());
        EXPECT_EQ(gpu.lastError(), L"");
    }
}

// What is left when one call fails with this status, whichever call it is.
void expectOutcome(VirtualNvidia& driver, NvapiCall failing, std::int32_t status) {
    driver.setStatus(failing, status);
    GpuNvidia gpu;
    if (failing == NvapiCall::Initialize || failing == NvapiCall::EnumPhysicalGpus) {
        EXPECT_FALSE(gpu.initialise());
        EXPECT_FALSE(isAnyValid(gpu.sample()));
        EXPECT_EQ(gpu.name(), L"");
        return;
    }
    EXPECT_TRUE(gpu.initialise());
    EXPECT_EQ(gpu.name(), failing == NvapiCall::GpuGetFullName ? L"" : L"GeForce Test 9000");
    expectCardsFiguresWithout(failing, gpu.sample());
    // It is there again once the call works, and not any more once it fails.
    driver.setStatus(failing, 0);
    expectCardsFigures(gpu.sample());
    driver.setStatus(failing, status);
    expectCardsFiguresWithout(failing, gpu.sample());
}

TEST_P(GpuNvidiaFaults, FailedCallCostsItsOwnFigureOnly) {
    // A driver may also go on calling a handle stale that it has just given.
    for (const std::int32_t status : {-1, kHandleInvalidated}) {
        expectOutcome(driver_, GetParam().call, status);
    }
}

TEST_P(GpuNvidiaFaults, WhatAFailedCallHasWrittenIsIgnored) {
    driver_.setWritesBeforeItFails(true);
    for (const std::int32_t status : {-1, kHandleInvalidated}) {
        expectOutcome(driver_, GetParam().call, status);
    }
}

TEST_F(GpuNvidiaDriver, TextThatAFailedCallHasWrittenIsIgnored) {
    driver_.setWritesBeforeItFails(true);
    driver_.setStatus(NvapiCall::GetErrorMessage, -5);
    driver_.setStatus(NvapiCall::EnumPhysicalGpus, -6);
    GpuNvidia gpu;
    EXPECT_FALSE(gpu.initialise());
    EXPECT_EQ(gpu.lastError(), L"Failed to get primary GPU: NVAPI_NVIDIA_DEVICE_NOT_FOUND");
}

TEST_P(GpuNvidiaFaults, PositiveStatusIsAFailureToo) {
    driver_.setStatus(GetParam().call, 1);
    GpuNvidia gpu;
    if (gpu.initialise()) {
        expectCardsFiguresWithout(GetParam().call, gpu.sample());
    } else {
        EXPECT_TRUE(GetParam().call == NvapiCall::Initialize ||
                    GetParam().call == NvapiCall::EnumPhysicalGpus);
    }
}

TEST(GpuNvidiaAbsent, NoDriverIsLibraryNotFound) {
    ASSERT_EQ(LoadLibraryW(L"nvapi64.dll"), nullptr) << "this machine has a driver";
    GpuNvidia gpu;
    EXPECT_FALSE(gpu.initialise());
    EXPECT_EQ(gpu.lastError(), L"Failed to initialize Nvidia API: NVAPI_LIBRARY_NOT_FOUND");
    EXPECT_EQ(gpu.name(), L"");
    EXPECT_FALSE(isAnyValid(gpu.sample()));
}

TEST(GpuNvidiaAbsent, LibraryWithoutItsEntryIsNotFound) {
    const PreloadedLibrary library(Standins::vendorLibraryPath(VendorLibrary::Nvapi, "without_entry"));
    GpuNvidia gpu;
    EXPECT_FALSE(gpu.initialise());
    EXPECT_EQ(gpu.lastError(), L"Failed to initialize Nvidia API: NVAPI_LIBRARY_NOT_FOUND");
}

TEST(GpuNvidiaAbsent, SourceThatWasNotInitialisedAnswersNothing) {
    GpuNvidia gpu;
    EXPECT_EQ(gpu.name(), L"");
    EXPECT_FALSE(gpu.sample().loadValid);
    EXPECT_EQ(gpu.lastError(), L"");
}

}  // namespace
