#pragma once

#include <windows.h>

#include <atomic>

#include "tests/support/import_override.h"

/// The program's GetTickCount for as long as it lives: it stands still, but when it is told to go on. One
/// at a time.
class TickClock {
public:
    TickClock() = default;
    TickClock(const TickClock&) = delete;
    TickClock& operator=(const TickClock&) = delete;

    static void advance(DWORD milliseconds) { now_ += milliseconds; }

private:
    static DWORD WINAPI read() { return now_; }

    /// The count starts again at 0 soon, as it does every 49.7 days.
    static inline std::atomic<DWORD> now_{0xFFFF'FFFF - 1500};

    ImportOverride override_{"KERNEL32.dll", "GetTickCount", &read};
};
