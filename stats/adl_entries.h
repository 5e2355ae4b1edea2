#pragma once

#include <tuple>

#include "framework/core/library_entries.h"
#include "stats/adl_library.h"

template <typename Function>
using AdlEntry = Panelix::LibraryEntry<const char*, AdlEntries, Function>;

/// Every entry of AdlEntries with the name of its export.
inline constexpr std::tuple kAdlEntries = {
    AdlEntry<Adl::ADL2_Main_Control_Create>{"ADL2_Main_Control_Create",
                                            &AdlEntries::ADL2_Main_Control_Create},
    AdlEntry<Adl::ADL2_Main_Control_Destroy>{"ADL2_Main_Control_Destroy",
                                             &AdlEntries::ADL2_Main_Control_Destroy},
    AdlEntry<Adl::ADL2_Adapter_Active_Get>{"ADL2_Adapter_Active_Get", &AdlEntries::ADL2_Adapter_Active_Get},
    AdlEntry<Adl::ADL2_Adapter_AdapterInfoX2_Get>{"ADL2_Adapter_AdapterInfoX2_Get",
                                                  &AdlEntries::ADL2_Adapter_AdapterInfoX2_Get},
    AdlEntry<Adl::ADL2_Overdrive6_Temperature_Get>{"ADL2_Overdrive6_Temperature_Get",
                                                   &AdlEntries::ADL2_Overdrive6_Temperature_Get},
    AdlEntry<Adl::ADL2_Overdrive6_CurrentStatus_Get>{"ADL2_Overdrive6_CurrentStatus_Get",
                                                     &AdlEntries::ADL2_Overdrive6_CurrentStatus_Get},
    AdlEntry<Adl::ADL2_Adapter_NumberOfAdapters_Get>{"ADL2_Adapter_NumberOfAdapters_Get",
                                                     &AdlEntries::ADL2_Adapter_NumberOfAdapters_Get},
};
