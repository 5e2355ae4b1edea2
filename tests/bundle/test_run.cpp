#include "tests/bundle/test_run.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <thread>

#include "tests/bundle/utf8.h"

namespace Bundle {

namespace {

constexpr char kGtestOptions[] = " --gtest_color=no --gtest_filter=";

/// Calls `work` on this many threads and waits for all.
void onThreads(unsigned count, const std::function<void()>& work) {
    std::vector<std::thread> threads;
    for (unsigned i = 1; i < count; ++i) {
        threads.emplace_back(work);
    }
    work();
    for (std::thread& thread : threads) {
        thread.join();
    }
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : ":") + word;
    }
    return text;
}

std::string describe(const RunEnd& end) {
    switch (end.ending) {
        case Ending::Late:
            return "was ended: its time was over";
        case Ending::NotStarted:
            return "could not be started";
        default:
            return "ended with code " + std::to_string(end.code);
    }
}

}  // namespace

TestRun::TestRun(RunPlaces places, std::vector<TestProgram> programs, std::string filter, HANDLE stop)
    : places_(std::move(places)),
      programs_(std::move(programs)),
      filter_(std::move(filter)),
      stop_(stop),
      log_(places_.log, std::ios::binary) {
    if (!log_) {
        throw std::runtime_error("Cannot write " + toUtf8(places_.log.wstring()));
    }
}

RunEnd TestRun::start(const TestProgram& program, const std::string& arguments) {
    std::filesystem::path output;
    {
        const std::lock_guard lock(mutex_);
        output = places_.scratch / ("output" + std::to_string(++scratchFiles_) + ".txt");
    }
    Environment environment = program.environment;
    environment.emplace_back("TMP", toUtf8(places_.scratch.wstring()));
    environment.emplace_back("TEMP", toUtf8(places_.scratch.wstring()));
    return runContained(
        {(places_.build / program.path).make_preferred(), arguments, environment, program.limit},
        stop_,
        output);
}

std::vector<std::string> TestRun::listTests(const TestProgram& program, const std::string& filter) {
    const RunEnd end = start(program, "--gtest_list_tests --gtest_filter=" + filter);
    if (!end.isGood() && !isStopped()) {
        throw std::runtime_error(program.path + " does not list its tests: it " + describe(end));
    }
    std::vector<std::string> tests = readTestNames(end.output);
    std::erase_if(tests, [this](const std::string& test) { return !matches(test, filter_); });
    return tests;
}

void TestRun::addPart(const TestProgram& program,
                      const std::string& options,
                      std::vector<std::string> tests) {
    for (const std::string& test : tests) {
        Suite& suite = suites_[{program.path, suiteOf(test)}];
        suite.name = suiteOf(test) + " (" + program.name() + ")";
        ++suite.tests;
    }
    parts_.push_back({&program, joined(tests), options, std::move(tests)});
}

void TestRun::findTestsOf(const TestProgram& program) {
    std::vector<std::string> together;
    if (!program.together.empty()) {
        together = listTests(program, program.together);
    }
    const std::vector<std::string> single = listTests(program, "-" + program.together);
    const std::lock_guard lock(mutex_);
    if (!together.empty()) {
        addPart(program, " --gtest_shuffle", std::move(together));
        // As long as the filter takes nothing away, the suites' own one is shorter than all names.
        if (filter_ == "*") {
            parts_.back().filter = program.together;
        }
    }
    for (const std::string& test : single) {
        addPart(program, "", {test});
    }
}

void TestRun::findTests(unsigned jobs) {
    std::size_t next = 0;
    std::string error;
    onThreads(jobs, [&] {
        while (true) {
            const TestProgram* program = nullptr;
            {
                const std::lock_guard lock(mutex_);
                if (next == programs_.size() || !error.empty()) {
                    return;
                }
                program = &programs_[next++];
            }
            try {
                findTestsOf(*program);
            } catch (const std::exception& exception) {
                const std::lock_guard lock(mutex_);
                error = exception.what();
            }
        }
    });
    if (!error.empty()) {
        throw std::runtime_error(error);
    }
}

