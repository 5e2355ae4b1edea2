#pragma once

#include <functional>
#include <tuple>

#include "framework/core/library_entries.h"
#include "stats/core_temp_abi.h"
#include "stats/core_temp_names.h"

/// The functions of Core Temp's reader class.
struct CoreTempEntries {
    CoreTemp::Construct* construct = nullptr;
    CoreTemp::Destruct* destruct = nullptr;
    CoreTemp::GetBool* GetData = nullptr;
    CoreTemp::GetBool* IsFahrenheit = nullptr;
    CoreTemp::GetText* GetCPUName = nullptr;
    CoreTemp::GetFloat* GetCPUSpeed = nullptr;
    CoreTemp::GetFloat* GetFSBSpeed = nullptr;
    CoreTemp::GetFloat* GetMultiplier = nullptr;
    CoreTemp::GetFloat* GetVID = nullptr;
    CoreTemp::GetCount* GetCPUCount = nullptr;
    CoreTemp::GetCount* GetCoreCount = nullptr;
    CoreTemp::GetFloatAt* GetTemp = nullptr;
};

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

/// Returns the untyped address of a library's export by its decorated name, and null for a name that the
/// library does not have.
using CoreTempExports = std::function<void*(const char* name)>;

/// Address of the member function; null when the library has it under none of its possible names. Of several
/// the most likely one is taken.
void* findCoreTempMethod(const CoreTempMethod& method, const CoreTempExports& exported);

/// Fills the entries with what the library exports; false when one is missing.
bool findCoreTempEntries(CoreTempEntries& entries, const CoreTempExports& exported);
