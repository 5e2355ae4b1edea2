#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "framework/core/com_apartment.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/core_audio/virtual_audio.h"
#include "stats/system_info.h"
#include "tests/stats/audio/audio_snapshot.h"
#include "tests/support/standin_session.h"

/// A sound system of the test's own, without any device at first.
class WithAudio : public testing::Test {
protected:
    static constexpr std::uint32_t kSpeakers = 0;
    static constexpr std::uint32_t kHeadphones = 1;
    static constexpr std::uint32_t kMonitor = 2;
    static constexpr std::uint32_t kMicrophone = 3;

    explicit WithAudio(bool withPolicyConfig = true) : classes(withPolicyConfig) {}

    /// Two-channel speakers at 60 and 40 %, headphones at 25 and 35 % and muted, a monitor at 10 and 20 %,
    /// and a microphone, in this order. Speakers and microphone are the defaults.
    void addDevices();

    /// A speaker device that becomes the default one.
    std::uint32_t addSpeaker(const std::wstring& id, const Standins::AudioLevels& levels);
    std::uint32_t addMicrophone(const std::wstring& id, bool muted);

    /// Sends a notice for the device and waits until it was taken.
    void notify(std::uint32_t device, const Standins::AudioNotice& notice);

    /// Expects that all of the stand-in's objects have gone, and that no callback is referred to.
    void expectNothingLeft();
    /// Ends the sampler before.
    void expectNothingLeft(std::unique_ptr<SystemInfo>& info);

    /// The calls since the given number of them, most telling parts only: call and device.
    std::vector<std::pair<Standins::AudioCall, std::int32_t>> callsSince(std::size_t begin) const;

    StandinSession session;
    Panelix::ComApartment com;
    Standins::VirtualAudio audio;
    Standins::LoadedCoreAudio classes;
};

inline const AudioSnapshot kSilence{};
inline const AudioSnapshot kSpeakersSnapshot{60, 40, 60, false, false};
inline const AudioSnapshot kHeadphonesSnapshot{25, 35, 35, true, false};
inline const AudioSnapshot kMonitorSnapshot{10, 20, 20, false, false};
