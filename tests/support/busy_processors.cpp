#include "tests/support/busy_processors.h"

#include <algorithm>

BusyProcessors::BusyProcessors() {
    const unsigned count = std::max(1U, std::thread::hardware_concurrency() / 2);
    for (unsigned i = 0; i < count; ++i) {
        threads_.emplace_back([this] {
            while (!done_) {
            }
        });
    }
}

BusyProcessors::~BusyProcessors() {
    done_ = true;
    for (std::thread& thread : threads_) {
        thread.join();
    }
}
