#pragma once

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace Standins {

enum class ToolAction { Help, Register, Unregister, Shot };

/// What the tool's command line asks for.
struct ToolOptions {
    ToolAction action = ToolAction::Help;
    bool force = false;
    /// Where the picture goes.
    std::wstring shotFile;
    /// How long the program runs before buttons are pressed.
    std::chrono::seconds runTime{1};
    /// How long to wait for the program's first picture.
    std::chrono::seconds startLimit{30};
    /// Masks of the buttons to press, in order.
    std::vector<std::uint32_t> presses;
};

/// Reads the arguments after the program's name. Throws std::invalid_argument, with a text for the user,
/// when they make no sense.
ToolOptions parseToolOptions(const std::vector<std::wstring>& arguments);

/// What --help prints.
std::wstring toolHelp();

}  // namespace Standins
