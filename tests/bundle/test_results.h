#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace Bundle {

/// The tests in what a program prints for --gtest_list_tests, as SUITE.TEST.
std::vector<std::string> readTestNames(const std::string& listing);

/// The part of SUITE.TEST before the dot.
std::string suiteOf(const std::string& test);

/// `*` in the pattern stands for any characters, none included.
bool matches(const std::string& text, const std::string& pattern);

enum class Outcome { Passed, Failed, Skipped };

struct TestResult {
    std::string test = {};
    Outcome outcome = Outcome::Failed;
    std::chrono::milliseconds time{0};
    /// Why it was skipped.
    std::string reason = {};
};

/// What became of a program that was to run these tests, from its output. A test without an outcome has
/// failed, and so have all when the program did not end as its tests did. `endedWell`: by itself, in time and
/// with code 0.
std::vector<TestResult> readResults(const std::vector<std::string>& tests,
                                    const std::string& output,
                                    bool endedWell);

struct Sums {
    unsigned passed = 0;
    unsigned failed = 0;
    unsigned skipped = 0;
    std::chrono::milliseconds time{0};

    unsigned count() const { return passed + failed + skipped; }
    void add(const TestResult& result);
};

/// A line of the summary: what the sums are of, and the sums.
std::string summaryLine(const std::string& name, const Sums& sums);

}  // namespace Bundle
