#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "stats/adl_library.h"
#include "stats/gpu_vendor.h"

/// AMD's first adapter, through ADL2.
class GpuAmd : public GpuVendor {
public:
    GpuAmd() = default;
    ~GpuAmd() override;

    bool initialise() override;
    /// The video memory load is always a valid 0: ADL2 tells nothing about it.
    GpuStats sample() override;
    /// "AMD card name failed" when the driver does not tell.
    std::wstring name() override;

private:
    /// Null before initialise(), and after it when there is no driver.
    std::unique_ptr<const AdlLibrary> library_;
    std::int32_t adapterCount_ = 0;
    Adl::Context context_ = nullptr;
};
