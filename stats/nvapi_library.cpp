#include "stats/nvapi_library.h"

#include <utility>

#include "framework/core/exported_function.h"
#include "framework/core/library_entries.h"
#include "stats/nvapi_entries.h"

Panelix::UniqueModule NvapiLibrary::loadModule() {
    return Panelix::UniqueModule(LoadLibraryExW(Nvapi::kLibraryFile, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
}

std::unique_ptr<NvapiLibrary> NvapiLibrary::start(Nvapi::Status& status) {
    status = Nvapi::kLibraryNotFound;
    Panelix::UniqueModule module = loadModule();
    auto* const queryInterface =
        Panelix::exportedFunction<Nvapi::QueryInterface>(module.get(), Nvapi::kQueryInterfaceName);
    if (queryInterface == nullptr) {
        return nullptr;
    }
    std::unique_ptr<NvapiLibrary> library(new NvapiLibrary(queryInterface));
    status = library->initialize();
    if (!library->initializeCalled_) {
        return nullptr;
    }
    static_cast<void>(module.release());
    return library;
}

Nvapi::Status NvapiLibrary::initialize() {
    auto* const initialize = reinterpret_cast<Nvapi::Initialize*>(queryInterface_(Nvapi::kInitializeId));
    if (initialize == nullptr) {
        return Nvapi::kNoImplementation;
    }
    initializeCalled_ = true;
    const Nvapi::Status status = initialize();
    // Nothing promises that a driver tells these before.
    Panelix::fillEntries(entries_, kNvapiEndingEntries, queryInterface_);
    if (status == Nvapi::kOk) {
        Panelix::fillEntries(entries_, kNvapiGpuEntries, queryInterface_);
    }
    return status;
}

void NvapiLibrary::unload() {
    if (std::exchange(initializeCalled_, false) && entries_.Unload != nullptr) {
        entries_.Unload();
    }
    entries_ = {};
}

Nvapi::Status NvapiLibrary::restart() {
    unload();
    return initialize();
}
