#include "stats/system_info.h"

#include <gtest/gtest.h>

#include "tests/stats/audio/with_audio.h"

namespace {

using Standins::AudioCall;
using Standins::AudioCallEntry;

class AudioCommands : public WithAudio {
protected:
    AudioCommands() {
        addDevices();
        info = std::make_unique<SystemInfo>();
    }

    AudioCallEntry lastCall() const { return audio.calls().back(); }

    std::unique_ptr<SystemInfo> info;
};

struct VolumeCase {
    unsigned channel;
    int percent;
    float scalar;
};

constexpr VolumeCase kVolumeCases[] = {
    {0, 150, 1.0F},
    {0, -5, 0.0F},
    {0, 0, 0.0F},
    {1, 100, 1.0F},
    {1, 50, 0.5F},
    {0, 29, 0.29F},
    {1, 1, 0.01F},
};

TEST_F(AudioCommands, ChannelVolumeIsClampedAndSetWithoutContext) {
    for (const VolumeCase& sample : kVolumeCases) {
        SCOPED_TRACE(sample.percent);
        info->setChannelVolume(sample.channel, sample.percent);
        const AudioCallEntry call = lastCall();
        EXPECT_EQ(call.call, AudioCall::SetChannelVolumeLevelScalar);
        EXPECT_EQ(call.device, static_cast<std::int32_t>(kSpeakers));
        EXPECT_EQ(call.first, sample.channel);
        EXPECT_FLOAT_EQ(call.scalar, sample.scalar);
        EXPECT_FALSE(call.withContext);
    }
}

TEST_F(AudioCommands, SnapshotFollowsTheChannelVolumeThroughTheNotice) {
    info->setChannelVolume(0, 33);
    info->setChannelVolume(1, 150);
    ASSERT_TRUE(audio.settle());
    EXPECT_EQ(AudioSnapshot::of(*info), (AudioSnapshot{33, 100, 100, false, false}));
}

TEST_F(AudioCommands, ChannelThatTheSpeakerLacksIsLeftToTheSystem) {
    info->setChannelVolume(7, 50);
    ASSERT_TRUE(audio.settle());
    EXPECT_EQ(lastCall().first, 7U);
    EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
}

TEST_F(AudioCommands, MicrophoneMuteGoesOnAndOff) {
    info->toggleMicrophoneMute();
    ASSERT_TRUE(audio.settle());
    EXPECT_EQ(lastCall().call, AudioCall::SetMute);
    EXPECT_EQ(lastCall().device, static_cast<std::int32_t>(kMicrophone));
    EXPECT_EQ(lastCall().first, static_cast<std::uint32_t>(TRUE));
    EXPECT_FALSE(lastCall().withContext);
    EXPECT_TRUE(info->microphoneMuted);
    EXPECT_FALSE(info->speakerMuted);

    info->toggleMicrophoneMute();
    ASSERT_TRUE(audio.settle());
    EXPECT_EQ(lastCall().first, static_cast<std::uint32_t>(FALSE));
    EXPECT_FALSE(info->microphoneMuted);
}

TEST_F(AudioCommands, MicrophoneMuteIsTakenFromTheSnapshotAndNotFromTheEndpoint) {
    // The notice says muted, the endpoint is not.
    notify(kMicrophone, {GUID{}, {{1.0F}, 1.0F, true}});
    ASSERT_TRUE(info->microphoneMuted);
    info->toggleMicrophoneMute();
    EXPECT_EQ(lastCall().call, AudioCall::SetMute);
    EXPECT_EQ(lastCall().first, static_cast<std::uint32_t>(FALSE));
}

}  // namespace
