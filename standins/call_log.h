#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <vector>

namespace Standins {

/// What a call was given, as each stand-in says.
using CallArguments = std::array<std::int64_t, 5>;

/// One call of a stand-in's function.
struct LoggedCall {
    std::uint64_t timeUs = 0;  ///< nowMicroseconds() at the call.
    std::uint32_t threadId = 0;
    std::uint32_t call = 0;
    CallArguments arguments{};
};

/// The calls that a stand-in received, as a part of its shared record: all zero is empty. Any number of
/// threads may write and read at a time, but for clear().
class CallLog {
public:
    /// The newest calls that can be read back.
    static constexpr std::size_t kLength = 4096;
    /// Kinds of calls that are counted: `call` is below that.
    static constexpr std::size_t kKinds = 32;

    /// Notes a call of this thread's. An entry that nobody has read is overwritten by the one kLength later.
    void add(std::uint32_t call, const CallArguments& arguments = {}) noexcept;

    /// The newest calls, oldest first, without those that are just being written.
    std::vector<LoggedCall> entries() const;

    /// Number of calls of that kind since the record exists or was cleared.
    std::uint64_t count(std::uint32_t call) const noexcept;

    /// From now on a call of that kind takes so long: add() does not return before. 0 as at first: no time.
    void setDuration(std::uint32_t call, std::uint32_t milliseconds) noexcept;

    /// For when nobody writes. The durations stay.
    void clear() noexcept;

private:
    struct Slot {
        /// One more than the number of the entry in the slot, 0 while it is being written: a reader that sees
        /// the same before and after copying has read one entry and not parts of two.
        std::atomic<std::uint64_t> sequence;
        std::atomic<std::uint64_t> timeUs;
        std::atomic<std::uint32_t> threadId;
        std::atomic<std::uint32_t> call;
        std::array<std::atomic<std::int64_t>, std::tuple_size_v<CallArguments>> arguments;
    };

    std::atomic<std::uint64_t> logged_;
    std::array<std::atomic<std::uint64_t>, kKinds> counts_;
    std::array<std::atomic<std::uint32_t>, kKinds> durationsMs_;
    std::array<Slot, kLength> slots_;
};

}  // namespace Standins
