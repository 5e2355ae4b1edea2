#include "stats/system_info.h"

#include <gtest/gtest.h>

#include <string>

#include "framework/drawing/sys_exception.h"
#include "tests/stats/audio/with_audio.h"

namespace {

using Standins::AudioCall;
using Standins::AudioFailure;

/// What is still there while one call fails from the start.
struct Fault {
    AudioCall call;
    const char* name;
    AudioSnapshot snapshot;
    std::size_t rows;
    bool ids;
    bool names;
};

// How test messages show them.
std::ostream& operator<<(std::ostream& stream, const Fault& fault) {
    return stream << fault.name;
}

const AudioSnapshot kNoChannels{0, 0, 60, false, false};
const AudioSnapshot kNoMaster{60, 40, 0, false, false};

const Fault kFaults[] = {
    {AudioCall::CreateEnumerator, "CreateEnumerator", kSilence, 0, false, false},
    {AudioCall::CreatePolicyConfig, "CreatePolicyConfig", kSpeakersSnapshot, 3, true, true},
    {AudioCall::EnumAudioEndpoints, "EnumAudioEndpoints", kSpeakersSnapshot, 0, false, false},
    {AudioCall::GetDefaultAudioEndpoint, "GetDefaultAudioEndpoint", kSilence, 3, true, true},
    {AudioCall::GetCount, "GetCount", kSpeakersSnapshot, 0, false, false},
    {AudioCall::Item, "Item", kSpeakersSnapshot, 0, false, false},
    {AudioCall::Activate, "Activate", kSilence, 3, true, true},
    {AudioCall::OpenPropertyStore, "OpenPropertyStore", kSpeakersSnapshot, 3, true, false},
    {AudioCall::GetId, "GetId", kSpeakersSnapshot, 3, false, true},
    {AudioCall::GetValue, "GetValue", kSpeakersSnapshot, 3, true, false},
    {AudioCall::RegisterControlChangeNotify, "RegisterControlChangeNotify", kSpeakersSnapshot, 3, true, true},
    {AudioCall::UnregisterControlChangeNotify,
     "UnregisterControlChangeNotify",
     kSpeakersSnapshot,
     3,
     true,
     true},
    {AudioCall::GetChannelVolumeLevelScalar, "GetChannelVolumeLevelScalar", kNoChannels, 3, true, true},
    {AudioCall::GetMasterVolumeLevelScalar, "GetMasterVolumeLevelScalar", kNoMaster, 3, true, true},
    {AudioCall::GetMute, "GetMute", kSpeakersSnapshot, 3, true, true},
    {AudioCall::SetChannelVolumeLevelScalar, "SetChannelVolumeLevelScalar", kSpeakersSnapshot, 3, true, true},
    {AudioCall::SetMute, "SetMute", kSpeakersSnapshot, 3, true, true},
    {AudioCall::SetDefaultEndpoint, "SetDefaultEndpoint", kSpeakersSnapshot, 3, true, true},
};

static_assert(std::size(kFaults) + 1 == Standins::kAudioCallCount, "one call of the stand-in has no fault");

/// How a call fails: with an error, or with success and nothing handed out.
struct Result {
    HRESULT code;
    const char* name;
};

std::ostream& operator<<(std::ostream& stream, const Result& result) {
    return stream << result.name;
}

constexpr Result kResults[] = {{E_FAIL, "WithAnError"}, {S_OK, "WithNothing"}};

class AudioFaults : public WithAudio, public testing::WithParamInterface<std::tuple<Fault, Result>> {
protected:
    AudioFaults() { addDevices(); }

    Fault fault() const { return std::get<0>(GetParam()); }
    Result result() const { return std::get<1>(GetParam()); }

    void startFailing(std::uint32_t skip, std::uint32_t times) {
        audio.failCall(fault().call, {result().code, skip, times});
    }

    bool makesNoSampler() const {
        return fault().call == AudioCall::CreateEnumerator && FAILED(result().code);
    }

