#include "standins/core_audio/virtual_audio.h"

#include <gtest/gtest.h>

#include <audioclient.h>
#include <endpointvolume.h>
#include <mmdeviceapi.h>
#include <wrl/client.h>

#include "standins/call_log.h"
#include "framework/core/com_apartment.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "tests/support/standin_session.h"

namespace {

using Microsoft::WRL::ComPtr;
using Standins::AudioCall;
using Standins::AudioFlow;
using Standins::AudioObject;
using Standins::VirtualAudio;

constexpr HRESULT kServerUnavailable = static_cast<HRESULT>(0x800706BA);

class VirtualSound : public testing::Test {
protected:
    StandinSession session;
    VirtualAudio audio;
};

TEST_F(VirtualSound, HasNoDevicesAtFirst) {
    EXPECT_EQ(audio.deviceCount(), 0U);
    EXPECT_EQ(audio.defaultDevice(AudioFlow::Render), std::nullopt);
    EXPECT_EQ(audio.defaultDevice(AudioFlow::Capture), std::nullopt);
}

TEST_F(VirtualSound, IsTheSameForEverybodyInTheSession) {
    audio.addUsualDevices();
    VirtualAudio other;
    EXPECT_EQ(other.deviceCount(), 4U);
    EXPECT_EQ(other.defaultDevice(AudioFlow::Render), 0U);
    EXPECT_EQ(other.defaultDevice(AudioFlow::Capture), 3U);
    EXPECT_EQ(other.device(3).flow, AudioFlow::Capture);
    EXPECT_FALSE(other.device(1).name.empty());
    other.setLevels(1, {{0.25F, 0.75F}, 0.75F, true});
    EXPECT_EQ(audio.levels(1).channels, (std::vector<float>{0.25F, 0.75F}));
    EXPECT_TRUE(audio.levels(1).muted);
}

TEST_F(VirtualSound, TakesNoMoreDevicesThanItHasRoomFor) {
    for (std::size_t i = 0; i < VirtualAudio::kMaxDevices; ++i) {
        EXPECT_EQ(audio.addDevice({}), i);
    }
    EXPECT_EQ(audio.addDevice({}), std::nullopt);
}

TEST_F(VirtualSound, CutsTextsThatAreTooLong) {
    Standins::AudioDevice device;
    device.name.assign(1000, L'n');
    EXPECT_EQ(audio.device(audio.addDevice(device).value()).name,
              std::wstring(VirtualAudio::kTextLength - 1, L'n'));
}

TEST_F(VirtualSound, FailsTheCallsThatItWasToldTo) {
    audio.failCall(AudioCall::GetMute, {.result = E_ACCESSDENIED, .skip = 1, .times = 2});
    EXPECT_EQ(audio.enter({.call = AudioCall::GetMute}), std::nullopt);
    EXPECT_EQ(audio.enter({.call = AudioCall::SetMute}), std::nullopt);
    EXPECT_EQ(audio.enter({.call = AudioCall::GetMute}), E_ACCESSDENIED);
    EXPECT_EQ(audio.enter({.call = AudioCall::GetMute}), E_ACCESSDENIED);
    EXPECT_EQ(audio.enter({.call = AudioCall::GetMute}), std::nullopt);
    EXPECT_EQ(audio.callCount(AudioCall::GetMute), 4U);
}

TEST_F(VirtualSound, KeepsTheNewestCalls) {
    constexpr std::uint32_t kMore = 10;
    for (std::uint32_t i = 0; i < Standins::CallLog::kLength + kMore; ++i) {
        audio.enter({.call = AudioCall::Item, .first = i});
    }
    const std::vector<Standins::AudioCallEntry> calls = audio.calls();
    ASSERT_EQ(calls.size(), Standins::CallLog::kLength);
    EXPECT_EQ(calls.front().first, kMore);
    EXPECT_EQ(calls.back().first, Standins::CallLog::kLength + kMore - 1);
}

TEST_F(VirtualSound, NeverSettlesWithoutACallback) {
    audio.addUsualDevices();
    audio.setLevels(0, {{0.1F, 0.1F}, 0.1F, false});
    EXPECT_FALSE(audio.settle(std::chrono::milliseconds(20)));
}

TEST_F(VirtualSound, CountsItsObjects) {
    const Panelix::ComApartment com;
    const Standins::LoadedCoreAudio classes;
    audio.addUsualDevices();
    ComPtr<IMMDeviceEnumerator> enumerator;
    ASSERT_EQ(CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL, IID_PPV_ARGS(&enumerator)),
              S_OK);
    ComPtr<IMMDevice> device;
    ASSERT_EQ(enumerator->GetDefaultAudioEndpoint(eRender, eConsole, &device), S_OK);
    EXPECT_EQ(audio.liveObjects(AudioObject::Enumerator), 1);
    EXPECT_EQ(audio.liveObjects(AudioObject::Device), 1);
    EXPECT_EQ(audio.references(AudioObject::Device), 1);
    device->AddRef();
    EXPECT_EQ(audio.references(AudioObject::Device), 2);
    device->Release();
    device.Reset();
    EXPECT_EQ(audio.liveObjects(AudioObject::Device), 0);
    EXPECT_EQ(audio.liveObjects(), 1);
}

