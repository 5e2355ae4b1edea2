#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "framework/core/lcd_sdk_abi.h"
#include "tests/endurance/dialog_visitor.h"
#include "tests/endurance/full_speed_kelvaro.h"
#include "tests/endurance/random_source.h"
#include "tests/endurance/restless_machine.h"
#include "tests/stats/free_handles.h"
#include "tests/stats/private_memory.h"
#include "tests/support/child_process.h"
#include "tests/support/gdiplus_ledger.h"
#include "tests/support/installation.h"
#include "tests/support/temporary_folder.h"

// After a long run in which everything happens in random order, the machine comes to rest in a known state,
// and the frames must be those of a process that has seen nothing else.

namespace {

using namespace std::chrono_literals;
namespace LcdSdk = Panelix::LcdSdk;

constexpr unsigned kUsualPasses = 1'500;
constexpr unsigned kLongFormPasses = 20'000;
/// After so many passes everything that is made once has been made.
constexpr unsigned kWarmUpPasses = 10'000;
constexpr std::size_t kAllowedGrowthBytes = std::size_t{2} * 1024 * 1024;
/// Within this it goes up and down; beyond it is looked at more often.
constexpr std::size_t kUsualSwingBytes = std::size_t{512} * 1024;
constexpr int kLooksAtMemory = 100;
constexpr unsigned kPassesBetweenChecks = 250;
constexpr unsigned kPassesBetweenProbes = 2'500;
constexpr unsigned kPassesBetweenLines = 10'000;
/// Passes within which everything that is shown must be up to date: about 4 seconds.
constexpr unsigned kLongestWait = 60;

constexpr std::uint32_t kAllButtons = LcdSdk::kButtonUp | LcdSdk::kButtonRight | LcdSdk::kButtonDown |
                                      LcdSdk::kButtonLeft | LcdSdk::kButtonMenu | LcdSdk::kButtonOk |
                                      LcdSdk::kButtonCancel;
constexpr std::array<std::uint32_t, 7> kButtons{LcdSdk::kButtonUp,
                                                LcdSdk::kButtonRight,
                                                LcdSdk::kButtonDown,
                                                LcdSdk::kButtonLeft,
                                                LcdSdk::kButtonMenu,
                                                LcdSdk::kButtonOk,
                                                LcdSdk::kButtonCancel};

/// In the last part of a run: passes with one reading each, more than the graphs hold, and passes at the
/// usual pace after them, whose frames are compared.
constexpr unsigned kReadings = 230;
constexpr unsigned kComparedPasses = 40;
/// A blinking icon is back at the same phase after so many passes.
constexpr unsigned kBlinkPasses = 18;
constexpr auto kReadingPeriod = 300ms;
constexpr auto kFramePeriod = 66ms;
/// 13 January 2026, 11:59:40 universal time.
constexpr std::int64_t kLastTimeOfDay = 1'768'305'580;

/// What two processes compare.
struct LastFrames {
    std::array<std::uint64_t, kComparedPasses> checksums{};
    std::array<std::uint8_t, LcdSdk::kColorFrameBytes> last{};

