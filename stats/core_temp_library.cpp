#include "stats/core_temp_library.h"

#include <utility>

#include "framework/core/exported_function.h"

// Neither the current directory nor the PATH: either could hold somebody else's file of that name.
Panelix::UniqueModule CoreTempLibrary::loadModule() {
    return Panelix::UniqueModule(LoadLibraryExW(
        CoreTemp::kLibraryFile, nullptr, LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32));
}

CoreTempExports CoreTempLibrary::exportsOf(HMODULE module) {
    return [module](const char* name) { return Panelix::exportedFunction(module, name); };
}

std::unique_ptr<const CoreTempLibrary> CoreTempLibrary::load() {
    Panelix::UniqueModule module = loadModule();
    if (!module) {
        return nullptr;
    }
    std::unique_ptr<CoreTempLibrary> library(new CoreTempLibrary);
    const bool complete = findCoreTempEntries(library->entries_, exportsOf(module.get()));
    library->module_ = std::move(module);
    return complete ? std::move(library) : nullptr;
}
