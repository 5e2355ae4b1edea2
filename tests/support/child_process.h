#pragma once

#include <windows.h>

#include <chrono>
#include <optional>
#include <string>

#include "framework/core/unique_resource.h"

/// Full path of this test program, for a test that starts itself again.
std::wstring ownProgram();

/// A program that a test started. It is ended by force when the test is over before it.
class ChildProcess {
public:
    /// Starts `path` with `arguments` after it on the command line. Fails the test when that does not work.
    /// `standardError` and `standardOutput`, unless null, are inheritable handles that the program gets as
    /// such.
    explicit ChildProcess(const std::wstring& path,
                          const std::wstring& arguments = {},
                          HANDLE standardError = nullptr,
                          HANDLE standardOutput = nullptr);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    DWORD id() const { return id_; }

    bool isRunning() const;

    /// Waits for the end; nothing when the time is over first.
    std::optional<DWORD> waitForExit(std::chrono::milliseconds timeout = std::chrono::seconds(20)) const;

private:
    Panelix::UniqueHandle process_;
    DWORD id_ = 0;
};
