#include "tests/hostile/garbage.h"

#include <windows.h>

#include <array>
#include <bit>
#include <limits>
#include <optional>

namespace {

using Standins::AudioCall;
using Standins::AudioFlow;
using Standins::CoreTempCall;
using Standins::NvapiCall;
using Standins::XinputCall;

float randomFloat(RandomInputs& inputs) {
    using Limits = std::numeric_limits<float>;
    constexpr std::array<float, 14> kFloats = {0.0F,
                                               -0.0F,
                                               0.5F,
                                               1.0F,
                                               1.5F,
                                               -1.0F,
                                               50.0F,
                                               Limits::quiet_NaN(),
                                               Limits::infinity(),
                                               -Limits::infinity(),
                                               Limits::max(),
                                               Limits::lowest(),
                                               Limits::denorm_min(),
                                               2147483648.0F};
    return inputs.chance(4) ? std::bit_cast<float>(inputs.number()) : inputs.oneOf(kFloats);
}

std::uint32_t randomCount(RandomInputs& inputs) {
    constexpr std::array<std::uint32_t, 12> kCounts = {
        0, 1, 2, 64, 65, 128, 256, 257, 0x7FFFFFFF, 0x80000000, 0xFFFFFF00, 0xFFFFFFFF};
    return inputs.chance(4) ? inputs.number() : inputs.oneOf(kCounts);
}

/// Success more often than not, so that what is handed out is looked at.
std::int32_t randomStatus(RandomInputs& inputs) {
    constexpr std::array<std::int32_t, 8> kStatuses = {
        -1, 1, -3, -10, -104, std::numeric_limits<std::int32_t>::min(), 0x7FFFFFFF, -8};
    if (!inputs.chance(4)) {
        return 0;
    }
    return inputs.chance(4) ? static_cast<std::int32_t>(inputs.number()) : inputs.oneOf(kStatuses);
}

/// A field of text: full, so without terminator, more often than not.
std::string randomText(RandomInputs& inputs, std::size_t length) {
    std::string text(inputs.chance(3) ? inputs.below(length + 1) : length, '\0');
    const bool plain = inputs.chance(2);
    for (char& character : text) {
        character = static_cast<char>(plain ? 32 + inputs.below(95) : 1 + inputs.below(255));
    }
    return text;
}

std::wstring randomWideText(RandomInputs& inputs, std::size_t length) {
    std::wstring text(inputs.below(length + 1), L'\0');
    // Half surrogates, marks of direction and the like included.
    for (wchar_t& character : text) {
        character = static_cast<wchar_t>(1 + inputs.below(0xFFFF));
    }
    return text;
}

Standins::AudioLevels randomLevels(RandomInputs& inputs) {
    Standins::AudioLevels levels;
    levels.channels.resize(inputs.below(Standins::VirtualAudio::kMaxChannels + 1));
    for (float& channel : levels.channels) {
        channel = randomFloat(inputs);
    }
    levels.master = randomFloat(inputs);
    levels.muted = inputs.chance(2);
    return levels;
}

std::optional<std::uint32_t> randomDevice(RandomInputs& inputs, const Standins::VirtualAudio& audio) {
    if (audio.deviceCount() == 0 || inputs.chance(8)) {
        return std::nullopt;
    }
    return inputs.below(audio.deviceCount());
}

}  // namespace

void Garbage::choose(RandomInputs& inputs) {
    chooseCoreTemp(inputs);
    chooseNvidia(inputs);
    chooseRadeon(inputs);
    chooseGamepad(inputs);
    chooseAudio(inputs);
}

void Garbage::chooseCoreTemp(RandomInputs& inputs) {
    Standins::CoreTempFigures figures;
    figures.cpuCount = randomCount(inputs);
    figures.coreCount = randomCount(inputs);
    figures.fahrenheit = inputs.chance(2);
    figures.speedMHz = randomFloat(inputs);
    figures.busSpeedMHz = randomFloat(inputs);
    figures.multiplier = randomFloat(inputs);
    figures.vidVolts = randomFloat(inputs);
    for (float& temperature : figures.temperatures) {
        temperature = randomFloat(inputs);
    }
    coreTemp_.setFigures(figures);
    coreTemp_.setRunning(!inputs.chance(4));
    coreTemp_.setNameIsNull(inputs.chance(6));
    coreTemp_.setName(randomText(inputs, Standins::VirtualCoreTemp::kNameLength));
}

void Garbage::chooseNvidia(RandomInputs& inputs) {
    nvidia_.setGpuCount(inputs.below(4) * inputs.below(Standins::VirtualNvidia::kMaxGpus));
    nvidia_.setName(0, randomText(inputs, Standins::VirtualNvidia::kTextLength));
    nvidia_.setErrorText(randomText(inputs, Standins::VirtualNvidia::kTextLength));
    nvidia_.setFigures(0,
                       {randomCount(inputs),
                        static_cast<std::int32_t>(randomCount(inputs)),
                        randomCount(inputs),
                        randomCount(inputs),
                        randomCount(inputs)});
    for (std::size_t call = 0; call < Standins::kNvapiCallCount; ++call) {
        nvidia_.setStatus(static_cast<NvapiCall>(call), randomStatus(inputs));
        nvidia_.setMissing(static_cast<NvapiCall>(call), inputs.chance(12));
    }
    nvidia_.setWritesBeforeItFails(inputs.chance(2));
    if (inputs.chance(5)) {
        nvidia_.invalidateHandles();
    }
}

