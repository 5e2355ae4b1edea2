#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "framework/core/com_apartment.h"
#include "framework/core/lcd_sdk_abi.h"
#include "pages/audio_device_page.h"
#include "pages/figure_texts.h"
#include "pages/main_page.h"
#include "pages/options_page.h"
#include "standins/adl/virtual_radeon.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/core_audio/virtual_audio.h"
#include "standins/core_temp/virtual_core_temp.h"
#include "standins/nvapi/virtual_nvidia.h"
#include "standins/vendor_libraries.h"
#include "standins/xinput/virtual_gamepad.h"
#include "stats/gamepad_battery_code.h"
#include "stats/system_info.h"
#include "tests/framework/core/lcd_fixture.h"
#include "tests/framework/core/probe_app.h"
#include "tests/hostile/garbage.h"
#include "tests/hostile/random_inputs.h"
#include "tests/stats/preloaded_library.h"
#include "tests/stats/private_memory.h"
#include "tests/support/temporary_folder.h"

// All vendors' libraries at once answer garbage, and the user presses whatever there is.

namespace {

using Standins::VendorLibrary;

constexpr unsigned kPassesPerProgram = 60;

/// Sampler and pages as the program has them, for some passes.
class Program {
public:
    explicit Program(std::function<bool(Program&)> eachPass) : eachPass_(std::move(eachPass)) {
        auto devicePage = std::make_unique<AudioDevicePage>(&app_, &sampler);
        auto mainPage = std::make_unique<MainPage>(&app_, &sampler, devicePage.get());
        app_.SetMainPage(std::move(mainPage));
        app_.AddPage(std::move(devicePage), false);
        app_.AddPage(std::make_unique<OptionsPage>(&app_), false);
        auto driver = std::make_unique<ProbePage>("driver", &app_, &log_);
        driver->onUpdate = [this](const Panelix::LcdButtons&) {
            log_.clear();
            return eachPass_(*this);
        };
        app_.AddPage(std::move(driver), true);
    }

