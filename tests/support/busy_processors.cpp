#include "tests/support/busy_processors.h"

#include <algorithm>

unsigned BusyProcessors::half() {
    return std::max(1U, all() / 2);
}

unsigned BusyProcessors::all() {
    // 0 where the library cannot tell.
    return std::max(1U, std::thread::hardware_concurrency());
}

BusyProcessors::BusyProcessors(unsigned count) {
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
