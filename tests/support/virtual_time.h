#pragma once

#include <windows.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <vector>

#include "tests/support/import_override.h"

/// Time in the test's hands, for this program's own code: its monotonic clocks stand still but for what the
/// test lets pass and what the program sleeps on a waitable timer, and such a sleep is over at once. One at a
/// time; one thread.
class VirtualTime {
public:
    using Milliseconds = std::chrono::milliseconds;

    VirtualTime();
    ~VirtualTime();
    VirtualTime(const VirtualTime&) = delete;
    VirtualTime& operator=(const VirtualTime&) = delete;

    /// Passes while the machine is awake.
    void pass(Milliseconds time);

    /// Passes in standby, which the performance counter counts and the unbiased interrupt time does not.
    void standBy(Milliseconds time);

    /// Since the machine's start: all of it, as the performance counter has it, and without standby.
    std::int64_t sinceStartMs() const { return sinceStart_ / 10'000; }
    std::int64_t awakeMs() const { return awake_ / 10'000; }

    /// The sleeps so far, each in milliseconds.
    std::vector<double> sleptMs;

    /// Called inside each sleep.
    std::function<void()> onSleep;

private:
    static BOOL WINAPI queryCounter(LARGE_INTEGER* counter) noexcept;
    static BOOL WINAPI queryAwakeTime(ULONGLONG* time) noexcept;
    static BOOL WINAPI setTimer(HANDLE timer, const LARGE_INTEGER* due, LONG, PTIMERAPCROUTINE, LPVOID, BOOL);

    static VirtualTime* current;

    /// Both in units of 100 ns.
    std::int64_t sinceStart_;
    std::int64_t awake_;
    std::int64_t counterFrequency_;
    ImportOverride counterOverride_;
    ImportOverride awakeTimeOverride_;
    ImportOverride timerOverride_;
};
