#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "standins/adl/virtual_radeon.h"
#include "standins/core_audio/virtual_audio.h"
#include "standins/core_temp/virtual_core_temp.h"
#include "standins/nvapi/virtual_nvidia.h"
#include "standins/xinput/virtual_gamepad.h"
#include "tests/hostile/random_inputs.h"

/// Every vendor's stand-in with answers that no vendor would give: random results, counts beyond arrays,
/// names without end, numbers that are none, handles that change.
class Garbage {
public:
    /// Other answers from now on.
    void choose(RandomInputs& inputs);

    /// Answers as of a machine in order, with an NVIDIA card.
    void makeUsual();

    /// One function per kind of call: it makes that call take so many milliseconds in a sampling pass.
    std::vector<std::function<void(std::uint32_t)>> durations();

private:
    void chooseCoreTemp(RandomInputs& inputs);
    void chooseNvidia(RandomInputs& inputs);
    void chooseRadeon(RandomInputs& inputs);
    void chooseGamepad(RandomInputs& inputs);
    void chooseAudio(RandomInputs& inputs);

    Standins::VirtualCoreTemp coreTemp_;
    Standins::VirtualNvidia nvidia_;
    Standins::VirtualRadeon radeon_;
    Standins::VirtualGamepads gamepads_;
    Standins::VirtualAudio audio_;
};
