#include "tests/pages/sample_snapshot.h"

void setOrdinaryFigures(Snapshot& snapshot) {
    snapshot.cpuLoad = 37;
    snapshot.cpuTemperature = 54;
    snapshot.cpuTempFahrenheit = false;
    snapshot.cpuName = L"Core i7-8700K @ 3.70GHz";
    snapshot.cpuClockText = L"3600.00MHz (100.00 x 36.00)";
    snapshot.cpuVid = 1.25F;
    snapshot.memoryLoad = 62;
    snapshot.coreTempAvailable = true;
    snapshot.gpuStats = {.load = 48,
                         .temperature = 61,
                         .memoryLoad = 33,
                         .coreClock = 1'350'000,
                         .loadValid = true,
                         .temperatureValid = true,
                         .memoryLoadValid = true,
                         .coreClockValid = true};
    snapshot.gpuName = L"GeForce GTX 1080";
    snapshot.gpuAvailable = true;
    snapshot.unreadMail = 0;
    snapshot.speakerLeftVolume = 42;
    snapshot.speakerRightVolume = 58;
    snapshot.speakerMasterVolume = 50;
    snapshot.speakerMuted = false;
    snapshot.microphoneMuted = false;
    snapshot.gamepadBattery = 0;
    snapshot.dataReady = false;
}
