#pragma once

#include <windows.h>

#include <endpointvolume.h>
#include <wrl/client.h>

#include <atomic>
#include <cstdint>

struct Snapshot;

/// The endpoint that a callback watches.
enum class AudioEndpoint { Speaker, Microphone };

/// Volumes in percent and mute state of an endpoint. Of a microphone only the mute state counts.
struct EndpointLevels {
    std::int32_t left = 0;
    std::int32_t right = 0;
    std::int32_t master = 0;
    bool muted = false;
};

/// Writes one endpoint's fields of the snapshot. Any thread.
void storeLevels(Snapshot& snapshot, AudioEndpoint endpoint, const EndpointLevels& levels) noexcept;

// COM's interfaces have no virtual destructor: it would take slots of the method table.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// Takes the volume notifications of one endpoint over into the snapshot. Reference-counted: Core Audio keeps
/// its own reference for as long as it may call, also beyond the end of the registration.
///
/// Which endpoint it watches is fixed when it is made, so that notifications never look at interface
/// pointers, which the main thread changes. detach() ends its effect: a notice of an endpoint that is no
/// longer bound changes nothing, and does not touch the snapshot.
class AudioDeviceCallback final : public IAudioEndpointVolumeCallback {
public:
    /// `snapshot` must live until detach(). Notices that carry `ownContext` are ignored. Null when there is
    /// no memory.
    static Microsoft::WRL::ComPtr<AudioDeviceCallback> create(Snapshot& snapshot,
                                                              const GUID& ownContext,
                                                              AudioEndpoint endpoint) noexcept;

    AudioDeviceCallback(const AudioDeviceCallback&) = delete;
    AudioDeviceCallback& operator=(const AudioDeviceCallback&) = delete;

    /// Waits until no notice is being taken over; those that come later are ignored. Main thread.
    void detach() noexcept;

    /// Takes over what was read from the endpoint after registering, unless a notice has come since: what the
    /// notice said is the newer. Main thread.
    void adoptReading(const EndpointLevels& reading) noexcept;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    /// Any thread. Rounds to the nearest percent. A channel that the notice does not have counts as 0.
    HRESULT STDMETHODCALLTYPE OnNotify(AUDIO_VOLUME_NOTIFICATION_DATA* data) noexcept override;

private:
    AudioDeviceCallback(Snapshot& snapshot, const GUID& ownContext, AudioEndpoint endpoint) noexcept;
    ~AudioDeviceCallback() = default;

    const GUID ownContext_;
    const AudioEndpoint endpoint_;
    std::atomic<ULONG> refCount_{1};
    /// Guards the members below and the stores into the snapshot. Held for these stores only, never during a
    /// call into Core Audio.
    SRWLOCK lock_ = SRWLOCK_INIT;
    /// Null after detach().
    Snapshot* snapshot_;
    bool noticeTaken_ = false;
};

#pragma GCC diagnostic pop
