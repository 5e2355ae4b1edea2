#pragma once

#include <gtest/gtest.h>

#include <string>

#include "standins/lcd_sdk/standin_paths.h"
#include "standins/lcd_sdk/virtual_g19.h"
#include "tests/support/lcd_registration.h"
#include "tests/support/registry_override.h"

/// A machine with a virtual keyboard whose library is registered, for this process only.
class WithKeyboard : public testing::Test {
protected:
    explicit WithKeyboard(const std::wstring& library = Standins::lcdSdkPath()) {
        registerLcdLibrary(library);
    }

    struct OwnSession {
        OwnSession() { Standins::useOwnSession(); }
    };

    RegistryOverride registry;
    OwnSession session;
    Standins::VirtualG19 keyboard;
};
