#include <windows.h>

#include <array>
#include <string>

// For tests: a library that leaves a mark, its own path and ".loaded", when a program loads it.

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) {
        std::array<wchar_t, MAX_PATH> path{};
        GetModuleFileNameW(instance, path.data(), static_cast<DWORD>(path.size()));
        CloseHandle(CreateFileW((std::wstring(path.data()) + L".loaded").c_str(),
                                GENERIC_WRITE,
                                0,
                                nullptr,
                                CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL,
                                nullptr));
    }
    return TRUE;
}
