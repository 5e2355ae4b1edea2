#pragma once

#include <windows.h>

#include <cstdint>

#include "framework/core/unique_resource.h"

namespace Panelix {

/// Sleeps with an accuracy of about a millisecond. The system's default timer tick of up to 15.6 ms would
/// stretch a wait of 16 ms to twice that, so a high-resolution waitable timer is used where the system has
/// one (Windows 10 1803 and later); elsewhere the tick is raised for the length of each sleep. One thread.
class PreciseSleeper {
public:
    PreciseSleeper();

    /// Sleeps until `ms` milliseconds from now; at once when it is not positive. Standby in between does not
    /// count: what was left of the sleep follows it.
    void sleepFor(std::int64_t ms) const;

private:
    UniqueHandle timer_;
};

}  // namespace Panelix
