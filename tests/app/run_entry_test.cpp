#include "app/run_entry.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(RunEntry, QuotesThePathAndPutsTheNumberDirectlyAfterTheOption) {
    EXPECT_EQ(runEntryText("C:\\Program Files\\Kelvaro\\Kelvaro.exe", 15),
              "\"C:\\Program Files\\Kelvaro\\Kelvaro.exe\" -delay15");
    EXPECT_EQ(runEntryText("C:\\Kelvaro.exe", std::numeric_limits<std::uint32_t>::max()),
              "\"C:\\Kelvaro.exe\" -delay4294967295");
}

TEST(RunEntry, WithoutADelayHasNoOption) {
    EXPECT_EQ(runEntryText("C:\\Kelvaro.exe", 0), "\"C:\\Kelvaro.exe\"");
}

TEST(RunEntry, ItsDelayIsTheDigitsDirectlyAfterTheFirstOption) {
    struct Case {
        const char* name;
        const char* text;
        std::uint32_t seconds;
    };
    for (const Case& c : {
             Case{"as written", "\"C:\\Kelvaro.exe\" -delay15", 15},
             Case{"no option", "\"C:\\Kelvaro.exe\"", 0},
             Case{"an empty entry", "", 0},
             Case{"nothing after the option", "\"C:\\Kelvaro.exe\" -delay", 0},
             Case{"a blank before the number", "\"C:\\Kelvaro.exe\" -delay 15", 0},
             Case{"a blank after the number", "\"C:\\Kelvaro.exe\" -delay15 ", 0},
             Case{"a sign", "\"C:\\Kelvaro.exe\" -delay-15", 0},
             Case{"letters after the digits", "\"C:\\Kelvaro.exe\" -delay15s", 0},
             Case{"the option within the path", "\"C:\\my-delay5\\Kelvaro.exe\" -delay15", 0},
             Case{"another case", "\"C:\\Kelvaro.exe\" -Delay15", 0},
             Case{"leading zeros", "-delay0000000000000000000007", 7},
             Case{"the largest number", "-delay2147483647", 2'147'483'647U},
             Case{"one more than that", "-delay2147483648", 0},
             Case{"a number beyond all", "-delay99999999999999999999999", 0},
         }) {
        EXPECT_EQ(runEntryDelay(c.text), c.seconds) << c.name;
    }
}

TEST(RunEntry, ReadsBackWhatItWrites) {
    for (const std::uint32_t seconds : {0U, 1U, 15U, 999U}) {
        EXPECT_EQ(runEntryDelay(runEntryText("C:\\Kelvaro.exe", seconds)), seconds);
    }
}

TEST(TypedDelay, TakesDigitsOnlyAndNothingAsZero) {
    EXPECT_EQ(typedDelay(L""), 0U);
    EXPECT_EQ(typedDelay(L"0"), 0U);
    EXPECT_EQ(typedDelay(L"007"), 7U);
    EXPECT_EQ(typedDelay(L"999"), 999U);
    EXPECT_EQ(typedDelay(L"999999999"), 999'999'999U);
    for (const wchar_t* text : {L"12a", L"a", L"-1", L"+1", L" 1", L"1 ", L"1.5", L"\u0661"}) {
        EXPECT_EQ(typedDelay(text), std::nullopt);
    }
}

}  // namespace
