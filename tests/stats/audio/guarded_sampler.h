#pragma once

#include <windows.h>

#include <memory>
#include <new>

#include "stats/system_info.h"

/// A sampler in memory of its own, which nobody can touch once the sampler has ended: a notification that
/// still does ends the test.
class GuardedSampler {
public:
    GuardedSampler()
        : memory_(VirtualAlloc(nullptr, sizeof(SystemInfo), MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE)) {
        if (memory_ == nullptr) {
            throw std::bad_alloc();
        }
        info_ = new (memory_) SystemInfo();
    }
    ~GuardedSampler() { end(); }
    GuardedSampler(const GuardedSampler&) = delete;
    GuardedSampler& operator=(const GuardedSampler&) = delete;

    SystemInfo* operator->() const noexcept { return info_; }
    SystemInfo& operator*() const noexcept { return *info_; }

    /// Lets nobody write to the sampler, until allowWriting().
    void refuseWriting() { protect(PAGE_READONLY); }
    void allowWriting() { protect(PAGE_READWRITE); }
    bool contains(ULONG_PTR address) const noexcept {
        const auto begin = reinterpret_cast<ULONG_PTR>(memory_);
        return address >= begin && address < begin + sizeof(SystemInfo);
    }

    /// Destroys the sampler. Its addresses are never used again.
    void end() {
        if (info_ != nullptr) {
            std::destroy_at(info_);
            info_ = nullptr;
            VirtualFree(memory_, sizeof(SystemInfo), MEM_DECOMMIT);
        }
    }

private:
    void protect(DWORD protection) noexcept {
        DWORD before;
        VirtualProtect(memory_, sizeof(SystemInfo), protection, &before);
    }

    void* memory_;
    SystemInfo* info_ = nullptr;
};
