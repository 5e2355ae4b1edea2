#pragma once

#include <windows.h>

#include <functional>

inline constexpr int kExitNormal = 0;
inline constexpr int kExitError = 1;

/// Style of every box that tells the user why the program does not start or does not go on. Without an owner
/// MB_TASKMODAL makes it modal for all windows of the thread.
inline constexpr UINT kErrorBoxStyle = MB_ICONERROR | MB_TASKMODAL | MB_TOPMOST;

/// Runs one step of the program and returns its exit code. A SysException or a std::exception that leaves the
/// step is shown to the user, in a box that holds the thread until it is closed; anything else passes
/// through.
int runReported(const std::function<void()>& step);
