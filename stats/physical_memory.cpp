#include "stats/physical_memory.h"

#include <windows.h>

#include "stats/memory_percent.h"

std::int32_t readPhysicalMemoryPercent() {
    MEMORYSTATUSEX status{};
    static_assert(sizeof(status) == 64);
    status.dwLength = sizeof(status);
    if (!GlobalMemoryStatusEx(&status)) {
        return 0;
    }
    return physicalMemoryPercent(status.ullTotalPhys, status.ullAvailPhys);
}
