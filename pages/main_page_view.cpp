#include "pages/main_page_view.h"

#include <utility>

#include "pages/figure_texts.h"
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

MainPageView statisticsView(const Snapshot& snapshot,
                            MixerChannel selectedChannel,
                            bool blinkOn,
                            std::wstring clockText) {
    const std::int32_t left = snapshot.speakerLeftVolume;
    const std::int32_t right = snapshot.speakerRightVolume;
    const bool batteryHidden = snapshot.gamepadBattery == kGamepadBatteryEmpty && !blinkOn;
    return {
        .unreadMail = snapshot.unreadMail,
        .cpuLoad = static_cast<std::int32_t>(snapshot.cpuLoad),
        .memoryLoad = snapshot.memoryLoad,
        .coreTempAvailable = snapshot.coreTempAvailable,
        .cpuName = snapshot.cpuName,
        .cpuClockText = snapshot.cpuClockText,
        .vidText = vidText(snapshot.cpuVid),
        .cpuTemperature = snapshot.cpuTemperature,
        .cpuTempFahrenheit = snapshot.cpuTempFahrenheit,
        .gpuAvailable = snapshot.gpuAvailable,
        .gpuName = snapshot.gpuName,
        .gpuStats = snapshot.gpuStats,
        .selectedChannel = selectedChannel,
        .volumeFigure = volumeFigure(selectedChannel, left, right, snapshot.speakerMasterVolume),
        .leftVolume = left,
        .rightVolume = right,
        .microphoneMuted = snapshot.microphoneMuted,
        .speakerMuted = snapshot.speakerMuted,
        .gamepadBattery = batteryHidden ? kGamepadBatteryNone : snapshot.gamepadBattery,
        .clockText = std::move(clockText),
    };
}
