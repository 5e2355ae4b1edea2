#pragma once

#include <tuple>

#include "framework/core/library_entries.h"
#include "stats/core_temp_library.h"
#include "stats/core_temp_names.h"

template <typename Function>
using CoreTempEntry = Panelix::LibraryEntry<CoreTempMethod, CoreTempEntries, Function>;

/// Every entry of CoreTempEntries with the member function that it is.
inline constexpr std::tuple kCoreTempEntries = {
    CoreTempEntry<CoreTemp::Construct>{{"", CoreTempSignature::Constructor}, &CoreTempEntries::construct},
    CoreTempEntry<CoreTemp::Destruct>{{"", CoreTempSignature::Destructor}, &CoreTempEntries::destruct},
    CoreTempEntry<CoreTemp::GetBool>{{"GetData", CoreTempSignature::Bool}, &CoreTempEntries::GetData},
    CoreTempEntry<CoreTemp::GetBool>{{"IsFahrenheit", CoreTempSignature::Bool},
                                     &CoreTempEntries::IsFahrenheit},
    CoreTempEntry<CoreTemp::GetText>{{"GetCPUName", CoreTempSignature::Text}, &CoreTempEntries::GetCPUName},
    CoreTempEntry<CoreTemp::GetFloat>{{"GetCPUSpeed", CoreTempSignature::Float},
                                      &CoreTempEntries::GetCPUSpeed},
    CoreTempEntry<CoreTemp::GetFloat>{{"GetFSBSpeed", CoreTempSignature::Float},
                                      &CoreTempEntries::GetFSBSpeed},
    CoreTempEntry<CoreTemp::GetFloat>{{"GetMultiplier", CoreTempSignature::Float},
                                      &CoreTempEntries::GetMultiplier},
    CoreTempEntry<CoreTemp::GetFloat>{{"GetVID", CoreTempSignature::Float}, &CoreTempEntries::GetVID},
    CoreTempEntry<CoreTemp::GetCount>{{"GetCPUCount", CoreTempSignature::Count},
                                      &CoreTempEntries::GetCPUCount},
    CoreTempEntry<CoreTemp::GetCount>{{"GetCoreCount", CoreTempSignature::Count},
                                      &CoreTempEntries::GetCoreCount},
    CoreTempEntry<CoreTemp::GetFloatAt>{{"GetTemp", CoreTempSignature::FloatAtIndex},
                                        &CoreTempEntries::GetTemp},
};
