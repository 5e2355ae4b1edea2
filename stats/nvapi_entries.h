#pragma once

#include <cstdint>
#include <tuple>

#include "framework/core/library_entries.h"
#include "stats/nvapi_library.h"

template <typename Function>
using NvapiEntry = Panelix::LibraryEntry<std::uint32_t, NvapiEntries, Function>;

// Every entry of NvapiEntries with the id that the driver is asked for.

/// What ends a start, a failed one too.
inline constexpr std::tuple kNvapiEndingEntries = {
    NvapiEntry<Nvapi::Unload>{Nvapi::kUnloadId, &NvapiEntries::Unload},
    NvapiEntry<Nvapi::GetErrorMessage>{Nvapi::kGetErrorMessageId, &NvapiEntries::GetErrorMessage},
};

inline constexpr std::tuple kNvapiGpuEntries = {
    NvapiEntry<Nvapi::EnumPhysicalGpus>{Nvapi::kEnumPhysicalGpusId, &NvapiEntries::EnumPhysicalGpus},
    NvapiEntry<Nvapi::GpuGetFullName>{Nvapi::kGpuGetFullNameId, &NvapiEntries::GpuGetFullName},
    NvapiEntry<Nvapi::GpuGetDynamicPstatesInfoEx>{Nvapi::kGpuGetDynamicPstatesInfoExId,
                                                  &NvapiEntries::GpuGetDynamicPstatesInfoEx},
    NvapiEntry<Nvapi::GpuGetThermalSettings>{Nvapi::kGpuGetThermalSettingsId,
                                             &NvapiEntries::GpuGetThermalSettings},
    NvapiEntry<Nvapi::GpuGetMemoryInfo>{Nvapi::kGpuGetMemoryInfoId, &NvapiEntries::GpuGetMemoryInfo},
    NvapiEntry<Nvapi::GpuGetAllClockFrequencies>{Nvapi::kGpuGetAllClockFrequenciesId,
                                                 &NvapiEntries::GpuGetAllClockFrequencies},
};
