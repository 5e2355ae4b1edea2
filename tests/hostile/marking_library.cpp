// A library that leaves a file ".loaded" beside it when it is loaded.

#include <windows.h>

#include <cwchar>

BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        wchar_t path[MAX_PATH + 8];
        GetModuleFileNameW(library, path, MAX_PATH);
        std::wcscat(path, L".loaded");
        CloseHandle(CreateFileW(
            path, GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    return TRUE;
}
