#include "tests/endurance/restless_machine.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "standins/vendor_libraries.h"
#include "tests/support/registry_override.h"

namespace {

using Standins::AdlCall;
using Standins::AudioCall;
using Standins::AudioFlow;
using Standins::NvapiCall;
using Standins::VendorLibrary;

constexpr std::uint32_t kCores = 8;
constexpr std::uint32_t kGraphicsMemoryKB = 8'000'000;
constexpr wchar_t kAccountsKey[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\UnreadMail";
/// The longest first, or the program's walk ends before the last.
constexpr std::array kAccounts{L"a@kelvaro.example", L"b@kelvaro.exam", L"c@kelvaro"};

constexpr std::array kNvidiaFigureCalls{NvapiCall::GpuGetDynamicPstatesInfoEx,
                                        NvapiCall::GpuGetThermalSettings,
                                        NvapiCall::GpuGetMemoryInfo,
                                        NvapiCall::GpuGetAllClockFrequencies,
                                        NvapiCall::EnumPhysicalGpus};
constexpr std::array kAmdFigureCalls{
    AdlCall::AdapterActiveGet, AdlCall::Overdrive6TemperatureGet, AdlCall::Overdrive6CurrentStatusGet};
constexpr std::array kAudioCalls{AudioCall::CreateEnumerator,
                                 AudioCall::EnumAudioEndpoints,
                                 AudioCall::GetDefaultAudioEndpoint,
                                 AudioCall::GetCount,
                                 AudioCall::Item,
                                 AudioCall::Activate,
                                 AudioCall::OpenPropertyStore,
                                 AudioCall::GetId,
                                 AudioCall::GetValue,
                                 AudioCall::RegisterControlChangeNotify,
                                 AudioCall::UnregisterControlChangeNotify,
                                 AudioCall::GetChannelVolumeLevelScalar,
                                 AudioCall::GetMasterVolumeLevelScalar,
                                 AudioCall::GetMute,
                                 AudioCall::SetChannelVolumeLevelScalar,
                                 AudioCall::SetMute,
                                 AudioCall::SetDefaultEndpoint};

Panelix::UniqueModule load(VendorLibrary library) {
    Panelix::UniqueModule module(LoadLibraryW(Standins::vendorLibraryPath(library).c_str()));
    EXPECT_TRUE(module) << "error " << GetLastError();
    return module;
}

Standins::CoreTempFigures cpuFigures(float multiplier, float volts, float hottest, bool fahrenheit) {
    Standins::CoreTempFigures figures;
    figures.cpuCount = 1;
    figures.coreCount = kCores;
    figures.fahrenheit = fahrenheit;
    figures.busSpeedMHz = 100.0F;
    figures.multiplier = multiplier;
    figures.speedMHz = 100.0F * multiplier;
    figures.vidVolts = volts;
    for (std::uint32_t core = 0; core < kCores; ++core) {
        figures.temperatures[core] = hottest - static_cast<float>(core);
    }
    return figures;
}

}  // namespace

RestlessMachine::RestlessMachine(MachineClocks& clocks, GraphicsCard card) : clocks_(clocks), card_(card) {
    // A load by their file name alone gives these.
    for (const VendorLibrary library : {VendorLibrary::CoreTemp, VendorLibrary::Nvapi, VendorLibrary::Adl}) {
        libraries_.push_back(load(library));
    }
    nvidia_.setName(0, "Endurance Graphics N");
    // Without a card the start fails, and the other vendor is asked.
    nvidia_.setStatus(NvapiCall::EnumPhysicalGpus, card == GraphicsCard::Nvidia ? 0 : -6);
    radeon_.setAdapterCount(1);
    radeon_.setName(0, "Endurance Graphics A");
    audio_.addUsualDevices();
    speakers_ = audio_.defaultDevice(AudioFlow::Render).value();
    microphone_ = audio_.defaultDevice(AudioFlow::Capture).value();
    settleTo(0);
}

void RestlessMachine::settleTo(unsigned reading) {
    coreTemp_.setRunning(true);
    coreTemp_.setNameIsNull(false);
    coreTemp_.setName("Endurance CPU @ 3.60GHz");
    clearGraphicsFailures();
    if (card_ == GraphicsCard::Nvidia) {
        nvidia_.setGpuCount(1);
    }
    gamepads_.setConnected(0, true);
    gamepads_.setBatteryResult(0);
    // The icon that blinks.
    gamepads_.setBattery(0, 3, 0);
    for (const wchar_t* account : kAccounts) {
        setMail(account, 2);
    }

    calmDown();
    audio_.clearFailures();
    audio_.setServiceRunning(true);
    for (std::uint32_t device = 0; device < audio_.deviceCount(); ++device) {
        audio_.setPresent(device, true);
    }
    audio_.setDefault(AudioFlow::Render, speakers_);
    audio_.setDefault(AudioFlow::Capture, microphone_);
    audio_.setLevels(speakers_, {{0.42F, 0.58F}, 0.58F, false});
    audio_.setLevels(microphone_, {{0.8F, 0.8F}, 0.8F, false});
    setFigures(reading);
}

void RestlessMachine::setFigures(unsigned reading) {
    const int wave = graphicsLoad(reading);
    clocks_.setProcessorLoad(100 - wave);
    clocks_.setMemoryLoad(20 + wave / 2);
    coreTemp_.setFigures(cpuFigures(static_cast<float>(8 + reading % 40),
                                    1.0F + static_cast<float>(wave) / 512.0F,
                                    40.0F + static_cast<float>(reading % 50),
                                    false));
    setGraphics(wave, 30 + wave / 2, 1'000'000 + reading % 1000 * 1'000, 100 - wave);
}

std::uint32_t RestlessMachine::chooseOtherSpeakers() {
    constexpr std::uint32_t kPercent = 13;
    constexpr float kVolume = 0.13F;
    const std::uint32_t other = speakers_ + 1;
    audio_.setLevels(other, {{kVolume, kVolume}, kVolume, false});
    audio_.setDefault(AudioFlow::Render, other);
    return kPercent;
}

void RestlessMachine::setGraphics(int load, int temperature, std::uint32_t clockKHz, int memoryLoad) {
    nvidia_.setFigures(
        0,
        {.loadPercent = static_cast<std::uint32_t>(load),
         .temperature = temperature,
         .memoryKB = kGraphicsMemoryKB,
         .freeMemoryKB = kGraphicsMemoryKB / 100 * static_cast<std::uint32_t>(100 - memoryLoad),
         .coreClockKHz = clockKHz});
    radeon_.setFigures(0, {load, static_cast<std::int32_t>(clockKHz / 10), temperature * 1000});
}

void RestlessMachine::clearGraphicsFailures() {
    if (card_ == GraphicsCard::Nvidia) {
        for (const NvapiCall call : kNvidiaFigureCalls) {
            nvidia_.setStatus(call, 0);
        }
    }
    for (const AdlCall call : kAmdFigureCalls) {
        radeon_.setStatus(call, 0);
    }
}

void RestlessMachine::setMail(const wchar_t* account, DWORD count) {
    RegistryOverride::setValue(HKEY_CURRENT_USER,
                               std::wstring(kAccountsKey) + L"\\" + account,
                               L"MessageCount",
                               REG_DWORD,
                               &count,
                               sizeof(count));
}

void RestlessMachine::changeSomething(RandomSource& random) {
    // A flood takes all of the processors, so it is rare and short.
    if (floodThreads_ > 0 && random.chance(10)) {
        strainAudio(0, keepsCallbacks_);
    }
    const std::uint32_t what = random.below(100);
    if (what < 25) {
        changeCpu(random);
    } else if (what < 45) {
        changeGraphics(random);
    } else if (what < 52) {
        changeGamepad(random);
    } else if (what < 58) {
        changeMail(random);
    } else if (what < 75) {
        changeVolume(random);
    } else if (what < 85) {
        sendNotice(random);
    } else if (what < 93) {
        changeDevices(random);
    } else if (what < 98) {
        failAudio(random);
    } else {
        const bool flood = floodThreads_ == 0 && random.chance(20);
        strainAudio(flood ? 1 + random.below(3) : 0, random.chance(4));
    }
}

void RestlessMachine::changeCpu(RandomSource& random) {
    switch (random.below(6)) {
        case 0:
            clocks_.setProcessorLoad(random.percent());
            break;
        case 1:
            clocks_.setMemoryLoad(random.percent());
            break;
        case 2:
            coreTemp_.setRunning(!random.chance(3));
            break;
        case 3:
            coreTemp_.setName(random.oneOf(std::array{"", "Ryzen", "Core i7-8700K @ 3.70GHz"}));
            coreTemp_.setNameIsNull(random.chance(10));
            break;
        default:
            coreTemp_.setFigures(cpuFigures(static_cast<float>(random.below(60)),
                                            static_cast<float>(random.below(200)) / 100.0F,
                                            static_cast<float>(random.below(140)) - 20.0F,
                                            random.chance(2)));
            break;
    }
}

void RestlessMachine::changeGraphics(RandomSource& random) {
    switch (random.below(8)) {
        case 0:
            nvidia_.invalidateHandles();
            break;
        case 1:
            // The card is in use: as if it were taken out and put in again.
            nvidia_.setGpuCount(card_ == GraphicsCard::Nvidia && !random.chance(4) ? 1 : 0);
            break;
        case 2:
            if (card_ == GraphicsCard::Nvidia) {
                nvidia_.setStatus(random.oneOf(kNvidiaFigureCalls), -1);
            } else {
                radeon_.setStatus(random.oneOf(kAmdFigureCalls), -1);
            }
            break;
        case 3:
            clearGraphicsFailures();
            break;
        default:
            setGraphics(random.percent(), random.percent(), random.below(3'000'000), random.percent());
            break;
    }
}

void RestlessMachine::changeGamepad(RandomSource& random) {
    gamepads_.setConnected(0, !random.chance(4));
    gamepads_.setBattery(
        0, static_cast<std::uint8_t>(random.below(5)), static_cast<std::uint8_t>(random.below(5)));
    gamepads_.setBatteryResult(random.chance(8) ? ERROR_DEVICE_NOT_CONNECTED : 0);
}

void RestlessMachine::changeMail(RandomSource& random) {
    const wchar_t* const account = random.oneOf(kAccounts);
    const std::wstring key = std::wstring(kAccountsKey) + L"\\" + account;
    if (random.chance(4)) {
        RegDeleteTreeW(HKEY_CURRENT_USER, random.chance(4) ? kAccountsKey : key.c_str());
    } else {
        setMail(account, random.below(20));
    }
}

void RestlessMachine::changeVolume(RandomSource& random) {
    const std::uint32_t device = random.below(audio_.deviceCount());
    const float left = random.scalar();
    audio_.setLevels(device, {{left, random.scalar()}, left, random.chance(4)});
}

void RestlessMachine::sendNotice(RandomSource& random) {
    Standins::AudioNotice notice;
    notice.null = random.chance(10);
    notice.levels.channels.resize(random.below(Standins::VirtualAudio::kMaxChannels + 1), random.scalar());
    notice.levels.master = random.scalar();
    notice.levels.muted = random.chance(2);
    audio_.postNotice(random.below(audio_.deviceCount()), notice);
}

void RestlessMachine::changeDevices(RandomSource& random) {
    const std::uint32_t device = random.below(audio_.deviceCount());
    switch (random.below(5)) {
        case 0:
            audio_.setPresent(device, !audio_.isPresent(device));
            break;
        case 1:
            audio_.setServiceRunning(!random.chance(3));
            break;
        case 2:
            audio_.setDefault(random.chance(2) ? AudioFlow::Render : AudioFlow::Capture, std::nullopt);
            break;
        default:
            audio_.setDefault(audio_.device(device).flow, device);
            break;
    }
}

void RestlessMachine::failAudio(RandomSource& random) {
    if (random.chance(3)) {
        audio_.clearFailures();
        return;
    }
    audio_.failCall(
        random.oneOf(kAudioCalls),
        {.result = random.chance(4) ? S_OK : E_FAIL, .skip = random.below(3), .times = 1 + random.below(4)});
}

// Notices from so many threads without a pause, and callbacks that are called after their registration.
void RestlessMachine::strainAudio(std::uint32_t threads, bool keepsCallbacks) {
    if (threads != floodThreads_) {
        EXPECT_TRUE(audio_.setFlood(threads));
    }
    floodThreads_ = threads;
    audio_.setKeepsCallbacks(keepsCallbacks);
    // Asked only when there may be some: before the first registration nobody would answer.
    if (keepsCallbacks_ && !keepsCallbacks) {
        EXPECT_TRUE(audio_.dropKeptCallbacks());
    }
    keepsCallbacks_ = keepsCallbacks;
}
