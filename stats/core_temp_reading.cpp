#include "stats/core_temp_reading.h"

#include "stats/ansi_text.h"
#include "stats/core_temp_figures.h"
#include "stats/core_temp_proxy.h"

namespace {

// The counts are asked again at every turn, because they may be anything: the walk ends where Core Temp's
// arrays end.
double hottestCore(const CoreTempProxy& proxy) {
    double hottest = 0.0;
    for (std::uint32_t cpu = 0; cpu < CoreTemp::kMaxCpus && cpu < proxy.GetCPUCount(); ++cpu) {
        for (std::uint32_t core = 0; core < CoreTemp::kMaxCores && core < proxy.GetCoreCount(); ++core) {
            const std::uint64_t index = core + std::uint64_t{proxy.GetCoreCount()} * cpu;
            if (index >= CoreTemp::kMaxCores) {
                break;
            }
            hottest = hotterOf(hottest, proxy.GetTemp(static_cast<int>(index)));
        }
    }
    return hottest;
}

}  // namespace

std::optional<CoreTempReading> readCoreTemp(const CoreTempLibrary* library) {
    CoreTempProxy proxy(library);
    if (!proxy.GetData()) {
        return std::nullopt;
    }
    CoreTempReading reading;
    reading.fahrenheit = proxy.IsFahrenheit();
    reading.name = wideFromAnsi(proxy.GetCPUName());
    reading.clockText = cpuClockText(proxy.GetCPUSpeed(), proxy.GetFSBSpeed(), proxy.GetMultiplier());
    reading.vid = proxy.GetVID();
    reading.temperature = wholeDegrees(hottestCore(proxy));
    return reading;
}
