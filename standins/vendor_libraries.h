#pragma once

#include <string>

namespace Standins {

/// The vendor libraries that there are stand-ins of.
enum class VendorLibrary {
    LcdSdk,
    CoreAudio,
    Nvapi,
    Adl,
    CoreTemp,
    Xinput,
    Gdiplus,
};

/// Full path of the stand-in, which bears the vendor's file name, in the form that LoadLibraryW and the
/// registry take. Core Audio is a part of the system: its file name is our own. Throws like
/// buildFolder().
std::wstring vendorLibraryPath(VendorLibrary library);

/// The same for one of the variants that are built for tests, by its folder's name. They stand in the
/// CMakeLists.txt of the library's folder.
std::wstring vendorLibraryPath(VendorLibrary library, const std::string& variant);

}  // namespace Standins
