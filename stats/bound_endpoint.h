#pragma once

#include <windows.h>

#include <endpointvolume.h>
#include <mmdeviceapi.h>
#include <wrl/client.h>

#include "stats/audio_device_callback.h"

/// The speaker or the microphone as it is bound: a device, its volume, and the callback that takes the
/// volume's notices over into the snapshot. What cannot be had is null. Main thread only.
class BoundEndpoint {
public:
    /// Nothing is bound at first. `snapshot` must outlive it. Notices that carry `ownContext` are ignored.
    BoundEndpoint(AudioEndpoint endpoint, Snapshot& snapshot, const GUID& ownContext) noexcept;
    ~BoundEndpoint();
    BoundEndpoint(const BoundEndpoint&) = delete;
    BoundEndpoint& operator=(const BoundEndpoint&) = delete;

    /// Binds the device, null for none, in the place of what was bound, and has its changes told from now on.
    void bind(Microsoft::WRL::ComPtr<IMMDevice> device) noexcept;

    /// Reads volumes and mute state into the snapshot, unless a notice has come since bind(): what it said is
    /// the newer. Without a volume they are 0 and not muted.
    void read() noexcept;

    /// Ends the notices: none touches the snapshot afterwards.
    void unwatch() noexcept;

    /// Ends the notices and lets everything go. The snapshot stays as it is.
    void release() noexcept;

    /// Asks the volume for a sign of life. True when it is to be bound anew: it says that its device was
    /// taken away, also if that has come back meanwhile, or that the audio service has ended; or it has
    /// failed with whatever result the second time in a row.
    bool isGone() noexcept;

    /// To be called when the volume is not gone: makes up for what bind() and read() could not do. Until
    /// Core Audio takes the callback, the levels are read each time.
    void complete() noexcept;

    /// Null when there is none.
    IMMDevice* device() const noexcept { return device_.Get(); }
    IAudioEndpointVolume* volume() const noexcept { return volume_.Get(); }

private:
    void watch() noexcept;

    const AudioEndpoint endpoint_;
    Snapshot& snapshot_;
    const GUID ownContext_;
    Microsoft::WRL::ComPtr<IMMDevice> device_;
    Microsoft::WRL::ComPtr<IAudioEndpointVolume> volume_;
    Microsoft::WRL::ComPtr<AudioDeviceCallback> callback_;
    /// Core Audio has taken the callback.
    bool isWatched_ = false;
    /// The last reading was complete, but for a second channel that the device need not have.
    bool isRead_ = false;
    /// Calls of isGone() in a row that got no answer.
    int failedQuestions_ = 0;
};
