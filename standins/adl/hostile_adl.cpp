#include <windows.h>

#include <cwchar>

// A driver that ends the process, itself or in a library of the path in KELVARO_HOSTILE_LIBRARY, takes its
// time and then refuses, or does not return until the environment variable KELVARO_HOSTILE, which says
// what it does and then is "hangs", changes.

namespace {

bool isAsked(const wchar_t* what) noexcept {
    wchar_t value[16] = L"";
    GetEnvironmentVariableW(L"KELVARO_HOSTILE", value, 16);
    return std::wcscmp(value, what) == 0;
}

/// Calls this function of a copy of this library, which then ends the process.
void crashElsewhere() noexcept {
    wchar_t path[1024] = L"";
    GetEnvironmentVariableW(L"KELVARO_HOSTILE_LIBRARY", path, 1024);
    SetEnvironmentVariableW(L"KELVARO_HOSTILE", L"crash");
    if (const HMODULE copy = LoadLibraryW(path)) {
        GetProcAddress(copy, "ADL2_Main_Control_Create")();
        FreeLibrary(copy);
    }
}

}  // namespace

extern "C" int createHostile() noexcept {
    if (isAsked(L"elsewhere")) {
        crashElsewhere();
    }
    if (isAsked(L"crash")) {
        // The system's half of the addresses; not null, where a sandbox may have something.
        volatile auto* const nowhere = reinterpret_cast<int*>(0xFFFF'F000'0000'0000);
        *nowhere = 1;
    }
    if (isAsked(L"slow")) {
        Sleep(1000);
    }
    if (isAsked(L"hang")) {
        SetEnvironmentVariableW(L"KELVARO_HOSTILE", L"hangs");
        while (isAsked(L"hangs")) {
            Sleep(1);
        }
    }
    return -1;
}

extern "C" int refuse() noexcept {
    return -1;
}
