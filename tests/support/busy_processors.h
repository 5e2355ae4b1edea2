#pragma once

#include <atomic>
#include <thread>
#include <vector>

/// Keeps half of the machine's processors busy, one at the least, until its end.
class BusyProcessors {
public:
    BusyProcessors();
    ~BusyProcessors();
    BusyProcessors(const BusyProcessors&) = delete;
    BusyProcessors& operator=(const BusyProcessors&) = delete;

private:
    std::atomic<bool> done_ = false;
    std::vector<std::thread> threads_;
};
