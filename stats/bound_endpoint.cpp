#include "stats/bound_endpoint.h"

#include <audioclient.h>

#include <utility>

#include "stats/volume_percent.h"

namespace {

constexpr unsigned kLeftChannel = 0;
constexpr unsigned kRightChannel = 1;

/// Questions in a row after which a volume that answers none of them is taken for dead.
constexpr int kFailedQuestionsOfTheDead = 2;

Microsoft::WRL::ComPtr<IAudioEndpointVolume> activateVolume(IMMDevice* device) {
    Microsoft::WRL::ComPtr<IAudioEndpointVolume> volume;
    if (device != nullptr) {
        device->Activate(__uuidof(IAudioEndpointVolume), CLSCTX_ALL, nullptr, IID_PPV_ARGS_Helper(&volume));
    }
    return volume;
}

/// Levels, and whether they could all be read. A device of one channel has no right one.
struct Reading {
    EndpointLevels levels;
    bool complete = true;
};

Reading readLevels(IAudioEndpointVolume* volume, AudioEndpoint endpoint) {
    Reading reading;
    if (volume == nullptr) {
        return reading;
    }
    if (endpoint == AudioEndpoint::Speaker) {
        float left = 0.0F;
        float right = 0.0F;
        float master = 0.0F;
        reading.complete = SUCCEEDED(volume->GetChannelVolumeLevelScalar(kLeftChannel, &left));
        volume->GetChannelVolumeLevelScalar(kRightChannel, &right);
        reading.complete &= SUCCEEDED(volume->GetMasterVolumeLevelScalar(&master));
        reading.levels.left = truncatedPercent(left);
        reading.levels.right = truncatedPercent(right);
        reading.levels.master = truncatedPercent(master);
    }
    BOOL muted = FALSE;
    reading.complete &= SUCCEEDED(volume->GetMute(&muted));
    reading.levels.muted = muted == TRUE;
    return reading;
}

}  // namespace

BoundEndpoint::BoundEndpoint(AudioEndpoint endpoint, Snapshot& snapshot, const GUID& ownContext) noexcept
    : endpoint_(endpoint),
      snapshot_(snapshot),
      ownContext_(ownContext) {}

BoundEndpoint::~BoundEndpoint() {
    release();
}

void BoundEndpoint::bind(Microsoft::WRL::ComPtr<IMMDevice> device) noexcept {
    release();
    device_ = std::move(device);
    volume_ = activateVolume(device_.Get());
    failedQuestions_ = 0;
    watch();
}

void BoundEndpoint::watch() noexcept {
    if (volume_ == nullptr) {
        return;
    }
    if (callback_ == nullptr) {
        callback_ = AudioDeviceCallback::create(snapshot_, ownContext_, endpoint_);
    }
    isWatched_ = callback_ != nullptr && SUCCEEDED(volume_->RegisterControlChangeNotify(callback_.Get()));
}

// Once an endpoint is watched, its callback alone decides what gets into the snapshot.
void BoundEndpoint::read() noexcept {
    const Reading reading = readLevels(volume_.Get(), endpoint_);
    isRead_ = reading.complete;
    if (callback_ != nullptr) {
        callback_->adoptReading(reading.levels);
    } else {
        storeLevels(snapshot_, endpoint_, reading.levels);
    }
}

void BoundEndpoint::complete() noexcept {
    // A reading that fails as the question did would say 0.
    if (volume_ == nullptr || failedQuestions_ > 0 || (isWatched_ && isRead_)) {
        return;
    }
    if (!isWatched_) {
        watch();
    }
    read();
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
    isWatched_ = false;
}

void BoundEndpoint::release() noexcept {
    unwatch();
    volume_.Reset();
    device_.Reset();
}

// Of the volume's readings the mute state is the shortest. Which results mean that a volume will never work
// again is documented for a few only, and one failure may pass.
bool BoundEndpoint::isGone() noexcept {
    if (volume_ == nullptr) {
        return false;
    }
    BOOL muted = FALSE;
    const HRESULT result = volume_->GetMute(&muted);
    failedQuestions_ = FAILED(result) ? failedQuestions_ + 1 : 0;
    return failedQuestions_ >= kFailedQuestionsOfTheDead || result == AUDCLNT_E_DEVICE_INVALIDATED ||
           result == AUDCLNT_E_SERVICE_NOT_RUNNING;
}
