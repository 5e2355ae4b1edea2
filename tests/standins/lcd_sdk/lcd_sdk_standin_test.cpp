#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "framework/core/lcd_sdk_abi.h"
#include "standins/lcd_sdk/virtual_g19.h"
#include "standins/call_log.h"
#include "standins/vendor_libraries.h"
#include "tests/standins/lcd_sdk/loaded_lcd_sdk.h"
#include "tests/support/standin_session.h"

namespace {

using namespace Panelix;
using Standins::LcdCall;
using Standins::VirtualG19;
using testing::ElementsAre;

constexpr std::array<const char*, 10> kExports = {
    "LogiLcdInit",
    "LogiLcdIsConnected",
    "LogiLcdIsButtonPressed",
    "LogiLcdUpdate",
    "LogiLcdShutdown",
    "LogiLcdMonoSetBackground",
    "LogiLcdMonoSetText",
    "LogiLcdColorSetBackground",
    "LogiLcdColorSetTitle",
    "LogiLcdColorSetText",
};

constexpr int kUp = 0x1000;
constexpr int kDown = 0x2000;
constexpr int kMenu = 0x4000;

// A base, so that it comes before the members that open the record.
class LcdSdkStandin : public testing::Test, private StandinSession {
protected:
    void SetUp() override {
        ASSERT_TRUE(library.isLoaded()) << GetLastError();
        for (const char* name : kExports) {
            ASSERT_NE(library.find<void()>(name), nullptr) << name;
        }
    }

    bool init(const wchar_t* name = L"Kelvaro", int type = 2) {
        return library.find<LcdSdk::LogiLcdInit>("LogiLcdInit")(name, type);
    }
    void update() { library.find<LcdSdk::LogiLcdUpdate>("LogiLcdUpdate")(); }
    void shutdown() { library.find<LcdSdk::LogiLcdShutdown>("LogiLcdShutdown")(); }
    bool isDown(int button) {
        return library.find<LcdSdk::LogiLcdIsButtonPressed>("LogiLcdIsButtonPressed")(button);
    }
    bool setBackground(std::uint8_t value) {
        std::vector<std::uint8_t> pixels(LcdSdk::kColorFrameBytes, value);
        return library.find<LcdSdk::LogiLcdColorSetBackground>("LogiLcdColorSetBackground")(pixels.data());
    }

    VirtualG19 keyboard;
    LoadedLcdSdk library{Standins::vendorLibraryPath(Standins::VendorLibrary::LcdSdk)};
};

TEST_F(LcdSdkStandin, InitKeepsNameTypeAndProcess) {
    EXPECT_EQ(keyboard.state(), Standins::KeyboardState::Waiting);
    EXPECT_TRUE(init(L"Some applet", 2));
    EXPECT_EQ(keyboard.initRecord().name, L"Some applet");
    EXPECT_EQ(keyboard.initRecord().type, 2);
    EXPECT_EQ(keyboard.processId(), GetCurrentProcessId());
    EXPECT_EQ(keyboard.state(), Standins::KeyboardState::Running);
}

TEST_F(LcdSdkStandin, InitTakesNoNameAndCutsALongOne) {
    EXPECT_TRUE(init(nullptr));
    EXPECT_EQ(keyboard.initRecord().name, L"");
    EXPECT_TRUE(init(std::wstring(500, L'x').c_str()));
    EXPECT_EQ(keyboard.initRecord().name, std::wstring(127, L'x'));
    EXPECT_TRUE(init(L"short"));
    EXPECT_EQ(keyboard.initRecord().name, L"short");
}

TEST_F(LcdSdkStandin, RefusedInitAnswersFalseAndIsRecorded) {
    keyboard.setRefuseInit(true);
    EXPECT_FALSE(init());
    EXPECT_EQ(keyboard.initRecord().name, L"Kelvaro");
    EXPECT_EQ(keyboard.callCount(LcdCall::Init), 1u);
    EXPECT_EQ(keyboard.state(), Standins::KeyboardState::Waiting);
    keyboard.setRefuseInit(false);
    EXPECT_TRUE(init());
}

TEST_F(LcdSdkStandin, EveryCallIsCountedUnderItsOwnName) {
    init();
    std::vector<std::uint8_t> bitmap(LcdSdk::kColorFrameBytes);
    std::wstring text = L"text";
    library.find<LcdSdk::LogiLcdIsConnected>(kExports[1])(2);
    isDown(kUp);
    isDown(kDown);
    update();
    library.find<LcdSdk::LogiLcdMonoSetBackground>(kExports[5])(bitmap.data());
    library.find<LcdSdk::LogiLcdMonoSetText>(kExports[6])(1, text.data());
    library.find<LcdSdk::LogiLcdColorSetBackground>(kExports[7])(bitmap.data());
    library.find<LcdSdk::LogiLcdColorSetTitle>(kExports[8])(text.data(), 1, 2, 3);
    library.find<LcdSdk::LogiLcdColorSetText>(kExports[9])(4, text.data(), 1, 2, 3);
    shutdown();

    const std::array<std::uint64_t, 10> expected = {1, 1, 2, 1, 1, 1, 1, 1, 1, 1};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(keyboard.callCount(static_cast<LcdCall>(i)), expected[i]) << kExports[i];
    }
}

