// The program's version, for C++ and the resource script. CMakeLists.txt checks that it is the project's.
#define KELVARO_VERSION_NUMBERS 1, 0, 0, 0
#define KELVARO_VERSION_TEXT "1.0.0"
