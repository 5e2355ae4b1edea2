#pragma once

#include <memory>
#include <string>

#include "stats/gpu_vendor.h"
#include "stats/nvapi_library.h"

/// NVIDIA's first graphics card, through NVAPI. A driver that lacks a function counts as one whose call
/// failed.
class GpuNvidia : public GpuVendor {
public:
    GpuNvidia() = default;
    ~GpuNvidia() override;

    bool initialise() override;
    GpuStats sample() override;
    /// Empty when the driver does not tell; lastError then says why.
    std::wstring name() override;

private:
    bool check(Nvapi::Status status, const wchar_t* context);
    std::wstring statusText(Nvapi::Status status) const;
    void readLoad(GpuStats& stats) const;
    void readTemperature(GpuStats& stats) const;
    void readMemoryLoad(GpuStats& stats) const;
    void readCoreClock(GpuStats& stats) const;

    /// Null before initialise(), and after it when there is no driver.
    std::unique_ptr<const NvapiLibrary> library_;
    Nvapi::GpuHandle gpuHandle_ = nullptr;
};
