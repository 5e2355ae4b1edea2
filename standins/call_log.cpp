#include "standins/call_log.h"

#include <algorithm>

#include "standins/shared_record.h"

namespace Standins {

void CallLog::add(std::uint32_t call, std::array<std::int64_t, 3> arguments) noexcept {
    const std::uint64_t index = logged_.load(std::memory_order_relaxed);
    Slot& slot = slots_[index % kLength];
    slot.timeUs.store(nowMicroseconds(), std::memory_order_relaxed);
    slot.call.store(call, std::memory_order_relaxed);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        slot.arguments[i].store(arguments[i], std::memory_order_relaxed);
    }
    counts_[call % kKinds].fetch_add(1, std::memory_order_relaxed);
    logged_.store(index + 1, std::memory_order_release);
}

std::vector<LoggedCall> CallLog::entries() const {
    const std::uint64_t end = logged_.load(std::memory_order_acquire);
    std::vector<LoggedCall> calls;
    for (std::uint64_t i = end - std::min<std::uint64_t>(end, kLength); i < end; ++i) {
        const Slot& slot = slots_[i % kLength];
        LoggedCall call;
        call.timeUs = slot.timeUs.load(std::memory_order_relaxed);
        call.call = slot.call.load(std::memory_order_relaxed);
        for (std::size_t j = 0; j < call.arguments.size(); ++j) {
            call.arguments[j] = slot.arguments[j].load(std::memory_order_relaxed);
        }
        calls.push_back(call);
    }
    return calls;
}

std::uint64_t CallLog::count(std::uint32_t call) const noexcept {
    return counts_[call % kKinds].load(std::memory_order_relaxed);
}

void CallLog::clear() noexcept {
    for (std::atomic<std::uint64_t>& count : counts_) {
        count.store(0, std::memory_order_relaxed);
    }
    logged_.store(0, std::memory_order_release);
}

}  // namespace Standins
