#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "framework/core/unique_resource.h"

namespace Standins {

/// The name under which a stand-in shares its record within the logon session: "Local\Kelvaro" and the given
/// name, followed by a dot and the value of the environment variable KELVARO_STANDIN_SESSION when that is
/// set.
std::wstring sectionName(const std::wstring& standin);

/// Gives this process, and the processes that it starts from now on, stand-in records of their own, apart
/// from those of every other run on the machine. Tests call it before they touch any stand-in.
void useOwnSession();

/// Microseconds of the machine's monotonic clock: the same clock in every process, so that the records of
/// several stand-ins can be put in order.
std::uint64_t nowMicroseconds() noexcept;

/// One piece of memory that several processes share by name. It exists as long as one of them keeps it open.
///
/// The record begins with a 64-bit identity, which says what it is and in which version; everything else is
/// zero when it is new, so zero must be a valid start value of each field. What is shared must be lock-free
/// atomics, or guarded by them.
class SharedRecord {
public:
    /// Opens the record of that name, or makes it. Throws std::runtime_error when the system refuses, or when
    /// a record of another identity has the name. `size` is in bytes and includes the identity.
    SharedRecord(const std::wstring& name, std::uint64_t identity, std::size_t size);

    /// The first byte, aligned to a page. Never null.
    void* data() const noexcept { return view_.get(); }

private:
    Panelix::UniqueHandle section_;
    Panelix::UniqueMappedView view_;
};

}  // namespace Standins
