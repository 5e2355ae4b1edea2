#pragma once

#include <map>
#include <set>
#include <string>

// What a machine holds, to be compared before and after.

/// All keys (with a backslash at the end) and values of the two hives, by path, with type and bytes as text.
using RegistryContents = std::map<std::wstring, std::wstring>;

/// Without what the system does not keep, and without the temporary files that it shall delete at its next
/// start.
RegistryContents registryContents();

/// Full paths of all files and folders on drive C:, without the temporary files of its users.
std::set<std::wstring> filesOnDrive();

/// One line for each key and value that is not the same in both, with "+" for those that only `after` has,
/// "-" for those that only `before` has and "*" for other contents.
std::wstring differences(const RegistryContents& before, const RegistryContents& after);
std::wstring differences(const std::set<std::wstring>& before, const std::set<std::wstring>& after);
