#pragma once

#include <memory>

#include "framework/core/unique_resource.h"
#include "stats/nvapi_abi.h"

/// NVAPI's functions. All but Initialize may be null: drivers differ in what they implement.
struct NvapiEntries {
    Nvapi::Initialize* Initialize = nullptr;
    Nvapi::Unload* Unload = nullptr;
    Nvapi::GetErrorMessage* GetErrorMessage = nullptr;
    Nvapi::EnumPhysicalGpus* EnumPhysicalGpus = nullptr;
    Nvapi::GpuGetFullName* GpuGetFullName = nullptr;
    Nvapi::GpuGetDynamicPstatesInfoEx* GpuGetDynamicPstatesInfoEx = nullptr;
    Nvapi::GpuGetThermalSettings* GpuGetThermalSettings = nullptr;
    Nvapi::GpuGetMemoryInfo* GpuGetMemoryInfo = nullptr;
    Nvapi::GpuGetAllClockFrequencies* GpuGetAllClockFrequencies = nullptr;
};

/// NVIDIA's driver library. It exists only with its required entries.
class NvapiLibrary {
public:
    /// Loads the library from the system folder and from nowhere else. Null when it is not there or of no
    /// use; `status` is then what NVAPI would answer to every call.
    static std::unique_ptr<const NvapiLibrary> load(Nvapi::Status& status);

    const NvapiEntries& entries() const { return entries_; }

private:
    NvapiLibrary() = default;

    Panelix::UniqueModule module_;
    NvapiEntries entries_;
};
