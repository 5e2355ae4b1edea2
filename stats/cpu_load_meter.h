#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <memory>

/// CPU load of the whole machine, averaged over the last five samples. Its sampling state is one per process,
/// shared by every meter. Main thread only.
class CpuLoadMeter {
public:
    CpuLoadMeter();
    CpuLoadMeter(const CpuLoadMeter&) = delete;
    CpuLoadMeter& operator=(const CpuLoadMeter&) = delete;

    /// The load in percent. At most one measurement per 201 ms: a call that comes sooner gets the last
    /// result. The first measurement gives 0, the next ones ramp up.
    std::uint16_t sample();

private:
    using GetSystemTimesFunction = BOOL WINAPI(LPFILETIME idle, LPFILETIME kernel, LPFILETIME user);
    using QuerySystemInformationFunction = LONG NTAPI(ULONG infoClass,
                                                      PVOID info,
                                                      ULONG length,
                                                      PULONG returned);

    GetSystemTimesFunction* getSystemTimes_ = nullptr;
    QuerySystemInformationFunction* querySystemInformation_ = nullptr;
    /// Per-processor records of querySystemInformation_; unused while getSystemTimes_ is there.
    std::unique_ptr<std::byte[]> processorBuffer_;
    ULONG processorBufferSize_ = 0;
};
