#include "standins/lcd_sdk/registration.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "framework/core/unique_resource.h"
#include "tests/support/registry_override.h"

namespace {

using Standins::registerLibrary;
using Standins::RegistrationOutcome;
using Standins::unregisterLibrary;
using testing::HasSubstr;

constexpr wchar_t kClassKey[] = L"SOFTWARE\\Classes\\CLSID\\{D0E790A5-01A7-49AE-AE0B-E986BDD0C21B}";
constexpr wchar_t kBinaryKey[] =
    L"SOFTWARE\\Classes\\CLSID\\{D0E790A5-01A7-49AE-AE0B-E986BDD0C21B}\\ServerBinary";
constexpr wchar_t kOurs[] = L"C:\\standins\\LogitechLcd.dll";
constexpr wchar_t kTheirs[] = L"C:\\Program Files\\Maker\\LcdManager.dll";

bool keyExists(const wchar_t* key) {
    Panelix::UniqueHkey opened;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, key, 0, KEY_READ, opened.put()) == ERROR_SUCCESS;
}

// The way in which programs look the library up; empty when it is not registered.
std::wstring registered() {
    Panelix::UniqueHkey key;
    wchar_t path[260] = {};
    DWORD bytes = sizeof(path);
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kBinaryKey, 0, KEY_READ, key.put()) != ERROR_SUCCESS ||
        RegQueryValueExW(key.get(), nullptr, nullptr, nullptr, reinterpret_cast<BYTE*>(path), &bytes) !=
            ERROR_SUCCESS) {
        return L"";
    }
    return path;
}

class LcdRegistration : public testing::Test {
protected:
    RegistryOverride registry;
};

TEST_F(LcdRegistration, RegisteredLibraryIsFoundAndTakenBack) {
    EXPECT_TRUE(registerLibrary(kOurs, false).done);
    EXPECT_EQ(registered(), kOurs);
    EXPECT_TRUE(unregisterLibrary(kOurs, false).done);
    EXPECT_FALSE(keyExists(kClassKey));
}

TEST_F(LcdRegistration, DoingItTwiceIsNoFailure) {
    EXPECT_TRUE(registerLibrary(kOurs, false).done);
    EXPECT_TRUE(registerLibrary(L"c:\\STANDINS\\logitechlcd.DLL", false).done);
    EXPECT_TRUE(unregisterLibrary(kOurs, false).done);
    EXPECT_TRUE(unregisterLibrary(kOurs, false).done);
}

TEST_F(LcdRegistration, AnotherLibraryStaysUnlessForced) {
    RegistryOverride::setText(HKEY_LOCAL_MACHINE, kBinaryKey, nullptr, kTheirs);

    const RegistrationOutcome refused = registerLibrary(kOurs, false);
    EXPECT_FALSE(refused.done);
    EXPECT_NE(refused.message.find(kTheirs), std::wstring::npos);
    EXPECT_NE(refused.message.find(L"--force"), std::wstring::npos);
    EXPECT_FALSE(unregisterLibrary(kOurs, false).done);
    EXPECT_EQ(registered(), kTheirs);

    EXPECT_TRUE(registerLibrary(kOurs, true).done);
    EXPECT_EQ(registered(), kOurs);
}

TEST_F(LcdRegistration, AnotherLibraryIsRemovedWhenForced) {
    RegistryOverride::setText(HKEY_LOCAL_MACHINE, kBinaryKey, nullptr, kTheirs);
    EXPECT_TRUE(unregisterLibrary(kOurs, true).done);
    EXPECT_FALSE(keyExists(kBinaryKey));
}

TEST_F(LcdRegistration, WhatElseTheClassHasIsLeftAlone) {
    RegistryOverride::setText(HKEY_LOCAL_MACHINE, kClassKey, nullptr, L"name of the class");
    EXPECT_TRUE(registerLibrary(kOurs, false).done);
    EXPECT_TRUE(unregisterLibrary(kOurs, false).done);
    EXPECT_FALSE(keyExists(kBinaryKey));
    EXPECT_TRUE(keyExists(kClassKey));
}

TEST_F(LcdRegistration, RefusalOfTheRegistryIsReported) {
    // A lasting key cannot be made below one that goes with the session.
    Panelix::UniqueHkey classKey;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE,
                              kClassKey,
                              0,
                              nullptr,
                              REG_OPTION_VOLATILE,
                              KEY_ALL_ACCESS,
                              nullptr,
                              classKey.put(),
                              nullptr),
              ERROR_SUCCESS);
    const RegistrationOutcome outcome = registerLibrary(kOurs, false);
    EXPECT_FALSE(outcome.done);
    EXPECT_NE(outcome.message.find(std::to_wstring(ERROR_CHILD_MUST_BE_VOLATILE)), std::wstring::npos);
}

}  // namespace
