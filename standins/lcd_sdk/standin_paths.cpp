#include "standins/lcd_sdk/standin_paths.h"

#include <filesystem>

namespace Standins {

namespace {

std::wstring nativePath(std::filesystem::path path) {
    return path.make_preferred().wstring();
}

}  // namespace

std::wstring lcdSdkPath() {
    return nativePath(std::filesystem::path(KELVARO_LCD_SDK_FOLDER) / KELVARO_LCD_SDK_FILE);
}

std::wstring lcdSdkPathWithout(const std::string& exportName) {
    return nativePath(std::filesystem::path(KELVARO_LCD_SDK_VARIANTS_FOLDER) / exportName /
                      KELVARO_LCD_SDK_FILE);
}

}  // namespace Standins
