#include "stats/adl_library.h"

#include "framework/core/exported_function.h"
#include "framework/core/library_entries.h"
#include "stats/adl_entries.h"

// Neither the current directory nor the PATH: either could hold somebody else's file of that name. The
// driver's own dependencies are looked for in the same two places.
HMODULE AdlLibrary::loadModule() {
    return LoadLibraryExW(
        Adl::kLibraryFile, nullptr, LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
}

std::unique_ptr<const AdlLibrary> AdlLibrary::load(bool& found) {
    const HMODULE module = loadModule();
    found = module != nullptr;
    if (!found) {
        return nullptr;
    }
    std::unique_ptr<AdlLibrary> library(new AdlLibrary);
    const bool complete = Panelix::fillEntries(library->entries_, kAdlEntries, [module](const char* name) {
        return Panelix::exportedFunction(module, name);
    });
    return complete ? std::move(library) : nullptr;
}
