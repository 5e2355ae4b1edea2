#pragma once

#include <cstdint>

/// Physical memory in use in percent, from 0 to 100, truncated. Sizes in bytes. The total is rounded to
/// single precision before the division. 0 when nothing is known (a total of 0) or more is free than there
/// is.
std::int32_t physicalMemoryPercent(std::uint64_t total, std::uint64_t available);

/// Video memory in use in percent, from 0 to 100, truncated. Sizes in kB. 0 when nothing is known (a total of
/// 0) or more is free than there is.
std::int32_t videoMemoryPercent(std::uint32_t total, std::uint32_t available);
