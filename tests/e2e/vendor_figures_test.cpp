#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "framework/drawing/canvas.h"
#include "standins/wait_until.h"
#include "tests/e2e/equipped_kelvaro.h"
#include "tests/pages/page_painter.h"
#include "tests/support/registry_override.h"

namespace {

using Standins::AudioCall;
using Standins::AudioFlow;
using Standins::AudioLevels;
using Standins::G19Frame;
using Standins::waitUntil;
namespace LcdSdk = Panelix::LcdSdk;

constexpr wchar_t kMailAccount[] = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\UnreadMail\\someone";

// Where the page shows what, and in which colour.
constexpr std::uint32_t kCpuColour = 0xFF00C8C8;
constexpr std::uint32_t kGpuColour = 0xFF32C864;

PaintedText cpuLine(std::wstring text, float y) {
    return {std::move(text), 15.0F, kCpuColour, 4.0F, y, TextPlace::TopLeft};
}

PaintedText gpuLine(std::wstring text, float y) {
    return {std::move(text), 15.0F, kGpuColour, 4.0F, y, TextPlace::TopLeft};
}

PaintedText temperature(std::wstring text, std::uint32_t colour, float y) {
    return {std::move(text), 20.0F, colour, 205.0F, y, TextPlace::RightBottom};
}

PaintedText masterVolume(std::wstring text) {
    return {std::move(text), 24.0F, 0xFF000000, 253.0F, 48.0F, TextPlace::Centre};
}

PaintedText mailCount(std::wstring text) {
    return {std::move(text), 24.0F, 0xFF005DAF, 270.0F, 154.0F, TextPlace::Near};
}

const RECT kMicrophoneIcon{232, 112, 257, 149};
const RECT kSpeakerIcon{256, 112, 274, 149};
const RECT kBatteryIcon{274, 112, 316, 149};

std::uint32_t colourAt(const G19Frame& frame, int x, int y) {
    const std::uint8_t* p = frame.pixels.data() + static_cast<std::size_t>(y * 320 + x) * 4;
    return 0xFF000000U | static_cast<unsigned>(p[2]) << 16 | static_cast<unsigned>(p[1]) << 8 | p[0];
}

std::vector<std::uint32_t> pixelsOf(const G19Frame& frame, const RECT& rect) {
    std::vector<std::uint32_t> pixels;
    for (LONG y = rect.top; y < rect.bottom; ++y) {
        for (LONG x = rect.left; x < rect.right; ++x) {
            pixels.push_back(colourAt(frame, static_cast<int>(x), static_cast<int>(y)));
        }
    }
    return pixels;
}

/// The shipped program with the stand-ins of all vendor libraries.
class KelvaroWithAllFigures : public EquippedKelvaro {
protected:
    KelvaroWithAllFigures() {
        RegDeleteTreeW(HKEY_CURRENT_USER, kMailAccount);
        cpu.cpuCount = 1;
        cpu.coreCount = 2;
        cpu.speedMHz = 3600.0F;
        cpu.busSpeedMHz = 100.0F;
        cpu.multiplier = 36.0F;
        cpu.vidVolts = 1.25F;
        cpu.temperatures[0] = 41.0F;
        cpu.temperatures[1] = 54.9F;
        coreTemp.setFigures(cpu);
        coreTemp.setName("Test CPU");
        coreTemp.setRunning(true);

        gpu = {.loadPercent = 30,
               .temperature = 61,
               .memoryKB = 8'388'608,
               .freeMemoryKB = 6'291'456,
               .coreClockKHz = 1'350'000};
        nvidia.setGpuCount(1);
        nvidia.setName(0, "Test GPU");
        nvidia.setFigures(0, gpu);
        audio.addUsualDevices();
        audio.setLevels(0, {.channels = {0.4F, 0.4F}, .master = 0.4F, .muted = false});
        start();
    }
    ~KelvaroWithAllFigures() override {
        kelvaro.reset();
        RegDeleteTreeW(HKEY_CURRENT_USER, kMailAccount);
    }

    /// True when the newest frame shows exactly this text: every pixel that the letters cover wholly has the
    /// text's colour.
    bool isShown(const PaintedText& text) {
        const auto frame = keyboard.lastFrame();
        const TextCoverage coverage(&canvas, text);
        int covered = 0;
        for (int y = 0; y < PagePixels::kHeight; ++y) {
            for (int x = 0; x < PagePixels::kWidth; ++x) {
                if (coverage.at(x, y) == 255) {
                    ++covered;
                    if (!frame || colourAt(*frame, x, y) != text.argb) {
                        return false;
                    }
                }
            }
        }
        return covered > 10;
    }

