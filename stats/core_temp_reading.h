#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "stats/core_temp_library.h"

/// What Core Temp says about the CPU.
struct CoreTempReading {
    bool fahrenheit = false;
    std::wstring name;
    /// See cpuClockText().
    std::wstring clockText;
    /// Volts.
    float vid = 0.0F;
    /// Hottest core, whole degrees; never below 0.
    std::int32_t temperature = 0;
};

/// Reads Core Temp once; nothing when it is not running. `library` may be null.
std::optional<CoreTempReading> readCoreTemp(const CoreTempLibrary* library);
