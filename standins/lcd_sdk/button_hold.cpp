#include "standins/lcd_sdk/button_hold.h"

#include "standins/lcd_sdk/keyboard_buttons.h"

namespace Standins {

namespace {

// The pass that is running may have polled already; the one after it polls while the button is down.
constexpr std::uint64_t kPassesToBeSeen = 2;
// A program that does not go on (it shows a dialog, or has ended) must not leave the button stuck.
constexpr std::uint64_t kLongestWaitMs = 250;

}  // namespace

void ButtonHold::press(std::uint32_t mask, PressSource source, std::uint64_t passes, std::uint64_t nowMs) {
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        if ((kKeyboardButtons[i].mask & mask) != 0) {
            Button& button = buttons_[i];
            button.sources |= static_cast<std::uint32_t>(source);
            button.waiting = true;
            button.pressPass = passes;
            button.pressMs = nowMs;
        }
    }
}

void ButtonHold::release(std::uint32_t mask, PressSource source) {
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        if ((kKeyboardButtons[i].mask & mask) != 0) {
            buttons_[i].sources &= ~static_cast<std::uint32_t>(source);
        }
    }
}

void ButtonHold::releaseSource(PressSource source) {
    for (Button& button : buttons_) {
        button.sources &= ~static_cast<std::uint32_t>(source);
    }
}

void ButtonHold::releaseAll() {
    buttons_ = {};
}

std::uint32_t ButtonHold::buttonsDown(std::uint64_t passes, std::uint64_t nowMs) {
    std::uint32_t mask = 0;
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        Button& button = buttons_[i];
        button.waiting = button.waiting && passes < button.pressPass + kPassesToBeSeen &&
                         nowMs < button.pressMs + kLongestWaitMs;
        if (button.sources != 0 || button.waiting) {
            mask |= kKeyboardButtons[i].mask;
        }
    }
    return mask;
}

}  // namespace Standins
