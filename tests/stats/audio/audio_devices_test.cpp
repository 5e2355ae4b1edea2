#include "stats/system_info.h"

#include <gtest/gtest.h>

#include <new>

#include "tests/stats/audio/heap_watch.h"
#include "tests/stats/audio/task_memory_watch.h"
#include "tests/stats/audio/with_audio.h"
#include "tests/support/only_wine.h"

namespace {

using Standins::AudioCall;
using Standins::AudioCallEntry;
using Standins::AudioDevice;
using Standins::AudioFlow;
using Standins::FriendlyName;

constexpr std::uint32_t kUntouched = 77;

struct Row {
    std::wstring id;
    std::wstring name;
    bool operator==(const Row&) const = default;
};

class AudioDevices : public WithAudio {
protected:
    using WithAudio::WithAudio;

    /// Lists the devices into `rows` and `defaultIndex`, after leftovers of a list before.
    void list(SystemInfo& info) {
        std::vector<AudioDeviceEntry> devices{{L"leftover", L"leftover"}};
        defaultIndex = kUntouched;
        info.listDevices(devices, defaultIndex);
        rows.clear();
        for (const AudioDeviceEntry& device : devices) {
            rows.push_back({device.id, device.name});
        }
    }

    std::vector<Row> rows;
    std::uint32_t defaultIndex = kUntouched;
};

class AudioDevicesWithoutPolicy : public AudioDevices {
protected:
    AudioDevicesWithoutPolicy() : AudioDevices(false) {}

    void SetUp() override { SKIP_ON_WINDOWS("the system has a policy configuration, and would obey"); }
};

const std::vector<Row> kAllRows = {
    {L"id-speakers", L"Speakers"}, {L"id-headphones", L"Headphones"}, {L"id-monitor", L"Monitor"}};

TEST_F(AudioDevices, AreTheActiveSpeakersInTheSystemsOrder) {
    addDevices();
    SystemInfo info;
    list(info);
    EXPECT_EQ(rows, kAllRows);
    EXPECT_EQ(defaultIndex, 0U);

    audio.setPresent(kHeadphones, false);
    audio.setDefault(AudioFlow::Render, kMonitor);
    list(info);
    EXPECT_EQ(rows, (std::vector<Row>{kAllRows[0], kAllRows[2]}));
    EXPECT_EQ(defaultIndex, 1U);
}

TEST_F(AudioDevices, AreAskedForActiveRenderEndpointsOnly) {
    addDevices();
    SystemInfo info;
    list(info);
    for (const AudioCallEntry& call : audio.calls()) {
        if (call.call == AudioCall::EnumAudioEndpoints) {
            EXPECT_EQ(call.first, static_cast<std::uint32_t>(eRender));
            EXPECT_EQ(call.second, static_cast<std::uint32_t>(DEVICE_STATE_ACTIVE));
        }
        if (call.call == AudioCall::OpenPropertyStore) {
            EXPECT_EQ(call.first, static_cast<std::uint32_t>(STGM_READ));
        }
    }
    EXPECT_EQ(audio.callCount(AudioCall::EnumAudioEndpoints), 1U);
    EXPECT_EQ(audio.callCount(AudioCall::OpenPropertyStore), 3U);
}

TEST_F(AudioDevices, WithoutASpeakerTheListIsEmptyAndTheIndexUntouched) {
    addMicrophone(L"microphone", false);
    SystemInfo info;
    list(info);
    EXPECT_TRUE(rows.empty());
    EXPECT_EQ(defaultIndex, kUntouched);
}

TEST_F(AudioDevices, WithoutADefaultTheIndexIsUntouched) {
    addDevices();
    audio.setDefault(AudioFlow::Render, std::nullopt);
    SystemInfo info;
    list(info);
    EXPECT_EQ(rows, kAllRows);
    EXPECT_EQ(defaultIndex, kUntouched);
}

TEST_F(AudioDevices, IdsAreComparedWithRegardToCase) {
    addSpeaker(L"ID", {{0.1F}, 0.1F, false});
    const std::uint32_t lower = addSpeaker(L"id", {{0.2F}, 0.2F, false});
    SystemInfo info;
    list(info);
    EXPECT_EQ(defaultIndex, lower);
}

TEST_F(AudioDevices, WithoutANameHaveAnEmptyOne) {
    for (const FriendlyName kind : {FriendlyName::Missing, FriendlyName::NullText, FriendlyName::Number}) {
        AudioDevice device;
        device.id = L"nameless";
        device.nameKind = kind;
        audio.addDevice(device);
    }
    SystemInfo info;
    list(info);
    EXPECT_EQ(rows, std::vector<Row>(3, {L"nameless", L""}));
}

TEST_F(AudioDevices, OfALongNameHaveItsBeginning) {
    AudioDevice device;
    device.id = L"endless";
    device.name = L"Name ";
    device.nameKind = FriendlyName::Endless;
    ASSERT_TRUE(audio.addDevice(device));
    SystemInfo info;
    list(info);
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].name.size(), 256U);
    EXPECT_EQ(rows[0].name.substr(0, 8), L"Name Nam");
}

