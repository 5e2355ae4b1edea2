#include "stats/audio_device_callback.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/stats/audio/guarded_sampler.h"
#include "tests/stats/audio/heap_watch.h"
#include "tests/stats/audio/with_audio.h"

namespace {

using Microsoft::WRL::ComPtr;

class AudioCallback : public WithAudio {
protected:
    // No device, so that this callback is the only one.
    SystemInfo info;
    ComPtr<AudioDeviceCallback> callback =
        AudioDeviceCallback::create(info, info.eventContext(), AudioEndpoint::Speaker);
};

AUDIO_VOLUME_NOTIFICATION_DATA noticeOf(float volume, bool muted) {
    return {GUID{}, muted ? TRUE : FALSE, volume, 1, {volume}};
}

TEST_F(AudioCallback, IsTheInterfacesThatCoreAudioAsksFor) {
    for (const IID& iid : {__uuidof(IUnknown), __uuidof(IAudioEndpointVolumeCallback)}) {
        void* out = nullptr;
        ASSERT_EQ(callback->QueryInterface(iid, &out), S_OK);
        EXPECT_EQ(out, static_cast<IAudioEndpointVolumeCallback*>(callback.Get()));
        EXPECT_EQ(callback->Release(), 1U);
    }
}

TEST_F(AudioCallback, IsNothingElse) {
    int something = 0;
    void* out = &something;
    EXPECT_EQ(callback->QueryInterface(__uuidof(IAudioEndpointVolume), &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(callback->QueryInterface(__uuidof(IUnknown), nullptr), E_POINTER);
    EXPECT_EQ(callback->AddRef(), 2U);
    EXPECT_EQ(callback->Release(), 1U);
}

TEST_F(AudioCallback, HasTheIdentityOfTheSystemsInterface) {
    const GUID expected = {0x657804FA, 0xD6AD, 0x4496, {0x8A, 0x60, 0x35, 0x27, 0x52, 0xAF, 0x4F, 0x89}};
    EXPECT_TRUE(IsEqualGUID(expected, __uuidof(IAudioEndpointVolumeCallback)));
}

TEST_F(AudioCallback, StartsWithOneReferenceAndEndsWithNone) {
    AudioDeviceCallback* const raw = callback.Detach();
    EXPECT_EQ(raw->AddRef(), 2U);
    EXPECT_EQ(raw->AddRef(), 3U);
    EXPECT_EQ(raw->Release(), 2U);
    EXPECT_EQ(raw->Release(), 1U);
    EXPECT_EQ(raw->Release(), 0U);
}

TEST_F(AudioCallback, RefusesNullAlsoWhenDetached) {
    EXPECT_EQ(callback->OnNotify(nullptr), E_INVALIDARG);
    callback->detach();
    EXPECT_EQ(callback->OnNotify(nullptr), E_INVALIDARG);
}

// A notice between registering and reading is the newer of the two.
TEST_F(AudioCallback, KeepsANoticeThatCameBeforeTheReadingWasAdopted) {
    AUDIO_VOLUME_NOTIFICATION_DATA notice = noticeOf(0.3F, true);
    EXPECT_EQ(callback->OnNotify(&notice), S_OK);
    callback->adoptReading({70, 71, 72, false});
    EXPECT_EQ(AudioSnapshot::of(info), (AudioSnapshot{30, 0, 30, true, false}));
}

TEST_F(AudioCallback, AdoptsTheReadingAfterAnIgnoredNotice) {
    AUDIO_VOLUME_NOTIFICATION_DATA notice = noticeOf(0.3F, true);
    notice.guidEventContext = info.eventContext();
    EXPECT_EQ(callback->OnNotify(&notice), S_OK);
    callback->adoptReading({70, 71, 72, false});
    EXPECT_EQ(AudioSnapshot::of(info), (AudioSnapshot{70, 71, 72, false, false}));
}

TEST_F(AudioCallback, ChangesNothingOnceDetached) {
    callback->detach();
    AUDIO_VOLUME_NOTIFICATION_DATA notice = noticeOf(0.3F, true);
    EXPECT_EQ(callback->OnNotify(&notice), S_OK);
    callback->adoptReading({70, 71, 72, true});
    EXPECT_EQ(AudioSnapshot::of(info), kSilence);
}

TEST_F(AudioCallback, ItsMemoryGoesWithTheLastReference) {
    const std::ptrdiff_t before = heapBlocksInUse();
    AudioDeviceCallback* const raw =
        AudioDeviceCallback::create(info, info.eventContext(), AudioEndpoint::Microphone).Detach();
    EXPECT_EQ(heapBlocksInUse(), before + 1);
    raw->AddRef();
    raw->Release();
    EXPECT_EQ(heapBlocksInUse(), before + 1);
    raw->Release();
    EXPECT_EQ(heapBlocksInUse(), before);
}

/// Stops the first thread that writes to a sampler in the middle of its work, until it is let go on.
class HeldWriter {
public:
    explicit HeldWriter(GuardedSampler& sampler) {
        sampler_ = &sampler;
        sampler.refuseWriting();
        handler_ = AddVectoredExceptionHandler(1, &onException);
    }
    ~HeldWriter() {
        letGo();
        RemoveVectoredExceptionHandler(handler_);
    }
    HeldWriter(const HeldWriter&) = delete;
    HeldWriter& operator=(const HeldWriter&) = delete;

    static void waitUntilHeld() {
        while (!held_) {
            Sleep(1);
        }
    }
    static void letGo() { letGo_ = true; }

private:
    static LONG CALLBACK onException(EXCEPTION_POINTERS* exception) {
        const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
        if (record.ExceptionCode != EXCEPTION_ACCESS_VIOLATION ||
            !sampler_->contains(record.ExceptionInformation[1])) {
            return EXCEPTION_CONTINUE_SEARCH;
        }
        held_ = true;
        while (!letGo_) {
            Sleep(1);
        }
        sampler_->allowWriting();
        return EXCEPTION_CONTINUE_EXECUTION;
    }

    static inline GuardedSampler* sampler_ = nullptr;
    static inline std::atomic<bool> held_{false};
    static inline std::atomic<bool> letGo_{false};

    PVOID handler_;
};

TEST_F(AudioCallback, DetachingWaitsForTheNoticeThatIsBeingTaken) {
    GuardedSampler sampler;
    callback = AudioDeviceCallback::create(*sampler, sampler->eventContext(), AudioEndpoint::Speaker);
    HeldWriter writer(sampler);
    std::thread notifier([this] {
        AUDIO_VOLUME_NOTIFICATION_DATA notice = noticeOf(0.3F, true);
        EXPECT_EQ(callback->OnNotify(&notice), S_OK);
    });
    HeldWriter::waitUntilHeld();

    std::atomic<bool> detached{false};
    std::thread detacher([this, &detached] {
        callback->detach();
        detached = true;
    });
    Sleep(100);
    EXPECT_FALSE(detached) << "the notice was still writing";
    HeldWriter::letGo();
    detacher.join();
    notifier.join();
    EXPECT_EQ(AudioSnapshot::of(*sampler), (AudioSnapshot{30, 0, 30, true, false}));
}

TEST_F(AudioCallback, TakesAnyMuteOtherThanZeroForMuted) {
    AUDIO_VOLUME_NOTIFICATION_DATA notice = noticeOf(0.3F, false);
    for (const BOOL muted : {1, -1, 2, 256}) {
        notice.bMuted = muted;
        callback->OnNotify(&notice);
        EXPECT_TRUE(info.speakerMuted) << muted;
    }
    notice.bMuted = 0;
    callback->OnNotify(&notice);
    EXPECT_FALSE(info.speakerMuted);
}

}  // namespace