    void run() { app_.Run(); }

private:
    std::function<bool(Program&)> eachPass_;
    CallLog log_;
    ProbeApp app_{1};
    Standins::LoadedCoreAudio audioClasses_;

public:
    SystemInfo sampler;
};

class VendorGarbage : public WithKeyboard {
protected:
    VendorGarbage() {
        for (const wchar_t* key : {L"Shell Folders", L"User Shell Folders"}) {
            RegistryOverride::setText(
                HKEY_CURRENT_USER,
                std::wstring(L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\") + key,
                L"Personal",
                documents_.path());
        }
        for (const VendorLibrary library :
             {VendorLibrary::CoreTemp, VendorLibrary::Nvapi, VendorLibrary::Adl}) {
            libraries_.push_back(std::make_unique<PreloadedLibrary>(Standins::vendorLibraryPath(library)));
        }
    }

    Garbage garbage;

private:
    std::vector<std::unique_ptr<PreloadedLibrary>> libraries_;
    TemporaryFolder documents_;
};

bool isPercent(std::int32_t figure) {
    return figure >= 0 && figure <= 100;
}

void expectBounded(const SystemInfo& sampler) {
    // As long as the greatest number in a float makes them.
    constexpr std::size_t kLongestFigure = 50;
    EXPECT_LE(sampler.cpuLoad, 100U);
    EXPECT_TRUE(isPercent(sampler.memoryLoad)) << sampler.memoryLoad;
    EXPECT_TRUE(isPercent(sampler.gpuStats.memoryLoad)) << sampler.gpuStats.memoryLoad;
    for (const std::int32_t volume : {sampler.speakerLeftVolume.load(),
                                      sampler.speakerRightVolume.load(),
                                      sampler.speakerMasterVolume.load()}) {
        EXPECT_TRUE(isPercent(volume)) << volume;
    }
    EXPECT_LE(sampler.cpuName.size(), Standins::VirtualCoreTemp::kNameLength);
    EXPECT_LE(sampler.gpuName.size(), Standins::VirtualRadeon::kNameLength);
    EXPECT_LE(sampler.cpuClockText.size(), 3 * kLongestFigure);
    EXPECT_LE(vidText(sampler.cpuVid).size(), kLongestFigure);
    EXPECT_LE(gpuClockText(sampler.gpuStats.coreClock).size(), kLongestFigure);
    EXPECT_TRUE(
        sampler.gamepadBattery == kGamepadBatteryNone || sampler.gamepadBattery == kGamepadBatteryWired ||
        (sampler.gamepadBattery >= kGamepadBatteryEmpty && sampler.gamepadBattery <= kGamepadBatteryFull))
        << sampler.gamepadBattery;
}

TEST_F(VendorGarbage, FiguresStayBoundedAndEveryPassGivesAFrame) {
    RandomInputs inputs("passes with garbage from every vendor", 40, 1'000);
    std::optional<std::size_t> memory;
    while (inputs.taken() < inputs.total()) {
        unsigned passes = 0;
        garbage.choose(inputs);
        // A device enumerator is what the program needs to start.
        Standins::VirtualAudio().clearFailures();
        auto program = std::make_unique<Program>([&](Program& running) {
            if (passes++ == kPassesPerProgram || !inputs.next()) {
                return false;
            }
            garbage.choose(inputs);
            keyboard.setHeldButtons(inputs.chance(8) ? ~0U : inputs.number() & inputs.number());
            running.sampler.update();
            expectBounded(running.sampler);
            return !testing::Test::HasFailure();
        });
        const std::uint64_t frames = keyboard.frameCount();
        const auto start = std::chrono::steady_clock::now();
        program->run();
        ASSERT_FALSE(HasFailure()) << inputs.place();
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30)) << inputs.place();
        // The last pass ends the run before its frame.
        EXPECT_GE(keyboard.frameCount() + 2, frames + passes) << inputs.place();
        program.reset();
        if (!memory && inputs.taken() > inputs.total() / 3) {
            memory = privateMemoryBytes();
        }
    }
    EXPECT_LE(privateMemoryBytes(), *memory + std::size_t{4} * 1024 * 1024);
}

/// More than a busy machine needs for a pass, and less than what is not bounded would take.
constexpr std::chrono::seconds kWellBelowAHang{20};

TEST_F(VendorGarbage, ACountOfAudioDevicesThatCannotBeCostsNoTime) {
    Standins::VirtualAudio audio;
    audio.addUsualDevices();
    const Panelix::ComApartment com;
    const Standins::LoadedCoreAudio classes;
    SystemInfo sampler;
    for (const std::uint32_t count : {0U, 2U, 4'000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        audio.setCountAnswer(count);
        std::vector<AudioDeviceEntry> devices;
        std::uint32_t defaultIndex = 0;
        const auto start = std::chrono::steady_clock::now();
        sampler.listDevices(devices, defaultIndex);
        EXPECT_LT(std::chrono::steady_clock::now() - start, kWellBelowAHang) << count;
        EXPECT_EQ(devices.size(), count <= 0x7FFFFFFF ? std::min(count, 3U) : 0U) << count;
    }
}

// A call that does not come back for two seconds costs those two seconds, and nothing after them.
TEST_F(VendorGarbage, ASlowCallDelaysItsOwnPassOnly) {
    using Clock = std::chrono::steady_clock;
    const std::uint32_t durationMs = std::getenv("KELVARO_ALL") != nullptr ? 2'000 : 60;
    garbage.makeUsual();
    const Panelix::ComApartment com;
    const Standins::LoadedCoreAudio classes;
    SystemInfo sampler;
    sampler.update();
    unsigned slowCalls = 0;
    for (const auto& slow : garbage.durations()) {
        slow(durationMs);
        const auto start = Clock::now();
        sampler.update();
        slow(0);
        const auto between = Clock::now();
        EXPECT_GE(between - start, std::chrono::milliseconds(durationMs)) << slowCalls;
        EXPECT_LT(between - start, kWellBelowAHang) << slowCalls;
        sampler.update();
        EXPECT_LT(Clock::now() - between, kWellBelowAHang) << slowCalls;
        EXPECT_TRUE(sampler.coreTempAvailable);
        EXPECT_TRUE(sampler.gpuStats.loadValid);
        EXPECT_EQ(sampler.gamepadBattery, kGamepadBatteryMedium);
        ++slowCalls;
    }
    std::printf("%u calls that take %u ms\n", slowCalls, durationMs);
}

}  // namespace
