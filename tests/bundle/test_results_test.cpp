#include "tests/bundle/test_results.h"

#include <gmock/gmock.h>

namespace {

using namespace Bundle;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<Outcome> outcomesOf(const std::vector<TestResult>& results) {
    std::vector<Outcome> outcomes;
    for (const TestResult& result : results) {
        outcomes.push_back(result.outcome);
    }
    return outcomes;
}

TEST(TestResults, NamesAreReadFromAListing) {
    EXPECT_THAT(readTestNames("Running main() from gtest_main.cc\r\n"
                              "Blink.\r\n"
                              "  ShowsTwice\r\n"
                              "All/GpuAmd.  # TypeParam = int\n"
                              "  MissingExport/0  # GetParam() = 24-byte object <00-01>\n"
                              "  MissingExport/1\n"),
                ElementsAre("Blink.ShowsTwice", "All/GpuAmd.MissingExport/0", "All/GpuAmd.MissingExport/1"));
    EXPECT_THAT(readTestNames(""), IsEmpty());
}

TEST(TestResults, ATestHasTheOutcomeThatItsProgramPrints) {
    const std::string output =
        "[ RUN      ] A.One\r\n"
        "printed without an end[       OK ] A.One (12 ms)\r\n"
        "[ RUN      ] A.Two/0\n"
        "[  FAILED  ] A.Two/0, where GetParam() = 3 (1500 ms)\n"
        "[ RUN      ] A.Three\n"
        "a_test.cpp:3: Skipped\n"
        "only Wine has it\n"
        "[  SKIPPED ] A.Three (0 ms)\n"
        "[ RUN      ] A.Four\n"
        "[==========] 4 tests from 1 test suite ran. (1512 ms total)\n"
        "[  FAILED  ] A.Four\n";
    const auto results = readResults({"A.One", "A.Two/0", "A.Three", "A.Four"}, output, false);
    EXPECT_THAT(outcomesOf(results),
                ElementsAre(Outcome::Passed, Outcome::Failed, Outcome::Skipped, Outcome::Failed));
    EXPECT_EQ(results[0].time.count(), 12);
    EXPECT_EQ(results[1].time.count(), 1500);
    EXPECT_EQ(results[2].reason, "only Wine has it");
    EXPECT_EQ(results[0].reason, "");
}

TEST(TestResults, ProgramThatEndsBadlyAfterGoodTestsHasFailedThemAll) {
    const std::string output = "[       OK ] A.One (1 ms)\n[  SKIPPED ] A.Two (1 ms)\n";
    EXPECT_THAT(outcomesOf(readResults({"A.One", "A.Two"}, output, true)),
                ElementsAre(Outcome::Passed, Outcome::Skipped));
    EXPECT_THAT(outcomesOf(readResults({"A.One", "A.Two"}, output, false)),
                ElementsAre(Outcome::Failed, Outcome::Failed));
}

TEST(TestResults, ProgramThatSaysNothingHasFailedItsTests) {
    EXPECT_THAT(outcomesOf(readResults({"A.One"}, "", true)), ElementsAre(Outcome::Failed));
}

TEST(TestResults, StarStandsForAnyCharacters) {
    EXPECT_TRUE(matches("GpuAmd.Starts", "*"));
    EXPECT_TRUE(matches("GpuAmd.Starts", "GpuAmd*"));
    EXPECT_TRUE(matches("GpuAmd.Starts", "*Amd.*ts"));
    EXPECT_TRUE(matches("GpuAmd.Starts", "GpuAmd.Starts"));
    EXPECT_FALSE(matches("GpuAmd.Starts", "GpuAmd"));
    EXPECT_FALSE(matches("GpuAmd.Starts", "gpu*"));
    EXPECT_FALSE(matches("GpuAmd.Starts", ""));
}

TEST(TestResults, SummaryLineHasNameCountsAndSeconds) {
    Sums sums;
    sums.add({.test = "A.One", .outcome = Outcome::Passed, .time = std::chrono::milliseconds(1200)});
    sums.add({.test = "A.Two", .outcome = Outcome::Passed, .time = std::chrono::milliseconds(300)});
    sums.add({.test = "A.Three", .outcome = Outcome::Failed});
    sums.add({.test = "A.Four", .outcome = Outcome::Skipped});
    EXPECT_EQ(sums.count(), 4U);
    EXPECT_EQ(summaryLine("A", sums),
              "A" + std::string(59, ' ') + "     2 passed     1 failed     1 skipped      1.5 s");
}

}  // namespace
