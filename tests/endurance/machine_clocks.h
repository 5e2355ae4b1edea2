#pragma once

#include <windows.h>

#include <chrono>
#include <cstdint>
#include <ctime>

#include "tests/support/import_override.h"
#include "tests/support/virtual_time.h"

/// All clocks of the machine in the test's hands, for this program's own code: the monotonic ones of
/// VirtualTime, the tick counter, the time of day, and the processors' times, which tell of a load of the
/// test's choice; the memory's load besides. One at a time; one thread.
class MachineClocks {
public:
    MachineClocks();
    ~MachineClocks();
    MachineClocks(const MachineClocks&) = delete;
    MachineClocks& operator=(const MachineClocks&) = delete;

    /// Sets the time of day to the beginning of a second since 1970, in universal time; it goes on with the
    /// machine.
    void setTimeOfDay(std::int64_t seconds);
    void stepTimeOfDay(std::chrono::milliseconds step) { timeOfDayOffsetMs_ += step.count(); }

    /// Milliseconds since the machine's start, of which the tick counter shows the low 32 bits.
    std::int64_t ticks() const { return time.sinceStartMs(); }

    /// Stands by until the tick counter has a value.
    void standByUntilTicks(std::uint32_t value);

    /// Percent from now on.
    void setProcessorLoad(int percent);
    void setMemoryLoad(int percent) { memoryLoad_ = percent; }

    VirtualTime time;

private:
    static DWORD WINAPI readTicks();
    static __time64_t readTimeOfDay(__time64_t* out);
    static void WINAPI readFileTime(FILETIME* out);
    static FARPROC WINAPI findFunction(HMODULE module, LPCSTR name);
    static BOOL WINAPI readProcessorTimes(FILETIME* idle, FILETIME* kernel, FILETIME* user);
    static BOOL WINAPI readMemory(MEMORYSTATUSEX* status);

    std::int64_t timeOfDay() const { return (timeOfDayOffsetMs_ + time.sinceStartMs()) / 1000; }
    void countIdleTime();

    static MachineClocks* current;

    std::int64_t timeOfDayOffsetMs_ = 0;
    int processorLoad_ = 0;
    int memoryLoad_ = 0;
    /// Idle milliseconds since the start, in hundredths, up to the time at which they were counted.
    std::int64_t idleHundredths_ = 0;
    std::int64_t idleCountedAtMs_ = 0;

    ImportOverride ticksOverride_{"KERNEL32.dll", "GetTickCount", readTicks};
    ImportOverride timeOfDayOverride_{"msvcrt.dll", "_time64", readTimeOfDay};
    ImportOverride fileTimeOverride_{"KERNEL32.dll", "GetSystemTimeAsFileTime", readFileTime};
    /// The processors' times are asked for by a function that is looked up.
    ImportOverride lookUpOverride_{"KERNEL32.dll", "GetProcAddress", findFunction};
    ImportOverride memoryOverride_{"KERNEL32.dll", "GlobalMemoryStatusEx", readMemory};
};
