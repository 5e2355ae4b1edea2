#include "stats/audio_device_callback.h"

#include <new>

#include "stats/snapshot.h"
#include "stats/volume_percent.h"

namespace {

class ExclusiveLock {
public:
    explicit ExclusiveLock(SRWLOCK& lock) noexcept : lock_(lock) { AcquireSRWLockExclusive(&lock_); }
    ~ExclusiveLock() { ReleaseSRWLockExclusive(&lock_); }
    ExclusiveLock(const ExclusiveLock&) = delete;
    ExclusiveLock& operator=(const ExclusiveLock&) = delete;

private:
    SRWLOCK& lock_;
};

// The record ends with its last channel: what a channel beyond it would read belongs to somebody else.
float channelVolume(const AUDIO_VOLUME_NOTIFICATION_DATA& data, UINT channel) noexcept {
    const float* const volumes = data.afChannelVolumes;
    return channel < data.nChannels ? volumes[channel] : 0.0F;
}

}  // namespace

void storeLevels(Snapshot& snapshot, AudioEndpoint endpoint, const EndpointLevels& levels) noexcept {
    if (endpoint == AudioEndpoint::Microphone) {
        snapshot.microphoneMuted = levels.muted;
        return;
    }
    snapshot.speakerLeftVolume = levels.left;
    snapshot.speakerRightVolume = levels.right;
    snapshot.speakerMasterVolume = levels.master;
    snapshot.speakerMuted = levels.muted;
}

Microsoft::WRL::ComPtr<AudioDeviceCallback> AudioDeviceCallback::create(Snapshot& snapshot,
                                                                        const GUID& ownContext,
                                                                        AudioEndpoint endpoint) noexcept {
    Microsoft::WRL::ComPtr<AudioDeviceCallback> callback;
    // Attach() of MinGW's ComPtr adds a reference, though it takes one over.
    *callback.GetAddressOf() = new (std::nothrow) AudioDeviceCallback(snapshot, ownContext, endpoint);
    return callback;
}

AudioDeviceCallback::AudioDeviceCallback(Snapshot& snapshot,
                                         const GUID& ownContext,
                                         AudioEndpoint endpoint) noexcept
    : ownContext_(ownContext),
      endpoint_(endpoint),
      snapshot_(&snapshot) {}

void AudioDeviceCallback::detach() noexcept {
    const ExclusiveLock lock(lock_);
    snapshot_ = nullptr;
}

void AudioDeviceCallback::adoptReading(const EndpointLevels& reading) noexcept {
    const ExclusiveLock lock(lock_);
    if (snapshot_ != nullptr && !noticeTaken_) {
        storeLevels(*snapshot_, endpoint_, reading);
    }
}

HRESULT STDMETHODCALLTYPE AudioDeviceCallback::QueryInterface(REFIID iid, void** out) noexcept {
    if (out == nullptr) {
        return E_POINTER;
    }
    if (iid != __uuidof(IUnknown) && iid != __uuidof(IAudioEndpointVolumeCallback)) {
        *out = nullptr;
        return E_NOINTERFACE;
    }
    AddRef();
    *out = static_cast<IAudioEndpointVolumeCallback*>(this);
    return S_OK;
}

ULONG STDMETHODCALLTYPE AudioDeviceCallback::AddRef() noexcept {
    return refCount_.fetch_add(1) + 1;
}

ULONG STDMETHODCALLTYPE AudioDeviceCallback::Release() noexcept {
    const ULONG count = refCount_.fetch_sub(1) - 1;
    if (count == 0) {
        delete this;
    }
    return count;
}

HRESULT STDMETHODCALLTYPE AudioDeviceCallback::OnNotify(AUDIO_VOLUME_NOTIFICATION_DATA* data) noexcept {
    if (data == nullptr) {
        return E_INVALIDARG;
    }
    const EndpointLevels levels{roundedPercent(channelVolume(*data, 0)),
                                roundedPercent(channelVolume(*data, 1)),
                                roundedPercent(data->fMasterVolume),
                                data->bMuted != FALSE};
    const ExclusiveLock lock(lock_);
    if (snapshot_ == nullptr || data->guidEventContext == ownContext_) {
        return S_OK;
    }
    storeLevels(*snapshot_, endpoint_, levels);
    noticeTaken_ = true;
    return S_OK;
}
