#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "app/report/report.h"
#include "app/report/report_program.h"
#include "app/report/text_output.h"
#include "tests/support/import_override.h"

// Outputs that take a text in pieces, or refuse it.

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// Takes the place of the process's standard output and remembers what it was given.
class ReportOutput : public testing::Test {
protected:
    ReportOutput() {
        taken.clear();
        calls = 0;
        mostBytes = 1U << 20;
        refused = 0;
        refusedText = {};
        nothingTaken = false;
    }

    static BOOL WINAPI takeBytes(HANDLE, LPCVOID bytes, DWORD length, LPDWORD written, LPOVERLAPPED) {
        *written = 0;
        const std::string_view text(static_cast<const char*>(bytes), length);
        const bool isRefusedText = !refusedText.empty() && text.find(refusedText) != std::string_view::npos;
        if (++calls == refused || isRefusedText) {
            SetLastError(ERROR_DISK_FULL);
            return nothingTaken ? TRUE : FALSE;
        }
        *written = std::min(length, mostBytes);
        taken.append(static_cast<const char*>(bytes), *written);
        return TRUE;
    }

    static inline std::string taken;
    static inline int calls = 0;
    static inline DWORD mostBytes = 0;
    /// Number of the call that fails, from 1.
    static inline int refused = 0;
    /// The calls that have this text in them fail as well; none when it is empty.
    static inline std::string_view refusedText;
    /// It fails as a pipe that does not wait: it succeeds and takes nothing.
    static inline bool nothingTaken = false;

    ImportOverride writing{"kernel32.dll", "WriteFile", takeBytes};
};

TEST_F(ReportOutput, GivesTheRestOfATextThatIsTakenInPieces) {
    mostBytes = 3;
    const TextOutput output(STD_OUTPUT_HANDLE);
    ASSERT_FALSE(output.isConsole());
    EXPECT_TRUE(output.writeLine(L"abcd \u2116 5\nnext"));
    EXPECT_EQ(taken, "abcd \xE2\x84\x96 5\r\nnext\r\n");
}

TEST_F(ReportOutput, TellsThatAPieceWasRefused) {
    mostBytes = 3;
    refused = 2;
    const TextOutput output(STD_OUTPUT_HANDLE);
    EXPECT_FALSE(output.write(L"abcdef"));
    EXPECT_EQ(taken, "abc");
    refused = calls + 1;
    nothingTaken = true;
    EXPECT_FALSE(output.write(L"abcdef"));
    EXPECT_TRUE(output.write(L"ghi"));
    EXPECT_EQ(taken, "abcghi");
}

TEST_F(ReportOutput, HalvesOfPairsThatStandAloneAreReplaced) {
    const TextOutput output(STD_OUTPUT_HANDLE);
    EXPECT_TRUE(output.write(L"\xD83D\xDC31, \xD83D."));
    EXPECT_EQ(taken, "\xF0\x9F\x90\xB1, \xEF\xBF\xBD.");
}

TEST_F(ReportOutput, ThatRefusesAnyLineMakesTheReportIncomplete) {
    const wchar_t* const arguments[] = {L"KelvaroReport"};
    constexpr std::string_view kLastLine = "Everything could be looked at.";
    EXPECT_EQ(runReportProgram(1, arguments), kExitComplete);
    EXPECT_THAT(taken, StartsWith("Kelvaro report"));
    EXPECT_THAT(taken, EndsWith("Everything could be looked at.\r\n"));
    for (const std::string_view line : {std::string_view("Kelvaro runs now"), kLastLine}) {
        taken.clear();
        refusedText = line;
        EXPECT_EQ(runReportProgram(1, arguments), kExitIncomplete) << line;
        EXPECT_THAT(taken, StartsWith("Kelvaro report"));
        EXPECT_THAT(taken, Not(HasSubstr(std::string(line))));
        if (line != kLastLine) {
            EXPECT_THAT(taken, EndsWith("Everything could be looked at.\r\n"))
                << "the other lines are written";
        }
    }
}

TEST_F(ReportOutput, ThatRefusesTheHelpIsTold) {
    const wchar_t* const arguments[] = {L"KelvaroReport", L"--help"};
    EXPECT_EQ(runReportProgram(2, arguments), kExitComplete);
    EXPECT_THAT(taken, HasSubstr("--lcd"));
    refused = calls + 1;
    EXPECT_EQ(runReportProgram(2, arguments), kExitIncomplete);
}

}  // namespace
