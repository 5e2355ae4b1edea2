#pragma once

#include <cstddef>

/// Counts COM's task memory while it lives. One at a time per process; COM must be running.
class TaskMemoryWatch {
public:
    TaskMemoryWatch();
    ~TaskMemoryWatch();
    TaskMemoryWatch(const TaskMemoryWatch&) = delete;
    TaskMemoryWatch& operator=(const TaskMemoryWatch&) = delete;

    /// Blocks that were allocated since the watch began.
    std::size_t allocated() const;
    /// How many of them were freed.
    std::size_t freed() const;
};
