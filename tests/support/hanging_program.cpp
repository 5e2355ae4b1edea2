// What scripts/check_timeouts.sh lets run out of time: a program that hangs, with a child that has the same
// output.

#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <string>

namespace {

/// In case that nobody makes the file.
constexpr int kLongestHangSeconds = 100;

[[gnu::noinline]] void hangUntilThereIsAFile(const wchar_t* file) {
    for (int tenths = 0; tenths < 10 * kLongestHangSeconds; ++tenths) {
        if (GetFileAttributesW(file) != INVALID_FILE_ATTRIBUTES) {
            return;
        }
        Sleep(100);
    }
}

}  // namespace

/// hanging_program FILE ARGUMENTS...: ends when there is such a file.
int wmain(int count, wchar_t** arguments) {
    if (std::wcscmp(arguments[count - 1], L"child") != 0) {
        std::wstring line = L"\"" + std::wstring(arguments[0]) + L"\" \"" + arguments[1] + L"\" child";
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION started{};
        if (CreateProcessW(
                nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &started) ==
            FALSE) {
            std::printf("error %lu\n", GetLastError());
            return 1;
        }
        CloseHandle(started.hThread);
        CloseHandle(started.hProcess);
    }
    hangUntilThereIsAFile(arguments[1]);
    return 0;
}
