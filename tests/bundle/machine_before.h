#pragma once

#include <windows.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/bundle/registry_tree.h"

namespace Bundle {

struct SavedKey {
    HKEY root = nullptr;
    std::wstring path;
    /// Nothing when it was not there.
    std::optional<RegistryTree> tree;
};

/// What tests change on a machine, as it was before: registry keys, and files that were not there.
struct MachineBefore {
    std::vector<SavedKey> keys;
    /// Places of files where there was none. Tests put no file over another.
    std::vector<std::filesystem::path> absentFiles;
};

/// Reads what there is now of all that the tests change. Throws std::runtime_error when something cannot be
/// read.
MachineBefore readMachine();

/// Makes everything what it was, as far as it is not. Throws std::runtime_error with the first thing that
/// could not be put back, after all others were.
void restore(const MachineBefore& before);

// The form of the file that an interrupted run leaves: text, UTF-8.
std::string toText(const MachineBefore& before);
/// Throws std::runtime_error when the text is not whole.
MachineBefore machineFromText(const std::string& text);

}  // namespace Bundle
