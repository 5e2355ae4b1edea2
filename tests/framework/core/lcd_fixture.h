#pragma once

#include <gtest/gtest.h>

#include <string>

#include "standins/lcd_sdk/virtual_g19.h"
#include "standins/vendor_libraries.h"
#include "tests/support/lcd_registration.h"
#include "tests/support/registry_override.h"
#include "tests/support/standin_session.h"

/// A machine with a virtual keyboard whose library is registered, for this process only.
class WithKeyboard : public testing::Test {
protected:
    explicit WithKeyboard(
        const std::wstring& library = Standins::vendorLibraryPath(Standins::VendorLibrary::LcdSdk)) {
        registerLcdLibrary(library);
    }

    RegistryOverride registry;
    StandinSession session;
    Standins::VirtualG19 keyboard;
};
