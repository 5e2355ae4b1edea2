#pragma once

#include <atomic>
#include <thread>
#include <vector>

/// Keeps processors of the machine busy until its end.
class BusyProcessors {
public:
    /// Half of the processors, one at the least.
    static unsigned half();
    static unsigned all();

    explicit BusyProcessors(unsigned count = half());
    ~BusyProcessors();
    BusyProcessors(const BusyProcessors&) = delete;
    BusyProcessors& operator=(const BusyProcessors&) = delete;

private:
    std::atomic<bool> done_ = false;
    std::vector<std::thread> threads_;
};
