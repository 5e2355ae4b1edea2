#include "standins/lcd_sdk/keyboard_buttons.h"

#include <algorithm>

namespace Standins {

namespace {

char lowerCase(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

std::uint32_t maskOf(std::string_view name) {
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(), lowerCase);
    std::string known;
    for (const KeyboardButton& button : kKeyboardButtons) {
        if (button.name == lower) {
            return button.mask;
        }
        known += (known.empty() ? "" : ", ") + std::string(button.name);
    }
    throw std::invalid_argument("'" + std::string(name) + "' is no button; there are " + known);
}

}  // namespace

std::vector<std::uint32_t> parsePressList(std::string_view list) {
    std::vector<std::uint32_t> masks;
    std::size_t begin = 0;
    while (true) {
        const std::size_t comma = list.find(',', begin);
        masks.push_back(maskOf(list.substr(begin, comma - begin)));
        if (comma == std::string_view::npos) {
            return masks;
        }
        begin = comma + 1;
    }
}

}  // namespace Standins
