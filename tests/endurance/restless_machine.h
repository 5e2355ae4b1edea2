#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

#include "framework/core/com_apartment.h"
#include "framework/core/unique_resource.h"
#include "standins/adl/virtual_radeon.h"
#include "standins/core_audio/loaded_core_audio.h"
#include "standins/core_audio/virtual_audio.h"
#include "standins/core_temp/virtual_core_temp.h"
#include "standins/nvapi/virtual_nvidia.h"
#include "standins/xinput/virtual_gamepad.h"
#include "tests/endurance/machine_clocks.h"
#include "tests/endurance/random_source.h"

enum class GraphicsCard { Nvidia, Amd };

/// The stand-ins of everything that the program takes its figures from, attached at once: Core Temp, the
/// drivers of both graphics vendors, of which one has a card, gamepads, Core Audio and the mail accounts, in
/// this process only. The registry must have been redirected, and the stand-ins' session be the test's own.
class RestlessMachine {
public:
    RestlessMachine(MachineClocks& clocks, GraphicsCard card);
    RestlessMachine(const RestlessMachine&) = delete;
    RestlessMachine& operator=(const RestlessMachine&) = delete;

    /// Everything is there and works, with figures that `reading`, any number, determines.
    void settleTo(unsigned reading);

    /// Only the figures of settleTo().
    void setFigures(unsigned reading);

    /// Percent, with the figures of a reading; the processors' load is what is left to 100.
    static int graphicsLoad(unsigned reading) { return static_cast<int>(reading * 7 % 101); }

    /// Makes another speaker the default one. Returns its volume in percent.
    std::uint32_t chooseOtherSpeakers();

    /// Something happens: a figure changes, a device comes, goes or fails, a notice arrives.
    void changeSomething(RandomSource& random);

    /// Ends what runs beside the program in threads of the stand-ins: their stacks are of this process, too.
    void calmDown() { strainAudio(0, false); }

    Standins::VirtualGamepads& gamepads() { return gamepads_; }
    Standins::VirtualAudio& audio() { return audio_; }

private:
    void changeCpu(RandomSource& random);
    void changeGraphics(RandomSource& random);
    void changeGamepad(RandomSource& random);
    void changeMail(RandomSource& random);
    void changeVolume(RandomSource& random);
    void sendNotice(RandomSource& random);
    void changeDevices(RandomSource& random);
    void failAudio(RandomSource& random);
    void strainAudio(std::uint32_t threads, bool keepsCallbacks);
    void setGraphics(int load, int temperature, std::uint32_t clockKHz, int memoryLoad);
    void clearGraphicsFailures();
    static void setMail(const wchar_t* account, DWORD count);

    MachineClocks& clocks_;
    GraphicsCard card_;
    Panelix::ComApartment com_;
    Standins::LoadedCoreAudio audioClasses_;
    std::vector<Panelix::UniqueModule> libraries_;
    Standins::VirtualCoreTemp coreTemp_;
    Standins::VirtualNvidia nvidia_;
    Standins::VirtualRadeon radeon_;
    Standins::VirtualGamepads gamepads_;
    Standins::VirtualAudio audio_;
    std::uint32_t speakers_;
    std::uint32_t microphone_;
    std::uint32_t floodThreads_ = 0;
    bool keepsCallbacks_ = false;
};
