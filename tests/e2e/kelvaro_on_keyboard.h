#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>

#include "framework/core/lcd_sdk_abi.h"
#include "standins/lcd_sdk/virtual_g19.h"
#include "standins/vendor_libraries.h"
#include "standins/wait_until.h"
#include "tests/e2e/kelvaro_program.h"
#include "tests/support/child_process.h"
#include "tests/support/lcd_registration.h"
#include "tests/support/standin_session.h"

/// A machine with a virtual keyboard on which the shipped program can be started.
class KelvaroOnTheKeyboard : public testing::Test {
protected:
    /// Passes that a slide takes, and some more for the new page to stand still.
    static constexpr std::uint64_t kSlidePasses = 12;

    /// Waits until the program has finished `count` passes since the keyboard exists.
    bool waitForPasses(std::uint64_t count) const {
        return Standins::waitUntil([&] { return keyboard.passCount() >= count; }, std::chrono::seconds(30));
    }

    /// Holds buttons for exactly two passes and waits until a slide that this may cause is over.
    void press(int mask) {
        ASSERT_TRUE(keyboard.addScriptStep(static_cast<std::uint32_t>(mask), 2));
        ASSERT_TRUE(keyboard.addScriptStep(0, 1));
        ASSERT_TRUE(Standins::waitUntil([&] { return keyboard.scriptDone(); }, std::chrono::seconds(30)));
        ASSERT_TRUE(waitForPasses(keyboard.passCount() + kSlidePasses));
    }

    /// From the main page through the audio device page to Exit Applet on the options page.
    void exitByButtons() {
        press(Panelix::LcdSdk::kButtonMenu);
        press(Panelix::LcdSdk::kButtonRight);
        press(Panelix::LcdSdk::kButtonDown);
        press(Panelix::LcdSdk::kButtonDown);
        ASSERT_TRUE(keyboard.addScriptStep(Panelix::LcdSdk::kButtonOk, 2));
    }

    StandinSession session;
    Standins::VirtualG19 keyboard;
    LcdRegistrationScope registration{Standins::vendorLibraryPath(Standins::VendorLibrary::LcdSdk)};
};
