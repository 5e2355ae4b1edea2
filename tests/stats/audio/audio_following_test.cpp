#include "stats/system_info.h"

#include <gtest/gtest.h>

#include <audioclient.h>

#include <tuple>

#include "tests/stats/audio/guarded_sampler.h"
#include "tests/stats/audio/heap_watch.h"
#include "tests/stats/audio/task_memory_watch.h"
#include "tests/stats/audio/tick_clock.h"
#include "tests/stats/audio/with_audio.h"

namespace {

using Standins::AudioCall;
using Standins::AudioCallEntry;
using Standins::AudioFlow;
using Standins::AudioObject;
using Standins::CallbackEvent;

using Calls = std::vector<std::pair<AudioCall, std::int32_t>>;

/// A sampler whose default devices are changed by others.
class AudioFollowing : public WithAudio {
protected:
    /// One update, as long after the one before that the default devices are asked for.
    void ask(SystemInfo& info) {
        clock.advance(1000);
        info.update();
    }

    Calls callsOfAsking(SystemInfo& info) {
        const std::size_t before = audio.calls().size();
        ask(info);
        return callsSince(before);
    }

    void setBothDefaults(std::optional<std::uint32_t> speaker, std::optional<std::uint32_t> microphone) {
        audio.setDefault(AudioFlow::Render, speaker);
        audio.setDefault(AudioFlow::Capture, microphone);
    }

    /// Expects that notices of these devices arrive, and each in its own fields.
    void expectBound(SystemInfo& info, std::uint32_t speaker, std::uint32_t microphone) {
        audio.setLevels(speaker, {{0.11F, 0.22F}, 0.33F, true});
        audio.setLevels(microphone, {{1.0F}, 1.0F, true});
        ASSERT_TRUE(audio.settle());
        EXPECT_EQ(AudioSnapshot::of(info), (AudioSnapshot{11, 22, 33, true, true}));
        info.setChannelVolume(0, 77);
        EXPECT_FLOAT_EQ(audio.levels(speaker).channels[0], 0.77F);
        info.toggleMicrophoneMute();
        EXPECT_FALSE(audio.levels(microphone).muted);
    }

    TickClock clock;
};

/// What asking costs when nothing has changed.
const Calls kQuestions = {
    {AudioCall::GetDefaultAudioEndpoint, AudioCallEntry::kNoDevice},
    {AudioCall::GetMute, 0},
    {AudioCall::GetId, 0},
    {AudioCall::GetId, 0},
    {AudioCall::GetDefaultAudioEndpoint, AudioCallEntry::kNoDevice},
    {AudioCall::GetMute, 3},
    {AudioCall::GetId, 3},
    {AudioCall::GetId, 3},
};

TEST_F(AudioFollowing, AsksOnceASecondAndLeavesWhatIsBound) {
    addDevices();
    SystemInfo info;
    EXPECT_EQ(callsOfAsking(info), kQuestions);
    EXPECT_EQ(callsOfAsking(info), kQuestions);
    EXPECT_EQ(AudioSnapshot::of(info), kSpeakersSnapshot);
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Registered), 2U);
}

TEST_F(AudioFollowing, AsksForTheConsolesDevicesOfBothFlows) {
    addDevices();
    SystemInfo info;
    const std::size_t before = audio.calls().size();
    ask(info);
    std::vector<std::pair<std::uint32_t, std::uint32_t>> flowsAndRoles;
    for (std::size_t i = before; i < audio.calls().size(); ++i) {
        if (const AudioCallEntry call = audio.calls()[i]; call.call == AudioCall::GetDefaultAudioEndpoint) {
            flowsAndRoles.emplace_back(call.first, call.second);
        }
    }
    const std::vector<std::pair<std::uint32_t, std::uint32_t>> expected = {{eRender, eConsole},
                                                                           {eCapture, eConsole}};
    EXPECT_EQ(flowsAndRoles, expected);
}

// The binding at the start is as good as an answer.
TEST_F(AudioFollowing, AsksNoSoonerThanASecondAfterTheStartOrTheLastTime) {
    addDevices();
    SystemInfo info;
    for (int second = 0; second < 3; ++second) {
        const std::size_t before = audio.calls().size();
        info.update();
        clock.advance(999);
        info.update();
        EXPECT_EQ(callsSince(before), Calls{}) << second;
        clock.advance(1);
        info.update();
        EXPECT_EQ(callsSince(before), kQuestions) << second;
    }
}

