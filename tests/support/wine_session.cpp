// Keeps the Windows session of a test run open: a session without programs ends, and starting it anew costs
// every test a second. Usage: wine_session READY-FILE
// Makes the file once the session stands, and ends when its standard input does.

#include <windows.h>

#include <cstdio>
#include <fstream>

int main(int count, char** arguments) {
    if (count != 2) {
        return 2;
    }
    // The first window of a session starts its desktop; this one is never seen.
    const HWND window =
        CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    if (window == nullptr || GetDesktopWindow() == nullptr) {
        return 1;
    }
    std::ofstream(arguments[1]) << "ready\n";
    while (std::getchar() != EOF) {
    }
    DestroyWindow(window);
    return 0;
}
