#pragma once

#include <cstddef>

// The C++ allocations of this test program, counted, and made to fail on demand. GDI+ has a heap of its own.

/// While it lives, the allocation number `failing` of this thread, counted from 0, throws std::bad_alloc,
/// once.
class FailingAllocation {
public:
    explicit FailingAllocation(std::size_t failing);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Whether the allocation has come and failed.
    bool hasFailed() const;
};

/// Blocks that this thread has allocated, given back or not.
std::size_t allocationsSoFar();

/// Blocks that this thread has allocated and not given back, as seen by this thread.
std::ptrdiff_t liveAllocations();