TEST_F(AudioFollowing, AsksOnceAfterALongStandstill) {
    addDevices();
    SystemInfo info;
    const std::size_t before = audio.calls().size();
    clock.advance(8 * 3600 * 1000);
    for (int i = 0; i < 10; ++i) {
        info.update();
    }
    EXPECT_EQ(callsSince(before), kQuestions);
}

TEST_F(AudioFollowing, AnotherDefaultSpeakerIsBoundAndTheMicrophoneLeft) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    audio.setDefault(AudioFlow::Render, kHeadphones);
    const Calls expected = {
        {AudioCall::GetDefaultAudioEndpoint, AudioCallEntry::kNoDevice},
        {AudioCall::GetMute, kSpeakers},
        {AudioCall::GetId, kHeadphones},
        {AudioCall::GetId, kSpeakers},
        {AudioCall::UnregisterControlChangeNotify, kSpeakers},
        {AudioCall::Activate, kHeadphones},
        {AudioCall::RegisterControlChangeNotify, kHeadphones},
        {AudioCall::GetChannelVolumeLevelScalar, kHeadphones},
        {AudioCall::GetChannelVolumeLevelScalar, kHeadphones},
        {AudioCall::GetMasterVolumeLevelScalar, kHeadphones},
        {AudioCall::GetMute, kHeadphones},
        {AudioCall::GetDefaultAudioEndpoint, AudioCallEntry::kNoDevice},
        {AudioCall::GetMute, kMicrophone},
        {AudioCall::GetId, kMicrophone},
        {AudioCall::GetId, kMicrophone},
    };
    EXPECT_EQ(callsOfAsking(*info), expected);
    EXPECT_EQ(AudioSnapshot::of(*info), kHeadphonesSnapshot);
    expectBound(*info, kHeadphones, kMicrophone);
    expectNothingLeft(info);
}

TEST_F(AudioFollowing, AnotherDefaultMicrophoneIsBoundAndTheSpeakerLeft) {
    addDevices();
    const std::uint32_t other = addMicrophone(L"id-other", true);
    audio.setDefault(AudioFlow::Capture, kMicrophone);
    auto info = std::make_unique<SystemInfo>();
    ASSERT_FALSE(info->microphoneMuted);
    audio.setDefault(AudioFlow::Capture, other);
    ask(*info);
    EXPECT_TRUE(info->microphoneMuted);
    EXPECT_EQ(audio.callCount(AudioCall::Activate), 3U);
    expectBound(*info, kSpeakers, other);
    expectNothingLeft(info);
}

TEST_F(AudioFollowing, ChangesAtTheSameTimeAreBothFollowed) {
    addDevices();
    const std::uint32_t other = addMicrophone(L"id-other", true);
    audio.setDefault(AudioFlow::Capture, kMicrophone);
    auto info = std::make_unique<SystemInfo>();
    setBothDefaults(kMonitor, other);
    ask(*info);
    EXPECT_EQ(AudioSnapshot::of(*info), (AudioSnapshot{10, 20, 20, false, true}));
    expectBound(*info, kMonitor, other);
    expectNothingLeft(info);
}

TEST_F(AudioFollowing, TheFirstDevicesAreBoundAndTheLossOfTheLastIsSilence) {
    auto info = std::make_unique<SystemInfo>();
    ask(*info);
    ASSERT_EQ(AudioSnapshot::of(*info), kSilence);
    addDevices();
    for (int i = 0; i < 3; ++i) {
        setBothDefaults(kHeadphones, kMicrophone);
        audio.setLevels(kHeadphones, {{0.252F, 0.352F}, 0.352F, true});
        audio.setLevels(kMicrophone, {{1.0F}, 1.0F, true});
        ask(*info);
        AudioSnapshot expected = kHeadphonesSnapshot;
        expected.microphoneMuted = true;
        EXPECT_EQ(AudioSnapshot::of(*info), expected);
        expectBound(*info, kHeadphones, kMicrophone);

        // Muted before, so that the mute states are seen to go as well.
        audio.setLevels(kMicrophone, {{1.0F}, 1.0F, true});
        ASSERT_TRUE(audio.settle());
        setBothDefaults(std::nullopt, std::nullopt);
        ask(*info);
        EXPECT_EQ(AudioSnapshot::of(*info), kSilence);
        EXPECT_EQ(audio.liveObjects(AudioObject::EndpointVolume), 0);
        EXPECT_EQ(audio.liveObjects(AudioObject::Device), 0);
    }
    expectNothingLeft(info);
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Abandoned), 0U);
}

