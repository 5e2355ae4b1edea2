#pragma once

#include <string>

namespace Standins {

/// Full path of the stand-in library with all ten exports, in the form that the registry and LoadLibraryW
/// take.
std::wstring lcdSdkPath();

/// Full path of the variant that lacks one export, given by its name ("LogiLcdInit" and so on). The variants
/// are built for tests.
std::wstring lcdSdkPathWithout(const std::string& exportName);

}  // namespace Standins
