#include "app/run_reported.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "framework/drawing/sys_exception.h"
#include "tests/support/import_override.h"
#include "tests/support/message_box_watcher.h"

namespace {

using Panelix::SysException;
using testing::ElementsAre;

// Wine's boxes do not become topmost: that they shall be shows in the number only.
static_assert(kErrorBoxStyle == 0x42010);

class RunReported : public testing::Test {
protected:
    /// The one box that was shown, with what all of them have in common.
    SeenMessageBox onlyBox() const {
        const std::vector<SeenMessageBox> boxes = watcher_.boxes();
        EXPECT_EQ(boxes.size(), 1U);
        if (boxes.empty()) {
            return {};
        }
        EXPECT_EQ(boxes[0].icon, MessageBoxIcon::Error);
        EXPECT_THAT(boxes[0].buttons, ElementsAre(IDOK));
        EXPECT_EQ(boxes[0].owner, nullptr);
        return boxes[0];
    }

    MessageBoxWatcher watcher_;
};

TEST_F(RunReported, AStepThatEndsGivesZeroAndNoBox) {
    int steps = 0;
    EXPECT_EQ(runReported([&steps] { ++steps; }), 0);
    EXPECT_EQ(steps, 1);
    EXPECT_TRUE(watcher_.boxes().empty());
}

TEST_F(RunReported, ASysExceptionIsShownUnderItsTitleAndGivesOne) {
    EXPECT_EQ(
        runReported([] { throw SysException(L"Cannot initialise COM library", L"Panelix Init Error"); }), 1);
    const SeenMessageBox box = onlyBox();
    EXPECT_EQ(box.caption, L"Kelvaro - Panelix Init Error");
    EXPECT_EQ(box.text, L"Cannot initialise COM library");
}

TEST_F(RunReported, ASysExceptionWithoutAMessageIsShownAllTheSame) {
    EXPECT_EQ(runReported([] { throw SysException(L"", L"Drawing Error"); }), 1);
    const SeenMessageBox box = onlyBox();
    EXPECT_EQ(box.caption, L"Kelvaro - Drawing Error");
    EXPECT_EQ(box.text, L"");
}

TEST_F(RunReported, AStandardExceptionIsAFatalErrorAndGivesOne) {
    EXPECT_EQ(runReported([] { throw std::runtime_error("something is missing"); }), 1);
    const SeenMessageBox box = onlyBox();
    EXPECT_EQ(box.caption, L"Kelvaro - Fatal Error");
    EXPECT_EQ(box.text, L"something is missing");
}

TEST_F(RunReported, MemoryThatRunsOutIsAFatalErrorToo) {
    EXPECT_EQ(runReported([] { throw std::bad_alloc(); }), 1);
    EXPECT_EQ(onlyBox().caption, L"Kelvaro - Fatal Error");
}

std::vector<UINT> styles;

int WINAPI noteWideBox(HWND owner, LPCWSTR, LPCWSTR, UINT style) {
    EXPECT_EQ(owner, nullptr);
    styles.push_back(style);
    return IDOK;
}

int WINAPI noteNarrowBox(HWND owner, LPCSTR, LPCSTR, UINT style) {
    EXPECT_EQ(owner, nullptr);
    styles.push_back(style);
    return IDOK;
}

TEST_F(RunReported, BothKindsOfErrorsAskForATopmostBox) {
    const ImportOverride wide("user32.dll", "MessageBoxW", noteWideBox);
    const ImportOverride narrow("user32.dll", "MessageBoxA", noteNarrowBox);
    runReported([] { throw SysException(L"", L"Drawing Error"); });
    runReported([] { throw std::runtime_error("something is missing"); });
    EXPECT_THAT(styles, ElementsAre(kErrorBoxStyle, kErrorBoxStyle));
}

TEST_F(RunReported, AnythingElsePassesThroughWithoutABox) {
    EXPECT_THROW(runReported([] { throw 5; }), int);
    EXPECT_TRUE(watcher_.boxes().empty());
}

TEST(RunReportedBoxes, DisableTheThreadsOtherWindowsWhileTheyAreOpen) {
    const HWND other = CreateWindowExW(
        0, L"Static", L"other", WS_POPUP | WS_VISIBLE, 10, 10, 50, 50, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(other, nullptr);
    std::vector<bool> enabled;
    {
        const MessageBoxWatcher watcher(
            IDOK, [&](const SeenMessageBox&) { enabled.push_back(IsWindowEnabled(other) != FALSE); });
        runReported([] { throw SysException(L"message", L"title"); });
        enabled.push_back(IsWindowEnabled(other) != FALSE);
        runReported([] { throw std::runtime_error("message"); });
        enabled.push_back(IsWindowEnabled(other) != FALSE);
    }
    EXPECT_THAT(enabled, ElementsAre(false, true, false, true));
    DestroyWindow(other);
}

}  // namespace
