#pragma once

#include <cstdint>

namespace Panelix {

/// Milliseconds for which the machine was awake, from any moment on: standby and hibernation do not count,
/// and neither does setting the wall clock. Moves in ticks of up to 15.6 ms. Any thread.
std::int64_t awakeMs() noexcept;

}  // namespace Panelix
