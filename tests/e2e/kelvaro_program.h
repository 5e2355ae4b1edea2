#pragma once

/// Full path of the program under test.
inline constexpr wchar_t kKelvaroProgram[] = L"" KELVARO_PROGRAM;
