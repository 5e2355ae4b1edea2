#pragma once

#include <windows.h>

#include <memory>

#include "stats/adl_abi.h"

/// ADL2's functions, named like the exports. All are there once a library is loaded.
struct AdlEntries {
    Adl::ADL2_Main_Control_Create* ADL2_Main_Control_Create = nullptr;
    Adl::ADL2_Main_Control_Destroy* ADL2_Main_Control_Destroy = nullptr;
    Adl::ADL2_Adapter_NumberOfAdapters_Get* ADL2_Adapter_NumberOfAdapters_Get = nullptr;
    Adl::ADL2_Adapter_AdapterInfoX2_Get* ADL2_Adapter_AdapterInfoX2_Get = nullptr;
    /// Nothing calls it; it tells a library that is new enough.
    Adl::ADL2_Adapter_Active_Get* ADL2_Adapter_Active_Get = nullptr;
    Adl::ADL2_Overdrive6_Temperature_Get* ADL2_Overdrive6_Temperature_Get = nullptr;
    Adl::ADL2_Overdrive6_CurrentStatus_Get* ADL2_Overdrive6_CurrentStatus_Get = nullptr;
};

/// AMD's driver library. It exists only with all of its entries.
class AdlLibrary {
public:
    /// Loads the library from the system folder or from beside the program. Null when it is not there
    /// (`found` is then false) or lacks an entry. Once loaded it stays in the process: the driver may have
    /// threads in it that outlive every context.
    static std::unique_ptr<const AdlLibrary> load(bool& found);

    /// The library's file alone, whatever it exports. Null when it does not load; the reason is the thread's
    /// last error then. It stays in the process.
    static HMODULE loadModule();

    const AdlEntries& entries() const { return entries_; }

private:
    AdlLibrary() = default;

    AdlEntries entries_;
};