    void save(const std::wstring& path) const {
        std::ofstream file(std::filesystem::path(path), std::ios::binary);
        file.write(reinterpret_cast<const char*>(this), sizeof(*this));
    }
    static std::unique_ptr<LastFrames> load(const std::wstring& path) {
        auto frames = std::make_unique<LastFrames>();
        std::ifstream file(std::filesystem::path(path), std::ios::binary);
        file.read(reinterpret_cast<char*>(frames.get()), sizeof(*frames));
        return file ? std::move(frames) : nullptr;
    }
};

std::optional<unsigned> numberFromEnvironment(const char* name) {
    const char* const text = std::getenv(name);
    return text != nullptr ? std::optional(static_cast<unsigned>(std::strtoul(text, nullptr, 10)))
                           : std::nullopt;
}

unsigned passesOfTheRun() {
    return numberFromEnvironment("KELVARO_PASSES")
        .value_or(std::getenv("KELVARO_ALL") != nullptr ? kLongFormPasses : kUsualPasses);
}

/// Indices at which two arrays differ.
template <typename Value, std::size_t count>
std::vector<std::size_t> differences(const std::array<Value, count>& left,
                                     const std::array<Value, count>& right) {
    std::vector<std::size_t> indices;
    for (std::size_t i = 0; i < count; ++i) {
        if (left[i] != right[i]) {
            indices.push_back(i);
        }
    }
    return indices;
}

unsigned seedOfTheRun() {
    static const unsigned seed = numberFromEnvironment("KELVARO_SEED").value_or(std::random_device{}());
    return seed;
}

/// Both makers' cards get their share of the seeds.
GraphicsCard cardOfTheRun() {
    return seedOfTheRun() % 2 == 0 ? GraphicsCard::Nvidia : GraphicsCard::Amd;
}

class Soak : public FullSpeedKelvaro {
protected:
    Soak() : FullSpeedKelvaro(cardOfTheRun()) {
        RegistryOverride::setText(HKEY_LOCAL_MACHINE, kProgramKey, L"InstallDir", installation_.path());
        RegistryOverride::makeKey(HKEY_CURRENT_USER, kRunKey);
        clocks_.setTimeOfDay(kLastTimeOfDay - 100'000);
        visitor_.onVisit = [this] {
            if (++visits_ % 20 == 0) {
                clocks_.time.standBy(8h);
            }
        };
        onPass = [this] {
            if (passes_ % kPassesBetweenChecks == 0) {
                check();
            }
            if (restless_ && random_.chance(3)) {
                machine_.changeSomething(random_);
            }
        };
    }

    void runAndExpectNothingLeft(const std::function<void()>& plan) {
        std::printf("KELVARO_SEED=%u KELVARO_PASSES=%u, %s card\n",
                    seedOfTheRun(),
                    passesOfTheRun_,
                    cardOfTheRun() == GraphicsCard::Nvidia ? "NVIDIA" : "AMD");
        run(plan);
        expectNothingLeft();
    }

    /// Everything that users, devices and clocks can do, for `passesOfTheRun_` passes.
    void liveThrough() {
        startMs_ = GetTickCount64();
        restless_ = true;
        while (passes_ < passesOfTheRun_ && !HasFailure()) {
            doSomething();
            stepClocksWhenDue();
            if (passes_ >= nextProbe_) {
                nextProbe_ = passes_ + kPassesBetweenProbes;
                probe();
            }
        }
        restless_ = false;
        printLine();
        std::printf("%u visits to boxes, %u to settings dialogs, %u screenshots, %llu notices, %u probes\n",
                    visitor_.boxes,
                    visitor_.settingsDialogs,
                    screenshots_,
                    static_cast<unsigned long long>(machine_.audio().noticesDelivered()),
                    probes_);
        EXPECT_EQ(stepsDone_, kClockSteps);
    }

    /// Brings machine and program to the state in which both processes end.
    void comeToRest() {
        machine_.settleTo(0);
        goHome();
        leavePictureMode();
        selectNoChannel();
        machine_.settleTo(0);
        pass(40);
        EXPECT_TRUE(machine_.audio().settle());
        while (passes_ % kBlinkPasses != 0) {
            pass();
        }
        // The sampler's schedule began at a whole multiple of its period.
        clocks_.time.pass(kReadingPeriod -
                          std::chrono::milliseconds(clocks_.time.awakeMs() % kReadingPeriod.count()));
        // What is due by now is sampled, so that the passes below sample once each.
        pass(kBlinkPasses);
        clocks_.setTimeOfDay(kLastTimeOfDay);
        for (unsigned reading = 0; reading < kReadings; ++reading) {
            machine_.setFigures(reading);
            clocks_.time.pass(kReadingPeriod - kFramePeriod);
            pass();
        }
        for (std::uint64_t& checksum : frames_->checksums) {
            pass();
            checksum = frameChecksum();
        }
        const std::optional<Standins::G19Frame> frame = keyboard.lastFrame();
        std::copy(frame->pixels.begin(), frame->pixels.end(), frames_->last.begin());
    }

    const unsigned passesOfTheRun_ = passesOfTheRun();
    std::unique_ptr<LastFrames> frames_ = std::make_unique<LastFrames>();

private:
    // The user.

    void doSomething() {
        goHome();
        switch (random_.below(9)) {
            // Any button but one, without which Exit Applet cannot be reached.
            case 0:
                fumble(LcdSdk::kButtonRight);
                break;
            case 1:
                fumble(LcdSdk::kButtonDown);
                break;
            case 2:
                fumble(LcdSdk::kButtonOk);
                break;
            case 3:
                chooseDevice();
                break;
            case 4:
                changeVolume();
                break;
            case 5:
                openAbout();
                break;
            case 6:
                openSettings();
                break;
            default:
                pass(random_.below(60));
                break;
        }
    }

    void fumble(std::uint32_t spared) {
        for (unsigned presses = random_.below(25); presses > 0; --presses) {
            std::uint32_t buttons = random_.oneOf(kButtons);
            if (random_.chance(6)) {
                buttons |= random_.oneOf(kButtons);
            }
            press(buttons & kAllButtons & ~spared, 1 + random_.below(3));
            pass(random_.chance(3) ? random_.below(14) : 0);
        }
    }

    void chooseDevice() {
        press(LcdSdk::kButtonMenu);
        pass(random_.below(14));
        for (unsigned moves = random_.below(4); moves > 0; --moves) {
            press(random_.chance(3) ? LcdSdk::kButtonUp : LcdSdk::kButtonDown);
        }
        press(LcdSdk::kButtonOk);
        pass(random_.below(14));
    }

    void changeVolume() {
        press(random_.chance(2) ? LcdSdk::kButtonLeft : LcdSdk::kButtonRight);
        press(random_.chance(2) ? LcdSdk::kButtonUp : LcdSdk::kButtonDown, 1 + random_.below(40));
    }

    void openAbout() {
        press(LcdSdk::kButtonMenu);
        press(LcdSdk::kButtonRight);
        pass(random_.below(14));
        press(LcdSdk::kButtonOk);
        pass(random_.below(14));
    }

    void openSettings() {
        press(LcdSdk::kButtonMenu);
        press(LcdSdk::kButtonRight);
        pass(random_.below(14));
        press(LcdSdk::kButtonDown);
        press(LcdSdk::kButtonOk);
        pass(random_.below(14));
    }

    /// Where the seconds of the clock do not show, the picture is shown.
    void leavePictureMode() {
        pass(12);
        const std::uint64_t before = frameChecksum();
        pass(20);
        if (frameChecksum() == before) {
            press(LcdSdk::kButtonOk);
        }
    }

    /// UP mutes the microphone when no channel is selected, and changes the volume of one that is.
    void selectNoChannel() {
        for (int channel = 0; channel < 3; ++channel) {
            const std::uint64_t before = machine_.audio().callCount(Standins::AudioCall::SetMute);
            press(LcdSdk::kButtonUp);
            if (machine_.audio().callCount(Standins::AudioCall::SetMute) != before) {
                return;
            }
            press(LcdSdk::kButtonRight);
        }
        ADD_FAILURE() << "UP mutes the microphone with no channel selected";
    }

    // The clocks.

    static constexpr unsigned kClockSteps = 6;

    /// Each kind of step once, spread over the run, and now and then again.
    void stepClocksWhenDue() {
        if (stepsDone_ < kClockSteps && passes_ >= (stepsDone_ + 1) * (passesOfTheRun_ / (kClockSteps + 1))) {
            stepClocks(stepsDone_);
            ++stepsDone_;
            probe();
        } else if (random_.chance(60)) {
            stepClocks(random_.below(4));
        }
    }

    void stepClocks(unsigned kind) {
        switch (kind) {
            case 0:
                clocks_.stepTimeOfDay(-1h);
                break;
            case 1:
                clocks_.stepTimeOfDay(24h);
                break;
            case 2:
                clocks_.time.standBy(8h);
                break;
            case 3:
                // The machine is awake, but something else has the processor.
                clocks_.time.pass(std::chrono::milliseconds(random_.below(3000)));
                break;
            case 4:
                clocks_.standByUntilTicks((1U << 31) - 2'000);
                break;
            default:
                clocks_.standByUntilTicks(0U - 2'000);
                break;
        }
    }

    // What must hold.

    /// The program still does what it is for: readings arrive, another default device is followed, and the
    /// picture moves.
    void probe() {
        restless_ = false;
        ++probes_;
        machine_.settleTo(random_.below(1000));
        goHome();
        leavePictureMode();
        const unsigned reading = random_.below(1000);
        machine_.setFigures(reading);
        const std::uint32_t other = machine_.chooseOtherSpeakers();
        const std::uint64_t before = frameChecksum();
        bool moved = false;
        for (unsigned i = 0; i < kLongestWait && !(moved && showsFigures(reading, other)); ++i) {
            pass();
            moved = moved || frameChecksum() != before;
        }
        EXPECT_TRUE(moved) << "the picture stands still, pass " << passes_;
        EXPECT_TRUE(showsFigures(reading, other))
            << "pass " << passes_ << ": CPU " << kelvaro_->sampler()->cpuLoad << ", GPU "
            << kelvaro_->sampler()->gpuStats.load << ", volume " << kelvaro_->sampler()->speakerLeftVolume
            << " for " << RestlessMachine::graphicsLoad(reading) << " of the GPU and " << other;
        restless_ = true;
    }

    bool showsFigures(unsigned reading, std::uint32_t volume) const {
        const SystemInfo& sampler = *kelvaro_->sampler();
        const int graphics = RestlessMachine::graphicsLoad(reading);
        return sampler.coreTempAvailable && sampler.gpuStats.load == graphics &&
               static_cast<int>(sampler.cpuLoad) == 100 - graphics &&
               sampler.speakerLeftVolume == static_cast<std::int32_t>(volume);
    }

    void check() {
        EXPECT_THAT(ledger_.failures(), testing::IsEmpty()) << "pass " << passes_;
        const GdiplusLedger::Numbers outstanding = ledger_.outstanding();
        if (atRest_.empty()) {
            atRest_ = outstanding;
        }
        EXPECT_EQ(outstanding, atRest_) << "pass " << passes_;
        countScreenshots();
        checkMemory();
        if (passes_ % kPassesBetweenLines == 0) {
            printLine();
        }
    }

    void checkMemory() {
        machine_.calmDown();
        const unsigned warmUp = std::min(kWarmUpPasses, passesOfTheRun_ / 2);
        std::size_t now = privateMemoryBytes();
        // A stand-in's thread that was told to end gives its stack back a moment later.
        for (int i = 0; i < kLooksAtMemory && passes_ > warmUp && now > settledBytes_ + kUsualSwingBytes;
             ++i) {
            Sleep(10);
            now = privateMemoryBytes();
        }
        lastBytes_ = now;
        const std::uintptr_t handle = greatestOfNextHandles();
        if (passes_ <= warmUp) {
            settledBytes_ = now;
            settledHandle_ = handle;
        }
        greatestBytes_ = passes_ <= warmUp ? now : std::max(greatestBytes_, now);
        EXPECT_LE(now, settledBytes_ + kAllowedGrowthBytes) << "after " << passes_ << " passes";
        EXPECT_LE(handle, settledHandle_ + 64 * 4) << "after " << passes_ << " passes";
    }

    void countScreenshots() {
        for (const std::wstring& file : documents_.files()) {
            ++screenshots_;
            EXPECT_NE(DeleteFileW((documents_.path() + L"\\" + file).c_str()), FALSE);
        }
    }

    void printLine() const {
        const double seconds = static_cast<double>(GetTickCount64() - startMs_) / 1000.0;
        std::printf(
            "%8u passes, %6.0f s, %5.0f a second, private %.2f MiB, settled %.2f, greatest since %.2f\n",
            passes_,
            seconds,
            passes_ / std::max(seconds, 0.001),
            static_cast<double>(lastBytes_) / 1024 / 1024,
            static_cast<double>(settledBytes_) / 1024 / 1024,
            static_cast<double>(greatestBytes_) / 1024 / 1024);
        std::fflush(stdout);
    }

    void expectNothingLeft() {
        EXPECT_THAT(ledger_.failures(), testing::IsEmpty());
        EXPECT_THAT(ledger_.outstanding(), testing::IsEmpty());
        EXPECT_EQ(machine_.audio().liveObjects(), 0);
        EXPECT_EQ(machine_.audio().callbackReferences(), 0);
        EXPECT_EQ(keyboard.state(), Standins::KeyboardState::Ended);
    }

    InstallationFolder installation_;
    RandomSource random_{seedOfTheRun()};
    GdiplusLedger ledger_;
    DialogVisitor visitor_{seedOfTheRun()};

    bool restless_ = false;
    unsigned nextProbe_ = 0;
    unsigned probes_ = 0;
    unsigned visits_ = 0;
    unsigned stepsDone_ = 0;
    unsigned screenshots_ = 0;
    std::uint64_t startMs_ = 0;
    GdiplusLedger::Numbers atRest_;
    std::size_t lastBytes_ = 0;
    std::size_t settledBytes_ = 0;
    std::size_t greatestBytes_ = 0;
    std::uintptr_t settledHandle_ = 0;
};

TEST(SoakProgram, EveryFunctionOfGdiplusThatCanFailIsWatched) {
    EXPECT_THAT(GdiplusLedger().unwatched(), testing::IsEmpty());
}

TEST_F(Soak, AFreshProgramComesToRest) {
    runAndExpectNothingLeft([this] { comeToRest(); });
    EXPECT_NE(frames_->checksums.front(), frames_->checksums.back()) << "the clock stands still";
    if (const wchar_t* const path = _wgetenv(L"KELVARO_FRAMES")) {
        frames_->save(path);
    }
}

TEST_F(Soak, AfterALongRandomRunEverythingIsAsInAFreshProcess) {
    runAndExpectNothingLeft([this] {
        liveThrough();
        comeToRest();
    });

    const TemporaryFolder folder;
    const std::wstring file = folder.path() + L"\\frames";
    SetEnvironmentVariableW(L"KELVARO_FRAMES", file.c_str());
    SetEnvironmentVariableW(L"KELVARO_SEED", std::to_wstring(seedOfTheRun()).c_str());
    const ChildProcess fresh(ownProgram(), L"--gtest_filter=Soak.AFreshProgramComesToRest");
    ASSERT_EQ(fresh.waitForExit(5min), 0U);
    const std::unique_ptr<LastFrames> expected = LastFrames::load(file);
    ASSERT_NE(expected, nullptr);
    EXPECT_THAT(differences(frames_->checksums, expected->checksums), testing::IsEmpty());
    EXPECT_EQ(differences(frames_->last, expected->last).size(), 0U);
}

}  // namespace
