#pragma once

#include "standins/core_audio/virtual_audio.h"
#include "standins/core_temp/virtual_core_temp.h"
#include "standins/nvapi/virtual_nvidia.h"
#include "standins/simulator/simulation.h"
#include "standins/xinput/virtual_gamepad.h"

namespace Standins {

/// The records of all vendor stand-ins but the keyboard's, filled with one simulated machine. They exist for
/// the other processes as long as this object lives.
class SimulatedMachine {
public:
    /// Throws std::runtime_error when the records cannot be had.
    SimulatedMachine();

    /// Brings every figure to the given moment. The sound devices are left to the buttons, but for a change
    /// of volume every 15 seconds, as by another program.
    void setTime(double seconds);

private:
    void setCpu(const SimulatedFigures& figures);
    void setGpu(const SimulatedFigures& figures);
    void setMails(const SimulatedFigures& figures);
    void moveVolume(double seconds);

    VirtualCoreTemp coreTemp_;
    VirtualNvidia nvidia_;
    VirtualGamepads gamepads_;
    VirtualAudio audio_;
    int volumeMoves_ = 0;
};

/// Removes the mail account that the simulation keeps in the current user's registry.
void removeSimulatedMail();

}  // namespace Standins
