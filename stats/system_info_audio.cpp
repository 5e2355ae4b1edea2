#include "stats/system_info.h"

#include <windows.h>

#include <propidl.h>

#include <cwchar>
#include <memory>

#include "stats/policy_config_abi.h"
#include "stats/volume_percent.h"

// What Core Audio answers is told by the interface pointers and values that it hands out: those that a failed
// call leaves null or at the value they were preset to are missing, whatever its result code says.

namespace {

using Microsoft::WRL::ComPtr;

constexpr unsigned kLeftChannel = 0;
constexpr unsigned kRightChannel = 1;
// Device's friendly name; the SDK declares the key, but no library of MinGW's defines it.
constexpr PROPERTYKEY kFriendlyNameKey{
    {0xA45C254E, 0xDF1C, 0x4EFD, {0x80, 0x20, 0x67, 0xD1, 0x46, 0xA8, 0x50, 0xE0}}, 14};

struct CoTaskMemDeleter {
    void operator()(void* memory) const noexcept { CoTaskMemFree(memory); }
};
using CoTaskText = std::unique_ptr<wchar_t, CoTaskMemDeleter>;

/// A property's value; empty at first.
class PropertyValue {
public:
    PropertyValue() = default;
    ~PropertyValue() { PropVariantClear(&value_); }
    PropertyValue(const PropertyValue&) = delete;
    PropertyValue& operator=(const PropertyValue&) = delete;

    PROPVARIANT* put() noexcept { return &value_; }

