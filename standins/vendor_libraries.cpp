#include "standins/vendor_libraries.h"

#include <filesystem>

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
            break;
    }
    return {"xinput", "XINPUT1_4.dll"};
}

}  // namespace

std::wstring vendorLibraryPath(VendorLibrary library) {
    const Place place = placeOf(library);
    return (std::filesystem::path(KELVARO_STANDINS_FOLDER) / place.folder / place.file)
        .make_preferred()
        .wstring();
}

std::wstring vendorLibraryPath(VendorLibrary library, const std::string& variant) {
    const Place place = placeOf(library);
    return (std::filesystem::path(KELVARO_STANDIN_VARIANTS_FOLDER) / place.folder / variant / place.file)
        .make_preferred()
        .wstring();
}

}  // namespace Standins
