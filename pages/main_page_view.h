#pragma once

#include <cstdint>
#include <string>

#include "pages/mixer.h"
#include "stats/snapshot.h"

/// All that the main page shows at one moment, but for the past in its graphs: two equal views look the same.
struct MainPageView {
    /// The picture stands alone; everything below is as at first.
    bool pictureMode = false;

    /// Unread mails; nothing is shown for 0 and less.
    std::int32_t unreadMail = 0;

    /// Percent.
    std::int32_t cpuLoad = 0;
    std::int32_t memoryLoad = 0;
    /// False: the CPU's texts are not shown.
    bool coreTempAvailable = false;
    std::wstring cpuName{};
    std::wstring cpuClockText{};
    /// In volts, as bits: two voltages may be equal and look different.
    std::uint32_t cpuVidBits = 0;
    std::int32_t cpuTemperature = 0;
    bool cpuTempFahrenheit = false;

    bool gpuAvailable = false;
    std::wstring gpuName{};
    GpuStats gpuStats{};

    MixerChannel selectedChannel = MixerChannel::None;
    /// Percent: the selected channel's, or the master volume.
    std::int32_t volumeFigure = 0;
    std::int32_t leftVolume = 0;
    std::int32_t rightVolume = 0;

    bool microphoneMuted = false;
    bool speakerMuted = false;
    /// See gamepad_battery_code.h; none while the icon of an empty battery is off.
    std::int32_t gamepadBattery = 0;

    std::wstring clockText{};

    friend bool operator==(const MainPageView&, const MainPageView&) = default;
};

/// Makes `view` that of the statistics. Each field of `snapshot` is read once, so bars and figures agree
/// whatever a notification writes meanwhile. `blinkOn` is the phase of blinking icons. The memory of the
/// view's texts is used again: a view that is taken in every pass, and is mostly what it was, then takes
/// none.
void updateStatisticsView(MainPageView& view,
                          const Snapshot& snapshot,
                          MixerChannel selectedChannel,
                          bool blinkOn,
                          const std::wstring& clockText);
