#include "stats/cpu_load_meter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <thread>
#include <vector>

#include "tests/support/busy_processors.h"

namespace {

// A machine of two processors, whose times the tests set. This program exports the functions that report
// them, so that it can stand in for kernel32 or ntdll.
struct Machine {
    std::array<CpuTimes, 2> processors;
    int systemTimesCalls = 0;
    int queries = 0;
    bool refuses = false;
    // Processors that the answer claims to have, beyond those that there are.
    std::size_t claimedMore = 0;
} machine;

FILETIME fileTime(std::int64_t ticks) {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

constexpr LONG kLengthMismatch = static_cast<LONG>(0xC0000004);
constexpr ULONG kRecordBytes = 48;

}  // namespace

extern "C" {

// Under the exports' names, but not as the functions of that name in this program.
__declspec(dllexport) BOOL WINAPI scriptedSystemTimes(FILETIME*, FILETIME*, FILETIME*) asm("GetSystemTimes");
__declspec(dllexport) LONG NTAPI scriptedQuery(ULONG, void*, ULONG, ULONG*) asm("NtQuerySystemInformation");

BOOL WINAPI scriptedSystemTimes(FILETIME* idle, FILETIME* kernel, FILETIME* user) {
    ++machine.systemTimesCalls;
    if (machine.refuses) {
        return FALSE;
    }
    CpuTimes sum;
    for (const CpuTimes& processor : machine.processors) {
        sum.idle += processor.idle;
        sum.kernel += processor.kernel;
        sum.user += processor.user;
    }
    *idle = fileTime(sum.idle);
    *kernel = fileTime(sum.kernel);
    *user = fileTime(sum.user);
    return TRUE;
}

LONG NTAPI scriptedQuery(ULONG infoClass, void* info, ULONG length, ULONG* returned) {
    EXPECT_EQ(infoClass, 8u);
    ++machine.queries;
    const auto needed = static_cast<ULONG>(machine.processors.size() * kRecordBytes);
    *returned = needed + static_cast<ULONG>(machine.claimedMore * kRecordBytes);
    if (length < needed) {
        return kLengthMismatch;
    }
    if (machine.refuses) {
        return kLengthMismatch;
    }
    auto* const records = static_cast<ProcessorPerformanceRecord*>(info);
    for (std::size_t i = 0; i < machine.processors.size(); ++i) {
        const CpuTimes& processor = machine.processors[i];
        records[i] = {processor.idle, processor.kernel, processor.user, {-1, -1, -1}};
    }
    return 0;
}

}  // extern "C"

namespace {

constexpr auto kTooSoon = std::chrono::milliseconds(100);
constexpr auto kDue = std::chrono::milliseconds(230);
constexpr std::int64_t kStep = 2'300'000;

HMODULE thisProgram() {
    return GetModuleHandleW(nullptr);
}

// Both processors go on for one step at these loads in percent.
void run(std::int64_t firstPercent, std::int64_t secondPercent) {
    const std::array<std::int64_t, 2> percents = {firstPercent, secondPercent};
    for (std::size_t i = 0; i < percents.size(); ++i) {
        const std::int64_t busy = kStep * percents[i] / 100;
        CpuTimes& processor = machine.processors[i];
        processor.idle += kStep - busy;
        processor.kernel += kStep - busy + busy / 4;
        processor.user += busy - busy / 4;
    }
}

std::vector<int> samplesAt(CpuLoadMeter& meter,
                           std::int64_t firstPercent,
                           std::int64_t secondPercent,
                           int count) {
    std::vector<int> samples;
    for (int i = 0; i < count; ++i) {
        run(firstPercent, secondPercent);
        std::this_thread::sleep_for(kDue);
        samples.push_back(meter.sample());
    }
    return samples;
}

TEST(CpuLoadMeter, SteadyLoadOfHalfTheMachineRampsUp) {
    CpuLoadMeter meter(thisProgram(), nullptr);
    EXPECT_THAT(samplesAt(meter, 50, 50, 7), testing::ElementsAre(0, 50, 25, 33, 37, 50, 50));
}

TEST(CpuLoadMeter, AverageBelowZeroIsZero) {
    CpuLoadMeter meter(thisProgram(), nullptr);
    EXPECT_THAT(samplesAt(meter, -8, -8, 3), testing::ElementsAre(0, 0, 0));
    // The averages go on from what was measured: slots 0 to 2, and then 0 to 3.
    EXPECT_THAT(samplesAt(meter, 50, 50, 2), testing::ElementsAre(0, (-8 + 50 - 8 + 0) / 4));
}

TEST(CpuLoadMeter, SampleRightAfterTheStartIsZero) {
    run(100, 100);
    CpuLoadMeter meter(thisProgram(), nullptr);
    EXPECT_EQ(meter.sample(), 0);
    EXPECT_EQ(machine.systemTimesCalls, 0);
}

TEST(CpuLoadMeter, CallsThatComeTooSoonGetTheLastResult) {
    // On a busy machine the pause may take so long that the next sample is due: another try then.
    for (int attempt = 0; attempt < 5; ++attempt) {
        CpuLoadMeter meter(thisProgram(), nullptr);
        const int before = samplesAt(meter, 80, 80, 2).back();
        ASSERT_GT(before, 0);
        const DWORD sampledAt = GetTickCount();
        const int calls = machine.systemTimesCalls;
        run(0, 0);
        const int atOnce = meter.sample();
        std::this_thread::sleep_for(kTooSoon);
        const int later = meter.sample();
        if (GetTickCount() - sampledAt < 200) {
            EXPECT_EQ(atOnce, before);
            EXPECT_EQ(later, before);
            EXPECT_EQ(machine.systemTimesCalls, calls);
            return;
        }
    }
    FAIL() << "the machine is too busy to tell";
}

TEST(CpuLoadMeter, SecondMeterGoesOnWhereTheFirstOneIs) {
    CpuLoadMeter first(thisProgram(), nullptr);
    ASSERT_THAT(samplesAt(first, 60, 60, 2), testing::ElementsAre(0, 60));
    CpuLoadMeter second(thisProgram(), nullptr);
    EXPECT_EQ(second.sample(), 60);
    EXPECT_THAT(samplesAt(second, 60, 60, 1), testing::ElementsAre(30));
}

TEST(CpuLoadMeter, SystemTimesThatFailReadZero) {
    machine.refuses = true;
    CpuLoadMeter meter(thisProgram(), nullptr);
    EXPECT_THAT(samplesAt(meter, 50, 50, 3), testing::ElementsAre(0, 0, 0));
}

TEST(CpuLoadMeter, ProcessorTimesAreTheFallback) {
    CpuLoadMeter meter(nullptr, thisProgram());
    // The average of both.
    EXPECT_THAT(samplesAt(meter, 100, 20, 3), testing::ElementsAre(0, 60, 30));
    EXPECT_EQ(machine.systemTimesCalls, 0);
    EXPECT_EQ(machine.queries, 4) << "one for the size, one for each sample";
}

TEST(CpuLoadMeter, SystemTimesComeFirst) {
    CpuLoadMeter meter(thisProgram(), thisProgram());
    samplesAt(meter, 50, 50, 1);
    EXPECT_EQ(machine.queries, 0);
    EXPECT_EQ(machine.systemTimesCalls, 1);
}

TEST(CpuLoadMeter, ProcessorTimesThatFailReadZero) {
    CpuLoadMeter meter(nullptr, thisProgram());
    machine.refuses = true;
    EXPECT_THAT(samplesAt(meter, 50, 50, 3), testing::ElementsAre(0, 0, 0));
}

TEST(CpuLoadMeter, AnswerLongerThanTheBufferIsCutToIt) {
    CpuLoadMeter meter(nullptr, thisProgram());
    machine.claimedMore = 1'000'000;
    EXPECT_THAT(samplesAt(meter, 100, 20, 2), testing::ElementsAre(0, 60));
}

TEST(CpuLoadMeter, NoSourceReadsZero) {
    CpuLoadMeter meter(nullptr, nullptr);
    EXPECT_THAT(samplesAt(meter, 50, 50, 3), testing::ElementsAre(0, 0, 0));
}

TEST(CpuLoadMeter, ModuleWithoutTheFunctionIsNoSource) {
    CpuLoadMeter meter(GetModuleHandleW(L"user32.dll"), GetModuleHandleW(L"user32.dll"));
    EXPECT_THAT(samplesAt(meter, 50, 50, 2), testing::ElementsAre(0, 0));
}

TEST(CpuLoadMeter, RealMachineUnderLoadShowsIt) {
    CpuLoadMeter meter;
    std::this_thread::sleep_for(kDue);
    EXPECT_EQ(meter.sample(), 0);
    {
        const BusyProcessors busy(BusyProcessors::all());
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
    }
    const int load = meter.sample();
    EXPECT_GT(load, 50);
    EXPECT_LE(load, 100);
}

}  // namespace
