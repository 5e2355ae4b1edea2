#include "tests/support/child_process.h"

#include <gtest/gtest.h>

#include <array>

std::wstring ownProgram() {
    std::array<wchar_t, MAX_PATH> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return path.data();
}

ChildProcess::ChildProcess(const std::wstring& path,
                           const std::wstring& arguments,
                           HANDLE standardError,
                           HANDLE standardOutput) {
    // CreateProcessW may write into the line.
    std::wstring line = L"\"" + path + L"\"";
    if (!arguments.empty()) {
        line += L" " + arguments;
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    const BOOL inherit = standardError != nullptr || standardOutput != nullptr ? TRUE : FALSE;
    if (inherit != FALSE) {
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdError = standardError;
        startup.hStdOutput = standardOutput;
    }
    PROCESS_INFORMATION started{};
    EXPECT_NE(
        CreateProcessW(
            path.c_str(), line.data(), nullptr, nullptr, inherit, 0, nullptr, nullptr, &startup, &started),
        FALSE)
        << "error " << GetLastError();
    const Panelix::UniqueHandle thread(started.hThread);
    process_.reset(started.hProcess);
    id_ = started.dwProcessId;
}

ChildProcess::~ChildProcess() {
    if (isRunning()) {
        TerminateProcess(process_.get(), 99);
        waitForExit();
    }
}

bool ChildProcess::isRunning() const {
    return process_ && WaitForSingleObject(process_.get(), 0) == WAIT_TIMEOUT;
}

std::optional<DWORD> ChildProcess::waitForExit(std::chrono::milliseconds timeout) const {
    DWORD code = 0;
    if (!process_ ||
        WaitForSingleObject(process_.get(), static_cast<DWORD>(timeout.count())) != WAIT_OBJECT_0 ||
        GetExitCodeProcess(process_.get(), &code) == FALSE) {
        return std::nullopt;
    }
    return code;
}
