#include "stats/core_temp_reading.h"

#include "stats/ansi_text.h"
#include "stats/core_temp_figures.h"
#include "stats/core_temp_proxy.h"

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
