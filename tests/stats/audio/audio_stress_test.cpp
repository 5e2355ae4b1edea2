#include "stats/system_info.h"

#include <gtest/gtest.h>

#include <chrono>

#include "standins/wait_until.h"
#include "tests/stats/audio/guarded_sampler.h"
#include "tests/stats/audio/with_audio.h"

namespace {

using Standins::AudioFlow;
using Standins::CallbackEvent;

constexpr std::uint32_t kFloodThreads = 4;
constexpr int kSwitches = 1000;

struct Choice {
    const wchar_t* id;
    AudioSnapshot snapshot;
};

const Choice kChoices[] = {{L"id-headphones", kHeadphonesSnapshot},
                           {L"id-monitor", kMonitorSnapshot},
                           {L"id-speakers", kSpeakersSnapshot}};

class AudioStress : public WithAudio {
protected:
    AudioStress() { addDevices(); }

    /// Makes the device the default one, then looks for a while whether another one's levels show.
    void choose(SystemInfo& info, int number, int looks) {
        const Choice& choice = kChoices[static_cast<std::size_t>(number) % std::size(kChoices)];
        info.setDefaultDevice(choice.id);
        for (int look = 0; look < looks; ++look) {
            ASSERT_EQ(AudioSnapshot::of(info), choice.snapshot) << "switch " << number << ", look " << look;
            SwitchToThread();
        }
    }
};

// Every device keeps saying its own levels. A notice of a former default device that still got through would
// show as that device's levels.
TEST_F(AudioStress, ThousandSwitchesUnderFourFloodingThreads) {
    constexpr int kLooks = 20;
    GuardedSampler info;
    ASSERT_TRUE(audio.setFlood(kFloodThreads));
    for (int i = 0; i < kSwitches; ++i) {
        ASSERT_NO_FATAL_FAILURE(choose(*info, i, kLooks));
    }
    const std::uint64_t delivered = audio.noticesDelivered();
    EXPECT_GT(delivered, static_cast<std::uint64_t>(kSwitches)) << "that was no flood";
    RecordProperty("notices", std::to_string(delivered));

    // What changes afterwards is not lost.
    ASSERT_TRUE(audio.setFlood(0));
    audio.setLevels(*audio.defaultDevice(AudioFlow::Render), {{0.77F, 0.66F}, 0.77F, true});
    info->toggleMicrophoneMute();
    ASSERT_TRUE(audio.settle());
    EXPECT_EQ(AudioSnapshot::of(*info), (AudioSnapshot{77, 66, 77, true, true}));

    ASSERT_TRUE(audio.setFlood(kFloodThreads));
    info.end();
    ASSERT_TRUE(audio.setFlood(0));
    expectNothingLeft();
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Registered), 2U * (kSwitches + 1));
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Abandoned), 0U);
}

TEST_F(AudioStress, SamplerEndsUnderFlood) {
    constexpr int kSamplers = 100;
    GuardedSampler first;
    ASSERT_TRUE(audio.setFlood(kFloodThreads));
    for (int i = 0; i < kSamplers; ++i) {
        GuardedSampler info;
        ASSERT_NO_FATAL_FAILURE(choose(*info, i, 1));
    }
    first.end();
    ASSERT_TRUE(audio.setFlood(0));
    expectNothingLeft();
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Registered), 2U * (2 * kSamplers + 1));
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Abandoned), 0U);
}

// Callbacks whose registration has ended are called on and on, and each is freed in the end.
TEST_F(AudioStress, LateNoticesFloodFormerCallbacks) {
    constexpr int kRebindings = 100;
    audio.setKeepsCallbacks(true);
    constexpr int kLooks = 200;
    GuardedSampler info;
    ASSERT_TRUE(audio.setFlood(kFloodThreads));
    for (int i = 0; i < kRebindings; ++i) {
        ASSERT_NO_FATAL_FAILURE(choose(*info, i, kLooks));
    }
    info.end();
    const std::uint64_t before = audio.noticesDelivered();
    EXPECT_TRUE(
        Standins::waitUntil([&] { return audio.noticesDelivered() > before; }, std::chrono::seconds(10)))
        << "nobody was late";
    ASSERT_TRUE(audio.setFlood(0));
    ASSERT_TRUE(audio.dropKeptCallbacks());
    expectNothingLeft();
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Freed), 2U * (kRebindings + 1));
}

// Changes that come while the sampler binds are in the snapshot when it has bound, or come with their notice.
TEST_F(AudioStress, ChangesDuringBindingAreNotLost) {
    SystemInfo info;
    for (int i = 0; i < kSwitches; ++i) {
        const int percent = i % 101;
        const float volume = static_cast<float>(percent) / 100.0F + 0.002F;
        audio.setLevels(kSpeakers, {{volume, volume}, volume, false});
        info.bindAudio();
        ASSERT_TRUE(audio.settle());
        ASSERT_EQ(AudioSnapshot::of(info), (AudioSnapshot{percent, percent, percent, false, false}))
            << "change " << i;
    }
}

}  // namespace
