#include "stats/cpu_load_meter.h"

#include <algorithm>

#include "framework/core/exported_function.h"

namespace {

constexpr ULONG kProcessorPerformanceInformation = 8;

struct SamplingState {
    std::uint32_t lastTickMs = 0;
    std::int32_t lastResult = 0;
    CpuLoadAverage average;
};

// One per process: a second meter goes on where the first one is.
SamplingState samplingState;

std::int64_t ticksOf(const FILETIME& time) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.dwHighDateTime) << 32 |
                                     time.dwLowDateTime);
}

}  // namespace

CpuLoadMeter::CpuLoadMeter()
    : CpuLoadMeter(GetModuleHandleW(L"kernel32.dll"), GetModuleHandleW(L"ntdll.dll")) {}

CpuLoadMeter::CpuLoadMeter(HMODULE kernel32, HMODULE ntdll)
    : getSystemTimes_(Panelix::exportedFunction<GetSystemTimesFunction>(kernel32, "GetSystemTimes")) {
    if (getSystemTimes_ == nullptr) {
        querySystemInformation_ =
            Panelix::exportedFunction<QuerySystemInformationFunction>(ntdll, "NtQuerySystemInformation");
        prepareProcessorBuffer();
    }
    samplingState.lastTickMs = GetTickCount();
}

void CpuLoadMeter::prepareProcessorBuffer() {
    if (querySystemInformation_ == nullptr) {
        return;
    }
    ULONG size = 0;
    querySystemInformation_(kProcessorPerformanceInformation, nullptr, 0, &size);
    processorBuffer_.resize(size / sizeof(ProcessorPerformanceRecord));
}

CpuTimes CpuLoadMeter::readSystemTimes() {
    if (getSystemTimes_ == nullptr) {
        return readProcessorTimes();
    }
    FILETIME idle{};
    FILETIME kernel{};
    FILETIME user{};
    getSystemTimes_(&idle, &kernel, &user);
    return {ticksOf(idle), ticksOf(kernel), ticksOf(user)};
}

CpuTimes CpuLoadMeter::readProcessorTimes() {
    if (processorBuffer_.empty()) {
        return {};
    }
    const auto size = static_cast<ULONG>(processorBuffer_.size() * sizeof(ProcessorPerformanceRecord));
    ULONG returned = size;
    if (querySystemInformation_(kProcessorPerformanceInformation, processorBuffer_.data(), size, &returned) !=
        0) {
        return {};
    }
    // The answer is never trusted beyond the buffer.
    const std::size_t count =
        std::min<std::size_t>(returned / sizeof(ProcessorPerformanceRecord), processorBuffer_.size());
    return averageCpuTimes({processorBuffer_.data(), count});
}

std::uint16_t CpuLoadMeter::sample() {
    SamplingState& state = samplingState;
    if (cpuSampleIsDue(GetTickCount(), state.lastTickMs)) {
        FILETIME now{};
        GetSystemTimeAsFileTime(&now);
        FILETIME created{};
        FILETIME ended{};
        FILETIME processKernel{};
        FILETIME processUser{};
        const CpuTimes system = readSystemTimes();
        GetProcessTimes(GetCurrentProcess(), &created, &ended, &processKernel, &processUser);
        state.lastResult =
            state.average.add({ticksOf(now), system, ticksOf(processKernel), ticksOf(processUser)});
        state.lastTickMs = GetTickCount();
    }
    // The counters are not read at one moment: an idle machine may come out slightly below 0.
    return static_cast<std::uint16_t>(std::max(state.lastResult, 0));
}
