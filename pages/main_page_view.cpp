#include "pages/main_page_view.h"

#include <bit>

#include "stats/gamepad_battery_code.h"

namespace {

std::int32_t volumeFigure(MixerChannel selected, std::int32_t left, std::int32_t right, std::int32_t master) {
    switch (selected) {
        case MixerChannel::Left:
            return left;
        case MixerChannel::Right:
            return right;
        default:
            return master;
    }
}

}  // namespace

void updateStatisticsView(MainPageView& view,
                          const Snapshot& snapshot,
                          MixerChannel selectedChannel,
                          bool blinkOn,
                          const std::wstring& clockText) {
    const std::int32_t left = snapshot.speakerLeftVolume;
    const std::int32_t right = snapshot.speakerRightVolume;
    const bool batteryHidden = snapshot.gamepadBattery == kGamepadBatteryEmpty && !blinkOn;
    view.pictureMode = false;
    view.unreadMail = snapshot.unreadMail;
    view.cpuLoad = static_cast<std::int32_t>(snapshot.cpuLoad);
    view.memoryLoad = snapshot.memoryLoad;
    view.coreTempAvailable = snapshot.coreTempAvailable;
    view.cpuName = snapshot.cpuName;
    view.cpuClockText = snapshot.cpuClockText;
    view.cpuVidBits = std::bit_cast<std::uint32_t>(snapshot.cpuVid);
    view.cpuTemperature = snapshot.cpuTemperature;
    view.cpuTempFahrenheit = snapshot.cpuTempFahrenheit;
    view.gpuAvailable = snapshot.gpuAvailable;
    view.gpuName = snapshot.gpuName;
    view.gpuStats = snapshot.gpuStats;
    view.selectedChannel = selectedChannel;
    view.volumeFigure = volumeFigure(selectedChannel, left, right, snapshot.speakerMasterVolume);
    view.leftVolume = left;
    view.rightVolume = right;
    view.microphoneMuted = snapshot.microphoneMuted;
    view.speakerMuted = snapshot.speakerMuted;
    view.gamepadBattery = batteryHidden ? kGamepadBatteryNone : snapshot.gamepadBattery;
    view.clockText = clockText;
}
