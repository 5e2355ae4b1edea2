#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "framework/core/lcd_registration.h"
#include "framework/core/lcd_sdk_abi.h"
#include "tests/support/import_override.h"
#include "tests/support/registry_override.h"

// The path as it is read, whether or not a library lies there.

namespace {

class RegisteredLcdPath : public testing::Test {
protected:
    RegisteredLcdPath() { path.fill(L'x'); }

    /// Stores so many bytes, which need not end with a zero.
    static void store(const std::wstring& text, DWORD bytes) {
        RegistryOverride::setValue(
            HKEY_LOCAL_MACHINE, Panelix::LcdSdk::kServerBinaryKey, nullptr, REG_BINARY, text.c_str(), bytes);
    }

    RegistryOverride registry;
    Panelix::LcdLibraryPath path{};
};

TEST_F(RegisteredLcdPath, WithoutATerminatorEndsWhereItsValueEnds) {
    const std::wstring text = L"C:\\lcd.dll";
    store(text, static_cast<DWORD>(text.size() * sizeof(wchar_t)));
    EXPECT_EQ(Panelix::readLcdLibraryPath(path), ERROR_SUCCESS);
    EXPECT_EQ(std::wstring(path.data()), text);
}

TEST_F(RegisteredLcdPath, ThatFillsItsRoomWithoutATerminatorIsTooLong) {
    store(std::wstring(path.size(), L'y'), sizeof(path));
    EXPECT_EQ(Panelix::readLcdLibraryPath(path), ERROR_MORE_DATA);
    store(std::wstring(path.size() - 1, L'y'), sizeof(path));
    EXPECT_EQ(Panelix::readLcdLibraryPath(path), ERROR_SUCCESS);
    EXPECT_EQ(std::wstring(path.data()), std::wstring(path.size() - 1, L'y'));
}

REGSAM askedFor = 0;

LSTATUS WINAPI denyKey(HKEY, LPCWSTR, DWORD, REGSAM access, PHKEY) {
    askedFor = access;
    return ERROR_ACCESS_DENIED;
}

TEST_F(RegisteredLcdPath, IsReadFromAKeyThatIsOpenedForReadingOnly) {
    const ImportOverride keys("advapi32.dll", "RegOpenKeyExW", denyKey);
    EXPECT_EQ(Panelix::readLcdLibraryPath(path), ERROR_ACCESS_DENIED);
    EXPECT_EQ(askedFor, REGSAM{KEY_READ});
}

}  // namespace
