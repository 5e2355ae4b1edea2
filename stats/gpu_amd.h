#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "stats/adl_library.h"
#include "stats/gpu_vendor.h"

/// What the latest call of each function returned; nothing before the first.
struct AmdResults {
    std::optional<int> create;
    std::optional<int> adapterCount;
    std::optional<int> adapterInfo;
    std::optional<int> status;
    std::optional<int> temperature;
};

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

    const AmdResults& results() const { return results_; }
    /// As the driver told it; 0 before initialise().
    std::int32_t adapterCount() const { return adapterCount_; }

private:
    /// Null before initialise(), and after it when there is no driver.
    std::unique_ptr<const AdlLibrary> library_;
    std::int32_t adapterCount_ = 0;
    Adl::Context context_ = nullptr;
    AmdResults results_;
};
