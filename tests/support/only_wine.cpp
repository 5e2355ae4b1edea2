#include "tests/support/only_wine.h"

#include <windows.h>

bool runsUnderWine() {
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr &&
           GetEnvironmentVariableW(L"KELVARO_AS_ON_WINDOWS", nullptr, 0) == 0;
}
