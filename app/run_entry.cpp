#include "app/run_entry.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr std::string_view kDelayOption = "-delay";

template <typename Character>
bool isDigit(Character character) {
    return character >= Character{'0'} && character <= Character{'9'};
}

}  // namespace

std::string runEntryText(const std::string& path, std::uint32_t delaySeconds) {
    std::string text = '"' + path + '"';
    if (delaySeconds != 0) {
        text.append(" ").append(kDelayOption).append(std::to_string(delaySeconds));
    }
    return text;
}

std::uint32_t runEntryDelay(std::string_view text) {
    const std::size_t option = text.find(kDelayOption);
    if (option == std::string_view::npos) {
        return 0;
    }
    const std::string_view digits = text.substr(option + kDelayOption.size());
    if (digits.empty() || !std::all_of(digits.begin(), digits.end(), isDigit<char>)) {
        return 0;
    }
    // The range of the number that the program's start takes. A number beyond it leaves the 0.
    std::int32_t seconds = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), seconds);
    return static_cast<std::uint32_t>(seconds);
}

std::optional<std::uint32_t> typedDelay(std::wstring_view text) {
    if (!std::all_of(text.begin(), text.end(), isDigit<wchar_t>)) {
        return std::nullopt;
    }
    std::uint32_t seconds = 0;
    for (const wchar_t digit : text) {
        seconds = seconds * 10 + static_cast<std::uint32_t>(digit - L'0');
    }
    return seconds;
}