TEST_F(AudioFollowing, DevicesThatWereTakenAwayAreReplacedByTheNextDefaults) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    audio.setPresent(kSpeakers, false);
    audio.setPresent(kMicrophone, false);
    ask(*info);
    EXPECT_EQ(AudioSnapshot::of(*info), kSilence);
    audio.setDefault(AudioFlow::Render, kMonitor);
    ask(*info);
    EXPECT_EQ(AudioSnapshot::of(*info), kMonitorSnapshot);
    expectNothingLeft(info);
}

// The default device has the same id as before then, but the volume that was bound has gone for good.
TEST_F(AudioFollowing, DevicesThatWentAndCameBackUnnoticedAreBoundAnew) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    for (const std::uint32_t device : {kSpeakers, kMicrophone}) {
        audio.setPresent(device, false);
        audio.setPresent(device, true);
        ask(*info);
        EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
    }
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Registered), 4U);
    EXPECT_EQ(callsOfAsking(*info), kQuestions);
    expectBound(*info, kSpeakers, kMicrophone);
    expectNothingLeft(info);
}

TEST_F(AudioFollowing, TheServiceMayStartAfterTheSampler) {
    addDevices();
    audio.setServiceRunning(false);
    auto info = std::make_unique<SystemInfo>();
    ask(*info);
    EXPECT_EQ(AudioSnapshot::of(*info), kSilence);
    audio.setServiceRunning(true);
    ask(*info);
    EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
    expectBound(*info, kSpeakers, kMicrophone);
    expectNothingLeft(info);
}

TEST_F(AudioFollowing, ARestartOfTheServiceIsFollowed) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    for (int i = 0; i < 3; ++i) {
        audio.setServiceRunning(false);
        ask(*info);
        EXPECT_EQ(AudioSnapshot::of(*info), kSilence);
        ask(*info);
        audio.setServiceRunning(true);
        ask(*info);
        EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
        EXPECT_EQ(callsOfAsking(*info), kQuestions);
    }
    EXPECT_EQ(audio.liveObjects(AudioObject::Enumerator), 1);
    expectBound(*info, kSpeakers, kMicrophone);
    expectNothingLeft(info);
}

// Too short to be seen by a question while it stood still.
TEST_F(AudioFollowing, AShortRestartOfTheServiceIsFollowedWithinTwoQuestions) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    audio.setServiceRunning(false);
    audio.setServiceRunning(true);
    ask(*info);
    ask(*info);
    EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
    expectBound(*info, kSpeakers, kMicrophone);
    expectNothingLeft(info);
}

TEST_F(AudioFollowing, AnEnumeratorThatCannotBeReplacedStays) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    audio.failCall(AudioCall::GetDefaultAudioEndpoint, {.result = E_FAIL, .times = 2});
    audio.failCall(AudioCall::CreateEnumerator, {});
    ask(*info);
    EXPECT_EQ(audio.callCount(AudioCall::CreateEnumerator), 2U);
    audio.setDefault(AudioFlow::Render, kMonitor);
    ask(*info);
    EXPECT_EQ(AudioSnapshot::of(*info), kMonitorSnapshot);
    EXPECT_EQ(audio.callCount(AudioCall::CreateEnumerator), 2U);
    expectNothingLeft(info);
}

TEST_F(AudioFollowing, AnEnumeratorThatWasMissingAtTheStartIsMadeLater) {
    addDevices();
    audio.failCall(AudioCall::CreateEnumerator, {.result = S_OK, .times = 1});
    auto info = std::make_unique<SystemInfo>();
    ask(*info);
    EXPECT_EQ(AudioSnapshot::of(*info), kSilence);
    ask(*info);
    EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
    expectNothingLeft(info);
}

/// A call of the questions that goes wrong. None of them says anything about the device that is bound.
struct Failure {
    AudioCall call;
    HRESULT result;
    const char* name;
};

// How test messages show them.
std::ostream& operator<<(std::ostream& stream, const Failure& failure) {
    return stream << failure.name;
}

constexpr HRESULT kServerUnavailable = static_cast<HRESULT>(0x800706BA);

const Failure kFailures[] = {
    {AudioCall::GetDefaultAudioEndpoint, E_FAIL, "DefaultFails"},
    {AudioCall::GetDefaultAudioEndpoint, kServerUnavailable, "DefaultServerUnavailable"},
    {AudioCall::GetDefaultAudioEndpoint, S_OK, "DefaultWithNothing"},
    {AudioCall::GetId, E_OUTOFMEMORY, "IdFails"},
    {AudioCall::GetId, S_OK, "IdWithNothing"},
    {AudioCall::GetMute, E_FAIL, "MuteFails"},
    {AudioCall::GetMute, kServerUnavailable, "MuteServerUnavailable"},
};