    /// Empty when the value is no text.
    std::wstring text() const {
        return value_.vt == VT_LPWSTR && value_.pwszVal != nullptr ? std::wstring(value_.pwszVal)
                                                                   : std::wstring();
    }

private:
    /// All zero is VT_EMPTY.
    PROPVARIANT value_{};
};

ComPtr<IMMDevice> defaultDevice(IMMDeviceEnumerator* enumerator, EDataFlow flow) {
    ComPtr<IMMDevice> device;
    if (enumerator != nullptr) {
        enumerator->GetDefaultAudioEndpoint(flow, eConsole, &device);
    }
    return device;
}

ComPtr<IAudioEndpointVolume> activateVolume(IMMDevice* device) {
    ComPtr<IAudioEndpointVolume> volume;
    if (device != nullptr) {
        device->Activate(__uuidof(IAudioEndpointVolume), CLSCTX_ALL, nullptr, IID_PPV_ARGS_Helper(&volume));
    }
    return volume;
}

// Null when there is no endpoint to watch, or no memory. Core Audio's answer does not matter: a callback that
// it did not take is simply never called.
ComPtr<AudioDeviceCallback> watch(Snapshot& snapshot,
                                  const GUID& ownContext,
                                  AudioEndpoint endpoint,
                                  IAudioEndpointVolume* volume) noexcept {
    ComPtr<AudioDeviceCallback> callback;
    if (volume != nullptr) {
        callback = AudioDeviceCallback::create(snapshot, ownContext, endpoint);
    }
    if (callback != nullptr) {
        volume->RegisterControlChangeNotify(callback.Get());
    }
    return callback;
}

// Unregistering comes first, so that the last notices are on their way when detaching waits for them. Core
// Audio may keep the callback, and even call it, for longer.
void unwatch(ComPtr<AudioDeviceCallback>& callback, IAudioEndpointVolume* volume) noexcept {
    if (callback == nullptr) {
        return;
    }
    if (volume != nullptr) {
        volume->UnregisterControlChangeNotify(callback.Get());
    }
    callback->detach();
    callback.Reset();
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

EndpointLevels readSpeaker(IAudioEndpointVolume* volume) {
    EndpointLevels levels;
    if (volume != nullptr) {
        levels.left = readChannelPercent(*volume, kLeftChannel);
        levels.right = readChannelPercent(*volume, kRightChannel);
        levels.master = readMasterPercent(*volume);
        levels.muted = readMuted(*volume);
    }
    return levels;
}

EndpointLevels readMicrophone(IAudioEndpointVolume* volume) {
    EndpointLevels levels;
    if (volume != nullptr) {
        levels.muted = readMuted(*volume);
    }
    return levels;
}

// Once an endpoint is watched, its callback alone decides what gets into the snapshot.
void adopt(const EndpointLevels& reading,
           AudioEndpoint endpoint,
           AudioDeviceCallback* callback,
           Snapshot& snapshot) noexcept {
    if (callback != nullptr) {
        callback->adoptReading(reading);
    } else {
        storeLevels(snapshot, endpoint, reading);
    }
}

CoTaskText deviceId(IMMDevice* device) {
    wchar_t* id = nullptr;
    if (device != nullptr) {
        device->GetId(&id);
    }
    return CoTaskText(id);
}

std::wstring friendlyName(IMMDevice& device) {
    ComPtr<IPropertyStore> store;
    device.OpenPropertyStore(STGM_READ, &store);
    PropertyValue name;
    if (store != nullptr) {
        store->GetValue(kFriendlyNameKey, name.put());
    }
    return name.text();
}

ComPtr<IMMDeviceCollection> activeSpeakers(IMMDeviceEnumerator* enumerator) {
    ComPtr<IMMDeviceCollection> collection;
    if (enumerator != nullptr) {
        enumerator->EnumAudioEndpoints(eRender, DEVICE_STATE_ACTIVE, &collection);
    }
    return collection;
}

// A system without the policy-configuration class keeps its default device.
void makeDefault(const wchar_t* id) {
    if (id == nullptr || *id == L'\0') {
        return;
    }
    ComPtr<IPolicyConfig> policy;
    CoCreateInstance(PolicyConfigAbi::kClass, nullptr, CLSCTX_ALL, IID_PPV_ARGS(&policy));
    if (policy != nullptr) {
        policy->SetDefaultEndpoint(id, eConsole);
    }
}

}  // namespace

void SystemInfo::bindAudio() noexcept {
    releaseAudio();

    speakerDevice_ = defaultDevice(deviceEnumerator_.Get(), eRender);
    speakerVolume_ = activateVolume(speakerDevice_.Get());
    speakerCallback_ = watch(*this, eventContext_, AudioEndpoint::Speaker, speakerVolume_.Get());

    microphoneDevice_ = defaultDevice(deviceEnumerator_.Get(), eCapture);
    microphoneVolume_ = activateVolume(microphoneDevice_.Get());
    microphoneCallback_ = watch(*this, eventContext_, AudioEndpoint::Microphone, microphoneVolume_.Get());

    adopt(readSpeaker(speakerVolume_.Get()), AudioEndpoint::Speaker, speakerCallback_.Get(), *this);
    adopt(
        readMicrophone(microphoneVolume_.Get()), AudioEndpoint::Microphone, microphoneCallback_.Get(), *this);
}

void SystemInfo::releaseAudio() noexcept {
    unwatch(speakerCallback_, speakerVolume_.Get());
    unwatch(microphoneCallback_, microphoneVolume_.Get());
    speakerVolume_.Reset();
    microphoneVolume_.Reset();
    speakerDevice_.Reset();
    microphoneDevice_.Reset();
}

void SystemInfo::listDevices(std::vector<AudioDeviceEntry>& list, std::uint32_t& defaultIndex) {
    list.clear();
    const ComPtr<IMMDeviceCollection> speakers = activeSpeakers(deviceEnumerator_.Get());
    if (speakers == nullptr) {
        return;
    }
    UINT count = 0;
    speakers->GetCount(&count);
    for (int i = 0; i < static_cast<int>(count); ++i) {
        ComPtr<IMMDevice> device;
        speakers->Item(static_cast<UINT>(i), &device);
        if (device == nullptr) {
            // Gone since it was counted: nobody could choose it.
            continue;
        }
        const CoTaskText id = deviceId(device.Get());
        const CoTaskText defaultId = deviceId(defaultDevice(deviceEnumerator_.Get(), eRender).Get());
        if (id != nullptr && defaultId != nullptr && std::wcscmp(id.get(), defaultId.get()) == 0) {
            defaultIndex = static_cast<std::uint32_t>(list.size());
        }
        list.push_back(
            {id != nullptr ? std::wstring(id.get()) : std::wstring(), friendlyName(*device.Get())});
    }
}

void SystemInfo::setDefaultDevice(const wchar_t* id) {
    makeDefault(id);
    bindAudio();
}

void SystemInfo::setChannelVolume(unsigned channel, int percent) {
    if (speakerVolume_ != nullptr) {
        speakerVolume_->SetChannelVolumeLevelScalar(channel, volumeScalar(percent), nullptr);
    }
}

void SystemInfo::toggleMicrophoneMute() {
    if (microphoneVolume_ != nullptr) {
        microphoneVolume_->SetMute(microphoneMuted ? FALSE : TRUE, nullptr);
    }
}
