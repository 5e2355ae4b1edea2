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

#include "app/kelvaro.h"
#include "framework/core/lcd_sdk_abi.h"
#include "tests/endurance/dialog_visitor.h"
#include "tests/endurance/machine_clocks.h"
#include "tests/endurance/random_source.h"
#include "tests/endurance/restless_machine.h"
#include "tests/endurance/side_script.h"
#include "tests/framework/core/lcd_fixture.h"
#include "tests/stats/free_handles.h"
#include "tests/stats/private_memory.h"
#include "tests/support/child_process.h"
#include "tests/support/gdiplus_ledger.h"
#include "tests/support/installation.h"
#include "tests/support/temporary_folder.h"

// The real application object in its real loop, at full speed: time is virtual, so a sleep is over at once.
// In each sleep the test does what users, devices and clocks do. After a long run in random order the machine
// comes to rest in a known state, and the frames must be those of a process that has seen nothing else.

namespace {

using namespace std::chrono_literals;
namespace LcdSdk = Panelix::LcdSdk;

constexpr unsigned kUsualPasses = 2'500;
constexpr unsigned kLongFormPasses = 20'000;
/// After so many passes everything that is made once has been made.
constexpr unsigned kWarmUpPasses = 10'000;
constexpr std::size_t kAllowedGrowthBytes = std::size_t{2} * 1024 * 1024;
constexpr unsigned kPassesBetweenChecks = 1'000;
constexpr unsigned kPassesBetweenProbes = 2'500;
constexpr unsigned kPassesBetweenLines = 10'000;
/// A pass that nobody sleeps after would never end this test.
constexpr unsigned kPassesToTheEnd = 200;

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

std::wstring ownPath() {
    std::array<wchar_t, MAX_PATH> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return path.data();
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

class Soak : public WithKeyboard {
protected:
    Soak() {
        for (const wchar_t* key : {L"Shell Folders", L"User Shell Folders"}) {
            RegistryOverride::setText(
                HKEY_CURRENT_USER,
                std::wstring(L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\") + key,
                L"Personal",
                documents_.path());
        }
        RegistryOverride::setText(HKEY_LOCAL_MACHINE, kProgramKey, L"InstallDir", installation_.path());
        RegistryOverride::makeKey(HKEY_CURRENT_USER, kRunKey);
        clocks_.setTimeOfDay(kLastTimeOfDay - 100'000);
    }

    /// Runs the application while `plan` is carried out, and to its end by Exit Applet.
    void run(const std::function<void()>& plan) {
        std::printf("KELVARO_SEED=%u KELVARO_PASSES=%u, %s card\n",
                    seed_,
                    passes_,
                    card_ == GraphicsCard::Nvidia ? "NVIDIA" : "AMD");
        SideScript script([this, &plan] {
            plan();
            exitApplet();
        });
        script_ = &script;
        clocks_.time.onSleep = [this] { endPass(); };
        {
            Kelvaro kelvaro(GetModuleHandleW(nullptr));
            kelvaro_ = &kelvaro;
            kelvaro.Run();
            kelvaro_ = nullptr;
        }
        clocks_.time.onSleep = nullptr;
        EXPECT_TRUE(script.isOver()) << "the program ended by itself after " << pass_ << " passes";
        expectNothingLeft();
    }

    /// Everything that users, devices and clocks can do, for `passes_` passes.
    void liveThrough() {
        startMs_ = GetTickCount64();
        restless_ = true;
        while (pass_ < passes_ && !HasFailure()) {
            doSomething();
            stepClocksWhenDue();
            if (pass_ >= nextProbe_) {
                nextProbe_ = pass_ + kPassesBetweenProbes;
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
        while (pass_ % kBlinkPasses != 0) {
            pass();
        }
        // The sampler's schedule began at a whole multiple of its period.
        clocks_.time.pass(kReadingPeriod -
                          std::chrono::milliseconds(clocks_.time.awakeMs() % kReadingPeriod.count()));
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

    const unsigned seed_ = numberFromEnvironment("KELVARO_SEED").value_or(std::random_device{}());
    const unsigned passes_ = passesOfTheRun();
    std::unique_ptr<LastFrames> frames_ = std::make_unique<LastFrames>();

private:
    // Passes.

    /// Called in the sleep at the end of each pass.
    void endPass() {
        ++pass_;
        clocks_.time.sleptMs.clear();
        if (keyboard.passCount() != pass_) {
            ADD_FAILURE() << keyboard.passCount() << " frames were handed over in " << pass_ << " passes";
        }
        if (script_->isOver()) {
            if (++passesAfterTheEnd_ > kPassesToTheEnd) {
                std::printf("the program does not end\n");
                std::_Exit(1);
            }
            return;
        }
        script_->resume();
    }

    /// The program makes a pass.
    void pass() {
        if (restless_ && random_.chance(3)) {
            machine_.changeSomething(random_);
        }
        script_->pause();
        if (pass_ % kPassesBetweenChecks == 0) {
            check();
        }
    }

    void pass(unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            pass();
        }
    }

    std::uint64_t frameChecksum() const { return keyboard.lastFrame()->checksum; }

    // The user.

    void press(std::uint32_t buttons, unsigned passes = 1) {
        keyboard.setHeldButtons(buttons);
        pass(passes);
        keyboard.setHeldButtons(0);
        pass();
    }

    /// CANCEL leads from the options page to the audio device page, from there to the main page, and does
    /// nothing on it.
    void goHome() {
        press(LcdSdk::kButtonCancel);
        press(LcdSdk::kButtonCancel);
    }

    void exitApplet() {
        goHome();
        press(LcdSdk::kButtonMenu);
        press(LcdSdk::kButtonRight);
        press(LcdSdk::kButtonDown);
        press(LcdSdk::kButtonDown);
        keyboard.setHeldButtons(LcdSdk::kButtonOk);
    }

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
        if (stepsDone_ < kClockSteps && pass_ >= (stepsDone_ + 1) * (passes_ / (kClockSteps + 1))) {
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

    /// The program still does what it is for: a new reading arrives, and the picture moves.
    void probe() {
        restless_ = false;
        ++probes_;
        machine_.settleTo(random_.below(1000));
        goHome();
        leavePictureMode();
        pass(12);
        const unsigned reading = random_.below(1000);
        machine_.setFigures(reading);
        const std::uint64_t before = frameChecksum();
        bool moved = false;
        const int expected = static_cast<int>(reading * 7 % 101);
        for (unsigned i = 0; i < 12 || (kelvaro_->sampler()->gpuStats.load != expected && i < 40); ++i) {
            pass();
            moved = moved || frameChecksum() != before;
        }
        EXPECT_EQ(kelvaro_->sampler()->gpuStats.load, expected) << "no fresh reading, pass " << pass_;
        EXPECT_TRUE(moved) << "the picture stands still, pass " << pass_;
        EXPECT_TRUE(kelvaro_->sampler()->coreTempAvailable);
        EXPECT_EQ(kelvaro_->sampler()->speakerLeftVolume, 42) << "pass " << pass_;
        restless_ = true;
    }

    void check() {
        EXPECT_THAT(ledger_.failures(), testing::IsEmpty()) << "pass " << pass_;
        const GdiplusLedger::Numbers outstanding = ledger_.outstanding();
        if (atRest_.empty()) {
            atRest_ = outstanding;
        }
        EXPECT_EQ(outstanding, atRest_) << "pass " << pass_;
        countScreenshots();
        checkMemory();
        if (pass_ % kPassesBetweenLines == 0) {
            printLine();
        }
    }

    void checkMemory() {
        machine_.calmDown();
        const unsigned warmUp = std::min(kWarmUpPasses, passes_ / 2);
        const std::size_t now = privateMemoryBytes();
        lastBytes_ = now;
        const std::uintptr_t handle = greatestOfNextHandles();
        if (pass_ <= warmUp) {
            settledBytes_ = now;
            settledHandle_ = handle;
        }
        greatestBytes_ = pass_ <= warmUp ? now : std::max(greatestBytes_, now);
        EXPECT_LE(now, settledBytes_ + kAllowedGrowthBytes) << "after " << pass_ << " passes";
        EXPECT_LE(handle, settledHandle_ + 64 * 4) << "after " << pass_ << " passes";
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
            pass_,
            seconds,
            pass_ / std::max(seconds, 0.001),
            static_cast<double>(lastBytes_) / 1024 / 1024,
            static_cast<double>(settledBytes_) / 1024 / 1024,
            static_cast<double>(greatestBytes_) / 1024 / 1024);
        std::fflush(stdout);
    }

    void expectNothingLeft() {
        EXPECT_THAT(ledger_.failures(), testing::IsEmpty());
        EXPECT_THAT(ledger_.outstanding(), testing::IsEmpty());
        EXPECT_EQ(machine_.audio().liveObjects(), 0);
        EXPECT_EQ(machine_.audio().callbackEvents(Standins::CallbackEvent::Abandoned), 0U);
        EXPECT_EQ(keyboard.state(), Standins::KeyboardState::Ended);
    }

    // From the first to the last that needs the ones before.
    GraphicsCard card_ = seed_ % 2 == 0 ? GraphicsCard::Nvidia : GraphicsCard::Amd;
    TemporaryFolder documents_;
    InstallationFolder installation_;
    RandomSource random_{seed_};
    MachineClocks clocks_;
    RestlessMachine machine_{clocks_, card_};
    GdiplusLedger ledger_;
    DialogVisitor visitor_{seed_};
    SideScript* script_ = nullptr;
    Kelvaro* kelvaro_ = nullptr;

    unsigned pass_ = 0;
    unsigned passesAfterTheEnd_ = 0;
    bool restless_ = false;
    unsigned nextProbe_ = 0;
    unsigned probes_ = 0;
    unsigned stepsDone_ = 0;
    unsigned screenshots_ = 0;
    std::uint64_t startMs_ = 0;
    GdiplusLedger::Numbers atRest_;
    std::size_t lastBytes_ = 0;
    std::size_t settledBytes_ = 0;
    std::size_t greatestBytes_ = 0;
    std::uintptr_t settledHandle_ = 0;
};

TEST_F(Soak, EveryFunctionOfGdiplusThatCanFailIsWatched) {
    EXPECT_THAT(GdiplusLedger().unwatched(), testing::IsEmpty());
}

TEST_F(Soak, AFreshProgramComesToRest) {
    run([this] { comeToRest(); });
    EXPECT_NE(frames_->checksums.front(), frames_->checksums.back()) << "the clock stands still";
    if (const wchar_t* const path = _wgetenv(L"KELVARO_FRAMES")) {
        frames_->save(path);
    }
}

TEST_F(Soak, AfterALongRandomRunEverythingIsAsInAFreshProcess) {
    run([this] {
        liveThrough();
        comeToRest();
    });

    const TemporaryFolder folder;
    const std::wstring file = folder.path() + L"\\frames";
    SetEnvironmentVariableW(L"KELVARO_FRAMES", file.c_str());
    SetEnvironmentVariableW(L"KELVARO_SEED", std::to_wstring(seed_).c_str());
    const ChildProcess fresh(ownPath(), L"--gtest_filter=Soak.AFreshProgramComesToRest");
    ASSERT_EQ(fresh.waitForExit(5min), 0U);
    const std::unique_ptr<LastFrames> expected = LastFrames::load(file);
    ASSERT_NE(expected, nullptr);
    EXPECT_THAT(differences(frames_->checksums, expected->checksums), testing::IsEmpty());
    EXPECT_EQ(differences(frames_->last, expected->last).size(), 0U);
}

}  // namespace
