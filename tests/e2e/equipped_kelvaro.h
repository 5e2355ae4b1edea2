#pragma once

#include <optional>

#include "standins/core_audio/virtual_audio.h"
#include "standins/core_temp/virtual_core_temp.h"
#include "standins/nvapi/virtual_nvidia.h"
#include "standins/xinput/virtual_gamepad.h"
#include "tests/e2e/kelvaro_on_keyboard.h"
#include "tests/support/equipped_machine.h"
#include "tests/support/only_wine.h"

/// The shipped program on a machine with the stand-ins of all vendor libraries, whose records are empty at
/// first: no Core Temp, no graphics card, no sound device, no gamepad.
class EquippedKelvaro : public KelvaroOnTheKeyboard {
protected:
    void SetUp() override {
        SKIP_ON_WINDOWS_UNLESS(machine.isEquipped(), "the machine has a graphics driver of its own");
    }

    void start() { kelvaro.emplace(machine.program()); }

    EquippedMachine machine{kelvaroProgram()};
    Standins::VirtualCoreTemp coreTemp;
    Standins::VirtualNvidia nvidia;
    Standins::VirtualGamepads gamepads;
    Standins::VirtualAudio audio;
    /// Ended before the libraries go.
    std::optional<ChildProcess> kelvaro;
};
