#pragma once

#include <cstdint>

namespace Standins {

/// What the hardware of the simulated machine reads at one moment.
struct SimulatedFigures {
    float cpuMultiplier;
    float cpuVidVolts;
    float hottestCore;  ///< Degrees Celsius.
    std::uint32_t gpuLoadPercent;
    std::int32_t gpuTemperature;  ///< Degrees Celsius.
    std::uint32_t gpuClockKHz;
    std::uint32_t gpuFreeMemoryKB;
    std::uint32_t unreadMails;
    bool gamepadConnected;
    std::uint8_t gamepadBatteryType;   ///< XInput's BATTERY_TYPE_...
    std::uint8_t gamepadBatteryLevel;  ///< XInput's BATTERY_LEVEL_...
};

inline constexpr float kBusClockMHz = 100.0F;
inline constexpr std::uint32_t kGpuMemoryKB = 8'388'608;

/// The figures `seconds` after the start, at least 0: always the same ones for the same moment. A game runs
/// for half of each minute, and clocks, voltage, load and temperatures follow it at their own pace; a mail
/// comes every 20 seconds and all are read each two minutes; the gamepad goes from wired through its battery
/// levels to unplugged, ten seconds each.
SimulatedFigures figuresAt(double seconds);

}  // namespace Standins
