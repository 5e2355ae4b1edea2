#include "tests/bundle/test_results.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <sstream>
#include <utility>

namespace Bundle {

namespace {

struct Mark {
    const char* text;
    Outcome outcome;
};

constexpr Mark kMarks[] = {
    {"[       OK ] ", Outcome::Passed},
    {"[  FAILED  ] ", Outcome::Failed},
    {"[  SKIPPED ] ", Outcome::Skipped},
};

void dropLineEnd(std::string& line) {
    if (!line.empty() && line.back() == '\r') {
        line.pop_back();
    }
}

/// The line that says what became of a test. Something that the test printed may stand before the mark. The
/// summary at a program's end names tests as well, but without a time.
bool readOutcome(const std::string& line, TestResult& result) {
    for (const Mark& mark : kMarks) {
        const std::size_t at = line.find(mark.text);
        const std::size_t time = line.rfind('(');
        if (at == std::string::npos || time == std::string::npos ||
            line.find(" ms)", time) == std::string::npos) {
            continue;
        }
        const std::size_t begin = at + std::string(mark.text).size();
        result.test = line.substr(begin, line.find_first_of(" ,", begin) - begin);
        result.outcome = mark.outcome;
        result.time = std::chrono::milliseconds(std::atoi(line.c_str() + time + 1));
        return true;
    }
    return false;
}

std::map<std::string, TestResult> readOutcomes(const std::string& output) {
    std::map<std::string, TestResult> results;
    std::istringstream lines(output);
    std::string reason;
    bool reasonFollows = false;
    for (std::string line; std::getline(lines, line);) {
        dropLineEnd(line);
        TestResult result;
        if (readOutcome(line, result)) {
            result.reason = std::exchange(reason, {});
            results.emplace(result.test, result);
        } else if (reasonFollows) {
            reason = line;
        }
        reasonFollows = line.ends_with(": Skipped");
    }
    return results;
}

}  // namespace

std::vector<std::string> readTestNames(const std::string& listing) {
    std::vector<std::string> names;
    std::istringstream lines(listing);
    std::string suite;
    for (std::string line; std::getline(lines, line);) {
        dropLineEnd(line);
        const std::string name = line.substr(0, line.find("  # "));
        if (name.starts_with("  ")) {
            names.push_back(suite + name.substr(2));
        } else if (name.ends_with(".") && name.find(' ') == std::string::npos) {
            suite = name;
        }
    }
    return names;
}

std::string suiteOf(const std::string& test) {
    return test.substr(0, test.find('.'));
}

bool matches(const std::string& text, const std::string& pattern) {
    if (pattern.empty()) {
        return text.empty();
    }
    if (pattern.front() == '*') {
        const std::string rest = pattern.substr(1);
        for (std::size_t i = 0; i <= text.size(); ++i) {
            if (matches(text.substr(i), rest)) {
                return true;
            }
        }
        return false;
    }
    return !text.empty() && text.front() == pattern.front() && matches(text.substr(1), pattern.substr(1));
}

std::vector<TestResult> readResults(const std::vector<std::string>& tests,
                                    const std::string& output,
                                    bool endedWell) {
    const std::map<std::string, TestResult> outcomes = readOutcomes(output);
    std::vector<TestResult> results;
    bool failed = false;
    for (const std::string& test : tests) {
        const auto found = outcomes.find(test);
        results.push_back(found != outcomes.end() ? found->second : TestResult{.test = test});
        failed = failed || results.back().outcome == Outcome::Failed;
    }
    // A failed test explains an exit code; without one nothing that the program said can be relied on.
    if (!endedWell && !failed) {
        for (TestResult& result : results) {
            result.outcome = Outcome::Failed;
        }
    }
    return results;
}

void Sums::add(const TestResult& result) {
    passed += result.outcome == Outcome::Passed ? 1U : 0U;
    failed += result.outcome == Outcome::Failed ? 1U : 0U;
    skipped += result.outcome == Outcome::Skipped ? 1U : 0U;
    time += result.time;
}

std::string summaryLine(const std::string& name, const Sums& sums) {
    char line[256];
    std::snprintf(line,
                  sizeof(line),
                  "%-60s %5u passed %5u failed %5u skipped %8.1f s",
                  name.c_str(),
                  sums.passed,
                  sums.failed,
                  sums.skipped,
                  static_cast<double>(sums.time.count()) / 1000);
    return line;
}

}  // namespace Bundle