void Garbage::chooseRadeon(RandomInputs& inputs) {
    radeon_.setAdapterCount(static_cast<std::int32_t>(randomCount(inputs)));
    radeon_.setName(0, randomText(inputs, Standins::VirtualRadeon::kNameLength));
    radeon_.setFigures(0,
                       {static_cast<std::int32_t>(randomCount(inputs)),
                        static_cast<std::int32_t>(randomCount(inputs)),
                        static_cast<std::int32_t>(randomCount(inputs))});
    for (std::size_t call = 0; call < Standins::kAdlCallCount; ++call) {
        radeon_.setStatus(static_cast<Standins::AdlCall>(call), randomStatus(inputs));
    }
    radeon_.setWritesBeforeItFails(inputs.chance(2));
}

void Garbage::chooseGamepad(RandomInputs& inputs) {
    gamepads_.setConnected(0, !inputs.chance(4));
    gamepads_.setBattery(0,
                         static_cast<std::uint8_t>(inputs.chance(2) ? inputs.below(5) : inputs.below(256)),
                         static_cast<std::uint8_t>(inputs.chance(2) ? inputs.below(5) : inputs.below(256)));
    gamepads_.setBatteryResult(static_cast<std::uint32_t>(randomStatus(inputs)));
}

void Garbage::chooseAudio(RandomInputs& inputs) {
    if (audio_.deviceCount() < Standins::VirtualAudio::kMaxDevices) {
        constexpr std::array<Standins::FriendlyName, 5> kNames = {Standins::FriendlyName::Text,
                                                                  Standins::FriendlyName::Missing,
                                                                  Standins::FriendlyName::NullText,
                                                                  Standins::FriendlyName::Number,
                                                                  Standins::FriendlyName::Endless};
        Standins::AudioDevice device;
        device.flow = inputs.chance(4) ? AudioFlow::Capture : AudioFlow::Render;
        device.id = randomWideText(inputs, Standins::VirtualAudio::kTextLength - 1);
        device.idMissing = inputs.chance(6);
        device.name = randomWideText(inputs, Standins::VirtualAudio::kTextLength - 1);
        device.nameKind = inputs.oneOf(kNames);
        device.levels = randomLevels(inputs);
        audio_.addDevice(device);
    }
    audio_.setDefault(AudioFlow::Render, randomDevice(inputs, audio_));
    audio_.setDefault(AudioFlow::Capture, randomDevice(inputs, audio_));
    if (const auto index = randomDevice(inputs, audio_)) {
        audio_.setPresent(*index, !inputs.chance(3));
        audio_.setLevels(*index, randomLevels(inputs));
        audio_.postNotice(*index, {GUID{}, randomLevels(inputs), inputs.chance(5)});
    }
    audio_.setServiceRunning(!inputs.chance(20));
    audio_.setMuteValue(static_cast<std::int32_t>(randomCount(inputs)));
    audio_.setCountAnswer(inputs.chance(3) ? std::optional(randomCount(inputs)) : std::nullopt);
    audio_.clearFailures();
    if (inputs.chance(2)) {
        constexpr std::array<HRESULT, 5> kResults = {S_OK, S_FALSE, E_FAIL, E_OUTOFMEMORY, 0x7FFFFFFF};
        audio_.failCall(static_cast<AudioCall>(inputs.below(Standins::kAudioCallCount)),
                        {inputs.oneOf(kResults), inputs.below(2), inputs.below(3)});
    }
}

void Garbage::makeUsual() {
    coreTemp_.setRunning(true);
    coreTemp_.setName("Usual CPU");
    Standins::CoreTempFigures figures;
    figures.cpuCount = 1;
    figures.coreCount = 4;
    coreTemp_.setFigures(figures);
    nvidia_.setGpuCount(1);
    nvidia_.setFigures(0, {31, 64, 8'388'608, 2'097'152, 1'800'000});
    gamepads_.setConnected(0, true);
    gamepads_.setBattery(0, 3, 2);
    audio_.addUsualDevices();
}

std::vector<std::function<void(std::uint32_t)>> Garbage::durations() {
    const auto inLog = [](Standins::CallLog& log, auto call) {
        return [&log, call](std::uint32_t milliseconds) {
            log.setDuration(static_cast<std::uint32_t>(call), milliseconds);
        };
    };
    return {inLog(coreTemp_.log(), CoreTempCall::GetData),
            inLog(coreTemp_.log(), CoreTempCall::GetVID),
            inLog(nvidia_.log(), NvapiCall::GpuGetDynamicPstatesInfoEx),
            inLog(nvidia_.log(), NvapiCall::GpuGetAllClockFrequencies),
            inLog(gamepads_.log(), XinputCall::GetState)};
}
