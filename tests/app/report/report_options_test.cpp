#include "app/report/report_options.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

ReportOptions read(const std::vector<const wchar_t*>& arguments) {
    return reportOptions(arguments);
}

TEST(ReportOptions, NothingIsAskedForByNoArguments) {
    const ReportOptions options = read({});
    EXPECT_FALSE(options.lcd);
    EXPECT_FALSE(options.help);
    EXPECT_EQ(options.unknown, L"");
}

TEST(ReportOptions, TheLcdIsStartedOnlyByItsOption) {
    EXPECT_TRUE(read({L"--lcd"}).lcd);
    EXPECT_FALSE(read({L"--help"}).lcd);
    EXPECT_FALSE(read({L"--lcdd"}).lcd);
    EXPECT_FALSE(read({L"lcd"}).lcd);
}

TEST(ReportOptions, HelpIsAskedForInEachOfTheUsualWays) {
    EXPECT_TRUE(read({L"--help"}).help);
    EXPECT_TRUE(read({L"-h"}).help);
    EXPECT_TRUE(read({L"/?"}).help);
    EXPECT_TRUE(read({L"--lcd", L"--help"}).help);
}

TEST(ReportOptions, TheFirstArgumentThatIsNoOptionIsKept) {
    EXPECT_EQ(read({L"--lcd", L"--foo", L"bar"}).unknown, L"--foo");
    EXPECT_EQ(read({L"-delay15"}).unknown, L"-delay15");
    EXPECT_EQ(read({L""}).unknown, L"\"\"");
}

TEST(ReportOptions, EachOptionStandsInTheHelp) {
    EXPECT_NE(kReportHelp.find(L"--lcd"), std::wstring_view::npos);
    EXPECT_NE(kReportHelp.find(L"--help"), std::wstring_view::npos);
}

}  // namespace
