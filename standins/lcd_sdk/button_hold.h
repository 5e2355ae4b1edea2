#pragma once

#include <array>
#include <cstdint>

namespace Standins {

/// What holds a button down.
enum class PressSource : std::uint32_t { Mouse = 1, Key = 2 };

/// Which buttons the viewer holds down. A button stays down for as long as the mouse or its key does, and not
/// shorter than the program needs to see it: a quick click is over before the next pass polls the buttons.
class ButtonHold {
public:
    /// `passes` is the number of passes that the program has finished, `nowMs` any steady clock.
    void press(std::uint32_t mask, PressSource source, std::uint64_t passes, std::uint64_t nowMs);
    void release(std::uint32_t mask, PressSource source);
    /// Lets go of what that source holds, whichever button it is.
    void releaseSource(PressSource source);
    /// Lets go of everything at once, quick clicks included.
    void releaseAll();

    /// The masks of the buttons that are down at this moment.
    std::uint32_t buttonsDown(std::uint64_t passes, std::uint64_t nowMs);

private:
    struct Button {
        std::uint32_t sources = 0;  // PressSource bits
        bool waiting = false;       // pressed, and perhaps not seen by the program yet
        std::uint64_t pressPass = 0;
        std::uint64_t pressMs = 0;
    };

    std::array<Button, 7> buttons_{};  // in the order of kKeyboardButtons
};

}  // namespace Standins
