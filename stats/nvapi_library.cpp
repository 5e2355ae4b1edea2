#include "stats/nvapi_library.h"

#include <cstdint>
#include <tuple>

#include "framework/core/exported_function.h"
#include "framework/core/library_entries.h"
#include "framework/core/unique_resource.h"

namespace {

template <typename Function>
using Entry = Panelix::LibraryEntry<std::uint32_t, NvapiEntries, Function>;

using Entries = NvapiEntries;

// What ends a start, a failed one too.
constexpr std::tuple kEndingEntries = {
    Entry<Nvapi::Unload>{Nvapi::kUnloadId, &Entries::Unload},
    Entry<Nvapi::GetErrorMessage>{Nvapi::kGetErrorMessageId, &Entries::GetErrorMessage},
};

constexpr std::tuple kGpuEntries = {
    Entry<Nvapi::EnumPhysicalGpus>{Nvapi::kEnumPhysicalGpusId, &Entries::EnumPhysicalGpus},
    Entry<Nvapi::GpuGetFullName>{Nvapi::kGpuGetFullNameId, &Entries::GpuGetFullName},
    Entry<Nvapi::GpuGetDynamicPstatesInfoEx>{Nvapi::kGpuGetDynamicPstatesInfoExId,
                                             &Entries::GpuGetDynamicPstatesInfoEx},
    Entry<Nvapi::GpuGetThermalSettings>{Nvapi::kGpuGetThermalSettingsId, &Entries::GpuGetThermalSettings},
    Entry<Nvapi::GpuGetMemoryInfo>{Nvapi::kGpuGetMemoryInfoId, &Entries::GpuGetMemoryInfo},
    Entry<Nvapi::GpuGetAllClockFrequencies>{Nvapi::kGpuGetAllClockFrequenciesId,
                                            &Entries::GpuGetAllClockFrequencies},
};

}  // namespace

std::unique_ptr<const NvapiLibrary> NvapiLibrary::start(Nvapi::Status& status) {
    status = Nvapi::kLibraryNotFound;
    Panelix::UniqueModule module(LoadLibraryExW(Nvapi::kLibraryFile, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
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
    Panelix::fillEntries(library->entries_, kEndingEntries, queryInterface);
    if (status == Nvapi::kOk) {
        Panelix::fillEntries(library->entries_, kGpuEntries, queryInterface);
    }
    return library;
}
