#pragma once

#include <cstddef>

/// Blocks that operator new has given out in this program and that are not deleted yet.
std::ptrdiff_t heapBlocksInUse() noexcept;

/// Fails one allocation of this thread while it lives, through operator new, after `successes` that go well.
class FailingAllocation {
public:
    explicit FailingAllocation(int successes) noexcept;
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// True when so many allocations came that one failed.
    static bool happened() noexcept;
};
