#include "tests/pages/sample_snapshot.h"

void setOrdinaryFigures(SystemInfo& info) {
    info.cpuLoad = 37;
    info.cpuTemperature = 54;
    info.cpuTempFahrenheit = false;
    info.cpuName = L"Core i7-8700K @ 3.70GHz";
    info.cpuClockText = L"3600.00MHz (100.00 x 36.00)";
    info.cpuVid = 1.25F;
    info.memoryLoad = 62;
    info.coreTempAvailable = true;
    info.gpuStats = {.load = 48,
                     .temperature = 61,
                     .memoryLoad = 33,
                     .coreClock = 1'350'000,
                     .loadValid = true,
                     .temperatureValid = true,
                     .memoryLoadValid = true,
                     .coreClockValid = true};
    info.gpuName = L"GeForce GTX 1080";
    info.gpuAvailable = true;
    info.unreadMail = 0;
    info.speakerLeftVolume = 42;
    info.speakerRightVolume = 58;
    info.speakerMasterVolume = 50;
    info.speakerMuted = false;
    info.microphoneMuted = false;
    info.gamepadBattery = 0;
    info.dataReady = false;
}
