#pragma once

#include <memory>

#include "framework/core/unique_resource.h"
#include "stats/core_temp_abi.h"
#include "stats/core_temp_names.h"

/// The functions of Core Temp's reader class.
struct CoreTempEntries {
    CoreTemp::Construct* construct = nullptr;
    CoreTemp::Destruct* destruct = nullptr;
    CoreTemp::GetBool* GetData = nullptr;
    CoreTemp::GetBool* IsFahrenheit = nullptr;
    CoreTemp::GetText* GetCPUName = nullptr;
    CoreTemp::GetFloat* GetCPUSpeed = nullptr;
    CoreTemp::GetFloat* GetFSBSpeed = nullptr;
    CoreTemp::GetFloat* GetMultiplier = nullptr;
    CoreTemp::GetFloat* GetVID = nullptr;
    CoreTemp::GetCount* GetCPUCount = nullptr;
    CoreTemp::GetCount* GetCoreCount = nullptr;
    CoreTemp::GetFloatAt* GetTemp = nullptr;
};

/// Core Temp's reader library. It exists only with all of its entries.
class CoreTempLibrary {
public:
    /// Loads the library from beside the program or from the system folder. Null when it is not there or
    /// lacks an entry. Searches the disk: not for every pass.
    static std::unique_ptr<const CoreTempLibrary> load();

    /// The library's file alone, whatever it exports. Empty when it does not load; the reason is the thread's
    /// last error then.
    static Panelix::UniqueModule loadModule();

    /// Address of the member function in a library, under whichever of its names; null when it has none.
    static void* findMethod(HMODULE module, const CoreTempMethod& method);

    const CoreTempEntries& entries() const { return entries_; }

private:
    CoreTempLibrary() = default;

    Panelix::UniqueModule module_;
    CoreTempEntries entries_;
};