/// With the number of calls that go well before.
class AudioFollowingFailures : public AudioFollowing,
                               public testing::WithParamInterface<std::tuple<Failure, std::uint32_t>> {
protected:
    AudioFollowingFailures() { addDevices(); }

    void fail(std::uint32_t times) {
        audio.failCall(
            std::get<0>(GetParam()).call,
            {.result = std::get<0>(GetParam()).result, .skip = std::get<1>(GetParam()), .times = times});
    }
};

TEST_P(AudioFollowingFailures, LeaveGoodDevicesBound) {
    auto info = std::make_unique<SystemInfo>();
    // Rounded up; a new reading would say 59 and 39.
    notify(kSpeakers, {GUID{}, {{0.597F, 0.397F}, 0.597F, false}});
    for (int i = 0; i < 3; ++i) {
        for (const std::uint32_t times : {1U, 0U}) {
            fail(times);
            ask(*info);
            audio.clearFailures();
            // A volume that fails in two questions in a row would be taken for dead.
            EXPECT_EQ(callsOfAsking(*info), kQuestions);
        }
    }
    EXPECT_EQ(audio.callCount(AudioCall::UnregisterControlChangeNotify), 0U);
    EXPECT_EQ(audio.callCount(AudioCall::Activate), 2U);
    EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
    EXPECT_EQ(audio.liveObjects(AudioObject::Enumerator), 1);
    expectBound(*info, kSpeakers, kMicrophone);
    expectNothingLeft(info);
}

// Neither of the new devices is muted, which is also what a reading that fails says.
TEST_P(AudioFollowingFailures, DelayAChangeByOneQuestion) {
    const std::uint32_t former = addMicrophone(L"id-former", true);
    auto info = std::make_unique<SystemInfo>();
    ASSERT_TRUE(info->microphoneMuted);
    ASSERT_EQ(audio.defaultDevice(AudioFlow::Capture), former);
    setBothDefaults(kMonitor, kMicrophone);
    fail(1);
    ask(*info);
    ask(*info);
    EXPECT_EQ(AudioSnapshot::of(*info), kMonitorSnapshot);
    expectBound(*info, kMonitor, kMicrophone);
    expectNothingLeft(info);
}

INSTANTIATE_TEST_SUITE_P(,
                         AudioFollowingFailures,
                         testing::Combine(testing::ValuesIn(kFailures), testing::Values(0U, 1U, 2U, 3U)),
                         [](const auto& test) {
                             return std::string(std::get<0>(test.param).name) + "After" +
                                    std::to_string(std::get<1>(test.param));
                         });

TEST_F(AudioFollowing, AFailureForOneFlowDoesNotHoldTheOtherUp) {
    addDevices();
    SystemInfo info;
    setBothDefaults(kMonitor, std::nullopt);
    audio.setLevels(kMicrophone, {{1.0F}, 1.0F, true});
    ASSERT_TRUE(audio.settle());
    audio.failCall(AudioCall::GetDefaultAudioEndpoint, {.result = E_FAIL, .skip = 1, .times = 1});
    ask(info);
    EXPECT_EQ(AudioSnapshot::of(info), (AudioSnapshot{10, 20, 20, false, true}));
    audio.setDefault(AudioFlow::Render, kSpeakers);
    audio.failCall(AudioCall::GetDefaultAudioEndpoint, {.result = E_FAIL, .times = 1});
    ask(info);
    EXPECT_EQ(AudioSnapshot::of(info), kMonitorSnapshot);
    ask(info);
    EXPECT_EQ(AudioSnapshot::of(info), kSpeakersSnapshot);
}

/// Answers of a volume that mean that it will never work again.
class AudioFollowingGone : public AudioFollowing, public testing::WithParamInterface<HRESULT> {};

TEST_P(AudioFollowingGone, BindTheEndpointThatAnswersSoAnew) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    audio.failCall(AudioCall::GetMute, {.result = GetParam(), .skip = 1, .times = 1});
    ask(*info);
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Registered), 3U);
    EXPECT_EQ(audio.callCount(AudioCall::UnregisterControlChangeNotify), 1U);
    EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
    expectBound(*info, kSpeakers, kMicrophone);
    expectNothingLeft(info);
}

// What answers so is not bound for another second either: nobody would hear of its changes.
TEST_P(AudioFollowingGone, LeaveSilenceWhileTheDefaultIsUnknown) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    audio.failCall(AudioCall::GetMute, {.result = GetParam()});
    audio.failCall(AudioCall::GetDefaultAudioEndpoint, {});
    ask(*info);
    EXPECT_EQ(AudioSnapshot::of(*info), kSilence);
    audio.clearFailures();
    ask(*info);
    EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
    expectNothingLeft(info);
}

