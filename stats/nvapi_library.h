#pragma once

#include <memory>

#include "framework/core/unique_resource.h"
#include "stats/nvapi_abi.h"

/// NVAPI's functions. Any of them may be null: drivers differ in what they implement.
struct NvapiEntries {
    Nvapi::Unload* Unload = nullptr;
    Nvapi::GetErrorMessage* GetErrorMessage = nullptr;
    Nvapi::EnumPhysicalGpus* EnumPhysicalGpus = nullptr;
    Nvapi::GpuGetFullName* GpuGetFullName = nullptr;
    Nvapi::GpuGetDynamicPstatesInfoEx* GpuGetDynamicPstatesInfoEx = nullptr;
    Nvapi::GpuGetThermalSettings* GpuGetThermalSettings = nullptr;
    Nvapi::GpuGetMemoryInfo* GpuGetMemoryInfo = nullptr;
    Nvapi::GpuGetAllClockFrequencies* GpuGetAllClockFrequencies = nullptr;
};

/// NVIDIA's driver library after Initialize. Main thread only.
class NvapiLibrary {
public:
    /// Loads the library from the system folder and from nowhere else, and calls Initialize; `status` is what
    /// that returned. After a failure there are Unload and GetErrorMessage at most. Null when Initialize
    /// cannot be called; `status` is then what NVAPI would return to every call. Once Initialize was called
    /// the library stays in the process: the driver may have threads in it that outlive Unload.
    static std::unique_ptr<NvapiLibrary> start(Nvapi::Status& status);

    /// Ends what the last Initialize has begun, calls Initialize again and asks for all functions anew: those
    /// of a driver that was replaced fail for ever. Returns what Initialize returned.
    Nvapi::Status restart();

    /// Calls Unload, if Initialize was called since the last time.
    void unload();

    /// The library's file alone, whatever it exports. Empty when it does not load; the reason is the thread's
    /// last error then.
    static Panelix::UniqueModule loadModule();

    const NvapiEntries& entries() const { return entries_; }

private:
    explicit NvapiLibrary(Nvapi::QueryInterface* queryInterface) : queryInterface_(queryInterface) {}

    Nvapi::Status initialize();

    Nvapi::QueryInterface* const queryInterface_;
    /// Since the last Unload.
    bool initializeCalled_ = false;
    NvapiEntries entries_;
};