    /// Everything that the pages ask of the sampler, with notices in between.
    void useEverything(SystemInfo& info) {
        std::vector<AudioDeviceEntry> list;
        std::uint32_t index = 0;
        info.listDevices(list, index);
        EXPECT_LE(list.size(), 3U);
        info.setChannelVolume(0, 30);
        info.toggleMicrophoneMute();
        info.setDefaultDevice(L"id-headphones");
        audio.setLevels(kHeadphones, audio.levels(kHeadphones));
        audio.setLevels(kSpeakers, audio.levels(kSpeakers));
        info.setChannelVolume(1, 70);
        info.toggleMicrophoneMute();
        info.bindAudio();
        info.listDevices(list, index);
    }

    /// With the fault gone the sampler is as good as a new one.
    void expectRecovery(SystemInfo& info) {
        audio.clearFailures();
        audio.setLevels(kMicrophone, {{1.0F}, 1.0F, false});
        info.setDefaultDevice(L"id-monitor");
        const AudioSnapshot bound = AudioSnapshot::of(info);
        EXPECT_EQ(bound.left, kMonitorSnapshot.left);
        EXPECT_EQ(bound.right, kMonitorSnapshot.right);
        audio.setLevels(kMonitor, {{0.9F, 0.8F}, 0.9F, true});
        ASSERT_TRUE(audio.settle());
        EXPECT_EQ(AudioSnapshot::of(info), (AudioSnapshot{90, 80, 90, true, false}));
    }
};

TEST_P(AudioFaults, FromTheStartLeaveTheRestIntact) {
    startFailing(0, 0);
    if (makesNoSampler()) {
        EXPECT_THROW(SystemInfo(), Panelix::SysException);
        EXPECT_EQ(audio.liveObjects(), 0);
        return;
    }
    auto info = std::make_unique<SystemInfo>();
    EXPECT_EQ(AudioSnapshot::of(*info), fault().snapshot);
    std::vector<AudioDeviceEntry> list;
    std::uint32_t index = 0;
    info->listDevices(list, index);
    ASSERT_EQ(list.size(), fault().rows);
    for (const AudioDeviceEntry& entry : list) {
        EXPECT_EQ(!entry.id.empty(), fault().ids);
        EXPECT_EQ(!entry.name.empty(), fault().names);
    }
    useEverything(*info);
    if (fault().call != AudioCall::CreateEnumerator) {
        expectRecovery(*info);
    }
    expectNothingLeft(info);
}

TEST_P(AudioFaults, AfterBindingLeaveTheSamplerUsable) {
    auto info = std::make_unique<SystemInfo>();
    startFailing(0, 0);
    useEverything(*info);
    expectRecovery(*info);
    expectNothingLeft(info);
}

TEST_P(AudioFaults, OfASingleCallLeaveTheSamplerUsable) {
    // More calls than any operation above makes of one kind.
    constexpr std::uint32_t kCalls = 12;
    for (std::uint32_t skip = 1; skip <= kCalls; ++skip) {
        SCOPED_TRACE(skip);
        startFailing(skip, 1);
        auto info = std::make_unique<SystemInfo>();
        useEverything(*info);
        expectRecovery(*info);
        expectNothingLeft(info);
        audio.setDefault(Standins::AudioFlow::Render, kSpeakers);
        audio.setLevels(kMonitor, {{0.102F, 0.202F}, 0.202F, false});
    }
}

TEST_P(AudioFaults, DuringDestructionLeaveNothing) {
    auto info = std::make_unique<SystemInfo>();
    startFailing(0, 0);
    expectNothingLeft(info);
    // Only a registration that could not be ended goes with its endpoint volume.
    EXPECT_EQ(audio.callbackEvents(Standins::CallbackEvent::Abandoned),
              fault().call == AudioCall::UnregisterControlChangeNotify ? 2U : 0U);
}

INSTANTIATE_TEST_SUITE_P(,
                         AudioFaults,
                         testing::Combine(testing::ValuesIn(kFaults), testing::ValuesIn(kResults)),
                         [](const auto& test) {
                             return std::string(std::get<0>(test.param).name) + std::get<1>(test.param).name;
                         });

}  // namespace