INSTANTIATE_TEST_SUITE_P(,
                         AudioFollowingGone,
                         testing::Values(AUDCLNT_E_DEVICE_INVALIDATED, AUDCLNT_E_SERVICE_NOT_RUNNING),
                         [](const auto& test) {
                             return test.param == AUDCLNT_E_DEVICE_INVALIDATED ? "DeviceInvalidated"
                                                                               : "ServiceNotRunning";
                         });

/// What volumes answer whose device or service is gone, as far as it is not documented.
class AudioFollowingDeadVolumes : public AudioFollowing, public testing::WithParamInterface<HRESULT> {};

TEST_P(AudioFollowingDeadVolumes, AreBoundAnewAtTheSecondQuestion) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    for (int i = 0; i < 3; ++i) {
        audio.breakVolumes(GetParam());
        const std::uint64_t bound = audio.callCount(AudioCall::Activate);
        // What nobody is told of.
        audio.setLevels(kSpeakers, {{0.702F, 0.802F}, 0.802F, true});
        ask(*info);
        EXPECT_EQ(audio.callCount(AudioCall::Activate), bound);
        EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot) << "what was known last";
        ask(*info);
        EXPECT_EQ(AudioSnapshot::of(*info), (AudioSnapshot{70, 80, 80, true, false}));
        EXPECT_EQ(callsOfAsking(*info), kQuestions);
        expectBound(*info, kSpeakers, kMicrophone);
        audio.setLevels(kMicrophone, {{1.0F}, 1.0F, false});
        audio.setLevels(kSpeakers, {{0.602F, 0.402F}, 0.602F, false});
        ASSERT_TRUE(audio.settle());
    }
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Registered), 8U);
    expectNothingLeft(info);
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Abandoned), 0U);
}

TEST_P(AudioFollowingDeadVolumes, AreBoundAnewAtEverySecondQuestionWhileTheNewOnesFailToo) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    audio.failCall(AudioCall::GetMute, {.result = GetParam()});
    for (int question = 1; question <= 8; ++question) {
        ask(*info);
        EXPECT_EQ(audio.callCount(AudioCall::Activate), 2U + 2U * static_cast<unsigned>(question / 2));
    }
    audio.clearFailures();
    ask(*info);
    expectBound(*info, kSpeakers, kMicrophone);
    expectNothingLeft(info);
}

INSTANTIATE_TEST_SUITE_P(,
                         AudioFollowingDeadVolumes,
                         testing::Values(kServerUnavailable, E_HANDLE, E_FAIL),
                         [](const auto& test) {
                             return test.param == kServerUnavailable ? "ServerUnavailable"
                                    : test.param == E_HANDLE         ? "Handle"
                                                                     : "Fail";
                         });

TEST_F(AudioFollowing, TwoFailuresOfAVolumeWithAnAnswerBetweenThemDoNotCount) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    for (int i = 0; i < 5; ++i) {
        audio.failCall(AudioCall::GetMute, {.times = 2});
        ask(*info);
        ask(*info);
    }
    EXPECT_EQ(audio.callCount(AudioCall::Activate), 2U);
    expectNothingLeft(info);
}

TEST_F(AudioFollowing, ANewVolumeIsNotBlamedForTheFailuresOfTheFormerOne) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    audio.failCall(AudioCall::GetMute, {.times = 1});
    ask(*info);
    audio.setDefault(AudioFlow::Render, kMonitor);
    audio.failCall(AudioCall::GetMute, {.result = AUDCLNT_E_DEVICE_INVALIDATED, .times = 1});
    ask(*info);
    const std::uint64_t bound = audio.callCount(AudioCall::Activate);
    audio.failCall(AudioCall::GetMute, {.times = 1});
    ask(*info);
    EXPECT_EQ(audio.callCount(AudioCall::Activate), bound);
    EXPECT_EQ(AudioSnapshot::of(*info), kMonitorSnapshot);
    expectNothingLeft(info);
}

TEST_F(AudioFollowing, NoticesOfADeadVolumeAreNotTakenForThoseOfItsSuccessor) {
    addDevices();
    audio.setKeepsCallbacks(true);
    SystemInfo info;
    audio.breakVolumes(E_HANDLE);
    ask(info);
    ask(info);
    notify(kSpeakers, {GUID{}, {{0.9F, 0.8F}, 0.9F, false}});
    EXPECT_EQ(AudioSnapshot::of(info), (AudioSnapshot{90, 80, 90, false, false}));
    EXPECT_EQ(audio.noticesDelivered(), 1U) << "to the successor's callback alone";
}

