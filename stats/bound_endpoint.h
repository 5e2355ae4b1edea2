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

    /// True when the volume says of itself that it will never work again: its device was taken away, also if
    /// it has come back meanwhile, or the audio service has ended.
    bool isGone() const noexcept;

    /// Null when there is none.
    IMMDevice* device() const noexcept { return device_.Get(); }
    IAudioEndpointVolume* volume() const noexcept { return volume_.Get(); }

private:
    const AudioEndpoint endpoint_;
    Snapshot& snapshot_;
    const GUID ownContext_;
    Microsoft::WRL::ComPtr<IMMDevice> device_;
    Microsoft::WRL::ComPtr<IAudioEndpointVolume> volume_;
    Microsoft::WRL::ComPtr<AudioDeviceCallback> callback_;
};