void TestRun::runPart(const Part& part) {
    const auto begin = std::chrono::steady_clock::now();
    const RunEnd end = start(*part.program, kGtestOptions + part.filter + part.options);
    if (end.ending == Ending::Stopped) {
        return;
    }
    std::vector<TestResult> results = readResults(part.tests, end.output, end.isGood());
    if (results.size() == 1) {
        results.front().time =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
    }
    const std::lock_guard lock(mutex_);
    take(part, end, results);
}

void TestRun::take(const Part& part, const RunEnd& end, const std::vector<TestResult>& results) {
    bool failed = false;
    for (const TestResult& result : results) {
        Suite& suite = suites_[{part.program->path, suiteOf(result.test)}];
        suite.sums.add(result);
        if (suite.sums.count() == suite.tests) {
            std::printf("%s\n", summaryLine(suite.name, suite.sums).c_str());
            std::fflush(stdout);
        }
        if (result.outcome != Outcome::Passed) {
            notPassed_.push_back(result);
        }
        failed = failed || result.outcome == Outcome::Failed;
    }
    if (failed) {
        writeLog(part, end, results);
    }
}

void TestRun::writeLog(const Part& part, const RunEnd& end, const std::vector<TestResult>& results) {
    log_ << "==== " << part.program->path << " " << describe(end) << "; failed:";
    for (const TestResult& result : results) {
        if (result.outcome == Outcome::Failed) {
            log_ << " " << result.test;
        }
    }
    log_ << "\n" << end.output << "\n" << std::flush;
}

// Each thread takes the first that nothing forbids.
void TestRun::runBeside(std::vector<const Part*> parts, unsigned jobs) {
    std::set<std::string> locks;
    const auto takeNext = [&]() -> const Part* {
        const auto free = std::find_if(parts.begin(), parts.end(), [&](const Part* part) {
            return !locks.contains(part->program->lock);
        });
        if (free == parts.end()) {
            return nullptr;
        }
        const Part* const part = *free;
        parts.erase(free);
        if (!part->program->lock.empty()) {
            locks.insert(part->program->lock);
        }
        return part;
    };
    onThreads(jobs, [&] {
        std::unique_lock lock(mutex_);
        while (!parts.empty() && !isStopped()) {
            const Part* const part = takeNext();
            lock.unlock();
            if (part != nullptr) {
                runPart(*part);
            } else {
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
            lock.lock();
            if (part != nullptr) {
                locks.erase(part->program->lock);
            }
        }
    });
}

void TestRun::runTests(unsigned jobs) {
    std::vector<const Part*> beside;
    std::vector<const Part*> alone;
    for (const Part& part : parts_) {
        (part.program->alone ? alone : beside).push_back(&part);
    }
    // What may take long begins first, or it would be what the run's end waits for.
    std::stable_sort(beside.begin(), beside.end(), [](const Part* one, const Part* other) {
        return one->program->limit > other->program->limit;
    });
    runBeside(std::move(beside), jobs);
    runBeside(std::move(alone), 1);
}

bool TestRun::report() const {
    for (const Outcome outcome : {Outcome::Skipped, Outcome::Failed}) {
        for (const TestResult& result : notPassed_) {
            if (result.outcome == outcome) {
                std::printf("%s %s%s%s\n",
                            outcome == Outcome::Failed ? "FAILED " : "SKIPPED",
                            result.test.c_str(),
                            result.reason.empty() ? "" : ": ",
                            result.reason.c_str());
            }
        }
    }
    Sums total;
    std::size_t tests = 0;
    for (const auto& [key, suite] : suites_) {
        tests += suite.tests;
        total.passed += suite.sums.passed;
        total.failed += suite.sums.failed;
        total.skipped += suite.sums.skipped;
        total.time += suite.sums.time;
    }
    std::printf("%s\n", summaryLine("Total", total).c_str());
    if (total.count() != tests) {
        std::printf("%u of the tests did not run\n", static_cast<unsigned>(tests - total.count()));
    }
    return total.failed == 0 && total.count() > 0 && total.count() == tests;
}

}  // namespace Bundle