TEST_F(LcdSdkStandin, CallsAreLoggedInOrderWithArgumentAndTime) {
    init();
    isDown(kMenu);
    update();
    shutdown();
    const std::vector<Standins::LcdCallEntry> calls = keyboard.calls();
    ASSERT_EQ(calls.size(), 4u);
    EXPECT_EQ(calls[0].call, LcdCall::Init);
    EXPECT_EQ(calls[0].argument, 2u);
    EXPECT_EQ(calls[1].call, LcdCall::IsButtonPressed);
    EXPECT_EQ(calls[1].argument, 0x4000u);
    EXPECT_EQ(calls[2].call, LcdCall::Update);
    EXPECT_EQ(calls[3].call, LcdCall::Shutdown);
    for (std::size_t i = 1; i < calls.size(); ++i) {
        EXPECT_LE(calls[i - 1].timeUs, calls[i].timeUs);
    }
}

TEST_F(LcdSdkStandin, CallLogKeepsTheNewestCalls) {
    init();
    for (std::size_t i = 0; i < Standins::CallLog::kLength; ++i) {
        isDown(static_cast<int>(i));
    }
    const std::vector<Standins::LcdCallEntry> calls = keyboard.calls();
    ASSERT_EQ(calls.size(), Standins::CallLog::kLength);
    EXPECT_EQ(calls.front().argument, 0u);
    EXPECT_EQ(calls.back().argument, Standins::CallLog::kLength - 1);
}

TEST_F(LcdSdkStandin, NothingIsShownOutsideInitAndShutdown) {
    EXPECT_FALSE(setBackground(1));
    update();
    keyboard.setHeldButtons(0x1000);
    EXPECT_FALSE(isDown(kUp));
    init();
    EXPECT_TRUE(isDown(kUp));
    shutdown();
    EXPECT_EQ(keyboard.state(), Standins::KeyboardState::Ended);
    EXPECT_FALSE(setBackground(2));
    update();
    EXPECT_FALSE(isDown(kUp));
    EXPECT_EQ(keyboard.frameCount(), 0u);
}

TEST_F(LcdSdkStandin, FrameIsShownByTheUpdateThatFollowsIt) {
    init();
    EXPECT_TRUE(setBackground(7));
    EXPECT_FALSE(keyboard.lastFrame().has_value());
    update();
    const auto frame = keyboard.lastFrame();
    ASSERT_TRUE(frame.has_value());
    EXPECT_EQ(frame->sequence, 1u);
    EXPECT_EQ(frame->pass, 1u);
    EXPECT_EQ(frame->pixels, std::vector<std::uint8_t>(LcdSdk::kColorFrameBytes, 7));
    EXPECT_EQ(frame->checksum, Standins::frameChecksum(frame->pixels.data(), frame->pixels.size()));
}

TEST_F(LcdSdkStandin, SecondFrameOfAPassReplacesTheFirst) {
    init();
    setBackground(1);
    setBackground(2);
    update();
    EXPECT_EQ(keyboard.frameCount(), 1u);
    EXPECT_EQ(keyboard.lastFrame()->pixels[0], 2);
}

TEST_F(LcdSdkStandin, UpdateWithoutAFrameShowsNoNewOne) {
    init();
    setBackground(1);
    update();
    update();
    EXPECT_EQ(keyboard.frameCount(), 1u);
    EXPECT_EQ(keyboard.passCount(), 2u);
    setBackground(2);
    update();
    EXPECT_EQ(keyboard.lastFrame()->pass, 3u);
}

TEST_F(LcdSdkStandin, NoFrameAtAllIsRefused) {
    init();
    EXPECT_FALSE(library.find<LcdSdk::LogiLcdColorSetBackground>("LogiLcdColorSetBackground")(nullptr));
    update();
    EXPECT_EQ(keyboard.frameCount(), 0u);
}

TEST_F(LcdSdkStandin, TheNewest64FramesCanBeReadBackWhole) {
    init();
    for (int i = 1; i <= 100; ++i) {
        setBackground(static_cast<std::uint8_t>(i));
        update();
    }
    // The next frame is being written: it must not cost one of the 64.
    setBackground(101);
    EXPECT_FALSE(keyboard.frame(0).has_value());
    EXPECT_FALSE(keyboard.frame(36).has_value());
    for (std::uint64_t sequence = 37; sequence <= 100; ++sequence) {
        const auto frame = keyboard.frame(sequence);
        ASSERT_TRUE(frame.has_value()) << sequence;
        EXPECT_EQ(frame->sequence, sequence);
        EXPECT_EQ(frame->pixels.front(), sequence);
        EXPECT_EQ(frame->pixels.back(), sequence);
    }
    EXPECT_FALSE(keyboard.frame(101).has_value());
}

