#pragma once

#include <initializer_list>

#include "framework/core/lcd_buttons.h"

/// Buttons that went down in this pass, but are not marked as held.
inline Panelix::LcdButtons pressed(std::initializer_list<Panelix::LcdButton> buttons) {
    Panelix::LcdButtons result;
    for (const Panelix::LcdButton button : buttons) {
        result.pressed[static_cast<std::size_t>(button)] = true;
    }
    return result;
}

/// Buttons that are down since an earlier pass.
inline Panelix::LcdButtons held(std::initializer_list<Panelix::LcdButton> buttons) {
    Panelix::LcdButtons result;
    for (const Panelix::LcdButton button : buttons) {
        result.held[static_cast<std::size_t>(button)] = true;
    }
    return result;
}

/// Buttons as the LCD reports them in the pass in which they go down.
inline Panelix::LcdButtons down(std::initializer_list<Panelix::LcdButton> buttons) {
    Panelix::LcdButtons result = pressed(buttons);
    result.held = result.pressed;
    return result;
}
