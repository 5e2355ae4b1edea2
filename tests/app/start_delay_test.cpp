#include "app/start_delay.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>

namespace {

struct Case {
    const char* name;
    const wchar_t* commandLine;
    std::optional<std::uint32_t> delayMs;
};

TEST(StartDelay, IsTheNumberAfterTheFirstDelayOption) {
    const Case cases[] = {
        {"no option", L"\"C:\\Kelvaro.exe\"", std::nullopt},
        {"an empty line", L"", std::nullopt},
        {"a blank before the number", L"Kelvaro.exe -delay 20", 20'000},
        {"the number directly after", L"Kelvaro.exe -delay20", 20'000},
        {"several blanks and a sign", L"Kelvaro.exe -delay   +3", 3000},
        {"nothing to wait", L"Kelvaro.exe -delay 0", 0},
        {"letters after the digits", L"Kelvaro.exe -delay 7s", 7000},
        {"only the first option counts", L"Kelvaro.exe -delay 1 -delay 2", 1000},
        {"further options are left alone", L"Kelvaro.exe -delay 4 -other", 4000},
        {"within the program's path", L"\"C:\\my-delay5\\Kelvaro.exe\"", 5000},
        {"within a longer word", L"Kelvaro.exe --no-delay9x", 9000},
        {"case matters", L"Kelvaro.exe -Delay 5", std::nullopt},
        {"a negative number is no shorter wait", L"Kelvaro.exe -delay -1", 4'294'966'296U},
        {"the product is of 32 bits", L"Kelvaro.exe -delay 4294968", std::uint32_t{4'294'968U * 1000U}},
        {"the largest number", L"Kelvaro.exe -delay 2147483647", std::uint32_t{2'147'483'647U * 1000U}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(startDelayMs(c.commandLine), c.delayMs) << c.name;
    }
}

TEST(StartDelay, WithoutANumberThrows) {
    for (const wchar_t* line : {L"Kelvaro.exe -delay", L"Kelvaro.exe -delay soon", L"Kelvaro.exe -delay-"}) {
        EXPECT_THROW(startDelayMs(line), std::invalid_argument);
    }
}

TEST(StartDelay, ANumberBeyond32BitsThrows) {
    for (const wchar_t* line : {L"Kelvaro.exe -delay 2147483648",
                                L"Kelvaro.exe -delay -2147483649",
                                L"Kelvaro.exe -delay 99999999999999999999"}) {
        EXPECT_THROW(startDelayMs(line), std::out_of_range);
    }
}

}  // namespace
