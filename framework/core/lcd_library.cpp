#include "framework/core/lcd_library.h"

#include <windows.h>

#include "framework/core/exported_function.h"
#include "framework/core/lcd_registration.h"
#include "framework/core/lcd_sdk_abi.h"

namespace Panelix {

namespace {

/// The library's entries as far as they were found.
struct LcdEntries {
    LcdSdk::LogiLcdInit* init = nullptr;
    LcdSdk::LogiLcdIsButtonPressed* isButtonPressed = nullptr;
    LcdSdk::LogiLcdUpdate* update = nullptr;
    LcdSdk::LogiLcdShutdown* shutdown = nullptr;
    LcdSdk::LogiLcdColorSetBackground* colorSetBackground = nullptr;
};

/// One library per process, as the vendor's own state is per process too.
LcdEntries entries;

template <typename Function>
void lookUp(HMODULE library, const char* name, Function*& slot) {
    slot = exportedFunction<Function>(library, name);
}

}  // namespace

bool LoadLcdLibrary(const wchar_t* friendlyName, int lcdType) {
    LcdLibraryPath path;
    if (readLcdLibraryPath(path) != ERROR_SUCCESS) {
        return false;
    }
    const HMODULE library = loadLcdModule(path.data());
    if (library == nullptr) {
        return false;
    }
    lookUp(library, "LogiLcdInit", entries.init);
    lookUp(library, "LogiLcdIsButtonPressed", entries.isButtonPressed);
    lookUp(library, "LogiLcdUpdate", entries.update);
    lookUp(library, "LogiLcdShutdown", entries.shutdown);
    lookUp(library, "LogiLcdColorSetBackground", entries.colorSetBackground);
    return entries.init != nullptr && entries.init(friendlyName, lcdType);
}

bool lcdIsButtonPressed(int mask) {
    return entries.isButtonPressed != nullptr && entries.isButtonPressed(mask);
}

void lcdUpdate() {
    if (entries.update != nullptr) {
        entries.update();
    }
}

void lcdShutdown() {
    if (entries.shutdown != nullptr) {
        entries.shutdown();
    }
}

void lcdSetColorBackground(std::uint8_t* frame) {
    if (entries.colorSetBackground != nullptr) {
        entries.colorSetBackground(frame);
    }
}

}  // namespace Panelix
