#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <string>

#include "app/kelvaro.h"
#include "framework/core/lcd_sdk_abi.h"
#include "tests/endurance/machine_clocks.h"
#include "tests/endurance/restless_machine.h"
#include "tests/endurance/side_script.h"
#include "tests/framework/core/lcd_fixture.h"
#include "tests/support/temporary_folder.h"

/// The real application object in its real loop, at full speed: time is virtual, so a sleep is over at once,
/// and in each sleep the test does what users, devices and clocks do.
class FullSpeedKelvaro : public WithKeyboard {
protected:
    explicit FullSpeedKelvaro(GraphicsCard card);

    /// Runs the application while `plan` is carried out, and to its end by Exit Applet. `plan` calls pass()
    /// and what uses it; it must not throw.
    void run(const std::function<void()>& plan);

    /// The program makes a pass.
    void pass() { script_->pause(); }
    void pass(unsigned count);

    /// Holds the buttons for some passes, and none for one.
    void press(std::uint32_t buttons, unsigned passes = 1);

    /// CANCEL leads from the options page to the audio device page, from there to the main page, and does
    /// nothing on it.
    void goHome();

    std::uint64_t frameChecksum() const { return keyboard.lastFrame()->checksum; }

    /// Called at the end of each pass, before the plan goes on.
    std::function<void()> onPass;

    /// Passes so far.
    unsigned passes_ = 0;
    /// Null while the application does not run.
    Kelvaro* kelvaro_ = nullptr;
    TemporaryFolder documents_;
    MachineClocks clocks_;
    RestlessMachine machine_;

private:
    void endPass();
    void exitApplet();

    SideScript* script_ = nullptr;
    unsigned passesAfterTheEnd_ = 0;
};
