// Runs all tests on a machine without the sources. See printUsage().

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <thread>

#include "framework/core/unique_resource.h"
#include "standins/built_files.h"
#include "tests/bundle/file_content.h"
#include "tests/bundle/machine_before.h"
#include "tests/bundle/options.h"
#include "tests/bundle/test_run.h"
#include "tests/bundle/utf8.h"

namespace {

using namespace Bundle;

constexpr int kAllPassed = 0;
constexpr int kSomeFailed = 1;
constexpr int kDidNotRun = 2;

// Set when the run is to end before its time, and when everything is put back.
Panelix::UniqueHandle stopEvent;
Panelix::UniqueHandle restoredEvent;

void printUsage() {
    std::puts(
        "Usage: run-tests.cmd [/yes] [/jobs N] [/filter PATTERN]\n"
        "       run-tests.cmd /restore\n"
        "\n"
        "Runs all tests of Kelvaro, as administrator, on a machine that you can throw away: it replaces "
        "audio and\n"
        "LCD registrations for the time of the tests, and puts everything back when it ends or is "
        "interrupted.\n"
        "Leave mouse and keyboard alone meanwhile: some tests use them. Prints a line for each suite and a "
        "total;\n"
        "run-tests.log has the output of what failed. The exit code is 0 when nothing failed, 1 when "
        "something\n"
        "did, 2 when the tests could not run.\n"
        "\n"
        "  /yes             do not ask\n"
        "  /jobs N          N tests at a time; without it as many as there are processors\n"
        "  /filter PATTERN  only the tests whose SUITE.TEST matches; * stands for any characters\n"
        "  /restore         only put back what a run changed that was ended by force; the next run does so "
        "as well");
}

// A window that is closed, a user who logs off: the process ends when this returns.
BOOL WINAPI interrupted(DWORD event) {
    SetEvent(stopEvent.get());
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        WaitForSingleObject(restoredEvent.get(), INFINITE);
    }
    return TRUE;
}

bool isAdministrator() {
    Panelix::UniqueHandle token;
    TOKEN_ELEVATION elevation{};
    DWORD bytes = 0;
    return OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.put()) != FALSE &&
           GetTokenInformation(token.get(), TokenElevation, &elevation, sizeof(elevation), &bytes) != FALSE &&
           elevation.TokenIsElevated != 0;
}

bool userAgrees() {
    std::printf(
        "Only on a machine that you can throw away: it replaces audio and LCD registrations for the time of "
        "the\n"
        "tests. Go on (y/n)? ");
    std::fflush(stdout);
    const int answer = std::getchar();
    return answer == 'y' || answer == 'Y';
}

std::filesystem::path dataFolder() {
    wchar_t folder[MAX_PATH] = L"";
    if (GetEnvironmentVariableW(L"ProgramData", folder, MAX_PATH) == 0) {
        throw std::runtime_error("The environment does not say where ProgramData is");
    }
    return std::filesystem::path(folder) / L"Kelvaro tests";
}

/// Written through: the file shall be whole even when the machine stops.
void writeThrough(const std::filesystem::path& file, const std::string& text) {
    const Panelix::UniqueFile stream(CreateFileW(
        file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_FLAG_WRITE_THROUGH, nullptr));
    DWORD written = 0;
    if (!stream ||
        WriteFile(stream.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr) == FALSE ||
        written != text.size()) {
        throw std::runtime_error("Cannot write " + toUtf8(file.wstring()));
    }
}

/// What the machine was, on disk for as long as it may be otherwise.
class KeptMachine {
public:
    KeptMachine() : file_(dataFolder() / L"machine-before.txt") {}

    /// Whether a run was ended by force.
    bool isThere() const { return exists(file_); }

    void keep() const {
        create_directories(file_.parent_path());
        const std::filesystem::path part = std::filesystem::path(file_).replace_extension(L".part");
        writeThrough(part, toText(readMachine()));
        if (MoveFileExW(part.c_str(), file_.c_str(), MOVEFILE_WRITE_THROUGH) == FALSE) {
            throw std::runtime_error("Cannot write " + toUtf8(file_.wstring()));
        }
    }

    void putBack() const {
        restore(machineFromText(contentOf(file_)));
        std::filesystem::remove(file_);
        std::filesystem::remove(file_.parent_path());
    }

private:
    std::filesystem::path file_;
};

/// A folder for all files of a run, gone with the object.
class ScratchFolder {
public:
    ScratchFolder()
        : path_(std::filesystem::temp_directory_path() /
                (L"kelvaro-" + std::to_wstring(GetCurrentProcessId()))) {
        std::filesystem::create_directories(path_);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

bool runAll(const Options& options) {
    const std::filesystem::path build = Standins::buildFolder();
    const ScratchFolder scratch;
    // Before any test does: what a session's first window starts would be ended with that test.
    GetDesktopWindow();
    // Tests that put files among the system's ask whether they may.
    SetEnvironmentVariableW(L"KELVARO_THROWAWAY_MACHINE", L"1");
    TestRun run({build, scratch.path(), absolute(std::filesystem::path(options.log))},
                readTestPrograms(contentOf(build / L"test_programs.txt")),
                options.filter,
                stopEvent.get());
    const unsigned jobs =
        options.jobs != 0 ? options.jobs : std::max(1U, std::thread::hardware_concurrency());
    run.findTests(jobs);
    run.runTests(jobs);
    return run.report();
}

/// Puts back what this and former runs changed, whatever happens in between.
int runKept(const Options& options) {
    const KeptMachine machine;
    if (machine.isThere()) {
        std::puts("A run was ended by force: putting back what it changed");
        machine.putBack();
    }
    if (options.restore) {
        std::puts("Everything is as it was before the tests");
        return kAllPassed;
    }
    machine.keep();
    int code = kDidNotRun;
    try {
        code = runAll(options) ? kAllPassed : kSomeFailed;
    } catch (const std::exception& exception) {
        std::printf("%s\n", exception.what());
    }
    machine.putBack();
    std::puts("Everything is as it was before the tests");
    return code;
}

int runWith(const Options& options) {
    if (options.help) {
        printUsage();
        return kAllPassed;
    }
    if (!isAdministrator()) {
        std::puts("The tests need administrator rights: start run-tests.cmd by \"Run as administrator\".");
        return kDidNotRun;
    }
    const Panelix::UniqueHandle instance(CreateMutexW(nullptr, FALSE, L"Global\\KelvaroTestRun"));
    if (GetLastError() == ERROR_ALREADY_EXISTS) {
        std::puts("The tests are running already.");
        return kDidNotRun;
    }
    if (!options.yes && !options.restore && !userAgrees()) {
        return kDidNotRun;
    }
    stopEvent.reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    restoredEvent.reset(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    SetConsoleCtrlHandler(interrupted, TRUE);
    const int code = runKept(options);
    SetEvent(restoredEvent.get());
    return code;
}

}  // namespace

int main(int count, char** arguments) {
    try {
        return runWith(readOptions({arguments + 1, arguments + count}));
    } catch (const std::exception& exception) {
        std::printf("%s\n", exception.what());
        return kDidNotRun;
    }
}
