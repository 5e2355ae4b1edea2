#pragma once

#include <cstdint>
#include <limits>
#include <string_view>

/// A number read digit by digit, without regard to where it ends.
struct LeadingNumber {
    std::size_t digits = 0;
    /// Meaningless when it is beyond 40 bits.
    std::uint64_t value = 0;
    bool beyond40Bits = false;
};

/// The number that `text` begins with.
template <typename Character>
LeadingNumber leadingNumber(std::basic_string_view<Character> text) {
    constexpr std::uint64_t kMost = std::uint64_t{1} << 40U;
    LeadingNumber number;
    for (const Character character : text) {
        if (character < Character{'0'} || character > Character{'9'}) {
            break;
        }
        ++number.digits;
        number.value =
            number.beyond40Bits ? 0 : number.value * 10 + static_cast<std::uint64_t>(character - '0');
        number.beyond40Bits = number.beyond40Bits || number.value > kMost;
    }
    return number;
}
