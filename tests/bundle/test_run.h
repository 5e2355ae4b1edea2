#pragma once

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "tests/bundle/contained_process.h"
#include "tests/bundle/test_programs.h"
#include "tests/bundle/test_results.h"

namespace Bundle {

/// Where a run finds and leaves things.
struct RunPlaces {
    /// With the list of test programs in it.
    std::filesystem::path build;
    /// An empty folder, for temporary files of the tests as well.
    std::filesystem::path scratch;
    std::filesystem::path log;
};

/// All tests of all programs, run as CTest runs them: those of one process together, all others each in a
/// process of its own, and none beside another that its properties forbid. Prints a line for each suite that
/// is through.
class TestRun {
public:
    /// `filter` is for matches(). `stop`, an event, ends the run when it is set.
    TestRun(RunPlaces places, std::vector<TestProgram> programs, std::string filter, HANDLE stop);

    /// Asks all programs for their tests. Throws std::runtime_error when one does not tell.
    void findTests(unsigned jobs);
    /// Returns when all tests are through or the run was stopped.
    void runTests(unsigned jobs);

    /// Prints the tests that failed or were skipped, and the total; true when all of them ran, none failed,
    /// and there were any.
    bool report() const;

private:
    /// What one process runs.
    struct Part {
        const TestProgram* program;
        std::string filter;
        std::string options;
        std::vector<std::string> tests;
    };
    struct Suite {
        std::string name;
        std::size_t tests = 0;
        Sums sums;
    };

    void findTestsOf(const TestProgram& program);
    std::vector<std::string> listTests(const TestProgram& program, const std::string& filter);
    void addPart(const TestProgram& program, const std::string& options, std::vector<std::string> tests);
    RunEnd start(const TestProgram& program, const std::string& arguments);
    void runPart(const Part& part);
    void runBeside(std::vector<const Part*> parts, unsigned jobs);
    void take(const Part& part, const RunEnd& end, const std::vector<TestResult>& results);
    void writeLog(const Part& part, const RunEnd& end, const std::vector<TestResult>& results);
    bool isStopped() const { return WaitForSingleObject(stop_, 0) == WAIT_OBJECT_0; }

    RunPlaces places_;
    std::vector<TestProgram> programs_;
    std::string filter_;
    HANDLE stop_;
    std::ofstream log_;

    /// Guards what follows while there are several threads.
    std::mutex mutex_;
    std::vector<Part> parts_;
    /// By program and name.
    std::map<std::pair<std::string, std::string>, Suite> suites_;
    std::vector<TestResult> notPassed_;
    unsigned scratchFiles_ = 0;
};

}  // namespace Bundle
