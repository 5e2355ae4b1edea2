#include "stats/core_temp_library.h"

#include <string>

#include "framework/core/exported_function.h"
#include "framework/core/library_entries.h"
#include "stats/core_temp_entries.h"

// Neither the current directory nor the PATH: either could hold somebody else's file of that name.
Panelix::UniqueModule CoreTempLibrary::loadModule() {
    return Panelix::UniqueModule(LoadLibraryExW(
        CoreTemp::kLibraryFile, nullptr, LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32));
}

void* CoreTempLibrary::findMethod(HMODULE module, const CoreTempMethod& method) {
    void* address = nullptr;
    for (const std::string& name : coreTempExportNames(method)) {
        address = Panelix::exportedFunction(module, name.c_str());
        if (address != nullptr) {
            break;
        }
    }
    return address;
}

std::unique_ptr<const CoreTempLibrary> CoreTempLibrary::load() {
    Panelix::UniqueModule module = loadModule();
    if (!module) {
        return nullptr;
    }
    std::unique_ptr<CoreTempLibrary> library(new CoreTempLibrary);
    const bool complete =
        Panelix::fillEntries(library->entries_, kCoreTempEntries, [&](const CoreTempMethod& method) {
            return findMethod(module.get(), method);
        });
    library->module_ = std::move(module);
    return complete ? std::move(library) : nullptr;
}
