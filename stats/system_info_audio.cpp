#include "stats/system_info.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <memory>
#include <optional>
#include <utility>

#include "stats/device_name.h"
#include "stats/policy_config_abi.h"
#include "stats/volume_percent.h"

// What Core Audio returns is told by the interface pointers and values that it hands out: those that a failed
// call leaves null or at the value they were preset to are missing, whatever its result code says.

namespace {

using Microsoft::WRL::ComPtr;

constexpr std::uint32_t kQuestionPeriodMs = 1000;
/// Questions with one enumerator while a flow has no device.
constexpr std::uint32_t kQuestionsPerEnumerator = 10;
/// Devices that are listed at most: the page shows fewer, and a count that cannot be would stop the program
/// for minutes.
constexpr int kMaxListedDevices = 1000;

struct CoTaskMemDeleter {
    void operator()(void* memory) const noexcept { CoTaskMemFree(memory); }
};
using CoTaskText = std::unique_ptr<wchar_t, CoTaskMemDeleter>;

// std::nullopt: the system does not say. Null: there is none.
std::optional<ComPtr<IMMDevice>> askForDefault(IMMDeviceEnumerator* enumerator, EDataFlow flow) {
    ComPtr<IMMDevice> device;
    if (enumerator == nullptr) {
        return std::nullopt;
    }
    const HRESULT result = enumerator->GetDefaultAudioEndpoint(flow, eConsole, &device);
    if (device == nullptr && result != E_NOTFOUND) {
        return std::nullopt;
    }
    return device;
}

ComPtr<IMMDevice> defaultDevice(IMMDeviceEnumerator* enumerator, EDataFlow flow) {
    return askForDefault(enumerator, flow).value_or(nullptr);
}

CoTaskText deviceId(IMMDevice* device) {
    wchar_t* id = nullptr;
    if (device != nullptr) {
        device->GetId(&id);
    }
    return CoTaskText(id);
}

// What does not tell its id is not known to be another one.
bool isAnother(IMMDevice* device, IMMDevice* bound) {
    const CoTaskText id = deviceId(device);
    const CoTaskText boundId = deviceId(bound);
    return id != nullptr && boundId != nullptr && std::wcscmp(id.get(), boundId.get()) != 0;
}

// Also true while a device is there whose volume could not be had yet.
bool isOutdated(const BoundEndpoint& bound, IMMDevice* current) {
    if (current == nullptr) {
        return bound.device() != nullptr;
    }
    return bound.volume() == nullptr || isAnother(current, bound.device());
}

// False when the system does not say which device is the default one: what is bound stays then, unless it is
// gone.
bool follow(IMMDeviceEnumerator* enumerator, EDataFlow flow, BoundEndpoint& bound) {
    std::optional<ComPtr<IMMDevice>> current = askForDefault(enumerator, flow);
    if (bound.isGone() || (current && isOutdated(bound, current->Get()))) {
        bound.bind(current.value_or(nullptr));
        bound.read();
    } else {
        bound.complete();
    }
    return current.has_value();
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
    speaker_.bind(defaultDevice(deviceEnumerator_.Get(), eRender));
    microphone_.bind(defaultDevice(deviceEnumerator_.Get(), eCapture));
    speaker_.read();
    microphone_.read();
}

void SystemInfo::releaseAudio() noexcept {
    speaker_.unwatch();
    microphone_.unwatch();
    speaker_.release();
    microphone_.release();
}

// An enumerator does not survive the end of the audio service, so one that fails is replaced for the next
// time. One that finds no device may be dead as well: what it answers then is documented nowhere.
void SystemInfo::followDefaultDevices() noexcept {
    const std::uint32_t nowMs = GetTickCount();
    if (nowMs - lastDefaultQuestionMs_ < kQuestionPeriodMs) {
        return;
    }
    lastDefaultQuestionMs_ = nowMs;
    const bool speakerKnown = follow(deviceEnumerator_.Get(), eRender, speaker_);
    const bool microphoneKnown = follow(deviceEnumerator_.Get(), eCapture, microphone_);
    const bool allHaveDevices = speaker_.device() != nullptr && microphone_.device() != nullptr;
    questionsWithoutDevice_ = allHaveDevices ? 0 : questionsWithoutDevice_ + 1;
    const bool deviceMayBeOverlooked = questionsWithoutDevice_ % kQuestionsPerEnumerator == 1;
    if (speakerKnown && microphoneKnown && !deviceMayBeOverlooked) {
        return;
    }
    ComPtr<IMMDeviceEnumerator> enumerator;
    CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL, IID_PPV_ARGS(&enumerator));
    if (enumerator != nullptr) {
        deviceEnumerator_ = std::move(enumerator);
    }
}

void SystemInfo::listDevices(std::vector<AudioDeviceEntry>& list, std::uint32_t& defaultIndex) {
    list.clear();
    const ComPtr<IMMDeviceCollection> speakers = activeSpeakers(deviceEnumerator_.Get());
    if (speakers == nullptr) {
        return;
    }
    UINT count = 0;
    speakers->GetCount(&count);
    for (int i = 0; i < std::min(static_cast<int>(count), kMaxListedDevices); ++i) {
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
    if (speaker_.volume() != nullptr) {
        speaker_.volume()->SetChannelVolumeLevelScalar(channel, volumeScalar(percent), nullptr);
    }
}

void SystemInfo::toggleMicrophoneMute() {
    if (microphone_.volume() != nullptr) {
        microphone_.volume()->SetMute(microphoneMuted ? FALSE : TRUE, nullptr);
    }
}
