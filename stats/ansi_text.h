#pragma once

#include <string>
#include <string_view>

/// The text, which is in the system's ANSI code page, as UTF-16. Bytes that the code page does not know
/// become its replacement character; empty when the system cannot convert.
std::wstring wideFromAnsi(std::string_view text);

/// A text field of fixed size up to its terminator, or whole when it has none.
template <std::size_t size>
std::string_view textOfField(const char (&field)[size]) {
    return std::string_view(field, size).substr(0, std::string_view(field, size).find('\0'));
}
