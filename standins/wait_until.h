#pragma once

#include <chrono>
#include <functional>

namespace Standins {

/// Asks `condition` every other millisecond until it is true; false when `limit` has passed before.
bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit);

}  // namespace Standins