TEST_F(AudioFollowing, AnEnumeratorThatFindsNothingAnyMoreIsReplaced) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    for (int i = 0; i < 3; ++i) {
        audio.loseEnumerators();
        ask(*info);
        EXPECT_EQ(AudioSnapshot::of(*info), kSilence);
        ask(*info);
        EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
        EXPECT_EQ(callsOfAsking(*info), kQuestions);
    }
    EXPECT_EQ(audio.liveObjects(AudioObject::Enumerator), 1);
    std::vector<AudioDeviceEntry> list;
    std::uint32_t index = 99;
    info->listDevices(list, index);
    EXPECT_EQ(list.size(), 3U);
    EXPECT_EQ(index, 0U);
    expectBound(*info, kSpeakers, kMicrophone);
    expectNothingLeft(info);
}

// As in a remote session that takes all devices away and leaves an enumerator behind that never finds one.
TEST_F(AudioFollowing, AnEnumeratorIsReplacedAtEveryTenthQuestionWhileAFlowHasNoDevice) {
    for (const AudioFlow flow : {AudioFlow::Render, AudioFlow::Capture}) {
        if (audio.deviceCount() == 0) {
            addDevices();
        }
        auto info = std::make_unique<SystemInfo>();
        const auto usual = audio.defaultDevice(flow);
        audio.setDefault(flow, std::nullopt);
        ask(*info);
        const std::uint64_t made = audio.callCount(AudioCall::CreateEnumerator);
        for (int question = 1; question <= 35; ++question) {
            ask(*info);
            EXPECT_EQ(audio.callCount(AudioCall::CreateEnumerator),
                      made + static_cast<unsigned>(question / 10))
                << question;
        }
        audio.loseEnumerators();
        audio.setDefault(flow, usual);
        for (int question = 1; question <= 11; ++question) {
            ask(*info);
        }
        EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
        EXPECT_EQ(audio.liveObjects(AudioObject::Enumerator), 1);
        // And no more are made.
        const std::uint64_t enough = audio.callCount(AudioCall::CreateEnumerator);
        for (int question = 1; question <= 25; ++question) {
            ask(*info);
        }
        EXPECT_EQ(audio.callCount(AudioCall::CreateEnumerator), enough);
        expectNothingLeft(info);
    }
}

// The flow that has a device keeps it, with its notices.
TEST_F(AudioFollowing, AMachineWithoutAMicrophoneKeepsItsSpeakerBound) {
    addDevices();
    audio.setDefault(AudioFlow::Capture, std::nullopt);
    auto info = std::make_unique<SystemInfo>();
    notify(kSpeakers, {GUID{}, {{0.597F, 0.397F}, 0.597F, false}});
    for (int question = 0; question < 25; ++question) {
        ask(*info);
    }
    EXPECT_EQ(audio.callCount(AudioCall::Activate), 1U);
    EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
    EXPECT_EQ(audio.liveObjects(AudioObject::Enumerator), 1);
    expectNothingLeft(info);
}

TEST_F(AudioFollowing, ARegistrationThatFailedIsTriedAgainUntilItIsTaken) {
    addDevices();
    for (const std::uint32_t good : {0U, 1U}) {
        audio.setLevels(kSpeakers, {{0.602F, 0.402F}, 0.602F, false});
        audio.setLevels(kMicrophone, {{1.0F}, 1.0F, false});
        audio.failCall(AudioCall::RegisterControlChangeNotify, {.skip = good, .times = 3});
        auto info = std::make_unique<SystemInfo>();
        // Of these changes nobody tells.
        audio.setLevels(kSpeakers, {{0.302F, 0.202F}, 0.302F, true});
        audio.setLevels(kMicrophone, {{1.0F}, 1.0F, true});
        for (int question = 0; question < 3; ++question) {
            ask(*info);
        }
        // What was posted before the registration may come after it.
        ASSERT_TRUE(audio.settle());
        EXPECT_EQ(AudioSnapshot::of(*info), (AudioSnapshot{30, 20, 30, true, true}));
        EXPECT_EQ(callsOfAsking(*info), kQuestions);
        expectBound(*info, kSpeakers, kMicrophone);
        EXPECT_EQ(audio.callCount(AudioCall::Activate), 2U * (good + 1));
        expectNothingLeft(info);
    }
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Abandoned), 0U);
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Registered), 4U);
}

