#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "framework/core/command_codes.h"
#include "framework/core/lcd_sdk_abi.h"
#include "framework/core/unique_resource.h"
#include "standins/built_files.h"
#include "standins/wait_until.h"
#include "tests/e2e/desktop_fixture.h"
#include "tests/e2e/equipped_kelvaro.h"

// The shipped programs are gone soon after they have done the last thing that a user sees.

namespace {

using Clock = std::chrono::steady_clock;
using Standins::waitUntil;

constexpr std::chrono::seconds kLongestEnd(2);
constexpr std::chrono::seconds kLongestStart(60);

/// Starts and ends in each mode of the program; twice as many of the report.
int rounds() {
    return std::getenv("KELVARO_ALL") != nullptr ? 150 : 5;
}

class ProgramEnd : public EquippedKelvaro {
protected:
    /// Waits for the end of a program whose last sign a user has just seen. `start` is the time from its
    /// start to its first sign, in which it does more than at its end: on a busy machine the end may take as
    /// long. A program that hangs lets the test run out of time: what it hangs in is kept then
    /// (scripts/watched_ctest.py).
    void expectEnd(const ChildProcess& program, Clock::duration start) {
        const auto begin = Clock::now();
        EXPECT_EQ(program.waitForExit(std::chrono::milliseconds(INFINITE)), DWORD{0});
        const Clock::duration end = Clock::now() - begin;
        EXPECT_LE(end, std::max<Clock::duration>(kLongestEnd, start))
            << "in ms: start " << inMs(start) << ", end " << inMs(end);
        longestStart_ = std::max(longestStart_, start);
        longestEnd_ = std::max(longestEnd_, end);
    }

    void TearDown() override {
        std::printf("longest start %lld ms, longest end %lld ms\n", inMs(longestStart_), inMs(longestEnd_));
    }

    static long long inMs(Clock::duration duration) {
        return std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
    }

private:
    Clock::duration longestStart_{};
    Clock::duration longestEnd_{};
};

TEST_F(ProgramEnd, OnTheDesktopComesWithinTwoSecondsOfTheWindowsEnd) {
    const LcdRegistrationScope noLcd(L"");
    for (int i = 0; i < rounds(); ++i) {
        const auto begin = Clock::now();
        const ChildProcess program(machine.program());
        const HWND window = waitForPreview(program, kLongestStart);
        ASSERT_NE(window, nullptr);
        const Clock::duration start = Clock::now() - begin;
        PostMessageW(window, WM_COMMAND, Panelix::kCommandExit, 0);
        ASSERT_TRUE(waitFor([window] { return IsWindow(window) == FALSE; }, kLongestStart));
        expectEnd(program, start);
    }
}

TEST_F(ProgramEnd, OnTheKeyboardComesWithinTwoSecondsOfTheLastFrame) {
    for (int i = 0; i < rounds(); ++i) {
        const std::uint64_t framesBefore = keyboard.frameCount();
        // Main page, audio device page, options page, its last line. Pages take presses while they slide in.
        for (const int buttons : {Panelix::LcdSdk::kButtonMenu,
                                  Panelix::LcdSdk::kButtonRight,
                                  Panelix::LcdSdk::kButtonDown,
                                  0,
                                  Panelix::LcdSdk::kButtonDown,
                                  Panelix::LcdSdk::kButtonOk}) {
            ASSERT_TRUE(keyboard.addScriptStep(static_cast<std::uint32_t>(buttons), 1));
        }
        const auto begin = Clock::now();
        const ChildProcess program(machine.program());
        ASSERT_TRUE(waitUntil([&] { return keyboard.frameCount() > framesBefore; }, kLongestStart));
        const Clock::duration start = Clock::now() - begin;
        // The frame of the pass in which the last button is pressed is the last one.
        ASSERT_TRUE(waitUntil([&] { return keyboard.scriptDone(); }, kLongestStart));
        expectEnd(program, start);
    }
}

/// A report that runs, with its output in a pipe.
class PipedReport {
public:
    explicit PipedReport(const std::wstring& program) {
        SECURITY_ATTRIBUTES inheritable{sizeof(inheritable), nullptr, TRUE};
        Panelix::UniqueHandle write;
        EXPECT_NE(CreatePipe(read_.put(), write.put(), &inheritable, kMoreThanTheText), FALSE);
        SetHandleInformation(read_.get(), HANDLE_FLAG_INHERIT, 0);
        program_.emplace(program, std::wstring(), nullptr, write.get());
    }

    /// Reads to the last line, or to the end when that does not come.
    std::string text() const {
        std::string text;
        std::array<char, 4096> part{};
        DWORD size = 0;
        while (!text.ends_with("verything could be looked at.\r\n") &&
               ReadFile(read_.get(), part.data(), static_cast<DWORD>(part.size()), &size, nullptr) != FALSE) {
            text.append(part.data(), size);
        }
        return text;
    }

    const ChildProcess& program() const { return *program_; }

private:
    static constexpr DWORD kMoreThanTheText = 1 << 16;

    Panelix::UniqueHandle read_;
    std::optional<ChildProcess> program_;
};

TEST_F(ProgramEnd, OfTheReportComesWithinTwoSecondsOfItsLastLine) {
    constexpr int kAtOnce = 10;
    const std::wstring program =
        machine.program().substr(0, machine.program().find_last_of(L'\\')) + L"\\KelvaroReport.exe";
    ASSERT_NE(CopyFileW((Standins::outputFolder() / L"KelvaroReport.exe").c_str(), program.c_str(), FALSE),
              FALSE);
    for (int i = 0; i < rounds(); i += kAtOnce / 2) {
        const auto begin = Clock::now();
        std::array<std::optional<PipedReport>, kAtOnce> reports;
        for (std::optional<PipedReport>& report : reports) {
            report.emplace(program);
        }
        Clock::duration start{};
        for (const std::optional<PipedReport>& report : reports) {
            EXPECT_THAT(report->text(), testing::EndsWith("\r\nEverything could be looked at.\r\n"));
            if (start == Clock::duration::zero()) {
                start = Clock::now() - begin;
            }
            expectEnd(report->program(), start);
        }
    }
}

}  // namespace
