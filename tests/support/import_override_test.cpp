#include "tests/support/import_override.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace {

int WINAPI answerSeven(int) {
    return 7;
}

int WINAPI answerEight(int) {
    return 8;
}

// A function of its own: within one the compiler may read the import's slot once for several calls.
[[gnu::noinline]] int iconWidth() {
    return GetSystemMetrics(SM_CXICON);
}

TEST(ImportOverride, CallsGoToTheReplacementForAsLongAsItLives) {
    const int usual = iconWidth();
    {
        const ImportOverride seven("user32.dll", "GetSystemMetrics", answerSeven);
        EXPECT_EQ(iconWidth(), 7);
        EXPECT_EQ(seven.original<decltype(answerSeven)>()(SM_CXICON), usual);
        {
            const ImportOverride eight("USER32.dll", "GetSystemMetrics", answerEight);
            EXPECT_EQ(iconWidth(), 8);
        }
        EXPECT_EQ(iconWidth(), 7);
    }
    EXPECT_EQ(iconWidth(), usual);
}

TEST(ImportOverride, WhatTheProgramDoesNotImportCannotBeReplaced) {
    EXPECT_THROW(ImportOverride("user32.dll", "NoSuchFunction", answerSeven), std::invalid_argument);
    EXPECT_THROW(ImportOverride("nosuch.dll", "GetSystemMetrics", answerSeven), std::invalid_argument);
    EXPECT_THROW(ImportOverride("user32.dll", "GetSystemMetrics", answerSeven, L"kernel32.dll"),
                 std::invalid_argument);
    EXPECT_THROW(ImportOverride("user32.dll", "GetSystemMetrics", answerSeven, L"nosuch.dll"),
                 std::invalid_argument);
}

TEST(ImportOverride, ToldAreTheFunctionsThatTheProgramImportsFromALibrary) {
    EXPECT_THAT(importedFunctions("USER32.dll"), testing::Contains("GetSystemMetrics"));
    EXPECT_THAT(importedFunctions("user32.dll"), testing::Not(testing::Contains("CreateFileW")));
    EXPECT_THAT(importedFunctions("nosuch.dll"), testing::IsEmpty());
}

}  // namespace
