#include "tests/bundle/contained_process.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "framework/core/unique_resource.h"
#include "standins/wait_until.h"
#include "tests/bundle/utf8.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace Bundle;
using namespace std::chrono_literals;

constexpr char kEndless[] = "for /l %i in (1,0,2) do rem";

/// Set in the process that holds a file of this name.
constexpr wchar_t kHeldVariable[] = L"KELVARO_HELD";

[[noreturn]] void holdFile() {
    wchar_t name[MAX_PATH] = L"";
    GetEnvironmentVariableW(kHeldVariable, name, MAX_PATH);
    const Panelix::UniqueFile file(
        CreateFileW(name, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    // When nobody ends it, it ends.
    std::this_thread::sleep_for(60s);
    std::exit(1);
}

/// Programs of the system's own, run for as long as they may.
class ContainedProcess : public testing::Test {
protected:
    RunEnd run(const std::string& command,
               std::chrono::milliseconds limit,
               const Environment& environment = {}) {
        wchar_t shell[MAX_PATH] = L"";
        GetEnvironmentVariableW(L"ComSpec", shell, MAX_PATH);
        return runContained({shell, "/c " + command, environment, limit},
                            stop.get(),
                            std::filesystem::path(folder.path()) / L"output.txt");
    }

    TemporaryFolder folder;
    Panelix::UniqueHandle stop{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

TEST_F(ContainedProcess, GivesOutputErrorsAndCode) {
    const RunEnd end = run("echo out& echo err 1>&2& exit 7", 20s);
    EXPECT_EQ(end.ending, Ending::ByItself);
    EXPECT_EQ(end.code, 7U);
    EXPECT_FALSE(end.isGood());
    EXPECT_NE(end.output.find("out"), std::string::npos) << end.output;
    EXPECT_NE(end.output.find("err"), std::string::npos) << end.output;
    EXPECT_TRUE(folder.files().empty());
    EXPECT_TRUE(run("exit 0", 20s).isGood());
}

TEST_F(ContainedProcess, SetsVariablesAndKeepsTheOthers) {
    SetEnvironmentVariableW(L"KELVARO_KEPT", L"kept");
    SetEnvironmentVariableW(L"KELVARO_CHANGED", L"before");
    const RunEnd end = run("echo %KELVARO_KEPT% %KELVARO_CHANGED% %KELVARO_NEW%",
                           20s,
                           {{"kelvaro_changed", "after"}, {"KELVARO_NEW", "new"}});
    EXPECT_NE(end.output.find("kept after new"), std::string::npos) << end.output;
}

TEST_F(ContainedProcess, IsEndedWithAllThatItStartedWhenItsTimeIsOver) {
    // The inner one holds the file open, and lets nobody delete it, for as long as it lives.
    const std::wstring held = folder.path() + L"\\held.txt";
    if (GetEnvironmentVariableW(kHeldVariable, nullptr, 0) != 0) {
        // Nobody else would.
        RemoveDirectoryW(folder.path().c_str());
        holdFile();
    }
    const RunEnd end =
        run("\"\"" + toUtf8(ownProgram()) + "\" --gtest_filter=ContainedProcess.IsEndedWithAll*\"",
            5s,
            {{toUtf8(kHeldVariable), toUtf8(held)}});
    EXPECT_EQ(end.ending, Ending::Late);
    EXPECT_FALSE(end.isGood());
    EXPECT_NE(GetFileAttributesW(held.c_str()), INVALID_FILE_ATTRIBUTES);
    // A process that is ended lets go of its files a moment later.
    EXPECT_TRUE(Standins::waitUntil([&] { return DeleteFileW(held.c_str()) != FALSE; }, 10s));
}

TEST_F(ContainedProcess, IsEndedWhenTheRunIsStopped) {
    SetEvent(stop.get());
    EXPECT_EQ(run(kEndless, 60s).ending, Ending::Stopped);
}

TEST_F(ContainedProcess, ThatCannotBeStartedSaysSo) {
    const RunEnd end = runContained(
        {L"C:\\missing.exe", "", {}, 5s}, stop.get(), std::filesystem::path(folder.path()) / L"output.txt");
    EXPECT_EQ(end.ending, Ending::NotStarted);
    EXPECT_FALSE(end.isGood());
}

}  // namespace
