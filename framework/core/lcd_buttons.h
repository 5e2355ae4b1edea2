#pragma once

#include <array>

namespace Panelix {

/// The seven buttons of the colour LCD, in the order in which they are polled and stored.
enum class LcdButton { Up, Right, Down, Left, Menu, Ok, Cancel };

inline constexpr std::size_t kLcdButtonCount = 7;

/// What one poll of the LCD's buttons gave: the record that pages read in every pass.
struct LcdButtons {
    /// True in the one pass in which the button went down.
    std::array<bool, kLcdButtonCount> pressed{};
    /// True while the button is down.
    std::array<bool, kLcdButtonCount> held{};

    bool isPressed(LcdButton button) const { return pressed[static_cast<std::size_t>(button)]; }
    bool isHeld(LcdButton button) const { return held[static_cast<std::size_t>(button)]; }
};

static_assert(sizeof(LcdButtons) == 14, "seven pressed flags, then seven held flags, one byte each");

}  // namespace Panelix