/// The usual devices, as a program has them.
class VirtualSoundInUse : public VirtualSound {
protected:
    VirtualSoundInUse() { audio.addUsualDevices(); }

    static ComPtr<IMMDeviceEnumerator> makeEnumerator() {
        ComPtr<IMMDeviceEnumerator> enumerator;
        EXPECT_EQ(
            CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL, IID_PPV_ARGS(&enumerator)),
            S_OK);
        return enumerator;
    }

    static HRESULT getSpeaker(IMMDeviceEnumerator& enumerator, ComPtr<IMMDevice>& device) {
        return enumerator.GetDefaultAudioEndpoint(eRender, eConsole, &device);
    }

    static HRESULT activate(IMMDevice& device, ComPtr<IAudioEndpointVolume>& volume) {
        return device.Activate(
            __uuidof(IAudioEndpointVolume), CLSCTX_ALL, nullptr, IID_PPV_ARGS_Helper(&volume));
    }

    static HRESULT getMute(IAudioEndpointVolume& volume) {
        BOOL muted = FALSE;
        return volume.GetMute(&muted);
    }

    const Panelix::ComApartment com;
    const Standins::LoadedCoreAudio classes;
};

TEST_F(VirtualSoundInUse, VolumesOfADeviceThatWasTakenAwayStayUseless) {
    ComPtr<IMMDevice> device;
    ComPtr<IAudioEndpointVolume> former;
    ComPtr<IAudioEndpointVolume> later;
    ASSERT_EQ(getSpeaker(*makeEnumerator().Get(), device), S_OK);
    ASSERT_EQ(activate(*device.Get(), former), S_OK);
    EXPECT_EQ(getMute(*former.Get()), S_OK);
    audio.setPresent(0, false);
    EXPECT_EQ(getMute(*former.Get()), AUDCLNT_E_DEVICE_INVALIDATED);
    audio.setPresent(0, true);
    EXPECT_EQ(getMute(*former.Get()), AUDCLNT_E_DEVICE_INVALIDATED);
    ASSERT_EQ(activate(*device.Get(), later), S_OK);
    EXPECT_EQ(getMute(*later.Get()), S_OK);
}

TEST_F(VirtualSoundInUse, WithoutItsServiceNothingAnswersAndWhatIsOldStaysUseless) {
    const ComPtr<IMMDeviceEnumerator> former = makeEnumerator();
    ComPtr<IMMDevice> device;
    ComPtr<IAudioEndpointVolume> volume;
    ASSERT_EQ(getSpeaker(*former.Get(), device), S_OK);
    ASSERT_EQ(activate(*device.Get(), volume), S_OK);
    audio.setServiceRunning(false);
    const ComPtr<IMMDeviceEnumerator> early = makeEnumerator();
    ComPtr<IMMDevice> none;
    ComPtr<IAudioEndpointVolume> noVolume;
    EXPECT_EQ(getSpeaker(*former.Get(), none), kServerUnavailable);
    EXPECT_EQ(getSpeaker(*early.Get(), none), kServerUnavailable);
    EXPECT_EQ(activate(*device.Get(), noVolume), kServerUnavailable);
    EXPECT_EQ(getMute(*volume.Get()), AUDCLNT_E_SERVICE_NOT_RUNNING);
    audio.setServiceRunning(true);
    EXPECT_EQ(getSpeaker(*former.Get(), none), kServerUnavailable);
    EXPECT_EQ(activate(*device.Get(), noVolume), kServerUnavailable);
    EXPECT_EQ(getMute(*volume.Get()), AUDCLNT_E_DEVICE_INVALIDATED);
    EXPECT_EQ(getSpeaker(*early.Get(), device), S_OK);
    EXPECT_EQ(activate(*device.Get(), volume), S_OK);
    EXPECT_EQ(getMute(*volume.Get()), S_OK);
}

}  // namespace
