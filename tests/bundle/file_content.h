#pragma once

#include <filesystem>
#include <string>

namespace Bundle {

/// Throws std::runtime_error when the file cannot be read.
std::string contentOf(const std::filesystem::path& file);

}  // namespace Bundle
