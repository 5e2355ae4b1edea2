#include "standins/core_audio/virtual_audio.h"

#include <gtest/gtest.h>

#include <mmdeviceapi.h>
#include <wrl/client.h>

#include "framework/core/com_apartment.h"
#include "standins/core_audio/loaded_core_audio.h"

namespace {

using Microsoft::WRL::ComPtr;
using Standins::AudioCall;
using Standins::AudioFlow;
using Standins::AudioObject;
using Standins::VirtualAudio;

class VirtualSound : public testing::Test {
protected:
    struct OwnSession {
        OwnSession() { Standins::useOwnSession(); }
    };

    OwnSession session;
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
    for (std::uint32_t i = 0; i < VirtualAudio::kCallLogLength + kMore; ++i) {
        audio.enter({.call = AudioCall::Item, .first = i});
    }
    const std::vector<Standins::AudioCallEntry> calls = audio.calls();
    ASSERT_EQ(calls.size(), VirtualAudio::kCallLogLength);
    EXPECT_EQ(calls.front().first, kMore);
    EXPECT_EQ(calls.back().first, VirtualAudio::kCallLogLength + kMore - 1);
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

}  // namespace
