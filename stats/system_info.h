#pragma once

#include <windows.h>

#include <endpointvolume.h>
#include <mmdeviceapi.h>
#include <wrl/client.h>

#include <atomic>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "framework/drawing/rate_updater.h"
#include "stats/audio_device_callback.h"
#include "stats/audio_device_entry.h"
#include "stats/core_temp_library.h"
#include "stats/cpu_load_meter.h"
#include "stats/gpu_vendor.h"

/// Every figure that the pages show: one snapshot, refreshed by tick() every 300 ms. The pages read (and, for
/// dataReady, clear) the fields directly. Main thread only, but for the volume and mute fields, which Core
/// Audio's notification threads write at any time: those are lock-free atomics.
class SystemInfo : public Panelix::RateUpdater {
public:
    /// COM must be running on the thread. Throws Panelix::SysException ("System Info Error") when there is no
    /// GUID or no audio device enumerator to be had; everything else degrades to figures that are marked
    /// unavailable.
    SystemInfo();
    ~SystemInfo() override;

    /// One sampling pass.
    void update() override;

    /// Local date and time in English, e.g. "5 Febuary 2018   9:07:03  PM"; refreshes timeRecord.
    std::wstring dateTimeText();

    /// Binds the default speaker and microphone and reads their volumes and mute states. Missing endpoints
    /// leave null interfaces and volumes of 0.
    void bindAudio() noexcept;

    /// Ends the notifications and lets the endpoints go; no notification touches the snapshot afterwards.
    void releaseAudio() noexcept;

    /// The active speaker devices. `defaultIndex` becomes the row of the default one, and stays as it is when
    /// no row is.
    void listDevices(std::vector<AudioDeviceEntry>& list, std::uint32_t& defaultIndex);

    /// Makes the device with this id the default one, then binds whichever is. An id that is null or empty
    /// names no device.
    void setDefaultDevice(const wchar_t* id);

    /// Sets a channel of the speaker (0 left, 1 right) to a volume in percent, clamped to 0 to 100. The
    /// snapshot follows through the notification.
    void setChannelVolume(unsigned channel, int percent);

    /// Flips the microphone's mute, as the snapshot has it. The snapshot follows through the notification.
    void toggleMicrophoneMute();

    /// Marks changes of volume and mute as this sampler's own: notices that carry it are ignored. The
    /// operations above pass none, so that their changes come back. Same as long as the sampler lives.
    const GUID& eventContext() const noexcept { return eventContext_; }

private:
    friend class AudioDeviceCallback;

    void sampleCoreTemp();
    void sampleUnreadMail();

    void adoptReading(AudioEndpoint endpoint,
                      AudioDeviceCallback* callback,
                      const EndpointLevels& reading) noexcept;
    /// Writes one endpoint's fields of the snapshot. Any thread.
    void storeLevels(AudioEndpoint endpoint, const EndpointLevels& levels) noexcept;

    GUID eventContext_{};
    Microsoft::WRL::ComPtr<IMMDeviceEnumerator> deviceEnumerator_;
    Microsoft::WRL::ComPtr<IMMDevice> speakerDevice_;
    Microsoft::WRL::ComPtr<IMMDevice> microphoneDevice_;
    Microsoft::WRL::ComPtr<IAudioEndpointVolume> speakerVolume_;
    Microsoft::WRL::ComPtr<IAudioEndpointVolume> microphoneVolume_;
    Microsoft::WRL::ComPtr<AudioDeviceCallback> speakerCallback_;
    Microsoft::WRL::ComPtr<AudioDeviceCallback> microphoneCallback_;
    std::unique_ptr<CpuLoadMeter> cpuMeter_;
    std::unique_ptr<GpuVendor> gpu_;
    /// Null: Core Temp's shared memory is read instead. Looked for once, at construction.
    std::unique_ptr<const CoreTempLibrary> coreTempLibrary_;

public:
    /// Local calendar time of the last dateTimeText().
    std::tm timeRecord{};

private:
    /// Updates since the last mail query.
    std::int32_t mailPollCounter_ = 0;
    /// Part of the record's layout; nothing reads it.
    [[maybe_unused]] std::int32_t mailPollSpare_ = 3;
    /// Updates between two mail queries.
    std::int32_t mailPollLimit_ = 10;

public:
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
    /// Volumes in percent; written by notifications too.
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
