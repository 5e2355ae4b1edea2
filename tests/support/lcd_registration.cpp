#include "tests/support/lcd_registration.h"

#include <windows.h>

#include <array>

#include "framework/core/lcd_sdk_abi.h"
#include "tests/support/registry_override.h"

namespace {

std::wstring registeredPath() {
    std::array<wchar_t, 1024> path{};
    DWORD bytes = sizeof(path);
    const LSTATUS status = RegGetValueW(HKEY_LOCAL_MACHINE,
                                        Panelix::LcdSdk::kServerBinaryKey,
                                        nullptr,
                                        RRF_RT_REG_SZ,
                                        nullptr,
                                        path.data(),
                                        &bytes);
    return status == ERROR_SUCCESS ? std::wstring(path.data()) : std::wstring();
}

}  // namespace

void registerLcdLibrary(const std::wstring& path) {
    RegistryOverride::setText(HKEY_LOCAL_MACHINE, Panelix::LcdSdk::kServerBinaryKey, nullptr, path);
}

void unregisterLcdLibrary() {
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, Panelix::LcdSdk::kServerBinaryKey);
}

LcdRegistrationScope::LcdRegistrationScope(const std::wstring& path) : before_(registeredPath()) {
    if (path.empty()) {
        unregisterLcdLibrary();
    } else {
        registerLcdLibrary(path);
    }
}

LcdRegistrationScope::~LcdRegistrationScope() {
    if (before_.empty()) {
        unregisterLcdLibrary();
    } else {
        registerLcdLibrary(before_);
    }
}
