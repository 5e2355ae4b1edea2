#pragma once

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <vector>

#include "standins/core_temp/virtual_core_temp.h"

/// A processor of two CPUs with four cores each; the hottest core is the second CPU's third, at 61.75
/// degrees.
inline Standins::CoreTempFigures usualCoreTempFigures() {
    Standins::CoreTempFigures figures;
    figures.cpuCount = 2;
    figures.coreCount = 4;
    figures.speedMHz = 3600.0F;
    figures.busSpeedMHz = 100.0F;
    figures.multiplier = 36.0F;
    figures.vidVolts = 1.125F;
    const float temperatures[] = {40.0F, 41.0F, 42.0F, 43.0F, 50.0F, 51.0F, 61.75F, 52.0F};
    std::copy(std::begin(temperatures), std::end(temperatures), figures.temperatures.begin());
    return figures;
}

/// What Core Temp may claim, and the temperature that must come of it, whichever way it is read.
struct CoreTempCase {
    const char* name;
    std::uint32_t cpuCount;
    std::uint32_t coreCount;
    std::vector<float> temperatures;
    /// At index 255, the last of the record.
    float lastTemperature;
    std::int32_t expected;
};

inline void PrintTo(const CoreTempCase& c, std::ostream* out) {
    *out << c.name;
}

inline std::vector<CoreTempCase> coreTempCases() {
    using Limits = std::numeric_limits<float>;
    constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max();
    return {
        {"TwoCpusOfFourCores", 2, 4, {1, 2, 3, 4, 5, 6, 77.9F, 8, 99}, 0, 77},
        {"OneCpuOfFourCores", 1, 4, {1, 2, 3, 4, 99}, 0, 4},
        {"AllNegative", 1, 3, {-1, -20, -300}, 0, 0},
        {"NoCpu", 0, 4, {50, 50, 50, 50}, 0, 0},
        {"NoCore", 4, 0, {50, 50, 50, 50}, 0, 0},
        {"Fahrenheit", 1, 1, {140.5F}, 0, 140},
        {"AllCores", 1, 256, {1}, 88.0F, 88},
        {"ManyCpusOfOneCore", 128, 1, {1, 2, 3}, 88.0F, 3},
        {"OneCoreTooMany", 1, 257, {1}, 88.0F, 88},
        {"CoresBeyondTheRecord", 1, kMost, {1, 70}, 88.0F, 88},
        {"CpusBeyondTheRecord", kMost, 2, {1, 70}, 88.0F, 88},
        {"ProductBeyondTheRecord", 3, 200, {1, 70}, 88.0F, 88},
        {"ProductWrapsThirtyTwoBits", 0x1'0001, 0xFFFF, {1, 70}, 88.0F, 88},
        {"BothAtTheirGreatest", kMost, kMost, {1, 70}, 88.0F, 88},
        {"NegativeAsSigned", 0x8000'0000, 0x8000'0000, {1, 70}, 88.0F, 88},
        {"NotANumber", 1, 4, {Limits::quiet_NaN(), 40, Limits::quiet_NaN(), 30}, 0, 40},
        {"OnlyNotANumber", 1, 2, {Limits::quiet_NaN(), Limits::signaling_NaN()}, 0, 0},
        {"Infinite", 1, 3, {Limits::infinity(), 40, -Limits::infinity()}, 0, 40},
        {"Huge", 1, 1, {Limits::max()}, 0, std::numeric_limits<std::int32_t>::max()},
        {"HugeNegative", 1, 1, {Limits::lowest()}, 0, 0},
        {"Tiny", 1, 1, {Limits::denorm_min()}, 0, 0},
    };
}

inline Standins::CoreTempFigures figuresOf(const CoreTempCase& c) {
    Standins::CoreTempFigures figures;
    figures.cpuCount = c.cpuCount;
    figures.coreCount = c.coreCount;
    figures.temperatures.back() = c.lastTemperature;
    std::copy(c.temperatures.begin(), c.temperatures.end(), figures.temperatures.begin());
    return figures;
}
