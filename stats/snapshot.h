#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "stats/gpu_vendor.h"

/// What the pages show. One sampler writes it and the pages read it; all on the main thread, but for the
/// volume and mute fields, which Core Audio's notification threads write at any time. Those are lock-free
/// atomics, each on its own: two of them may be read on either side of one notice. A picture that is to agree
/// with itself reads each once.
struct Snapshot {
    /// Percent.
    std::uint32_t cpuLoad = 0;
    /// Hottest core, in the unit that cpuTempFahrenheit tells.
    std::int32_t cpuTemperature = 0;
    bool cpuTempFahrenheit = false;
    std::wstring cpuName;
    /// "3600.00MHz (100.00 x 36.00)": clock, bus clock and multiplier.
    std::wstring cpuClockText;
    /// Core voltage in volts.
    float cpuVid = 0.0F;
    /// Physical memory in use, in percent.
    std::int32_t memoryLoad = 0;
    /// The Core Temp figures above are of the last update; false: they are older, or were never there.
    bool coreTempAvailable = false;
    GpuStats gpuStats;
    std::wstring gpuName;
    bool gpuAvailable = false;
    /// Unread mails of all accounts; -1 when they cannot be read. Queried in every 11th update.
    std::int32_t unreadMail = 0;
    /// Volumes in percent, 0 to 100; written by notifications too.
    std::atomic<std::int32_t> speakerLeftVolume{0};
    std::atomic<std::int32_t> speakerRightVolume{0};
    std::atomic<std::int32_t> speakerMasterVolume{0};
    std::atomic<bool> speakerMuted{false};
    std::atomic<bool> microphoneMuted{false};
    /// Battery of the first gamepad, see gamepad_battery.h.
    std::int32_t gamepadBattery = 0;
    /// Set by every update; cleared by the page that has recorded it.
    bool dataReady = false;
};

static_assert(std::atomic<std::int32_t>::is_always_lock_free && std::atomic<bool>::is_always_lock_free,
              "notification threads write while the pages read");
