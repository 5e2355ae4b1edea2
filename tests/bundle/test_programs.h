#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace Bundle {

/// A test program as the build lists it.
struct TestProgram {
    /// From the list's folder on, with slashes.
    std::string path = {};
    /// GoogleTest's filter for the suites that run together in one process; empty when there are none.
    std::string together = {};
    std::vector<std::pair<std::string, std::string>> environment = {};
    /// For one run of the program.
    std::chrono::seconds limit{0};
    /// Nothing else may run meanwhile.
    bool alone = false;
    /// Those that have the same one do not run at the same time; empty without one.
    std::string lock = {};

    /// The file's name without folder and extension.
    std::string name() const;
};

/// Reads the list. Throws std::runtime_error for what it does not know how to obey.
std::vector<TestProgram> readTestPrograms(const std::string& list);

}  // namespace Bundle
