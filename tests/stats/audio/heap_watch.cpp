#include "tests/stats/audio/heap_watch.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr int kNoFailure = -1;

std::atomic<std::ptrdiff_t> blocksInUse{0};
thread_local int successesLeft = kNoFailure;

bool isToFail() noexcept {
    if (successesLeft == kNoFailure) {
        return false;
    }
    return successesLeft-- == 0;
}

void* allocate(std::size_t size) noexcept {
    void* const block = isToFail() ? nullptr : std::malloc(size > 0 ? size : 1);
    blocksInUse += block != nullptr ? 1 : 0;
    return block;
}

void release(void* block) noexcept {
    blocksInUse -= block != nullptr ? 1 : 0;
    std::free(block);
}

}  // namespace

std::ptrdiff_t heapBlocksInUse() noexcept {
    return blocksInUse;
}

FailingAllocation::FailingAllocation(int successes) noexcept {
    successesLeft = successes;
}

FailingAllocation::~FailingAllocation() {
    successesLeft = kNoFailure;
}

// The failure brings the count below 0, which is also where it stays.
bool FailingAllocation::happened() noexcept {
    return successesLeft == kNoFailure;
}

// The program's own operators, in place of the library's; the array forms come here as well.
void* operator new(std::size_t size) {
    void* const block = allocate(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return allocate(size);
}

void operator delete(void* block) noexcept {
    release(block);
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
    release(block);
}
