#include "standins/simulator/simulated_machine.h"

#include <windows.h>

#include <algorithm>

#include "framework/core/unique_resource.h"

namespace Standins {

namespace {

constexpr wchar_t kMailAccount[] =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\UnreadMail\\simulated@kelvaro.example";

constexpr std::uint32_t kCores = 8;
constexpr double kVolumeMoveSeconds = 15.0;
constexpr float kVolumeStep = 0.07F;
constexpr float kLowestVolume = 0.25F;
constexpr float kHighestVolume = 0.8F;

}  // namespace

SimulatedMachine::SimulatedMachine() {
    coreTemp_.setName("Simulated 8-Core CPU");
    coreTemp_.setRunning(true);
    nvidia_.setName(0, "Simulated Graphics 8 GB");
    nvidia_.setGpuCount(1);
    if (audio_.deviceCount() == 0) {
        audio_.addUsualDevices();
    }
    setTime(0.0);
}

void SimulatedMachine::setTime(double seconds) {
    const SimulatedFigures figures = figuresAt(seconds);
    setCpu(figures);
    setGpu(figures);
    setMails(figures);
    gamepads_.setConnected(0, figures.gamepadConnected);
    gamepads_.setBattery(0, figures.gamepadBatteryType, figures.gamepadBatteryLevel);
    moveVolume(seconds);
}

void SimulatedMachine::setCpu(const SimulatedFigures& figures) {
    CoreTempFigures cpu;
    cpu.cpuCount = 1;
    cpu.coreCount = kCores;
    cpu.busSpeedMHz = kBusClockMHz;
    cpu.multiplier = figures.cpuMultiplier;
    cpu.speedMHz = kBusClockMHz * figures.cpuMultiplier;
    cpu.vidVolts = figures.cpuVidVolts;
    for (std::uint32_t core = 0; core < kCores; ++core) {
        cpu.temperatures[core] = figures.hottestCore - static_cast<float>(core);
    }
    coreTemp_.setFigures(cpu);
}

void SimulatedMachine::setGpu(const SimulatedFigures& figures) {
    NvidiaFigures gpu;
    gpu.loadPercent = figures.gpuLoadPercent;
    gpu.temperature = figures.gpuTemperature;
    gpu.memoryKB = kGpuMemoryKB;
    gpu.freeMemoryKB = figures.gpuFreeMemoryKB;
    gpu.coreClockKHz = figures.gpuClockKHz;
    nvidia_.setFigures(0, gpu);
}

void SimulatedMachine::setMails(const SimulatedFigures& figures) {
    Panelix::UniqueHkey account;
    if (RegCreateKeyExW(HKEY_CURRENT_USER,
                        kMailAccount,
                        0,
                        nullptr,
                        REG_OPTION_VOLATILE,
                        KEY_SET_VALUE,
                        nullptr,
                        account.put(),
                        nullptr) == ERROR_SUCCESS) {
        const DWORD count = figures.unreadMails;
        RegSetValueExW(account.get(),
                       L"MessageCount",
                       0,
                       REG_DWORD,
                       reinterpret_cast<const BYTE*>(&count),
                       sizeof(count));
    }
}

void SimulatedMachine::moveVolume(double seconds) {
    const int moves = static_cast<int>(seconds / kVolumeMoveSeconds);
    const auto speaker = audio_.defaultDevice(AudioFlow::Render);
    if (moves == volumeMoves_ || !speaker) {
        return;
    }
    volumeMoves_ = moves;
    AudioLevels levels = audio_.levels(*speaker);
    for (float& channel : levels.channels) {
        channel =
            std::clamp(channel + (moves % 4 < 2 ? kVolumeStep : -kVolumeStep), kLowestVolume, kHighestVolume);
        levels.master = channel;
    }
    audio_.setLevels(*speaker, levels);
}

void removeSimulatedMail() {
    RegDeleteKeyW(HKEY_CURRENT_USER, kMailAccount);
}

}  // namespace Standins
