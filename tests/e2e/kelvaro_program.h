#pragma once

#include <string>

#include "standins/built_files.h"

/// Full path of the program under test.
inline std::wstring kelvaroProgram() {
    return (Standins::outputFolder() / L"Kelvaro.exe").wstring();
}
