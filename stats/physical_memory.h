#pragma once

#include <cstdint>

/// Physical memory in use in percent, 0 when the system does not tell.
std::int32_t readPhysicalMemoryPercent();