    bool waitForText(const PaintedText& text) {
        return waitUntil([&] { return isShown(text); }, std::chrono::seconds(15));
    }

    /// Waits until this part of the picture differs from `before`.
    bool waitForChange(const RECT& rect, const std::vector<std::uint32_t>& before) {
        return waitUntil([&] { return pixelsOf(*keyboard.lastFrame(), rect) != before; },
                         std::chrono::seconds(15));
    }

    bool waitForCalls(AudioCall call, std::uint64_t count) {
        return waitUntil([&] { return audio.callCount(call) >= count; }, std::chrono::seconds(15));
    }

    Panelix::Canvas canvas;
    Standins::CoreTempFigures cpu;
    Standins::NvidiaFigures gpu;
};

TEST_F(KelvaroWithAllFigures, ShowsTheCpuFiguresAndFollowsThem) {
    EXPECT_TRUE(waitForText(cpuLine(L"Test CPU", 6)));
    EXPECT_TRUE(waitForText(cpuLine(L"3600.00MHz (100.00 x 36.00)", 26)));
    EXPECT_TRUE(waitForText(cpuLine(L"1.250000v", 46)));
    EXPECT_TRUE(waitForText(temperature(L"54 \u00B0C", kCpuColour, 106)));

    cpu.speedMHz = 4100.0F;
    cpu.multiplier = 41.0F;
    cpu.vidVolts = 0.75F;
    cpu.temperatures[0] = 77.0F;
    cpu.fahrenheit = true;
    coreTemp.setFigures(cpu);
    coreTemp.setName("Other CPU");
    EXPECT_TRUE(waitForText(cpuLine(L"Other CPU", 6)));
    EXPECT_TRUE(waitForText(cpuLine(L"4100.00MHz (100.00 x 41.00)", 26)));
    EXPECT_TRUE(waitForText(cpuLine(L"0.750000v", 46)));
    EXPECT_TRUE(waitForText(temperature(L"77 \u00B0F", kCpuColour, 106)));

    coreTemp.setRunning(false);
    EXPECT_TRUE(waitForText(cpuLine(L"Start CoreTemp!", 6)));
    EXPECT_FALSE(isShown(cpuLine(L"0.750000v", 46)));
}

TEST_F(KelvaroWithAllFigures, ShowsTheGpuFiguresAndFollowsThem) {
    EXPECT_TRUE(waitForText(gpuLine(L"Test GPU", 113)));
    EXPECT_TRUE(waitForText(gpuLine(L"1350.00 MHz", 133)));
    EXPECT_TRUE(waitForText(temperature(L"61 \u00B0C", kGpuColour, 210)));
    const auto before = keyboard.lastFrame();

    gpu = {.loadPercent = 70,
           .temperature = 72,
           .memoryKB = 8'388'608,
           .freeMemoryKB = 2'097'152,
           .coreClockKHz = 1'800'500};
    nvidia.setFigures(0, gpu);
    EXPECT_TRUE(waitForText(gpuLine(L"1800.50 MHz", 133)));
    EXPECT_TRUE(waitForText(temperature(L"72 \u00B0C", kGpuColour, 210)));
    const auto after = keyboard.lastFrame();
    // At the left, where there is no history yet: filled up to 30 percent before, up to 70 now.
    EXPECT_NE(colourAt(*before, 20, 209 - 50), colourAt(*after, 20, 209 - 50));
    EXPECT_EQ(colourAt(*before, 20, 209 - 75), colourAt(*after, 20, 209 - 75));
    // The bar of the video memory: 25 percent before, 75 now.
    EXPECT_NE(colourAt(*before, 215, 209 - 50), colourAt(*after, 215, 209 - 50));
    EXPECT_EQ(colourAt(*before, 215, 209 - 90), colourAt(*after, 215, 209 - 90));
}

TEST_F(KelvaroWithAllFigures, ShowsTheVolumesAndBothMuteStatesAndFollowsThem) {
    EXPECT_TRUE(waitForText(masterVolume(L"40")));
    const auto before = keyboard.lastFrame();
    audio.setLevels(0, {.channels = {0.8F, 0.2F}, .master = 0.8F, .muted = true});
    EXPECT_TRUE(waitForText(masterVolume(L"80")));
    EXPECT_TRUE(waitForChange(kSpeakerIcon, pixelsOf(*before, kSpeakerIcon)));
    const auto after = keyboard.lastFrame();
    EXPECT_NE(colourAt(*before, 288, 104 - 60), colourAt(*after, 288, 104 - 60)) << "left rose over 60";
    EXPECT_NE(colourAt(*before, 308, 104 - 30), colourAt(*after, 308, 104 - 30)) << "right fell below 30";

    const auto microphone = audio.defaultDevice(AudioFlow::Capture);
    ASSERT_TRUE(microphone);
    AudioLevels levels = audio.levels(*microphone);
    levels.muted = true;
    audio.setLevels(*microphone, levels);
    EXPECT_TRUE(waitForChange(kMicrophoneIcon, pixelsOf(*after, kMicrophoneIcon)));
}

TEST_F(KelvaroWithAllFigures, ShowsTheMailCountAndFollowsIt) {
    ASSERT_TRUE(waitForText(cpuLine(L"Test CPU", 6)));
    const auto setCount = [](DWORD count) {
        RegistryOverride::setValue(
            HKEY_CURRENT_USER, kMailAccount, L"MessageCount", REG_DWORD, &count, sizeof(count));
    };
    setCount(3);
    EXPECT_TRUE(waitForText(mailCount(L"x3")));
    setCount(12);
    EXPECT_TRUE(waitForText(mailCount(L"x12")));
}

TEST_F(KelvaroWithAllFigures, ShowsTheGamepadsBatteryAndFollowsIt) {
    ASSERT_TRUE(waitForText(cpuLine(L"Test CPU", 6)));
    const auto none = pixelsOf(*keyboard.lastFrame(), kBatteryIcon);
    gamepads.setBattery(0, 3, 3);
    gamepads.setConnected(0, true);
    ASSERT_TRUE(waitForChange(kBatteryIcon, none));
    const auto full = pixelsOf(*keyboard.lastFrame(), kBatteryIcon);
    gamepads.setBattery(0, 3, 1);
    ASSERT_TRUE(waitForChange(kBatteryIcon, full));
    gamepads.setConnected(0, false);
    EXPECT_TRUE(waitUntil([&] { return pixelsOf(*keyboard.lastFrame(), kBatteryIcon) == none; },
                          std::chrono::seconds(15)));
}

TEST_F(KelvaroWithAllFigures, UpTogglesTheMicrophonesMuteInTheSystem) {
    ASSERT_TRUE(waitForText(cpuLine(L"Test CPU", 6)));
    const auto microphone = audio.defaultDevice(AudioFlow::Capture);
    ASSERT_TRUE(microphone);
    press(LcdSdk::kButtonUp);
    EXPECT_TRUE(audio.levels(*microphone).muted);
    press(LcdSdk::kButtonUp);
    EXPECT_FALSE(audio.levels(*microphone).muted);
    EXPECT_EQ(audio.callCount(AudioCall::SetMute), 2U);
}

TEST_F(KelvaroWithAllFigures, UpAndDownHeldChangeTheSelectedChannelsVolumeInEveryPass) {
    ASSERT_TRUE(waitForText(masterVolume(L"40")));
    press(LcdSdk::kButtonRight);
    ASSERT_TRUE(keyboard.addScriptStep(LcdSdk::kButtonUp, 5));
    ASSERT_TRUE(keyboard.addScriptStep(0, 2));
    ASSERT_TRUE(waitUntil([&] { return keyboard.scriptDone(); }, std::chrono::seconds(30)));
    EXPECT_EQ(audio.callCount(AudioCall::SetChannelVolumeLevelScalar), 5U);
    EXPECT_GT(audio.levels(0).channels[0], 0.45F);
    EXPECT_FLOAT_EQ(audio.levels(0).channels[1], 0.4F);
    const float raised = audio.levels(0).channels[0];
    ASSERT_TRUE(keyboard.addScriptStep(LcdSdk::kButtonDown, 3));
    ASSERT_TRUE(keyboard.addScriptStep(0, 2));
    ASSERT_TRUE(waitUntil([&] { return keyboard.scriptDone(); }, std::chrono::seconds(30)));
    EXPECT_EQ(audio.callCount(AudioCall::SetChannelVolumeLevelScalar), 8U);
    EXPECT_LT(audio.levels(0).channels[0], raised);
    EXPECT_EQ(audio.callCount(AudioCall::SetMute), 0U);
}

TEST_F(KelvaroWithAllFigures, TheDevicePageMakesTheChosenDeviceTheDefaultAndThePageFollowsIt) {
    ASSERT_TRUE(waitForText(masterVolume(L"40")));
    ASSERT_GE(audio.deviceCount(), 3U);
    audio.setLevels(1, {.channels = {0.9F, 0.9F}, .master = 0.9F, .muted = false});
    press(LcdSdk::kButtonMenu);
    press(LcdSdk::kButtonDown);
    press(LcdSdk::kButtonOk);
    EXPECT_TRUE(waitForCalls(AudioCall::SetDefaultEndpoint, 1));
    EXPECT_EQ(audio.defaultDevice(AudioFlow::Render), 1U);
    EXPECT_TRUE(waitForText(masterVolume(L"90")));
}

TEST_F(KelvaroWithAllFigures, FollowsTheDefaultDeviceThatSomebodyElseChanges) {
    ASSERT_TRUE(waitForText(masterVolume(L"40")));
    audio.setLevels(1, {.channels = {0.91F, 0.91F}, .master = 0.91F, .muted = false});
    audio.setDefault(AudioFlow::Render, 1);
    EXPECT_TRUE(waitForText(masterVolume(L"91")));
    // Its own volume control works on it as well.
    press(LcdSdk::kButtonRight);
    press(LcdSdk::kButtonUp);
    EXPECT_GT(audio.levels(1).channels[0], 0.92F);
    EXPECT_FLOAT_EQ(audio.levels(0).channels[0], 0.4F);
    press(LcdSdk::kButtonLeft);

    audio.setDefault(AudioFlow::Render, std::nullopt);
    EXPECT_TRUE(waitForText(masterVolume(L"0")));
    audio.setDefault(AudioFlow::Render, 2);
    EXPECT_TRUE(waitForText(masterVolume(L"25")));

    // Taken away and back: what was bound answers no more.
    audio.setPresent(2, false);
    audio.setPresent(2, true);
    EXPECT_TRUE(waitUntil(
        [&] {
            audio.setLevels(2, {.channels = {0.77F, 0.77F}, .master = 0.77F, .muted = false});
            return isShown(masterVolume(L"77"));
        },
        std::chrono::seconds(15)));
    EXPECT_EQ(audio.callbackEvents(Standins::CallbackEvent::Abandoned), 0U);
}

// One of several times, for the sake of a machine that has much else to do.
TEST_F(KelvaroWithAllFigures, FollowsAnotherDefaultDeviceWithinTwoSeconds) {
    constexpr std::uint64_t kTwoSecondsUs = 2'000'000;
    ASSERT_TRUE(waitForText(masterVolume(L"40")));
    std::uint64_t fastestUs = UINT64_MAX;
    for (std::uint32_t i = 1; i <= 5 && fastestUs > kTwoSecondsUs; ++i) {
        const std::uint64_t activations = audio.callCount(AudioCall::Activate);
        const std::uint64_t start = Standins::nowMicroseconds();
        audio.setDefault(AudioFlow::Render, i % 3);
        ASSERT_TRUE(waitForCalls(AudioCall::Activate, activations + 1));
        fastestUs = std::min(fastestUs, Standins::nowMicroseconds() - start);
    }
    EXPECT_LE(fastestUs, kTwoSecondsUs);
    RecordProperty("microseconds", std::to_string(fastestUs));
}

TEST_F(KelvaroWithAllFigures, AsksForTheDefaultDevicesAtMostOnceASecond) {
    ASSERT_TRUE(waitForCalls(AudioCall::GetDefaultAudioEndpoint, 8));
    std::vector<std::uint64_t> timesUs;
    for (const Standins::AudioCallEntry& call : audio.calls()) {
        if (call.call == AudioCall::GetDefaultAudioEndpoint && call.first == 0) {
            timesUs.push_back(call.timeUs);
        }
    }
    // The two clocks tick apart.
    constexpr std::uint64_t kToleranceUs = 50'000;
    for (std::size_t i = 1; i < timesUs.size(); ++i) {
        EXPECT_GE(timesUs[i] - timesUs[i - 1], 1'000'000 - kToleranceUs) << i;
    }
    EXPECT_GE(timesUs.size(), 4U);
}

/// The shipped program, started before the audio service.
class KelvaroBeforeTheSound : public EquippedKelvaro {
protected:
    KelvaroBeforeTheSound() {
        audio.addUsualDevices();
        audio.setServiceRunning(false);
        start();
    }
};

TEST_F(KelvaroBeforeTheSound, BindsTheDevicesWhenTheServiceIsThere) {
    ASSERT_TRUE(waitForPasses(20));
    EXPECT_EQ(audio.callCount(AudioCall::RegisterControlChangeNotify), 0U);
    audio.setServiceRunning(true);
    EXPECT_TRUE(waitUntil([&] { return audio.callCount(AudioCall::RegisterControlChangeNotify) >= 2; },
                          std::chrono::seconds(15)));
}

}  // namespace
