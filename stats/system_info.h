#pragma once

#include <windows.h>

#include <mmdeviceapi.h>
#include <wrl/client.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "framework/drawing/rate_updater.h"
#include "stats/audio_device_entry.h"
#include "stats/bound_endpoint.h"
#include "stats/core_temp_library.h"
#include "stats/cpu_load_meter.h"
#include "stats/gpu_vendor.h"
#include "stats/snapshot.h"

/// The sampler of everything that the pages show: its snapshot, refreshed by tick() every 300 ms. The pages
/// read (and, for dataReady, clear) the fields directly. Main thread only, but for the fields that the
/// snapshot says Core Audio's notification threads write.
class SystemInfo : public Panelix::RateUpdater, public Snapshot {
public:
    /// Two things follow from it: the graphs show a minute, as 201 samples (kGraphWidth of
    /// pages/main_page_layout.h), and mails are counted every 3.3 s, at every 11th update (mailPollLimit_).
    static constexpr std::int64_t kUpdatePeriodMs = 300;

    /// COM must be running on the thread. Throws Panelix::SysException ("System Info Error") when there is no
    /// GUID or no audio device enumerator to be had; everything else degrades to figures that are marked
    /// unavailable.
    SystemInfo();
    ~SystemInfo() override;

    /// One sampling pass. Before it the default devices are followed: another one, the first one and the loss
    /// of the last one are bound within about a second and a half.
    void update() override;

    /// Local date and time in English, e.g. "5 Febuary 2018   9:07:03  PM"; refreshes timeRecord. Made anew
    /// when it changes only. Good until the next call.
    const std::wstring& dateTimeText();

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
    /// Binds anew what is no longer the default device or is gone, at most once a second. Asked for in the
    /// loop, because a notification would come on a thread of Core Audio's that may not wait for the bindings
    /// it changes. A question is two calls into the audio service per endpoint, its default device and the
    /// mute state of the bound one; what did not change stays bound, with its notices.
    void followDefaultDevices() noexcept;
    void sampleCoreTemp();
    void sampleUnreadMail();

    GUID eventContext_{};
    Microsoft::WRL::ComPtr<IMMDeviceEnumerator> deviceEnumerator_;
    BoundEndpoint speaker_{AudioEndpoint::Speaker, *this, eventContext_};
    BoundEndpoint microphone_{AudioEndpoint::Microphone, *this, eventContext_};
    /// GetTickCount() when the default devices were asked for last; at the beginning, when they were bound.
    std::uint32_t lastDefaultQuestionMs_ = GetTickCount();
    /// Questions in a row after which speaker or microphone had no device.
    std::uint32_t questionsWithoutDevice_ = 0;
    std::unique_ptr<CpuLoadMeter> cpuMeter_;
    std::unique_ptr<GpuVendor> gpu_;
    /// Null: Core Temp's shared memory is read instead. Looked for once, at construction.
    std::unique_ptr<const CoreTempLibrary> coreTempLibrary_;

public:
    /// Local calendar time of the last dateTimeText().
    std::tm timeRecord{};

private:
    /// What dateTimeText() returned last, and the time that it tells.
    std::wstring dateTimeText_;
    std::tm toldTime_{};
    /// Updates since the last mail query.
    std::int32_t mailPollCounter_ = 0;
    /// Part of the record's layout; nothing reads it.
    [[maybe_unused]] std::int32_t mailPollSpare_ = 3;
    /// Updates between two mail queries.
    std::int32_t mailPollLimit_ = 10;
};
