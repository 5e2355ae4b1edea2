#include "pages/main_page.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/pages/main_page_fixture.h"

namespace {

using Panelix::LcdButton;
using Standins::AudioCall;
using Standins::AudioCallEntry;
using Standins::AudioFlow;

class MainPageAudio : public MainPageOnKeyboard {
protected:
    /// What a drawing asked of the sound system to change.
    std::vector<AudioCallEntry> requests() {
        std::vector<AudioCallEntry> changes;
        for (const AudioCallEntry& entry : audio.calls()) {
            if (entry.call == AudioCall::SetMute || entry.call == AudioCall::SetChannelVolumeLevelScalar) {
                changes.push_back(entry);
            }
        }
        return changes;
    }

    /// The one request that this drawing made.
    AudioCallEntry requestOf(const Panelix::LcdButtons& buttons) {
        const std::size_t before = requests().size();
        draw(buttons);
        const std::vector<AudioCallEntry> all = requests();
        EXPECT_EQ(all.size(), before + 1);
        return all.empty() ? AudioCallEntry{} : all.back();
    }

    std::int32_t device(AudioFlow flow) { return static_cast<std::int32_t>(*audio.defaultDevice(flow)); }
};

TEST_F(MainPageAudio, WithoutAChannelUpTogglesTheMicrophonesMute) {
    for (const bool muted : {true, false, true}) {
        const AudioCallEntry request = requestOf(down({LcdButton::Up}));
        EXPECT_EQ(request.call, AudioCall::SetMute);
        EXPECT_EQ(request.device, device(AudioFlow::Capture));
        EXPECT_EQ(request.first, muted ? 1U : 0U);
        EXPECT_FALSE(request.withContext);
        ASSERT_TRUE(audio.settle());
        EXPECT_EQ(sampler.microphoneMuted, muted);
        drawAndCompare("the icon follows");
    }
}

TEST_F(MainPageAudio, TheMuteIsTheOppositeOfTheSnapshotAndNotOfTheDevice) {
    sampler.microphoneMuted = true;
    EXPECT_EQ(requestOf(down({LcdButton::Up})).first, 0U);
}

TEST_F(MainPageAudio, AHeldUpTogglesNothing) {
    draw(held({LcdButton::Up}));
    EXPECT_TRUE(requests().empty());
}

TEST_F(MainPageAudio, ASelectedChannelFollowsTheHeldButtons) {
    struct Case {
        LcdButton select;
        unsigned channel;
        int percent;
        LcdButton hold;
        float scalar;
    };
    const Case cases[] = {
        {LcdButton::Right, 0, 50, LcdButton::Up, 0.52F},
        {LcdButton::Right, 0, 50, LcdButton::Down, 0.49F},
        {LcdButton::Left, 1, 50, LcdButton::Up, 0.52F},
        {LcdButton::Left, 1, 50, LcdButton::Down, 0.49F},
        {LcdButton::Right, 0, 99, LcdButton::Up, 1.0F},
        {LcdButton::Right, 0, 100, LcdButton::Up, 1.0F},
        {LcdButton::Left, 1, 1, LcdButton::Down, 0.0F},
        {LcdButton::Left, 1, 0, LcdButton::Down, 0.0F},
    };
    for (const Case& c : cases) {
        MainPage fresh(&app, &sampler, nullptr);
        fresh.Draw(app.canvas(), down({c.select}));
        // The other channel stands elsewhere: it must not be the one that is read.
        sampler.speakerLeftVolume = c.channel == 0 ? c.percent : 77;
        sampler.speakerRightVolume = c.channel == 1 ? c.percent : 77;
        const std::size_t before = requests().size();
        fresh.Draw(app.canvas(), held({c.hold}));
        const std::vector<AudioCallEntry> all = requests();
        ASSERT_EQ(all.size(), before + 1);
        EXPECT_EQ(all.back().call, AudioCall::SetChannelVolumeLevelScalar);
        EXPECT_EQ(all.back().device, device(AudioFlow::Render));
        EXPECT_EQ(all.back().first, c.channel);
        EXPECT_FLOAT_EQ(all.back().scalar, c.scalar);
        EXPECT_FALSE(all.back().withContext) << "the change must come back as a notification";
        ASSERT_TRUE(audio.settle());
    }
}

TEST_F(MainPageAudio, HoldingUpRaisesTheChannelByTwoPointsInEveryPass) {
    audio.setLevels(*audio.defaultDevice(AudioFlow::Render), {{0.5F, 0.25F}, 0.5F, false});
    ASSERT_TRUE(audio.settle());
    draw(down({LcdButton::Right}));
    for (const int percent : {52, 54, 56}) {
        draw(held({LcdButton::Up}));
        ASSERT_TRUE(audio.settle());
        EXPECT_EQ(sampler.speakerLeftVolume, percent);
        EXPECT_EQ(sampler.speakerRightVolume, 25);
    }
    for (const int percent : {55, 54, 53}) {
        draw(held({LcdButton::Down}));
        ASSERT_TRUE(audio.settle());
        EXPECT_EQ(sampler.speakerLeftVolume, percent);
    }
    expected.selectedChannel = 1;
    drawAndCompare("bars and figure follow");
}

TEST_F(MainPageAudio, UpWinsOverDown) {
    draw(down({LcdButton::Right}));
    sampler.speakerLeftVolume = 10;
    EXPECT_FLOAT_EQ(requestOf(held({LcdButton::Up, LcdButton::Down})).scalar, 0.12F);
}

TEST_F(MainPageAudio, WithAChannelSelectedNothingIsMuted) {
    draw(down({LcdButton::Right}));
    EXPECT_EQ(requestOf(down({LcdButton::Up})).call, AudioCall::SetChannelVolumeLevelScalar);
    EXPECT_EQ(audio.callCount(AudioCall::SetMute), 0U);
}

TEST_F(MainPageAudio, PictureModeAndMenuLeaveTheSoundAlone) {
    draw(down({LcdButton::Right}));
    draw(down({LcdButton::Ok}));
    draw(held({LcdButton::Up}));
    draw(down({LcdButton::Ok, LcdButton::Menu, LcdButton::Up}));
    EXPECT_TRUE(requests().empty());
}

TEST_F(MainPageAudio, WithoutAnySoundDeviceTheButtonsDoNothing) {
    sampler.releaseAudio();
    draw(down({LcdButton::Up}));
    draw(down({LcdButton::Right}));
    draw(held({LcdButton::Up}));
    EXPECT_TRUE(requests().empty());
}

}  // namespace
