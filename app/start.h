#pragma once

#include <windows.h>

/// Held by the program from its start to its end, once in each logon session.
inline constexpr wchar_t kInstanceMutex[] = L"KELVARO_G19";

/// Exit code of a process that an exception ended which nobody caught; abort() has the same.
inline constexpr int kExitAbnormal = 3;

/// The program from its start to its end; returns its exit code. A second one of the same logon only says so.
/// Otherwise it waits for the start delay of the process's command line, runs the application and shows the
/// errors that end it. `instance` is the module with the resources. Main thread, once per process.
///
/// What startDelayMs throws passes through, and so does anything from the application that is no
/// std::exception. From the first of these on, an exception that nobody catches ends the process with
/// kExitAbnormal and without any dialog, the system's included.
int startKelvaro(HINSTANCE instance);
