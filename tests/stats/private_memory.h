#pragma once

#include <windows.h>

#include <psapi.h>

#include <gtest/gtest.h>

#include <cstddef>

/// Memory that this process has for itself alone, in bytes. (Wine knows it under this name only; the extended
/// record's PrivateUsage, which is the same on Windows, is always 0 there.)
inline std::size_t privateMemoryBytes() {
    PROCESS_MEMORY_COUNTERS counters{};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
    EXPECT_GT(counters.PagefileUsage, 0u);
    return counters.PagefileUsage;
}