TEST_F(AudioDevices, BeyondAThousandAreNotAskedFor) {
    addDevices();
    SystemInfo info;
    for (const std::uint32_t count : {1'000U, 1'001U, 0x7FFFFFFFU}) {
        audio.setCountAnswer(count);
        const std::uint64_t before = audio.callCount(AudioCall::Item);
        list(info);
        EXPECT_EQ(rows, kAllRows);
        EXPECT_EQ(audio.callCount(AudioCall::Item) - before, 1'000U);
    }
    audio.setCountAnswer(0xFFFFFFFF);
    list(info);
    EXPECT_TRUE(rows.empty());
}

TEST_F(AudioDevices, WithoutAnIdAreListedButAreNeverTheDefault) {
    AudioDevice device;
    device.idMissing = true;
    device.name = L"No id";
    audio.setDefault(AudioFlow::Render, audio.addDevice(device));
    SystemInfo info;
    list(info);
    EXPECT_EQ(rows, (std::vector<Row>{{L"", L"No id"}}));
    EXPECT_EQ(defaultIndex, kUntouched);
}

TEST_F(AudioDevices, ThatGoWhileTheyAreListedAreLeftOut) {
    addDevices();
    audio.setDefault(AudioFlow::Render, kMonitor);
    SystemInfo info;
    audio.failCall(AudioCall::Item, {.result = E_FAIL, .skip = 1, .times = 1});
    list(info);
    EXPECT_EQ(rows, (std::vector<Row>{kAllRows[0], kAllRows[2]}));
    EXPECT_EQ(defaultIndex, 1U);
}

// The ids of a row and of the default device take turns.
TEST_F(AudioDevices, KeepTheirRowsWhenOneIdCannotBeRead) {
    addDevices();
    audio.setDefault(AudioFlow::Render, kHeadphones);
    SystemInfo info;
    for (std::uint32_t call = 0; call < 6; ++call) {
        SCOPED_TRACE(call);
        std::vector<Row> expected = kAllRows;
        if (call % 2 == 0) {
            expected[call / 2].id.clear();
        }
        // The row of the default device is the second.
        const bool defaultIsKnown = call / 2 != 1;
        for (const HRESULT result : {E_OUTOFMEMORY, S_OK}) {
            audio.failCall(AudioCall::GetId, {.result = result, .skip = call, .times = 1});
            list(info);
            EXPECT_EQ(rows, expected);
            EXPECT_EQ(defaultIndex, defaultIsKnown ? 1U : kUntouched);
        }
    }
}

TEST_F(AudioDevices, ThatCannotAllBeListedForLackOfMemoryLeaveNothing) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    const std::int32_t objects = audio.liveObjects();
    const TaskMemoryWatch taskMemory;
    const std::ptrdiff_t blocks = heapBlocksInUse();
    int failures = 0;
    for (bool failed = true; failed; ++failures) {
        std::vector<AudioDeviceEntry> devices;
        std::uint32_t index = kUntouched;
        const FailingAllocation failing(failures);
        failed = false;
        try {
            info->listDevices(devices, index);
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        EXPECT_EQ(FailingAllocation::happened(), failed);
        EXPECT_EQ(audio.liveObjects(), objects) << failures;
        EXPECT_EQ(taskMemory.allocated(), taskMemory.freed()) << failures;
    }
    EXPECT_GT(failures, 3);
    EXPECT_EQ(heapBlocksInUse(), blocks);
    expectNothingLeft(info);
}

TEST_F(AudioDevices, AreListedWithoutLeavingAnythingBehind) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    const std::int32_t objects = audio.liveObjects();
    const std::int32_t references = audio.references(Standins::AudioObject::Device);
    list(*info);
    {
        const TaskMemoryWatch memory;
        list(*info);
        // An id and a name for each row, and the default device's id three times.
        EXPECT_EQ(memory.allocated(), 9U);
        EXPECT_EQ(memory.freed(), 9U);
    }
    EXPECT_EQ(audio.liveObjects(), objects);
    EXPECT_EQ(audio.references(Standins::AudioObject::Device), references);
    expectNothingLeft(info);
}

TEST_F(AudioDevices, ChosenOnesBecomeTheDefaultForTheConsole) {
    addDevices();
    SystemInfo info;
    info.setDefaultDevice(L"id-headphones");
    EXPECT_EQ(audio.lastDefaultId(), L"id-headphones");
    EXPECT_EQ(audio.defaultDevice(AudioFlow::Render), kHeadphones);
    for (const AudioCallEntry& call : audio.calls()) {
        if (call.call == AudioCall::SetDefaultEndpoint) {
            EXPECT_EQ(call.first, static_cast<std::uint32_t>(eConsole));
        }
    }
    EXPECT_EQ(audio.callCount(AudioCall::SetDefaultEndpoint), 1U);
    EXPECT_EQ(AudioSnapshot::of(info), kHeadphonesSnapshot);
    list(info);
    EXPECT_EQ(defaultIndex, 1U);
}

