#include "stats/system_info.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>

#include "framework/drawing/sys_exception.h"
#include "tests/stats/audio/heap_watch.h"
#include "tests/stats/audio/with_audio.h"
#include "tests/support/import_override.h"

namespace {

using Standins::AudioCall;
using Standins::AudioCallEntry;
using Standins::AudioFlow;
using Standins::CallbackEvent;

class AudioBinding : public WithAudio {};

TEST_F(AudioBinding, VolumesAreTruncated) {
    addSpeaker(L"speaker", {{0.494F, 0.495F}, 0.999F, false});
    const SystemInfo info;
    EXPECT_EQ(AudioSnapshot::of(info), (AudioSnapshot{49, 49, 99, false, false}));
}

TEST_F(AudioBinding, BothMutesAreRead) {
    addSpeaker(L"speaker", {{1.0F, 1.0F}, 1.0F, true});
    addMicrophone(L"microphone", true);
    const SystemInfo info;
    EXPECT_EQ(AudioSnapshot::of(info), (AudioSnapshot{100, 100, 100, true, true}));
}

TEST_F(AudioBinding, CallsComeInTheirOrder) {
    addDevices();
    const SystemInfo info;
    const std::vector<std::pair<AudioCall, std::int32_t>> expected = {
        {AudioCall::CreateEnumerator, AudioCallEntry::kNoDevice},
        {AudioCall::GetDefaultAudioEndpoint, AudioCallEntry::kNoDevice},
        {AudioCall::Activate, kSpeakers},
        {AudioCall::RegisterControlChangeNotify, kSpeakers},
        {AudioCall::GetDefaultAudioEndpoint, AudioCallEntry::kNoDevice},
        {AudioCall::Activate, kMicrophone},
        {AudioCall::RegisterControlChangeNotify, kMicrophone},
        {AudioCall::GetChannelVolumeLevelScalar, kSpeakers},
        {AudioCall::GetChannelVolumeLevelScalar, kSpeakers},
        {AudioCall::GetMasterVolumeLevelScalar, kSpeakers},
        {AudioCall::GetMute, kSpeakers},
        {AudioCall::GetMute, kMicrophone},
    };
    EXPECT_EQ(callsSince(0), expected);
}

TEST_F(AudioBinding, DefaultsAreThoseOfTheConsoleRole) {
    addDevices();
    const SystemInfo info;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> flowsAndRoles;
    for (const AudioCallEntry& call : audio.calls()) {
        if (call.call == AudioCall::GetDefaultAudioEndpoint) {
            flowsAndRoles.emplace_back(call.first, call.second);
        }
    }
    const std::vector<std::pair<std::uint32_t, std::uint32_t>> expected = {{eRender, eConsole},
                                                                           {eCapture, eConsole}};
    EXPECT_EQ(flowsAndRoles, expected);
}

TEST_F(AudioBinding, WithoutAnyDeviceEverythingIsSilent) {
    auto info = std::make_unique<SystemInfo>();
    EXPECT_EQ(AudioSnapshot::of(*info), kSilence);
    info->setChannelVolume(0, 50);
    info->toggleMicrophoneMute();
    info->bindAudio();
    EXPECT_EQ(AudioSnapshot::of(*info), kSilence);
    expectNothingLeft(info);
}

TEST_F(AudioBinding, WithoutAMicrophoneTheSpeakerIsBound) {
    addSpeaker(L"speaker", {{0.5F, 0.25F}, 0.5F, false});
    auto info = std::make_unique<SystemInfo>();
    EXPECT_EQ(AudioSnapshot::of(*info), (AudioSnapshot{50, 25, 50, false, false}));
    info->toggleMicrophoneMute();
    EXPECT_EQ(audio.callCount(AudioCall::SetMute), 0U);
    expectNothingLeft(info);
}

TEST_F(AudioBinding, WithoutASpeakerTheMicrophoneIsBound) {
    addMicrophone(L"microphone", true);
    auto info = std::make_unique<SystemInfo>();
    EXPECT_EQ(AudioSnapshot::of(*info), (AudioSnapshot{0, 0, 0, false, true}));
    info->setChannelVolume(0, 50);
    EXPECT_EQ(audio.callCount(AudioCall::SetChannelVolumeLevelScalar), 0U);
    expectNothingLeft(info);
}

TEST_F(AudioBinding, ASpeakerWithOneChannelHasNoRightVolume) {
    addSpeaker(L"mono", {{0.7F}, 0.7F, false});
    const SystemInfo info;
    EXPECT_EQ(AudioSnapshot::of(info), (AudioSnapshot{70, 0, 70, false, false}));
}

TEST_F(AudioBinding, VolumesThatAreNoVolumesAreBounded) {
    addSpeaker(L"odd", {{std::numeric_limits<float>::quiet_NaN(), 1e30F}, -1e30F, false});
    const SystemInfo info;
    EXPECT_EQ(AudioSnapshot::of(info), (AudioSnapshot{0, 100, 0, false, false}));
}

TEST_F(AudioBinding, ADeviceThatGoesIsReadAsSilenceOnRebinding) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    // Muted, so that the mute states are seen to go as well.
    audio.setLevels(kSpeakers, {{0.6F, 0.4F}, 0.6F, true});
    audio.setLevels(kMicrophone, {{1.0F}, 1.0F, true});
    ASSERT_TRUE(audio.settle());
    ASSERT_EQ(AudioSnapshot::of(*info), (AudioSnapshot{60, 40, 60, true, true}));
    audio.setPresent(kSpeakers, false);
    audio.setPresent(kMicrophone, false);
    info->setChannelVolume(0, 10);
    info->toggleMicrophoneMute();
    info->bindAudio();
    EXPECT_EQ(AudioSnapshot::of(*info), kSilence);
    expectNothingLeft(info);
}

