#include "stats/adl_library.h"

#include <windows.h>

#include <tuple>

#include "framework/core/exported_function.h"
#include "framework/core/library_entries.h"

namespace {

template <typename Function>
using Entry = Panelix::LibraryEntry<const char*, AdlEntries, Function>;

using Entries = AdlEntries;

constexpr std::tuple kEntries = {
    Entry<Adl::ADL2_Main_Control_Create>{"ADL2_Main_Control_Create", &Entries::ADL2_Main_Control_Create},
    Entry<Adl::ADL2_Main_Control_Destroy>{"ADL2_Main_Control_Destroy", &Entries::ADL2_Main_Control_Destroy},
    Entry<Adl::ADL2_Adapter_Active_Get>{"ADL2_Adapter_Active_Get", &Entries::ADL2_Adapter_Active_Get},
    Entry<Adl::ADL2_Adapter_AdapterInfoX2_Get>{"ADL2_Adapter_AdapterInfoX2_Get",
                                               &Entries::ADL2_Adapter_AdapterInfoX2_Get},
    Entry<Adl::ADL2_Overdrive6_Temperature_Get>{"ADL2_Overdrive6_Temperature_Get",
                                                &Entries::ADL2_Overdrive6_Temperature_Get},
    Entry<Adl::ADL2_Overdrive6_CurrentStatus_Get>{"ADL2_Overdrive6_CurrentStatus_Get",
                                                  &Entries::ADL2_Overdrive6_CurrentStatus_Get},
    Entry<Adl::ADL2_Adapter_NumberOfAdapters_Get>{"ADL2_Adapter_NumberOfAdapters_Get",
                                                  &Entries::ADL2_Adapter_NumberOfAdapters_Get},
};

}  // namespace

std::unique_ptr<const AdlLibrary> AdlLibrary::load(bool& found) {
    // Neither the current directory nor the PATH: either could hold somebody else's file of that name. The
    // driver's own dependencies are looked for in the same two places.
    const HMODULE module = LoadLibraryExW(
        Adl::kLibraryFile, nullptr, LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    found = module != nullptr;
    if (!found) {
        return nullptr;
    }
    std::unique_ptr<AdlLibrary> library(new AdlLibrary);
    const bool complete = Panelix::fillEntries(library->entries_, kEntries, [module](const char* name) {
        return Panelix::exportedFunction(module, name);
    });
    return complete ? std::move(library) : nullptr;
}
