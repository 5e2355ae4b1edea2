#include "stats/bound_endpoint.h"

#include <audioclient.h>

#include <utility>

#include "stats/volume_percent.h"

namespace {

constexpr unsigned kLeftChannel = 0;
constexpr unsigned kRightChannel = 1;

Microsoft::WRL::ComPtr<IAudioEndpointVolume> activateVolume(IMMDevice* device) {
    Microsoft::WRL::ComPtr<IAudioEndpointVolume> volume;
    if (device != nullptr) {
        device->Activate(__uuidof(IAudioEndpointVolume), CLSCTX_ALL, nullptr, IID_PPV_ARGS_Helper(&volume));
    }
    return volume;
}

std::int32_t readChannelPercent(IAudioEndpointVolume& volume, unsigned channel) {
    float scalar = 0.0F;
    volume.GetChannelVolumeLevelScalar(channel, &scalar);
    return truncatedPercent(scalar);
}

std::int32_t readMasterPercent(IAudioEndpointVolume& volume) {
    float scalar = 0.0F;
    volume.GetMasterVolumeLevelScalar(&scalar);
    return truncatedPercent(scalar);
}

bool readMuted(IAudioEndpointVolume& volume) {
    BOOL muted = FALSE;
    volume.GetMute(&muted);
    return muted == TRUE;
}

EndpointLevels readLevels(IAudioEndpointVolume* volume, AudioEndpoint endpoint) {
    EndpointLevels levels;
    if (volume == nullptr) {
        return levels;
    }
    if (endpoint == AudioEndpoint::Speaker) {
        levels.left = readChannelPercent(*volume, kLeftChannel);
        levels.right = readChannelPercent(*volume, kRightChannel);
        levels.master = readMasterPercent(*volume);
    }
    levels.muted = readMuted(*volume);
    return levels;
}

}  // namespace

BoundEndpoint::BoundEndpoint(AudioEndpoint endpoint, Snapshot& snapshot, const GUID& ownContext) noexcept
    : endpoint_(endpoint),
      snapshot_(snapshot),
      ownContext_(ownContext) {}

BoundEndpoint::~BoundEndpoint() {
    release();
}

// What Core Audio returns for the registration does not matter: a callback that it did not take is simply
// never called.
void BoundEndpoint::bind(Microsoft::WRL::ComPtr<IMMDevice> device) noexcept {
    release();
    device_ = std::move(device);
    volume_ = activateVolume(device_.Get());
    if (volume_ == nullptr) {
        return;
    }
    callback_ = AudioDeviceCallback::create(snapshot_, ownContext_, endpoint_);
    if (callback_ != nullptr) {
        volume_->RegisterControlChangeNotify(callback_.Get());
    }
}

// Once an endpoint is watched, its callback alone decides what gets into the snapshot.
void BoundEndpoint::read() noexcept {
    const EndpointLevels levels = readLevels(volume_.Get(), endpoint_);
    if (callback_ != nullptr) {
        callback_->adoptReading(levels);
    } else {
        storeLevels(snapshot_, endpoint_, levels);
    }
}

// Unregistering comes first, so that the last notices are on their way when detaching waits for them. Core
// Audio may keep the callback, and even call it, for longer.
void BoundEndpoint::unwatch() noexcept {
    if (callback_ == nullptr) {
        return;
    }
    volume_->UnregisterControlChangeNotify(callback_.Get());
    callback_->detach();
    callback_.Reset();
}

void BoundEndpoint::release() noexcept {
    unwatch();
    volume_.Reset();
    device_.Reset();
}

// Of the volume's readings the mute state is the shortest. Any other failure says nothing about the next
// call.
bool BoundEndpoint::isGone() const noexcept {
    if (volume_ == nullptr) {
        return false;
    }
    BOOL muted = FALSE;
    const HRESULT result = volume_->GetMute(&muted);
    return result == AUDCLNT_E_DEVICE_INVALIDATED || result == AUDCLNT_E_SERVICE_NOT_RUNNING;
}
