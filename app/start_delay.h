#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// The wait that the option "-delay" asks for, in milliseconds, from the whole command line; nothing when the
/// option is not there. The first "-delay" anywhere in the line counts, within a path or a longer word too,
/// and the number after it may follow directly or after blanks.
///
/// The number is taken in seconds and multiplied in 32-bit arithmetic, without a range check: a negative one
/// waits for weeks. Throws std::invalid_argument without a number and std::out_of_range for one beyond 32
/// bits.
std::optional<std::uint32_t> startDelayMs(const std::wstring& commandLine);
