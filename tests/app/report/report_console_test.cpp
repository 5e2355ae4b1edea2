#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "app/report/report_program.h"
#include "app/report/text_output.h"
#include "framework/core/unique_resource.h"
#include "standins/wait_until.h"
#include "tests/support/import_override.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

/// How many programs the system says to be on the console: Wine does not count them.
DWORD programsOnConsole = 1;

DWORD WINAPI tellProgramsOnConsole(LPDWORD, DWORD) {
    return programsOnConsole;
}

/// The program that prints its help, on a thread of its own. The destructor waits for its end.
class HelpOnAThread {
public:
    ~HelpOnAThread() { thread_.join(); }

    bool ended() const { return ended_; }

private:
    void print() {
        const wchar_t* const arguments[] = {L"KelvaroReport", L"--help"};
        EXPECT_EQ(runReportProgram(2, arguments), 0);
        ended_ = true;
    }

    std::atomic<bool> ended_ = false;
    std::thread thread_{[this] { print(); }};
};

/// A console of this program's own, which its standard handles lead to.
class ReportOnAConsole : public testing::Test {
protected:
    ReportOnAConsole() {
        FreeConsole();
        EXPECT_NE(AllocConsole(), FALSE) << "error " << GetLastError();
        consoles = standardHandles();
        input.reset(open(L"CONIN$"));
        output.reset(open(L"CONOUT$"));
        EXPECT_TRUE(input && output) << "error " << GetLastError();
        setStandardHandles({input.get(), output.get(), output.get()});
    }
    ~ReportOnAConsole() override {
        // Those that came with the console go with it.
        setStandardHandles(consoles);
        FreeConsole();
        setStandardHandles(before);
    }

    using Handles = std::array<HANDLE, 3>;

    static Handles standardHandles() {
        return {
            GetStdHandle(STD_INPUT_HANDLE), GetStdHandle(STD_OUTPUT_HANDLE), GetStdHandle(STD_ERROR_HANDLE)};
    }

    static void setStandardHandles(const Handles& handles) {
        SetStdHandle(STD_INPUT_HANDLE, handles[0]);
        SetStdHandle(STD_OUTPUT_HANDLE, handles[1]);
        SetStdHandle(STD_ERROR_HANDLE, handles[2]);
    }

    static HANDLE open(const wchar_t* name) {
        return CreateFileW(name,
                           GENERIC_READ | GENERIC_WRITE,
                           FILE_SHARE_READ | FILE_SHARE_WRITE,
                           nullptr,
                           OPEN_EXISTING,
                           0,
                           nullptr);
    }

    /// One key, down and up.
    void press(WORD key, wchar_t character) const {
        std::array<INPUT_RECORD, 2> records{};
        for (std::size_t i = 0; i < records.size(); ++i) {
            records[i].EventType = KEY_EVENT;
            KEY_EVENT_RECORD& event = records[i].Event.KeyEvent;
            event.bKeyDown = i == 0 ? TRUE : FALSE;
            event.wRepeatCount = 1;
            event.wVirtualKeyCode = key;
            event.uChar.UnicodeChar = character;
        }
        DWORD written = 0;
        EXPECT_NE(WriteConsoleInputW(input.get(), records.data(), 2, &written), FALSE);
    }

    /// A line of the console, without the blanks at its end.
    std::wstring line(SHORT number) const {
        std::wstring text(80, L' ');
        DWORD read = 0;
        ReadConsoleOutputCharacterW(output.get(), text.data(), 80, COORD{0, number}, &read);
        text.resize(read);
        return text.substr(0, text.find_last_not_of(L' ') + 1);
    }

    /// All lines as one text.
    std::wstring shown() const {
        CONSOLE_SCREEN_BUFFER_INFO buffer{};
        GetConsoleScreenBufferInfo(output.get(), &buffer);
        std::wstring text;
        for (SHORT number = 0; number <= buffer.dwCursorPosition.Y; ++number) {
            text += line(number) + L"\n";
        }
        return text;
    }

    bool asksForEnter() const {
        return shown().find(L"Press Enter to close this window.") != std::wstring::npos;
    }

    const Handles before = standardHandles();
    Handles consoles{};
    Panelix::UniqueFile input;
    Panelix::UniqueFile output;
    ImportOverride programs{"kernel32.dll", "GetConsoleProcessList", tellProgramsOnConsole};
};

TEST_F(ReportOnAConsole, ShowsLettersOfEveryScript) {
    const TextOutput text(STD_OUTPUT_HANDLE);
    EXPECT_TRUE(text.isConsole());
    EXPECT_TRUE(text.writeLine(L"Kopfh\u00F6rer \u2116 5, \u041C\u0438\u0440"));
    EXPECT_TRUE(text.write(L"next"));
    EXPECT_EQ(line(0), L"Kopfh\u00F6rer \u2116 5, \u041C\u0438\u0440");
    EXPECT_EQ(line(1), L"next");
}

TEST_F(ReportOnAConsole, WaitsForEnterOnlyWhenTheWindowIsItsOwn) {
    programsOnConsole = 2;
    {
        HelpOnAThread help;
        EXPECT_TRUE(Standins::waitUntil([&] { return help.ended(); }, std::chrono::seconds(10)));
        press(VK_RETURN, L'\r');
    }
    EXPECT_THAT(shown(), StartsWith(L"Usage: KelvaroReport [--lcd] [--output FILE | --save]\n"));
    EXPECT_FALSE(asksForEnter());

    FlushConsoleInputBuffer(input.get());
    programsOnConsole = 1;
    HelpOnAThread help;
    EXPECT_TRUE(Standins::waitUntil([&] { return asksForEnter(); }, std::chrono::seconds(10)));
    press('A', L'a');
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_FALSE(help.ended());
    press(VK_RETURN, L'\r');
    EXPECT_TRUE(Standins::waitUntil([&] { return help.ended(); }, std::chrono::seconds(10)));
}

DWORD endedWith = 0;

BOOL WINAPI noteEnd(HANDLE process, UINT code) {
    EXPECT_EQ(process, GetCurrentProcess());
    endedWith = code;
    return TRUE;
}

TEST_F(ReportOnAConsole, WaitsForEnterAfterADriversFaultAsWell) {
    endedWith = 0;
    const ImportOverride ending("kernel32.dll", "TerminateProcess", noteEnd);
    programsOnConsole = 2;
    const wchar_t* const arguments[] = {L"KelvaroReport", L"--help"};
    EXPECT_EQ(runReportProgram(2, arguments), 0);
    programsOnConsole = 1;
    // The one that the program has set.
    const LPTOP_LEVEL_EXCEPTION_FILTER afterFault = SetUnhandledExceptionFilter(nullptr);
    ASSERT_NE(afterFault, nullptr);
    std::atomic<bool> ended = false;
    std::thread faulty([&] {
        EXCEPTION_RECORD record{};
        record.ExceptionCode = EXCEPTION_ACCESS_VIOLATION;
        EXCEPTION_POINTERS fault{&record, nullptr};
        afterFault(&fault);
        ended = true;
    });
    EXPECT_TRUE(Standins::waitUntil([&] { return asksForEnter(); }, std::chrono::seconds(10)));
    EXPECT_THAT(shown(), HasSubstr(L"in the section above: exception 0xC0000005 in unknown code\n"));
    EXPECT_FALSE(ended);
    press(VK_RETURN, L'\r');
    faulty.join();
    EXPECT_EQ(endedWith, DWORD{1});
}

}  // namespace
