#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// The table of figures that the benchmarks print together: one line per figure, with its limit where it has
// one. A figure beyond its limit is marked and fails nothing: other programs share the machine.

/// The heading of the lines that follow.
inline void printPart(const char* what) {
    std::printf("%s\n", what);
}

inline void printLine(const std::string& what, const std::string& value, const std::string& note = "") {
    std::printf("  %-54s %14s  %s\n", what.c_str(), value.c_str(), note.c_str());
    std::fflush(stdout);
}

inline std::string numberText(double value, int decimals, const char* unit = "") {
    char text[64];
    std::snprintf(text, sizeof(text), "%.*f%s", decimals, value, unit);
    return text;
}

/// What is said of a figure that must not be greater than `limit`.
inline std::string limitText(double value, double limit, int decimals) {
    return "limit " + numberText(limit, decimals) + (value > limit ? "  EXCEEDS" : "");
}

inline double microseconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

/// The value below which the given share, 0 to 1, of the values lies. `values` must not be empty.
inline double quantile(std::vector<double> values, double share) {
    const auto index = static_cast<std::size_t>(share * static_cast<double>(values.size() - 1) + 0.5);
    const auto place = values.begin() + static_cast<std::ptrdiff_t>(index);
    std::nth_element(values.begin(), place, values.end());
    return *place;
}

inline double median(std::vector<double> values) {
    return quantile(std::move(values), 0.5);
}

/// The program's way and the bare calls for the same, timed in turns, so that what else the machine does
/// meets both. Either is first every other time: the second finds memory and caches as the first has left
/// them. So the time of each is the mean of two medians, of its times as the first and as the second.
class Comparison {
public:
    void add(const std::function<void()>& program, const std::function<void()>& bare) {
        if (program_.first.size() == program_.second.size()) {
            program_.first.push_back(microseconds(program));
            bare_.second.push_back(microseconds(bare));
        } else {
            bare_.first.push_back(microseconds(bare));
            program_.second.push_back(microseconds(program));
        }
    }

    double programTime() const { return program_.time(); }
    double bareTime() const { return bare_.time(); }

    /// Prints the ratio of the times, against its limit if it has one, and the times.
    void print(const std::string& what, std::optional<double> limit = std::nullopt) const {
        const double ratio = programTime() / bareTime();
        const std::string times =
            numberText(programTime(), 1) + " us, bare " + numberText(bareTime(), 1) + " us";
        printLine(
            what, numberText(ratio, 3), limit ? limitText(ratio, *limit, 2) + "  (" + times + ")" : times);
    }

private:
    struct Times {
        double time() const { return (median(first) + median(second)) / 2; }

        std::vector<double> first;
        std::vector<double> second;
    };

    Times program_;
    Times bare_;
};