TEST_F(AudioBinding, BindingAgainEndsTheFirstBinding) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    info->bindAudio();
    EXPECT_EQ(audio.callCount(AudioCall::UnregisterControlChangeNotify), 2U);
    EXPECT_EQ(audio.liveObjects(Standins::AudioObject::EndpointVolume), 2);
    EXPECT_EQ(audio.liveObjects(Standins::AudioObject::Device), 2);
    expectNothingLeft(info);
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Abandoned), 0U);
}

TEST_F(AudioBinding, ReleasingTwiceIsReleasingOnce) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    info->releaseAudio();
    info->releaseAudio();
    EXPECT_EQ(audio.callCount(AudioCall::UnregisterControlChangeNotify), 2U);
    EXPECT_EQ(audio.liveObjects(Standins::AudioObject::EndpointVolume), 0);
    EXPECT_EQ(audio.liveObjects(Standins::AudioObject::Device), 0);
    expectNothingLeft(info);
}

TEST_F(AudioBinding, DestructionUnregistersBeforeItReleases) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    expectNothingLeft(info);
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Registered), 2U);
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Abandoned), 0U);
    EXPECT_EQ(audio.callCount(AudioCall::UnregisterControlChangeNotify), 2U);
}

// Of what is read only 1 means muted; of a notice, everything other than 0.
TEST_F(AudioBinding, OnlyTheMuteValueOneIsReadAsMuted) {
    addSpeaker(L"speaker", {{1.0F, 1.0F}, 1.0F, true});
    addMicrophone(L"microphone", true);
    for (const std::int32_t value : {2, -1, 256}) {
        audio.setMuteValue(value);
        const SystemInfo info;
        EXPECT_EQ(AudioSnapshot::of(info), (AudioSnapshot{100, 100, 100, false, false})) << value;
    }
}

HRESULT WINAPI failToCreateGuid(GUID* guid) {
    *guid = {0xFFFFFFFF, 0xFFFF, 0xFFFF, {}};
    return E_FAIL;
}

TEST_F(AudioBinding, WithoutAGuidThereIsNoSampler) {
    addDevices();
    const std::ptrdiff_t blocks = heapBlocksInUse();
    {
        const ImportOverride noGuid("ole32.dll", "CoCreateGuid", &failToCreateGuid);
        try {
            const SystemInfo info;
            FAIL() << "nothing was thrown";
        } catch (const Panelix::SysException& error) {
            EXPECT_EQ(error.message, L"Could not create Guid");
            EXPECT_EQ(error.title, L"System Info Error");
        }
    }
    EXPECT_EQ(heapBlocksInUse(), blocks);
    EXPECT_TRUE(audio.calls().empty());
    auto info = std::make_unique<SystemInfo>();
    EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
    expectNothingLeft(info);
}

// The endpoints are bound before the other sources are made.
TEST_F(AudioBinding, ASamplerThatRunsOutOfMemoryWhileItIsMadeLeavesNothing) {
    addDevices();
    SystemInfo{};
    const std::ptrdiff_t blocks = heapBlocksInUse();
    int failures = 0;
    for (bool reached = true; reached;) {
        const FailingAllocation failing(failures);
        try {
            const SystemInfo info;
        } catch (const std::bad_alloc&) {
            ++failures;
            ASSERT_TRUE(FailingAllocation::happened());
            expectNothingLeft();
            ASSERT_EQ(heapBlocksInUse(), blocks) << failures;
            continue;
        }
        // The callbacks can be done without.
        reached = FailingAllocation::happened();
        failures += reached ? 1 : 0;
    }
    EXPECT_GT(failures, 4);
    expectNothingLeft();
    EXPECT_EQ(heapBlocksInUse(), blocks);
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Abandoned), 0U);
}

TEST_F(AudioBinding, WithoutTheEnumeratorThereIsNoSampler) {
    audio.failCall(AudioCall::CreateEnumerator, {});
    try {
        const SystemInfo info;
        FAIL() << "nothing was thrown";
    } catch (const Panelix::SysException& error) {
        EXPECT_EQ(error.message, L"Could not create Audio Device Enumerator");
        EXPECT_EQ(error.title, L"System Info Error");
    }
}

}  // namespace
