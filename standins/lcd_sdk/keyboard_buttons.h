#pragma once

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "framework/core/lcd_sdk_abi.h"

namespace Standins {

struct KeyboardButton {
    std::string_view name;
    std::uint32_t mask;
};

/// The seven buttons of the LCD and the names by which a press list calls them.
inline constexpr std::array<KeyboardButton, 7> kKeyboardButtons = {{
    {"up", Panelix::LcdSdk::kButtonUp},
    {"right", Panelix::LcdSdk::kButtonRight},
    {"down", Panelix::LcdSdk::kButtonDown},
    {"left", Panelix::LcdSdk::kButtonLeft},
    {"menu", Panelix::LcdSdk::kButtonMenu},
    {"ok", Panelix::LcdSdk::kButtonOk},
    {"cancel", Panelix::LcdSdk::kButtonCancel},
}};

/// The masks of the buttons in a list such as "menu,right,ok", in its order. Case does not matter. Throws
/// std::invalid_argument, with a text for the user, on a name that is no button (an empty one included).
std::vector<std::uint32_t> parsePressList(std::string_view list);

}  // namespace Standins
