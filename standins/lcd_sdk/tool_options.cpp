#include "standins/lcd_sdk/tool_options.h"

#include <algorithm>

#include "standins/lcd_sdk/keyboard_buttons.h"

namespace Standins {

namespace {

constexpr int kLongestSeconds = 3600;

// Options, numbers and button names are ASCII; whatever is not shows as a question mark in a message.
std::string toAscii(const std::wstring& text) {
    std::string ascii;
    std::transform(text.begin(), text.end(), std::back_inserter(ascii), [](wchar_t character) {
        return character < 0x80 ? static_cast<char>(character) : '?';
    });
    return ascii;
}

std::chrono::seconds parseSeconds(const std::wstring& text, const std::string& option) {
    constexpr std::size_t kLongestDigits = 4;
    const bool isNumber =
        !text.empty() && text.size() <= kLongestDigits &&
        std::all_of(text.begin(), text.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
    const int value = isNumber ? std::stoi(text) : -1;
    if (value < 0 || value > kLongestSeconds) {
        throw std::invalid_argument(option + " takes a whole number of seconds from 0 to " +
                                    std::to_string(kLongestSeconds) + ", not '" + toAscii(text) + "'");
    }
    return std::chrono::seconds(value);
}

}  // namespace

ToolOptions parseToolOptions(const std::vector<std::wstring>& arguments) {
    ToolOptions options;
    bool hasAction = false;
    bool hasShotOption = false;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string option = toAscii(arguments[i]);
        const auto value = [&]() -> const std::wstring& {
            if (i + 1 == arguments.size()) {
                throw std::invalid_argument(option + " needs a value");
            }
            return arguments[++i];
        };
        const auto act = [&](ToolAction action) {
            if (hasAction) {
                throw std::invalid_argument(option + " does not go together with another action");
            }
            options.action = action;
            hasAction = true;
        };
        if (option == "--help" || option == "-h" || option == "/?") {
            return {};
        }
        if (option == "--register") {
            act(ToolAction::Register);
        } else if (option == "--unregister") {
            act(ToolAction::Unregister);
        } else if (option == "--shot") {
            act(ToolAction::Shot);
            options.shotFile = value();
        } else if (option == "--force") {
            options.force = true;
        } else if (option == "--seconds") {
            options.runTime = parseSeconds(value(), option);
            hasShotOption = true;
        } else if (option == "--wait") {
            options.startLimit = parseSeconds(value(), option);
            hasShotOption = true;
        } else if (option == "--press") {
            options.presses = parsePressList(toAscii(value()));
            hasShotOption = true;
        } else {
            throw std::invalid_argument("unknown option '" + option + "'; --help lists the options");
        }
    }
    if (!hasAction) {
        throw std::invalid_argument("nothing to do; --help lists the options");
    }
    if (options.force && options.action == ToolAction::Shot) {
        throw std::invalid_argument("--force goes together with --register and --unregister only");
    }
    if (hasShotOption && options.action != ToolAction::Shot) {
        throw std::invalid_argument("--seconds, --press and --wait go together with --shot only");
    }
    return options;
}

std::wstring toolHelp() {
    return LR"(virtual_g19_tool: the virtual G19 keyboard without its window

  --register [--force]
      Registers the LogitechLcd.dll beside this program as the keyboard's LCD library, so that
      Kelvaro draws on the virtual keyboard. Needs administrator's rights on Windows. A library
      that is registered already is replaced with --force only.
  --unregister [--force]
      Takes that back.
  --shot FILE.png [--seconds N] [--press LIST] [--wait N]
      Waits until Kelvaro draws (at most the --wait seconds, 30 by default), lets it run for
      --seconds (1 by default), presses the buttons in LIST one after the other, each time
      giving a page slide the time to finish, and saves the LCD's picture.
      LIST is like menu,right,down,ok; the buttons are up, right, down, left, menu, ok, cancel.
  --help
      Prints this.

virtual_g19 (without "_tool") shows the keyboard in a window.
Exit codes: 0 done, 1 failed, 2 wrong options.
)";
}

}  // namespace Standins
