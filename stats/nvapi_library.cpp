#include "stats/nvapi_library.h"

#include <cstdint>
#include <tuple>
#include <utility>

#include "stats/library_entries.h"

namespace {

template <typename Function>
using Entry = LibraryEntry<std::uint32_t, NvapiEntries, Function>;

constexpr EntryNeed kRequired = EntryNeed::Required;
constexpr EntryNeed kOptional = EntryNeed::Optional;

using Entries = NvapiEntries;

constexpr std::tuple kEntries = {
    Entry<Nvapi::Initialize>{Nvapi::kInitializeId, &Entries::Initialize, kRequired},
    Entry<Nvapi::Unload>{Nvapi::kUnloadId, &Entries::Unload, kOptional},
    Entry<Nvapi::GetErrorMessage>{Nvapi::kGetErrorMessageId, &Entries::GetErrorMessage, kOptional},
    Entry<Nvapi::EnumPhysicalGpus>{Nvapi::kEnumPhysicalGpusId, &Entries::EnumPhysicalGpus, kOptional},
    Entry<Nvapi::GpuGetFullName>{Nvapi::kGpuGetFullNameId, &Entries::GpuGetFullName, kOptional},
    Entry<Nvapi::GpuGetDynamicPstatesInfoEx>{
        Nvapi::kGpuGetDynamicPstatesInfoExId, &Entries::GpuGetDynamicPstatesInfoEx, kOptional},
    Entry<Nvapi::GpuGetThermalSettings>{
        Nvapi::kGpuGetThermalSettingsId, &Entries::GpuGetThermalSettings, kOptional},
    Entry<Nvapi::GpuGetMemoryInfo>{Nvapi::kGpuGetMemoryInfoId, &Entries::GpuGetMemoryInfo, kOptional},
    Entry<Nvapi::GpuGetAllClockFrequencies>{
        Nvapi::kGpuGetAllClockFrequenciesId, &Entries::GpuGetAllClockFrequencies, kOptional},
};

}  // namespace

std::unique_ptr<const NvapiLibrary> NvapiLibrary::load(Nvapi::Status& status) {
    status = Nvapi::kLibraryNotFound;
    Panelix::UniqueModule module(LoadLibraryExW(Nvapi::kLibraryFile, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
    if (!module) {
        return nullptr;
    }
    auto* const queryInterface = reinterpret_cast<Nvapi::QueryInterface*>(
        reinterpret_cast<void*>(GetProcAddress(module.get(), Nvapi::kQueryInterfaceName)));
    if (queryInterface == nullptr) {
        return nullptr;
    }
    std::unique_ptr<NvapiLibrary> library(new NvapiLibrary);
    library->module_ = std::move(module);
    if (!fillEntries(library->entries_, kEntries, queryInterface)) {
        status = Nvapi::kNoImplementation;
        return nullptr;
    }
    status = Nvapi::kOk;
    return library;
}
