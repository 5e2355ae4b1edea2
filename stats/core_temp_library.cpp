#include "stats/core_temp_library.h"

#include <string>
#include <tuple>

#include "stats/core_temp_names.h"
#include "stats/library_entries.h"

namespace {

template <typename Function>
using Entry = LibraryEntry<CoreTempMethod, CoreTempEntries, Function>;

constexpr EntryNeed kRequired = EntryNeed::Required;

using Signature = CoreTempSignature;
using Entries = CoreTempEntries;

constexpr std::tuple kEntries = {
    Entry<CoreTemp::Construct>{{"", Signature::Constructor}, &Entries::construct, kRequired},
    Entry<CoreTemp::Destruct>{{"", Signature::Destructor}, &Entries::destruct, kRequired},
    Entry<CoreTemp::GetBool>{{"GetData", Signature::Bool}, &Entries::GetData, kRequired},
    Entry<CoreTemp::GetBool>{{"IsFahrenheit", Signature::Bool}, &Entries::IsFahrenheit, kRequired},
    Entry<CoreTemp::GetText>{{"GetCPUName", Signature::Text}, &Entries::GetCPUName, kRequired},
    Entry<CoreTemp::GetFloat>{{"GetCPUSpeed", Signature::Float}, &Entries::GetCPUSpeed, kRequired},
    Entry<CoreTemp::GetFloat>{{"GetFSBSpeed", Signature::Float}, &Entries::GetFSBSpeed, kRequired},
    Entry<CoreTemp::GetFloat>{{"GetMultiplier", Signature::Float}, &Entries::GetMultiplier, kRequired},
    Entry<CoreTemp::GetFloat>{{"GetVID", Signature::Float}, &Entries::GetVID, kRequired},
    Entry<CoreTemp::GetCount>{{"GetCPUCount", Signature::Count}, &Entries::GetCPUCount, kRequired},
    Entry<CoreTemp::GetCount>{{"GetCoreCount", Signature::Count}, &Entries::GetCoreCount, kRequired},
    Entry<CoreTemp::GetFloatAt>{{"GetTemp", Signature::FloatAtIndex}, &Entries::GetTemp, kRequired},
};

}  // namespace

std::unique_ptr<const CoreTempLibrary> CoreTempLibrary::load() {
    // Neither the current directory nor the PATH: either could hold somebody else's file of that name.
    Panelix::UniqueModule module(LoadLibraryExW(
        CoreTemp::kLibraryFile, nullptr, LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32));
    if (!module) {
        return nullptr;
    }
    std::unique_ptr<CoreTempLibrary> library(new CoreTempLibrary);
    const bool complete = fillEntries(library->entries_, kEntries, [&](const CoreTempMethod& method) {
        void* address = nullptr;
        for (const std::string& name : coreTempExportNames(method)) {
            address = reinterpret_cast<void*>(GetProcAddress(module.get(), name.c_str()));
            if (address != nullptr) {
                break;
            }
        }
        return address;
    });
    library->module_ = std::move(module);
    return complete ? std::move(library) : nullptr;
}
