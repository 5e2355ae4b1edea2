#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <iostream>

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    const int result = RUN_ALL_TESTS();
    std::cout.flush();
    std::clog.flush();
    std::fflush(nullptr);
    // ExitProcess would detach every library, where Wine can wait forever for a lock of a thread that it has
    // already ended. Nothing of the tests is left to be done: what they change they put back before they end.
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(result));
    return result;
}
