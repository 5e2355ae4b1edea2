#include "standins/simulator/simulation.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Standins {

namespace {

constexpr double kMinute = 60.0;
constexpr double kTau = 6.283185307179586;

struct Gamepad {
    bool connected;
    std::uint8_t type;
    std::uint8_t level;
};

// Wired, then a NiMH battery from full to empty, then unplugged.
constexpr std::array<Gamepad, 6> kGamepads = {{
    {true, 1, 3},
    {true, 3, 3},
    {true, 3, 2},
    {true, 3, 1},
    {true, 3, 0},
    {false, 0, 0},
}};

/// From 0 at rest to 1 in the game: up within `rise` seconds at each full minute, down from the half minute
/// on.
double activity(double seconds, double rise, double fall) {
    const double inMinute = std::fmod(seconds, kMinute);
    const double up = 1.0 - std::exp(-inMinute / rise);
    if (inMinute < kMinute / 2) {
        return up;
    }
    const double peak = 1.0 - std::exp(-kMinute / 2 / rise);
    return peak * std::exp(-(inMinute - kMinute / 2) / fall);
}

/// Restlessness from -1 to 1 that does not repeat within a minute.
double flutter(double seconds) {
    return (std::sin(kTau * seconds / 1.9) + std::sin(kTau * seconds / 4.7) +
            std::sin(kTau * seconds / 11.3)) /
           3.0;
}

template <typename Number>
Number rounded(double value, double lowest, double highest) {
    return static_cast<Number>(std::lround(std::clamp(value, lowest, highest)));
}

}  // namespace

SimulatedFigures figuresAt(double seconds) {
    const double load = activity(seconds, 1.0, 1.5);
    const double warmth = activity(seconds, 12.0, 15.0);
    const double restless = flutter(seconds);
    const auto tenth = static_cast<std::size_t>(seconds / 10.0);
    const Gamepad& gamepad = kGamepads[tenth % kGamepads.size()];

    SimulatedFigures figures{};
    figures.cpuMultiplier = rounded<float>(12 + 32 * load + 4 * restless, 8, 48);
    figures.cpuVidVolts = static_cast<float>(0.82 + 0.42 * load + 0.02 * restless);
    figures.hottestCore = static_cast<float>(38 + 40 * warmth + 2 * restless);
    figures.gpuLoadPercent = rounded<std::uint32_t>(6 + 80 * load + 12 * restless, 0, 100);
    figures.gpuTemperature = rounded<std::int32_t>(41 + 34 * warmth + restless, 30, 90);
    figures.gpuClockKHz =
        rounded<std::uint32_t>(300'000 + 1'550'000 * load + 40'000 * restless, 210'000, 1'950'000);
    figures.gpuFreeMemoryKB = rounded<std::uint32_t>(kGpuMemoryKB * (0.88 - 0.5 * load), 0, kGpuMemoryKB);
    figures.unreadMails = static_cast<std::uint32_t>(std::fmod(seconds, 2 * kMinute) / 20.0);
    figures.gamepadConnected = gamepad.connected;
    figures.gamepadBatteryType = gamepad.type;
    figures.gamepadBatteryLevel = gamepad.level;
    return figures;
}

}  // namespace Standins
