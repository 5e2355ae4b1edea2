#pragma once

#include <windows.h>

#include <psapi.h>

#include <cstddef>

/// Memory that this process has for itself alone, in bytes.
inline std::size_t privateMemoryBytes() {
    PROCESS_MEMORY_COUNTERS_EX counters{};
    counters.cb = sizeof(counters);
    GetProcessMemoryInfo(
        GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters), sizeof(counters));
    return counters.PrivateUsage;
}
