#include "tests/pages/failing_allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool armed = false;
thread_local std::size_t untilFailure = 0;
thread_local std::ptrdiff_t live = 0;
thread_local std::size_t allocated = 0;

void* allocate(std::size_t size) {
    if (armed && untilFailure-- == 0) {
        armed = false;
        throw std::bad_alloc();
    }
    void* memory = std::malloc(size > 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    ++live;
    ++allocated;
    return memory;
}

void release(void* memory) {
    if (memory != nullptr) {
        --live;
        std::free(memory);
    }
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}

void* operator new[](std::size_t size) {
    return allocate(size);
}

void operator delete(void* memory) noexcept {
    release(memory);
}

void operator delete[](void* memory) noexcept {
    release(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    release(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    release(memory);
}

FailingAllocation::FailingAllocation(std::size_t failing) {
    untilFailure = failing;
    armed = true;
}

FailingAllocation::~FailingAllocation() {
    armed = false;
}

bool FailingAllocation::hasFailed() const {
    return !armed;
}

std::size_t allocationsSoFar() {
    return allocated;
}

std::ptrdiff_t liveAllocations() {
    return live;
}
