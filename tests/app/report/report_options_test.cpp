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
    EXPECT_FALSE(options.save);
    EXPECT_EQ(options.output, L"");
    EXPECT_EQ(options.problem, L"");
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
    EXPECT_EQ(read({L"--lcd", L"--foo", L"bar"}).problem, L"unknown option '--foo'");
    EXPECT_EQ(read({L"-delay15"}).problem, L"unknown option '-delay15'");
    EXPECT_EQ(read({L""}).problem, L"unknown option ''");
}

TEST(ReportOptions, TheFileIsTheArgumentBehindItsOption) {
    const ReportOptions options = read({L"--output", L"my report.txt", L"--lcd"});
    EXPECT_EQ(options.output, L"my report.txt");
    EXPECT_TRUE(options.lcd);
    EXPECT_EQ(options.problem, L"");
    for (const std::vector<const wchar_t*>& arguments :
         {std::vector<const wchar_t*>{L"--output"}, {L"--output", L""}, {L"--output", L"--lcd"}}) {
        EXPECT_EQ(read(arguments).problem, L"--output needs the name of a file");
    }
}

TEST(ReportOptions, TheReportIsSavedInOnePlace) {
    EXPECT_TRUE(read({L"--save"}).save);
    EXPECT_EQ(read({L"--save"}).problem, L"");
    EXPECT_EQ(read({L"--save", L"--output", L"a.txt"}).problem,
              L"--save and --output cannot be used together");
}

TEST(ReportOptions, EachOptionStandsInTheHelp) {
    EXPECT_NE(kReportHelp.find(L"--lcd"), std::wstring_view::npos);
    EXPECT_NE(kReportHelp.find(L"--output FILE"), std::wstring_view::npos);
    EXPECT_NE(kReportHelp.find(L"--save"), std::wstring_view::npos);
    EXPECT_NE(kReportHelp.find(L"--help"), std::wstring_view::npos);
}

}  // namespace
