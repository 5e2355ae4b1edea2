#pragma once

#include <cstdint>
#include <string>

#include "stats/core_temp_abi.h"

/// Clock, bus clock (both in MHz) and multiplier with two decimals, cut off and not rounded beyond the sixth:
/// "3600.00MHz (100.00 x 36.00)". What is not a number reads "inf" or "nan" where that is left of it.
std::wstring cpuClockText(float speed, float busSpeed, float multiplier);

/// The greater of the two; a temperature that is not a finite number does not count.
double hotterOf(double hottest, float temperature);

/// Truncated toward zero, and kept within what 32 bits hold; 0 for what is not a number.
std::int32_t wholeDegrees(double temperature);

/// Degrees of the hottest core; never below 0. `source` has the getters of CoreTempProxy. Its counts are
/// asked again at every turn, because they may be anything: the walk ends where Core Temp's arrays end.
template <typename Source>
double hottestCore(const Source& source) {
    double hottest = 0.0;
    for (std::uint32_t cpu = 0; cpu < CoreTemp::kMaxCpus && cpu < source.GetCPUCount(); ++cpu) {
        for (std::uint32_t core = 0; core < CoreTemp::kMaxCores && core < source.GetCoreCount(); ++core) {
            const std::uint64_t index = core + std::uint64_t{source.GetCoreCount()} * cpu;
            if (index >= CoreTemp::kMaxCores) {
                break;
            }
            hottest = hotterOf(hottest, source.GetTemp(static_cast<int>(index)));
        }
    }
    return hottest;
}
