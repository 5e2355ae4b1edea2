#include "tests/stats/audio/with_audio.h"

using Standins::AudioCall;
using Standins::AudioDevice;
using Standins::AudioFlow;
using Standins::AudioLevels;
using Standins::CallbackEvent;

namespace {

// A little above the whole percentage, so that reading and notices agree about it.
constexpr float at(float percent) {
    return percent * 0.01F + 0.002F;
}

AudioDevice speaker(const std::wstring& id, const std::wstring& name, const AudioLevels& levels) {
    AudioDevice device;
    device.id = id;
    device.name = name;
    device.levels = levels;
    return device;
}

}  // namespace

void WithAudio::addDevices() {
    const auto speakers =
        audio.addDevice(speaker(L"id-speakers", L"Speakers", {{at(60), at(40)}, at(60), false}));
    audio.addDevice(speaker(L"id-headphones", L"Headphones", {{at(25), at(35)}, at(35), true}));
    audio.addDevice(speaker(L"id-monitor", L"Monitor", {{at(10), at(20)}, at(20), false}));
    audio.setDefault(AudioFlow::Render, speakers);
    addMicrophone(L"id-microphone", false);
}

std::uint32_t WithAudio::addSpeaker(const std::wstring& id, const AudioLevels& levels) {
    const auto index = audio.addDevice(speaker(id, id, levels));
    audio.setDefault(AudioFlow::Render, index);
    return index.value();
}

std::uint32_t WithAudio::addMicrophone(const std::wstring& id, bool muted) {
    AudioDevice device = speaker(id, id, {{1.0F}, 1.0F, muted});
    device.flow = AudioFlow::Capture;
    const auto index = audio.addDevice(device);
    audio.setDefault(AudioFlow::Capture, index);
    return index.value();
}

void WithAudio::notify(std::uint32_t device, const Standins::AudioNotice& notice) {
    const std::uint64_t before = audio.noticesDelivered();
    audio.postNotice(device, notice);
    ASSERT_TRUE(audio.settle());
    ASSERT_GT(audio.noticesDelivered(), before) << "nobody was notified";
}

void WithAudio::expectNothingLeft(std::unique_ptr<SystemInfo>& info) {
    info.reset();
    expectNothingLeft();
}

void WithAudio::expectNothingLeft() {
    EXPECT_EQ(audio.liveObjects(), 0);
    for (std::size_t kind = 0; kind < Standins::kAudioObjectCount; ++kind) {
        EXPECT_EQ(audio.references(static_cast<Standins::AudioObject>(kind)), 0) << "kind " << kind;
    }
    // A notice that was running when the sampler ended still has its reference for a moment.
    if (audio.callbackEvents(CallbackEvent::Registered) > 0) {
        EXPECT_TRUE(audio.settle());
    }
    EXPECT_EQ(audio.callbackReferences(), 0);
    EXPECT_EQ(audio.callCount(AudioCall::Other), 0U);
}

std::vector<std::pair<AudioCall, std::int32_t>> WithAudio::callsSince(std::size_t begin) const {
    std::vector<std::pair<AudioCall, std::int32_t>> result;
    const std::vector<Standins::AudioCallEntry> all = audio.calls();
    for (std::size_t i = begin; i < all.size(); ++i) {
        result.emplace_back(all[i].call, all[i].device);
    }
    return result;
}
