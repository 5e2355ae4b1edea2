#include "standins/core_audio/class_registration.h"

#include <gtest/gtest.h>

#include <string>

#include "framework/core/unique_resource.h"
#include "tests/support/registry_override.h"

namespace {

using Standins::registerClasses;
using Standins::unregisterClasses;

constexpr wchar_t kEnumeratorKey[] =
    L"SOFTWARE\\Classes\\CLSID\\{BCDE0395-E52F-467C-8E3D-C4579291692E}\\InprocServer32";
constexpr wchar_t kPolicyClassKey[] = L"SOFTWARE\\Classes\\CLSID\\{294935CE-F637-4E7C-A41B-AB255460B862}";
constexpr wchar_t kPolicyKey[] =
    L"SOFTWARE\\Classes\\CLSID\\{294935CE-F637-4E7C-A41B-AB255460B862}\\InprocServer32";
constexpr wchar_t kOurs[] = L"Z:\\standins\\core_audio_standin.dll";
constexpr wchar_t kTheirs[] = L"%SystemRoot%\\system32\\mmdevapi.dll";

bool keyExists(const wchar_t* key) {
    Panelix::UniqueHkey opened;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, key, 0, KEY_READ, opened.put()) == ERROR_SUCCESS;
}

struct Value {
    DWORD type = REG_NONE;
    std::wstring text;
    bool operator==(const Value&) const = default;
};

/// Nothing when the value is not there.
Value read(const wchar_t* keyPath, const wchar_t* name) {
    Panelix::UniqueHkey key;
    Value value;
    wchar_t text[260] = {};
    DWORD bytes = sizeof(text);
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, keyPath, 0, KEY_READ, key.put()) == ERROR_SUCCESS &&
        RegQueryValueExW(key.get(), name, nullptr, &value.type, reinterpret_cast<BYTE*>(text), &bytes) ==
            ERROR_SUCCESS) {
        value.text = text;
    } else {
        value.type = REG_NONE;
    }
    return value;
}

DWORD valueCount(const wchar_t* keyPath) {
    Panelix::UniqueHkey key;
    DWORD count = 0;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, keyPath, 0, KEY_READ, key.put()) == ERROR_SUCCESS) {
        RegQueryInfoKeyW(key.get(),
                         nullptr,
                         nullptr,
                         nullptr,
                         nullptr,
                         nullptr,
                         nullptr,
                         &count,
                         nullptr,
                         nullptr,
                         nullptr,
                         nullptr);
    }
    return count;
}

class AudioClassRegistration : public testing::Test {
protected:
    /// What the system has of its own: an enumerator, and no policy configuration.
    AudioClassRegistration() {
        RegistryOverride::setValue(
            HKEY_LOCAL_MACHINE, kEnumeratorKey, nullptr, REG_EXPAND_SZ, kTheirs, sizeof(kTheirs));
        RegistryOverride::setText(HKEY_LOCAL_MACHINE, kEnumeratorKey, L"ThreadingModel", L"Apartment");
    }

    static void expectSystemsOwn() {
        EXPECT_EQ(read(kEnumeratorKey, nullptr), (Value{REG_EXPAND_SZ, kTheirs}));
        EXPECT_EQ(read(kEnumeratorKey, L"ThreadingModel"), (Value{REG_SZ, L"Apartment"}));
        EXPECT_EQ(valueCount(kEnumeratorKey), 2U);
        EXPECT_FALSE(keyExists(kPolicyClassKey));
    }

    static void expectOurs(const wchar_t* path) {
        for (const wchar_t* key : {kEnumeratorKey, kPolicyKey}) {
            EXPECT_EQ(read(key, nullptr), (Value{REG_SZ, path}));
            EXPECT_EQ(read(key, L"ThreadingModel"), (Value{REG_SZ, L"Both"}));
        }
    }

    RegistryOverride registry;
};

TEST_F(AudioClassRegistration, NamesTheLibraryAndBringsTheFormerOneBack) {
    EXPECT_TRUE(registerClasses(kOurs));
    expectOurs(kOurs);
    EXPECT_TRUE(unregisterClasses());
    expectSystemsOwn();
}

TEST_F(AudioClassRegistration, DoneTwiceStillKnowsTheFormerLibrary) {
    EXPECT_TRUE(registerClasses(kOurs));
    EXPECT_TRUE(registerClasses(L"Z:\\moved\\core_audio_standin.dll"));
    expectOurs(L"Z:\\moved\\core_audio_standin.dll");
    EXPECT_TRUE(unregisterClasses());
    EXPECT_TRUE(unregisterClasses());
    expectSystemsOwn();
}

TEST_F(AudioClassRegistration, LeavesAnUnregisteredSystemAlone) {
    EXPECT_TRUE(unregisterClasses());
    expectSystemsOwn();
}

TEST_F(AudioClassRegistration, BringsBackAServerWithoutThreadingModel) {
    RegistryOverride::setText(HKEY_LOCAL_MACHINE, kPolicyKey, nullptr, L"policy.dll");
    EXPECT_TRUE(registerClasses(kOurs));
    EXPECT_TRUE(unregisterClasses());
    EXPECT_EQ(read(kPolicyKey, nullptr), (Value{REG_SZ, L"policy.dll"}));
    EXPECT_EQ(valueCount(kPolicyKey), 1U);
}

}  // namespace