TEST_F(AudioDevices, ChosenOnesAreSetThenTheOldReleasedThenTheNewBound) {
    addDevices();
    SystemInfo info;
    const std::size_t before = audio.calls().size();
    info.setDefaultDevice(L"id-monitor");
    const std::vector<std::pair<AudioCall, std::int32_t>> expected = {
        {AudioCall::CreatePolicyConfig, AudioCallEntry::kNoDevice},
        {AudioCall::SetDefaultEndpoint, kMonitor},
        {AudioCall::UnregisterControlChangeNotify, kSpeakers},
        {AudioCall::UnregisterControlChangeNotify, kMicrophone},
        {AudioCall::GetDefaultAudioEndpoint, AudioCallEntry::kNoDevice},
        {AudioCall::Activate, kMonitor},
        {AudioCall::RegisterControlChangeNotify, kMonitor},
        {AudioCall::GetDefaultAudioEndpoint, AudioCallEntry::kNoDevice},
        {AudioCall::Activate, kMicrophone},
        {AudioCall::RegisterControlChangeNotify, kMicrophone},
        {AudioCall::GetChannelVolumeLevelScalar, kMonitor},
        {AudioCall::GetChannelVolumeLevelScalar, kMonitor},
        {AudioCall::GetMasterVolumeLevelScalar, kMonitor},
        {AudioCall::GetMute, kMonitor},
        {AudioCall::GetMute, kMicrophone},
    };
    EXPECT_EQ(callsSince(before), expected);
}

TEST_F(AudioDevices, ChosenOnesSendTheirNoticesFromThenOn) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    info->setDefaultDevice(L"id-headphones");
    info->setChannelVolume(1, 80);
    ASSERT_TRUE(audio.settle());
    EXPECT_EQ(AudioSnapshot::of(*info), (AudioSnapshot{25, 80, 80, true, false}));
    EXPECT_FLOAT_EQ(audio.levels(kHeadphones).channels[1], 0.8F);
    expectNothingLeft(info);
}

TEST_F(AudioDevices, AreChosenWithoutLeavingMemoryBehind) {
    addDevices();
    SystemInfo info;
    info.setDefaultDevice(L"id-headphones");
    const std::ptrdiff_t before = heapBlocksInUse();
    const TaskMemoryWatch taskMemory;
    for (const wchar_t* id : {L"id-monitor", L"id-speakers", L"id-headphones"}) {
        info.setDefaultDevice(id);
    }
    EXPECT_EQ(heapBlocksInUse(), before);
    EXPECT_EQ(taskMemory.allocated(), taskMemory.freed());
}

TEST_F(AudioDevices, ThatGoBetweenListingAndChoosingLeaveTheDefaultAsItWas) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    list(*info);
    audio.setPresent(kHeadphones, false);
    info->setDefaultDevice(rows[1].id.c_str());
    EXPECT_EQ(audio.callCount(AudioCall::SetDefaultEndpoint), 1U);
    EXPECT_EQ(audio.defaultDevice(AudioFlow::Render), kSpeakers);
    EXPECT_EQ(AudioSnapshot::of(*info), kSpeakersSnapshot);
    expectNothingLeft(info);
}

TEST_F(AudioDevices, ThatAllGoBetweenListingAndChoosingLeaveSilence) {
    addDevices();
    auto info = std::make_unique<SystemInfo>();
    list(*info);
    for (std::uint32_t i = 0; i < audio.deviceCount(); ++i) {
        audio.setPresent(i, false);
    }
    info->setDefaultDevice(rows[1].id.c_str());
    EXPECT_EQ(AudioSnapshot::of(*info), kSilence);
    list(*info);
    EXPECT_TRUE(rows.empty());
    expectNothingLeft(info);
}

TEST_F(AudioDevices, WithoutAnIdCannotBeChosen) {
    addDevices();
    SystemInfo info;
    audio.setDefault(AudioFlow::Render, kMonitor);
    info.setDefaultDevice(L"");
    info.setDefaultDevice(nullptr);
    EXPECT_EQ(audio.callCount(AudioCall::CreatePolicyConfig), 0U);
    // What is the default by now is bound all the same.
    EXPECT_EQ(AudioSnapshot::of(info), kMonitorSnapshot);
}

TEST_F(AudioDevicesWithoutPolicy, ChoosingOneBindsTheDefaultAnew) {
    addDevices();
    SystemInfo info;
    audio.setDefault(AudioFlow::Render, kMonitor);
    info.setDefaultDevice(L"id-headphones");
    EXPECT_EQ(audio.callCount(AudioCall::SetDefaultEndpoint), 0U);
    EXPECT_EQ(AudioSnapshot::of(info), kMonitorSnapshot);
}

}  // namespace
