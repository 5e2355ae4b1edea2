#include "stats/system_info.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <limits>

#include "tests/stats/audio/guarded_sampler.h"
#include "tests/stats/audio/with_audio.h"

namespace {

using Standins::AudioNotice;
using Standins::CallbackEvent;

constexpr GUID kForeignContext = {0x11111111, 0x2222, 0x3333, {4, 4, 4, 4, 4, 4, 4, 4}};

class AudioNotices : public WithAudio {
protected:
    AudioNotices() {
        addDevices();
        info = std::make_unique<SystemInfo>();
    }

    AudioSnapshot snapshot() const { return AudioSnapshot::of(*info); }

    std::unique_ptr<SystemInfo> info;
};

TEST_F(AudioNotices, RoundToTheNearestPercent) {
    notify(kSpeakers, {GUID{}, {{0.494F, 0.495F}, 0.999F, true}});
    EXPECT_EQ(snapshot(), (AudioSnapshot{49, 50, 100, true, false}));
    EXPECT_EQ(audio.lastNoticeResult(), S_OK);
}

TEST_F(AudioNotices, ComeFromAnotherThread) {
    notify(kSpeakers, {GUID{}, {{0.1F, 0.1F}, 0.1F, false}});
    EXPECT_NE(audio.lastNoticeThread(), GetCurrentThreadId());
}

TEST_F(AudioNotices, WithTheSamplersOwnContextChangeNothing) {
    notify(kSpeakers, {info->eventContext(), {{0.1F, 0.1F}, 0.1F, true}});
    notify(kMicrophone, {info->eventContext(), {{0.1F}, 0.1F, true}});
    EXPECT_EQ(snapshot(), kSpeakersSnapshot);
    EXPECT_EQ(audio.lastNoticeResult(), S_OK);
}

TEST_F(AudioNotices, WithAnotherContextCount) {
    notify(kSpeakers, {kForeignContext, {{0.1F, 0.2F}, 0.2F, true}});
    EXPECT_EQ(snapshot(), (AudioSnapshot{10, 20, 20, true, false}));
}

TEST_F(AudioNotices, WithAContextThatDiffersInOneBitCount) {
    for (std::size_t bit = 0; bit < sizeof(GUID) * 8; ++bit) {
        auto bytes = std::bit_cast<std::array<std::uint8_t, sizeof(GUID)>>(info->eventContext());
        bytes[bit / 8] = static_cast<std::uint8_t>(bytes[bit / 8] ^ 1U << bit % 8);
        const int percent = static_cast<int>(bit % 100);
        const float volume = static_cast<float>(percent) / 100.0F;
        notify(kSpeakers, {std::bit_cast<GUID>(bytes), {{volume, volume}, volume, bit % 2 != 0}});
        notify(kMicrophone, {std::bit_cast<GUID>(bytes), {{volume}, volume, bit % 2 == 0}});
        ASSERT_EQ(snapshot(), (AudioSnapshot{percent, percent, percent, bit % 2 != 0, bit % 2 == 0})) << bit;
        notify(kSpeakers, {info->eventContext(), {{1.0F, 1.0F}, 1.0F, bit % 2 == 0}});
        ASSERT_EQ(snapshot(), (AudioSnapshot{percent, percent, percent, bit % 2 != 0, bit % 2 == 0})) << bit;
    }
}

TEST_F(AudioNotices, OfAnotherSamplerCount) {
    const SystemInfo other;
    notify(kSpeakers, {other.eventContext(), {{0.1F, 0.2F}, 0.2F, true}});
    EXPECT_EQ(snapshot(), (AudioSnapshot{10, 20, 20, true, false}));
}

TEST_F(AudioNotices, OfNothingAreRefused) {
    AudioNotice notice{GUID{}, {{0.1F, 0.2F}, 0.2F, true}};
    notice.null = true;
    notify(kSpeakers, notice);
    EXPECT_EQ(snapshot(), kSpeakersSnapshot);
    EXPECT_EQ(audio.lastNoticeResult(), E_INVALIDARG);
}

TEST_F(AudioNotices, OfTheMicrophoneChangeItsMuteOnly) {
    notify(kMicrophone, {GUID{}, {{0.1F, 0.2F}, 0.2F, true}});
    AudioSnapshot expected = kSpeakersSnapshot;
    expected.microphoneMuted = true;
    EXPECT_EQ(snapshot(), expected);
    notify(kMicrophone, {GUID{}, {{0.1F, 0.2F}, 0.2F, false}});
    EXPECT_EQ(snapshot(), kSpeakersSnapshot);
}

// The stand-in's notices end at a page that must not be touched.
TEST_F(AudioNotices, WithOneChannelHaveNoRightVolume) {
    notify(kSpeakers, {GUID{}, {{0.7F}, 0.8F, false}});
    EXPECT_EQ(snapshot(), (AudioSnapshot{70, 0, 80, false, false}));
}

TEST_F(AudioNotices, WithoutChannelsHaveAMasterVolumeOnly) {
    notify(kSpeakers, {GUID{}, {{}, 0.8F, true}});
    EXPECT_EQ(snapshot(), (AudioSnapshot{0, 0, 80, true, false}));
}

TEST_F(AudioNotices, OfManyChannelsCountTheFirstTwo) {
    notify(kSpeakers, {GUID{}, {{0.1F, 0.2F, 0.3F, 0.4F, 0.5F, 0.6F, 0.7F, 0.8F}, 0.9F, false}});
    EXPECT_EQ(snapshot(), (AudioSnapshot{10, 20, 90, false, false}));
}

TEST_F(AudioNotices, WithVolumesThatAreNoVolumesAreBounded) {
    constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    notify(kSpeakers, {GUID{}, {{kNan, kInfinity}, -kInfinity, false}});
    EXPECT_EQ(snapshot(), (AudioSnapshot{0, 100, 0, false, false}));
    notify(kSpeakers, {GUID{}, {{-0.5F, 1.5F}, kNan, false}});
    EXPECT_EQ(snapshot(), (AudioSnapshot{0, 100, 0, false, false}));
}

TEST_F(AudioNotices, OfOtherDevicesDoNotReachTheSampler) {
    audio.setLevels(kHeadphones, {{0.9F, 0.9F}, 0.9F, true});
    ASSERT_TRUE(audio.settle());
    EXPECT_EQ(audio.noticesDelivered(), 0U);
    EXPECT_EQ(snapshot(), kSpeakersSnapshot);
}

TEST_F(AudioNotices, FollowTheVolumeControl) {
    for (int percent = 0; percent <= 100; ++percent) {
        const float volume = static_cast<float>(percent) / 100.0F;
        audio.setLevels(kSpeakers, {{volume, 1.0F - volume}, volume, percent % 2 != 0});
        ASSERT_TRUE(audio.settle());
        ASSERT_EQ(snapshot(), (AudioSnapshot{percent, 100 - percent, percent, percent % 2 != 0, false}));
    }
}

TEST_F(AudioNotices, OfTheFormerDefaultDeviceChangeNothing) {
    audio.setKeepsCallbacks(true);
    info->setDefaultDevice(L"id-headphones");
    ASSERT_EQ(snapshot(), kHeadphonesSnapshot);
    notify(kSpeakers, {GUID{}, {{0.9F, 0.9F}, 0.9F, false}});
    EXPECT_EQ(audio.lastNoticeResult(), S_OK);
    EXPECT_EQ(snapshot(), kHeadphonesSnapshot);
}

// The microphone is bound anew as well: its former callback is late too, though the device is the same.
TEST_F(AudioNotices, OfTheNewBindingCountOnceBesideLateOnes) {
    audio.setKeepsCallbacks(true);
    info->setDefaultDevice(L"id-headphones");
    const std::uint64_t before = audio.noticesDelivered();
    notify(kMicrophone, {GUID{}, {{1.0F}, 1.0F, true}});
    EXPECT_EQ(audio.noticesDelivered() - before, 2U);
    EXPECT_TRUE(snapshot().microphoneMuted);
}

TEST_F(AudioNotices, AfterTheSamplersEndAreHarmless) {
    info.reset();
    audio.setKeepsCallbacks(true);
    GuardedSampler sampler;
    sampler.end();
    notify(kSpeakers, {GUID{}, {{0.9F, 0.9F}, 0.9F, true}});
    EXPECT_EQ(audio.lastNoticeResult(), S_OK);
    notify(kMicrophone, {GUID{}, {{0.9F, 0.9F}, 0.9F, true}});
    EXPECT_EQ(audio.lastNoticeResult(), S_OK);
    ASSERT_TRUE(audio.dropKeptCallbacks());
    EXPECT_EQ(audio.callbackReferences(), 0);
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Freed), 2U);
}

TEST_F(AudioNotices, EveryCallbackIsFreedByItsLastRelease) {
    constexpr int kSwitches = 10;
    audio.setKeepsCallbacks(true);
    for (int i = 0; i < kSwitches; ++i) {
        info->setDefaultDevice(i % 2 == 0 ? L"id-monitor" : L"id-headphones");
    }
    info.reset();
    ASSERT_TRUE(audio.dropKeptCallbacks());
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Registered), 2U * (kSwitches + 1));
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Freed), 2U * (kSwitches + 1));
    EXPECT_EQ(audio.callbackReferences(), 0);
}

}  // namespace
