#pragma once

#include <cstdint>

/// When to try something again that fails: at once, then after a pause that doubles with every attempt up to
/// a limit. Times in milliseconds of one clock that does not go backwards.
class RetryPause {
public:
    RetryPause(std::int64_t firstMs, std::int64_t longestMs) : firstMs_(firstMs), longestMs_(longestMs) {}

    /// True when an attempt is due, which counts as made.
    bool takeTurn(std::int64_t nowMs);

    /// What was tried works: the pauses after the next attempts begin with the shortest. A pause that has
    /// begun goes on, so that what fails again and again is not tried without any.
    void reset() { pauseMs_ = firstMs_; }

private:
    const std::int64_t firstMs_;
    const std::int64_t longestMs_;
    std::int64_t pauseMs_ = firstMs_;
    std::int64_t dueMs_ = 0;
};
