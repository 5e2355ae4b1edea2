#pragma once

#include <cstdint>
#include <string>

/// Reads the two settings from the program's entry under the current user's Run key: whether it starts with
/// Windows (the entry is there), and after how many seconds; a delay beyond 2,147,483,647 seconds reads as 0.
/// False, with both outputs as they were, when the key cannot be opened or the entry cannot be read (it has
/// more than 260 bytes, say).
bool ReadSettings(bool& autostart, std::uint32_t& delaySeconds);

/// Writes the entry, or deletes it when `autostart` is not set; deleting what is not there succeeds. False
/// when the registry refuses, and, with nothing written, when the program's path cannot be found.
bool WriteSettings(const bool& autostart, const std::uint32_t& delaySeconds);

/// Path of the installed program, in the ANSI code page: the installation folder that the installer left in
/// the registry, with "\Kelvaro.exe". False, with `path` as it was, when there is no such entry or the file
/// cannot be opened.
bool FindExecutablePath(std::string& path);
