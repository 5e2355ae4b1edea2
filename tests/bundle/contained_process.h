#pragma once

#include <windows.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace Bundle {

using Environment = std::vector<std::pair<std::string, std::string>>;

struct Run {
    /// Its folder is where it starts.
    std::filesystem::path program;
    /// What follows the program on the command line.
    std::string arguments;
    /// Set besides, or in place of, what this process has.
    Environment environment;
    std::chrono::milliseconds limit{0};
};

enum class Ending { ByItself, Late, Stopped, NotStarted };

struct RunEnd {
    Ending ending = Ending::NotStarted;
    DWORD code = 0;
    /// Standard output and error.
    std::string output;

    bool isGood() const { return ending == Ending::ByItself && code == 0; }
};

/// Runs a program and whatever it starts; none of it is left afterwards, nor when this process ends before.
/// The program is ended when its time is over, or when `stop`, an event, is set. `scratch` is a file that
/// this may make and removes. Any thread.
RunEnd runContained(const Run& run, HANDLE stop, const std::filesystem::path& scratch);

}  // namespace Bundle
