#include "stats/nvapi_library.h"

#include "framework/core/exported_function.h"
#include "framework/core/library_entries.h"
#include "stats/nvapi_entries.h"

Panelix::UniqueModule NvapiLibrary::loadModule() {
    return Panelix::UniqueModule(LoadLibraryExW(Nvapi::kLibraryFile, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
}

std::unique_ptr<const NvapiLibrary> NvapiLibrary::start(Nvapi::Status& status) {
    status = Nvapi::kLibraryNotFound;
    Panelix::UniqueModule module = loadModule();
    auto* const queryInterface =
        Panelix::exportedFunction<Nvapi::QueryInterface>(module.get(), Nvapi::kQueryInterfaceName);
    if (queryInterface == nullptr) {
        return nullptr;
    }
    auto* const initialize = reinterpret_cast<Nvapi::Initialize*>(queryInterface(Nvapi::kInitializeId));
    if (initialize == nullptr) {
        status = Nvapi::kNoImplementation;
        return nullptr;
    }
    std::unique_ptr<NvapiLibrary> library(new NvapiLibrary);
    static_cast<void>(module.release());
    status = initialize();
    // Nothing promises that a driver tells these before.
    Panelix::fillEntries(library->entries_, kNvapiEndingEntries, queryInterface);
    if (status == Nvapi::kOk) {
        Panelix::fillEntries(library->entries_, kNvapiGpuEntries, queryInterface);
    }
    return library;
}
