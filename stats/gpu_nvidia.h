#pragma once

#include <memory>
#include <string>

#include "stats/gpu_vendor.h"
#include "stats/nvapi_library.h"

/// NVIDIA's first graphics card, through NVAPI. A driver that lacks a function counts as one whose call
/// failed. When a change of displays or cards makes the card's handle stale, the cards are enumerated anew,
/// in the same reading, or in a later one as soon as the driver lets them be.
class GpuNvidia : public GpuVendor {
public:
    GpuNvidia() = default;
    ~GpuNvidia() override;

    bool initialise() override;
    GpuStats sample() override;
    /// Empty when the driver does not tell.
    std::wstring name() override;

private:
    bool check(Nvapi::Status status, const wchar_t* context);
    Nvapi::Status findFirstGpu();
    /// Whether there is a handle; without one the cards are enumerated.
    bool hasGpu();
    template <typename Ask>
    Nvapi::Status askGpu(const Ask& ask);
    std::wstring statusText(Nvapi::Status status) const;
    void readLoad(GpuStats& stats);
    void readTemperature(GpuStats& stats);
    void readMemoryLoad(GpuStats& stats);
    void readCoreClock(GpuStats& stats);

    /// Null before initialise(), and after it when there is no driver.
    std::unique_ptr<const NvapiLibrary> library_;
    /// Null when the last enumeration gave none.
    Nvapi::GpuHandle gpuHandle_ = nullptr;
};
