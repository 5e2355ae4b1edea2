#include "tests/bundle/contained_process.h"

#include <gtest/gtest.h>

#include "framework/core/unique_resource.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace Bundle;
using namespace std::chrono_literals;

constexpr char kEndless[] = "for /l %i in (1,0,2) do rem";

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
    // The inner one holds the file open for as long as it lives.
    const std::wstring held = folder.path() + L"\\held.txt";
    const RunEnd end = run(
        "cmd.exe /c " + std::string(kEndless) + " > \"" + std::filesystem::path(held).string() + "\"", 2s);
    EXPECT_EQ(end.ending, Ending::Late);
    EXPECT_FALSE(end.isGood());
    EXPECT_NE(GetFileAttributesW(held.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_NE(DeleteFileW(held.c_str()), FALSE);
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