TEST_F(LcdSdkStandin, HeldButtonsAreReportedUntilReleased) {
    init();
    keyboard.setHeldButtons(0x1000 | 0x4000);
    for (int pass = 0; pass < 3; ++pass) {
        EXPECT_TRUE(isDown(kUp));
        EXPECT_TRUE(isDown(kMenu));
        EXPECT_FALSE(isDown(kDown));
        update();
    }
    keyboard.setHeldButtons(0);
    EXPECT_FALSE(isDown(kUp));
}

TEST_F(LcdSdkStandin, ScriptedPressLastsAsManyPassesAsItSays) {
    EXPECT_TRUE(keyboard.addScriptStep(0, 2));
    EXPECT_TRUE(keyboard.addScriptStep(0x1000, 10));
    init();
    std::vector<int> passesDown;
    for (int pass = 1; pass <= 20; ++pass) {
        // However often a pass asks, the answer is the same.
        const bool down = isDown(kUp);
        EXPECT_EQ(isDown(kUp), down);
        if (down) {
            passesDown.push_back(pass);
        }
        EXPECT_EQ(keyboard.scriptDone(), pass > 12);
        update();
    }
    EXPECT_THAT(passesDown, ElementsAre(3, 4, 5, 6, 7, 8, 9, 10, 11, 12));
}

TEST_F(LcdSdkStandin, ScriptQueuedDuringAPassStartsWithTheNext) {
    init();
    EXPECT_FALSE(isDown(kUp));
    keyboard.addScriptStep(0x1000, 1);
    EXPECT_FALSE(isDown(kUp));
    update();
    EXPECT_TRUE(isDown(kUp));
    update();
    EXPECT_FALSE(isDown(kUp));
    EXPECT_TRUE(keyboard.scriptDone());
}

TEST_F(LcdSdkStandin, ScriptStepsFollowEachOtherWithoutAGap) {
    keyboard.addScriptStep(0x1000, 1);
    keyboard.addScriptStep(0x2000 | 0x4000, 2);
    keyboard.addScriptStep(0x1000, 1);
    init();
    std::vector<std::uint32_t> buttons;
    for (int pass = 0; pass < 5; ++pass) {
        setBackground(0);
        update();
        buttons.push_back(keyboard.lastFrame()->buttons);
    }
    EXPECT_THAT(buttons, ElementsAre(0x1000u, 0x6000u, 0x6000u, 0x1000u, 0u));
}

TEST_F(LcdSdkStandin, ScriptRefusesStepsOfNoPassAndMoreThanItHolds) {
    EXPECT_FALSE(keyboard.addScriptStep(0x1000, 0));
    EXPECT_TRUE(keyboard.scriptDone());
    for (std::size_t i = 0; i < VirtualG19::kScriptLength; ++i) {
        ASSERT_TRUE(keyboard.addScriptStep(0x1000, 1));
    }
    EXPECT_FALSE(keyboard.addScriptStep(0x1000, 1));
    init();
    update();
    EXPECT_TRUE(keyboard.addScriptStep(0x1000, 1));
}

TEST_F(LcdSdkStandin, ConnectedAnswersForTheColourLcdOnly) {
    const auto isConnected = library.find<LcdSdk::LogiLcdIsConnected>("LogiLcdIsConnected");
    EXPECT_FALSE(isConnected(2));
    init();
    EXPECT_TRUE(isConnected(2));
    EXPECT_FALSE(isConnected(1));
    keyboard.setConnected(false);
    EXPECT_FALSE(isConnected(2));
}

TEST_F(LcdSdkStandin, RecordGoesOnWhenAnotherProgramStarts) {
    init(L"first");
    setBackground(1);
    update();
    shutdown();
    EXPECT_TRUE(init(L"second"));
    EXPECT_EQ(keyboard.state(), Standins::KeyboardState::Running);
    setBackground(2);
    update();
    EXPECT_EQ(keyboard.lastFrame()->sequence, 2u);
    EXPECT_EQ(keyboard.initRecord().name, L"second");
}

TEST(LcdSdkVariants, EachLacksExactlyTheExportItIsNamedAfter) {
    Standins::useOwnSession();
    for (const char* missing : kExports) {
        const LoadedLcdSdk library(
            Standins::vendorLibraryPath(Standins::VendorLibrary::LcdSdk, std::string("without_") + missing));
        ASSERT_TRUE(library.isLoaded()) << missing;
        for (const char* name : kExports) {
            EXPECT_EQ(library.find<void()>(name) == nullptr, name == missing)
                << name << " without " << missing;
        }
    }
}

}  // namespace
