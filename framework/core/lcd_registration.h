#pragma once

#include <windows.h>

#include <array>
#include <cstddef>

namespace Panelix {

/// Longest path that is taken from the registration, in characters, terminator included.
inline constexpr std::size_t kLcdLibraryPathCapacity = 260;

/// Ends in a zero once it was read.
using LcdLibraryPath = std::array<wchar_t, kLcdLibraryPathCapacity>;

/// Reads the path under which the vendor's LCD manager has registered its library. ERROR_SUCCESS, or what the
/// registry answered; ERROR_MORE_DATA for a path that does not fit, with its terminator, into `path`.
LSTATUS readLcdLibraryPath(LcdLibraryPath& path);

/// Loads the library at a path of the registration, in which slashes count as backslashes; null, with the
/// reason as the thread's last error, when it does not load. Nothing is taken from the current directory or
/// along PATH, where anybody may have put it: neither the library nor what it needs itself.
HMODULE loadLcdModule(const wchar_t* path);

}  // namespace Panelix
