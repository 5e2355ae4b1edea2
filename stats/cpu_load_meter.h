#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

#include "stats/cpu_load_average.h"

/// CPU load of the whole machine, averaged over the last five samples. Its sampling state is one per process,
/// shared by every meter. Main thread only.
class CpuLoadMeter {
public:
    CpuLoadMeter();
    /// Takes the time source from these modules: "GetSystemTimes" of `kernel32`, or else
    /// "NtQuerySystemInformation" of `ntdll`. Either may be null; without any source the load reads 0. Both
    /// must stay loaded as long as the meter lives.
    CpuLoadMeter(HMODULE kernel32, HMODULE ntdll);
    CpuLoadMeter(const CpuLoadMeter&) = delete;
    CpuLoadMeter& operator=(const CpuLoadMeter&) = delete;

    /// The load in percent. At most one measurement per 201 ms: a call that comes sooner gets the last
    /// result. The first measurement gives 0, the next ones ramp up. An average below 0 is 0.
    std::uint16_t sample();

private:
    using GetSystemTimesFunction = BOOL WINAPI(LPFILETIME idle, LPFILETIME kernel, LPFILETIME user);
    using QuerySystemInformationFunction = LONG NTAPI(ULONG infoClass,
                                                      PVOID info,
                                                      ULONG length,
                                                      PULONG returned);

    void prepareProcessorBuffer();
    CpuTimes readSystemTimes();
    CpuTimes readProcessorTimes();

    GetSystemTimesFunction* getSystemTimes_ = nullptr;
    QuerySystemInformationFunction* querySystemInformation_ = nullptr;
    /// For querySystemInformation_; empty while getSystemTimes_ is there.
    std::vector<ProcessorPerformanceRecord> processorBuffer_;
};