TEST_F(AudioFollowing, ARegistrationThatFailsForEverLeavesTheVolumesReadOnceASecond) {
    addDevices();
    audio.failCall(AudioCall::RegisterControlChangeNotify, {});
    auto info = std::make_unique<SystemInfo>();
    for (int percent = 10; percent < 60; percent += 10) {
        const float volume = static_cast<float>(percent) / 100.0F + 0.002F;
        audio.setLevels(kSpeakers, {{volume, volume}, volume, false});
        ask(*info);
        EXPECT_EQ(AudioSnapshot::of(*info), (AudioSnapshot{percent, percent, percent, false, false}));
    }
    // A question without an answer is followed by no reading, which would say 0.
    audio.failCall(AudioCall::GetMute, {.times = 2});
    audio.failCall(AudioCall::GetMasterVolumeLevelScalar, {});
    audio.failCall(AudioCall::GetChannelVolumeLevelScalar, {});
    ask(*info);
    EXPECT_EQ(AudioSnapshot::of(*info), (AudioSnapshot{50, 50, 50, false, false}));
    expectNothingLeft(info);
}

TEST_F(AudioFollowing, AReadingThatFailedIsMadeUpForAtTheNextQuestion) {
    addDevices();
    for (const AudioCall call : {AudioCall::GetMute,
                                 AudioCall::GetMasterVolumeLevelScalar,
                                 AudioCall::GetChannelVolumeLevelScalar}) {
        audio.setDefault(AudioFlow::Render, kHeadphones);
        audio.failCall(call, {.times = 1});
        auto info = std::make_unique<SystemInfo>();
        EXPECT_NE(AudioSnapshot::of(*info), kHeadphonesSnapshot);
        ask(*info);
        EXPECT_EQ(AudioSnapshot::of(*info), kHeadphonesSnapshot);
        const std::size_t before = audio.calls().size();
        ask(*info);
        EXPECT_EQ(audio.calls().size() - before, kQuestions.size());
        expectNothingLeft(info);
    }
}

TEST_F(AudioFollowing, ADeviceOfOneChannelIsReadOnce) {
    addSpeaker(L"id-mono", {{0.502F}, 0.502F, false});
    addMicrophone(L"id-microphone", false);
    SystemInfo info;
    ask(info);
    EXPECT_EQ(callsOfAsking(info).size(), kQuestions.size());
    EXPECT_EQ(AudioSnapshot::of(info), (AudioSnapshot{50, 0, 50, false, false}));
}

// As it can be with a device that has just been plugged in.
TEST_F(AudioFollowing, AVolumeThatCouldNotBeHadIsTriedAgain) {
    addDevices();
    for (const std::uint32_t good : {0U, 1U}) {
        audio.failCall(AudioCall::Activate, {.result = E_FAIL, .skip = good, .times = 1});
        auto info = std::make_unique<SystemInfo>();
        EXPECT_EQ(AudioSnapshot::of(*info), good == 0 ? kSilence : kSpeakersSnapshot);
        ask(*info);
        EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
        EXPECT_EQ(callsOfAsking(*info), kQuestions);
        expectBound(*info, kSpeakers, kMicrophone);
        expectNothingLeft(info);
        audio.setLevels(kSpeakers, {{0.602F, 0.402F}, 0.602F, false});
        audio.setLevels(kMicrophone, {{1.0F}, 1.0F, false});
    }
}

// A notice rounds and a reading truncates: a volume that is read anew without need would fall by one.
TEST_F(AudioFollowing, AVolumeThatIsBeingChangedIsLeftAlone) {
    addDevices();
    const std::uint32_t other = addMicrophone(L"id-other", true);
    audio.setDefault(AudioFlow::Capture, kMicrophone);
    SystemInfo info;
    for (int percent = 0; percent <= 100; ++percent) {
        info.setChannelVolume(0, percent);
        info.setChannelVolume(1, 100 - percent);
        ASSERT_TRUE(audio.settle());
        audio.setDefault(AudioFlow::Capture, percent % 2 == 0 ? other : kMicrophone);
        ask(info);
        ASSERT_EQ(info.speakerLeftVolume, percent);
        ASSERT_EQ(info.speakerRightVolume, 100 - percent);
        ASSERT_EQ(info.microphoneMuted, percent % 2 == 0);
    }
}

