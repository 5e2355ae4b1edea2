#pragma once

#include <filesystem>

namespace Standins {

// Where the build put what tests take besides their own program. The folders are found from the program's
// place, so that what was built can be carried to another folder or machine as it lies.

/// The folder of a preset's intermediate results, test programs and stand-ins for tests. Throws
/// std::runtime_error when the program lies outside of it.
std::filesystem::path buildFolder();

/// The folder of what people use: the program, and the folder `standins`. Throws like buildFolder().
std::filesystem::path outputFolder();

}  // namespace Standins
