#include "standins/call_log.h"

#include <windows.h>

#include <algorithm>

#include "standins/shared_record.h"

namespace Standins {

static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "locks do not work between processes");
static_assert(std::atomic<std::uint32_t>::is_always_lock_free);

void CallLog::add(std::uint32_t call, const CallArguments& arguments) noexcept {
    const std::uint64_t number = logged_.fetch_add(1);
    Slot& slot = slots_[number % kLength];
    slot.sequence.store(0, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_release);
    slot.timeUs.store(nowMicroseconds(), std::memory_order_relaxed);
    slot.threadId.store(GetCurrentThreadId(), std::memory_order_relaxed);
    slot.call.store(call, std::memory_order_relaxed);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        slot.arguments[i].store(arguments[i], std::memory_order_relaxed);
    }
    slot.sequence.store(number + 1, std::memory_order_release);
    counts_[call % kKinds].fetch_add(1, std::memory_order_release);
    if (const std::uint32_t durationMs = durationsMs_[call % kKinds].load(std::memory_order_relaxed);
        durationMs != 0) {
        Sleep(durationMs);
    }
}

void CallLog::setDuration(std::uint32_t call, std::uint32_t milliseconds) noexcept {
    durationsMs_[call % kKinds].store(milliseconds, std::memory_order_relaxed);
}

std::vector<LoggedCall> CallLog::entries() const {
    const std::uint64_t end = logged_.load(std::memory_order_acquire);
    std::vector<LoggedCall> calls;
    for (std::uint64_t number = end - std::min<std::uint64_t>(end, kLength); number < end; ++number) {
        const Slot& slot = slots_[number % kLength];
        if (slot.sequence.load(std::memory_order_acquire) != number + 1) {
            continue;
        }
        LoggedCall call;
        call.timeUs = slot.timeUs.load(std::memory_order_relaxed);
        call.threadId = slot.threadId.load(std::memory_order_relaxed);
        call.call = slot.call.load(std::memory_order_relaxed);
        for (std::size_t i = 0; i < call.arguments.size(); ++i) {
            call.arguments[i] = slot.arguments[i].load(std::memory_order_relaxed);
        }
        std::atomic_thread_fence(std::memory_order_acquire);
        if (slot.sequence.load(std::memory_order_relaxed) == number + 1) {
            calls.push_back(call);
        }
    }
    return calls;
}

std::uint64_t CallLog::count(std::uint32_t call) const noexcept {
    return counts_[call % kKinds].load(std::memory_order_acquire);
}

void CallLog::clear() noexcept {
    for (std::atomic<std::uint64_t>& calls : counts_) {
        calls.store(0, std::memory_order_relaxed);
    }
    for (Slot& slot : slots_) {
        slot.sequence.store(0, std::memory_order_relaxed);
    }
    logged_.store(0, std::memory_order_release);
}

}  // namespace Standins
