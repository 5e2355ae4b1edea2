#include "tests/support/import_override.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

int WINAPI answerSeven(int) {
    return 7;
}

int WINAPI answerEight(int) {
    return 8;
}

TEST(ImportOverride, CallsGoToTheReplacementForAsLongAsItLives) {
    const int usual = GetSystemMetrics(SM_CXICON);
    {
        const ImportOverride seven("user32.dll", "GetSystemMetrics", answerSeven);
        EXPECT_EQ(GetSystemMetrics(SM_CXICON), 7);
        EXPECT_EQ(seven.original<decltype(answerSeven)>()(SM_CXICON), usual);
        {
            const ImportOverride eight("USER32.dll", "GetSystemMetrics", answerEight);
            EXPECT_EQ(GetSystemMetrics(SM_CXICON), 8);
        }
        EXPECT_EQ(GetSystemMetrics(SM_CXICON), 7);
    }
    EXPECT_EQ(GetSystemMetrics(SM_CXICON), usual);
}

TEST(ImportOverride, WhatTheProgramDoesNotImportCannotBeReplaced) {
    EXPECT_THROW(ImportOverride("user32.dll", "NoSuchFunction", answerSeven), std::invalid_argument);
    EXPECT_THROW(ImportOverride("nosuch.dll", "GetSystemMetrics", answerSeven), std::invalid_argument);
}

}  // namespace
