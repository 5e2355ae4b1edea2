#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Start command of the program at `path`, as Windows runs it at logon: the path in quotes and, for a delay
/// other than 0, the option "-delay" with the seconds directly after it.
std::string runEntryText(const std::string& path, std::uint32_t delaySeconds);

/// Start delay in seconds that a start command asks for: the number after its first "-delay". 0 without the
/// option, when what follows it is anything else than digits, a blank included, and when the number is beyond
/// 2,147,483,647.
std::uint32_t runEntryDelay(std::string_view text);

/// Start delay in seconds that the user typed: 0 for an empty text, nothing for a text with anything else
/// than digits. `text` has at most 9 characters.
std::optional<std::uint32_t> typedDelay(std::wstring_view text);
