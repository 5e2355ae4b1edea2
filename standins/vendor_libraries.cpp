#include "standins/vendor_libraries.h"

#include "standins/built_files.h"

namespace Standins {

namespace {

struct Place {
    const char* folder;
    const char* file;
};

Place placeOf(VendorLibrary library) {
    switch (library) {
        case VendorLibrary::LcdSdk:
            return {"lcd_sdk", "LogitechLcd.dll"};
        case VendorLibrary::CoreAudio:
            return {"core_audio", "core_audio_standin.dll"};
        case VendorLibrary::Nvapi:
            return {"nvapi", "nvapi64.dll"};
        case VendorLibrary::Adl:
            return {"adl", "atiadlxx.dll"};
        case VendorLibrary::CoreTemp:
            return {"core_temp", "GetCoreTempInfo.dll"};
        case VendorLibrary::Xinput:
            return {"xinput", "XINPUT1_4.dll"};
        case VendorLibrary::Gdiplus:
            break;
    }
    return {"gdiplus", "gdiplus.dll"};
}

}  // namespace

std::wstring vendorLibraryPath(VendorLibrary library) {
    const Place place = placeOf(library);
    return (outputFolder() / "standins" / place.folder / place.file).wstring();
}

std::wstring vendorLibraryPath(VendorLibrary library, const std::string& variant) {
    const Place place = placeOf(library);
    return (buildFolder() / "standins" / "variants" / place.folder / variant / place.file).wstring();
}

}  // namespace Standins