TEST_F(AudioFollowing, NoticesOfTheFormerDeviceChangeNothing) {
    addDevices();
    audio.setKeepsCallbacks(true);
    SystemInfo info;
    audio.setDefault(AudioFlow::Render, kHeadphones);
    ask(info);
    notify(kSpeakers, {GUID{}, {{0.9F, 0.9F}, 0.9F, false}});
    EXPECT_EQ(AudioSnapshot::of(info), kHeadphonesSnapshot);
    audio.setDefault(AudioFlow::Render, std::nullopt);
    ask(info);
    notify(kHeadphones, {GUID{}, {{0.9F, 0.9F}, 0.9F, true}});
    EXPECT_EQ(AudioSnapshot::of(info), kSilence);
}

TEST_F(AudioFollowing, NothingIsLeftBehindByManyChanges) {
    constexpr int kRounds = 200;
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    const auto round = [&] {
        setBothDefaults(kHeadphones, std::nullopt);
        ask(*info);
        setBothDefaults(std::nullopt, kMicrophone);
        ask(*info);
        audio.failCall(AudioCall::GetDefaultAudioEndpoint, {.result = E_FAIL, .times = 2});
        ask(*info);
        setBothDefaults(kSpeakers, kMicrophone);
        ask(*info);
        audio.setPresent(kSpeakers, false);
        audio.setPresent(kSpeakers, true);
        ask(*info);
    };
    round();
    ASSERT_TRUE(audio.settle(std::chrono::seconds(10)));
    const std::ptrdiff_t blocks = heapBlocksInUse();
    const std::int32_t objects = audio.liveObjects();
    {
        const TaskMemoryWatch taskMemory;
        for (int i = 0; i < kRounds; ++i) {
            round();
        }
        EXPECT_GT(taskMemory.allocated(), static_cast<std::size_t>(kRounds));
        EXPECT_EQ(taskMemory.allocated(), taskMemory.freed());
    }
    EXPECT_EQ(heapBlocksInUse(), blocks);
    EXPECT_EQ(audio.liveObjects(), objects);
    // An enumerator, and for each endpoint a device and its volume, each referred to once.
    EXPECT_EQ(audio.liveObjects(), 5);
    EXPECT_EQ(audio.references(AudioObject::Enumerator), 1);
    EXPECT_EQ(audio.references(AudioObject::Device), 2);
    EXPECT_EQ(audio.references(AudioObject::EndpointVolume), 2);
    EXPECT_EQ(audio.callbackReferences(), 2);
    expectNothingLeft(info);
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Abandoned), 0U);
}

// Every device keeps saying its own levels. Nothing of a former one gets through, and what changes last
// counts.
TEST_F(AudioFollowing, ChangesUnderFourFloodingThreads) {
    constexpr std::uint32_t kFloodThreads = 4;
    constexpr int kChanges = 500;
    constexpr int kLooks = 20;
    const std::pair<std::uint32_t, AudioSnapshot> choices[] = {
        {kHeadphones, kHeadphonesSnapshot}, {kMonitor, kMonitorSnapshot}, {kSpeakers, kSpeakersSnapshot}};
    addDevices();
    GuardedSampler info;
    ASSERT_TRUE(audio.setFlood(kFloodThreads));
    for (int i = 0; i < kChanges; ++i) {
        const auto& [device, snapshot] = choices[static_cast<std::size_t>(i) % std::size(choices)];
        audio.setDefault(AudioFlow::Render, device);
        ask(*info);
        for (int look = 0; look < kLooks; ++look) {
            ASSERT_EQ(AudioSnapshot::of(*info), snapshot) << "change " << i << ", look " << look;
            SwitchToThread();
        }
    }
    EXPECT_GT(audio.noticesDelivered(), static_cast<std::uint64_t>(kChanges)) << "that was no flood";
    info.end();
    ASSERT_TRUE(audio.setFlood(0));
    expectNothingLeft();
    EXPECT_EQ(audio.callbackEvents(CallbackEvent::Abandoned), 0U);
}

// A change of the new device is in the snapshot when it is bound, or comes with its notice.
TEST_F(AudioFollowing, ChangesDuringTheBindingAreNotLost) {
    constexpr int kChanges = 500;
    addDevices();
    SystemInfo info;
    for (int i = 0; i < kChanges; ++i) {
        const std::uint32_t device = i % 2 == 0 ? kHeadphones : kMonitor;
        const int percent = i % 101;
        const float volume = static_cast<float>(percent) / 100.0F + 0.002F;
        audio.setDefault(AudioFlow::Render, device);
        audio.setLevels(device, {{volume, volume}, volume, false});
        ask(info);
        ASSERT_TRUE(audio.settle());
        ASSERT_EQ(AudioSnapshot::of(info), (AudioSnapshot{percent, percent, percent, false, false}))
            << "change " << i;
    }
}

}  // namespace
