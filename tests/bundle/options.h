#pragma once

#include <string>
#include <vector>

namespace Bundle {

struct Options {
    bool help = false;
    /// Not asked whether the machine may be changed.
    bool yes = false;
    /// Nothing but putting back what an interrupted run changed.
    bool restore = false;
    /// Runs at a time; 0 stands for as many as there are processors.
    unsigned jobs = 0;
    /// Only the tests whose SUITE.TEST matches; see matches().
    std::string filter = "*";
    /// Where the output of what failed goes.
    std::string log = "run-tests.log";
};

/// Reads the words after the program's name. Throws std::runtime_error for a word that is none of the
/// options.
Options readOptions(const std::vector<std::string>& words);

}  // namespace Bundle
