#include "tests/bundle/options.h"

#include <charconv>
#include <stdexcept>

namespace Bundle {

namespace {

constexpr unsigned kMostJobs = 64;

unsigned readJobs(const std::string& text) {
    unsigned jobs = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, jobs);
    if (error != std::errc() || stop != end || jobs < 1 || jobs > kMostJobs) {
        throw std::runtime_error("/jobs needs a number from 1 to " + std::to_string(kMostJobs));
    }
    return jobs;
}

}  // namespace

Options readOptions(const std::vector<std::string>& words) {
    Options options;
    for (auto word = words.begin(); word != words.end(); ++word) {
        const auto argument = [&] {
            if (word + 1 == words.end()) {
                throw std::runtime_error(*word + " needs something after it");
            }
            return *++word;
        };
        if (*word == "/?" || *word == "/help") {
            options.help = true;
        } else if (*word == "/yes") {
            options.yes = true;
        } else if (*word == "/restore") {
            options.restore = true;
        } else if (*word == "/jobs") {
            options.jobs = readJobs(argument());
        } else if (*word == "/filter") {
            options.filter = argument();
        } else if (*word == "/log") {
            options.log = argument();
        } else {
            throw std::runtime_error("Unknown option '" + *word + "'; /help lists the options");
        }
    }
    return options;
}

}  // namespace Bundle
