#include "stats/core_temp_library.h"

#include <string>
#include <tuple>

#include "framework/core/exported_function.h"
#include "framework/core/library_entries.h"
#include "stats/core_temp_names.h"

namespace {

template <typename Function>
using Entry = Panelix::LibraryEntry<CoreTempMethod, CoreTempEntries, Function>;

using Signature = CoreTempSignature;
using Entries = CoreTempEntries;

constexpr std::tuple kEntries = {
    Entry<CoreTemp::Construct>{{"", Signature::Constructor}, &Entries::construct},
    Entry<CoreTemp::Destruct>{{"", Signature::Destructor}, &Entries::destruct},
    Entry<CoreTemp::GetBool>{{"GetData", Signature::Bool}, &Entries::GetData},
    Entry<CoreTemp::GetBool>{{"IsFahrenheit", Signature::Bool}, &Entries::IsFahrenheit},
    Entry<CoreTemp::GetText>{{"GetCPUName", Signature::Text}, &Entries::GetCPUName},
    Entry<CoreTemp::GetFloat>{{"GetCPUSpeed", Signature::Float}, &Entries::GetCPUSpeed},
    Entry<CoreTemp::GetFloat>{{"GetFSBSpeed", Signature::Float}, &Entries::GetFSBSpeed},
    Entry<CoreTemp::GetFloat>{{"GetMultiplier", Signature::Float}, &Entries::GetMultiplier},
    Entry<CoreTemp::GetFloat>{{"GetVID", Signature::Float}, &Entries::GetVID},
    Entry<CoreTemp::GetCount>{{"GetCPUCount", Signature::Count}, &Entries::GetCPUCount},
    Entry<CoreTemp::GetCount>{{"GetCoreCount", Signature::Count}, &Entries::GetCoreCount},
    Entry<CoreTemp::GetFloatAt>{{"GetTemp", Signature::FloatAtIndex}, &Entries::GetTemp},
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
    const bool complete =
        Panelix::fillEntries(library->entries_, kEntries, [&](const CoreTempMethod& method) {
            void* address = nullptr;
            for (const std::string& name : coreTempExportNames(method)) {
                address = Panelix::exportedFunction(module.get(), name.c_str());
                if (address != nullptr) {
                    break;
                }
            }
            return address;
        });
    library->module_ = std::move(module);
    return complete ? std::move(library) : nullptr;
}
