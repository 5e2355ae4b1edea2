#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Standins {

/// One call of a stand-in's function. What the arguments are, each stand-in says.
struct LoggedCall {
    std::uint64_t timeUs = 0;  ///< nowMicroseconds() at the call.
    std::uint32_t call = 0;
    std::array<std::int64_t, 3> arguments{};
};

/// The calls that a stand-in received, as a part of its shared record: all zero is empty. One thread writes
/// at a time; entries() is for when nobody does.
class CallLog {
public:
    /// The newest calls that can be read back.
    static constexpr std::size_t kLength = 4096;

    void add(std::uint32_t call, std::array<std::int64_t, 3> arguments = {}) noexcept;

    /// The newest calls, oldest first.
    std::vector<LoggedCall> entries() const;

    /// Number of calls of that kind since the record exists or was cleared.
    std::uint64_t count(std::uint32_t call) const noexcept;

    void clear() noexcept;

private:
    static constexpr std::size_t kKinds = 32;

    struct Slot {
        std::atomic<std::uint64_t> timeUs;
        std::atomic<std::uint32_t> call;
        std::array<std::atomic<std::int64_t>, 3> arguments;
    };

    std::atomic<std::uint64_t> logged_;
    std::array<std::atomic<std::uint64_t>, kKinds> counts_;
    std::array<Slot, kLength> slots_;
};

}  // namespace Standins
