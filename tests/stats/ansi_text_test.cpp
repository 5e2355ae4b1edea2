#include "stats/ansi_text.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace {

TEST(AnsiText, TextIsConvertedWithoutATerminator) {
    EXPECT_EQ(wideFromAnsi("GeForce 9000"), L"GeForce 9000");
    EXPECT_EQ(wideFromAnsi("GeForce 9000").size(), 12u);
}

TEST(AnsiText, EmptyTextStaysEmpty) {
    EXPECT_EQ(wideFromAnsi(""), L"");
    EXPECT_EQ(wideFromAnsi(std::string_view()), L"");
}

TEST(AnsiText, BytesAreOfTheAnsiCodePage) {
    ASSERT_EQ(GetACP(), 1252u) << "the expected characters are of the western code page";
    EXPECT_EQ(wideFromAnsi("Radeon\x99 \xAE \xE9"), L"Radeon\u2122 \u00AE \u00E9");
}

TEST(AnsiText, FieldEndsAtItsTerminator) {
    const char field[8] = {'a', 'b', '\0', 'c', 'd', 'e', 'f', 'g'};
    EXPECT_EQ(textOfField(field), "ab");
}

TEST(AnsiText, FieldWithoutTerminatorIsTakenWhole) {
    const char field[4] = {'a', 'b', 'c', 'd'};
    EXPECT_EQ(textOfField(field), "abcd");
    const char empty[4] = {};
    EXPECT_EQ(textOfField(empty), "");
}

}  // namespace
