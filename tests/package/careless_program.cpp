#include <windows.h>

// For tests: a program that loads the libraries on its command line from wherever the system finds them
// first, its own folder that is.
int wmain(int argc, wchar_t** argv) {
    for (int i = 1; i < argc; ++i) {
        LoadLibraryW(argv[i]);
    }
    return 0;
}
