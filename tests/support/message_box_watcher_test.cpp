#include "tests/support/message_box_watcher.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>

TEST(MessageBoxWatcher, ReportsCaptionTextAndIconOfEachBox) {
    struct Case {
        UINT type;
        MessageBoxIcon icon;
    };
    const std::array<Case, 5> cases{{
        {MB_OK, MessageBoxIcon::None},
        {MB_ICONERROR, MessageBoxIcon::Error},
        {MB_ICONQUESTION | MB_TASKMODAL, MessageBoxIcon::Question},
        {MB_ICONWARNING, MessageBoxIcon::Warning},
        {MB_ICONINFORMATION, MessageBoxIcon::Information},
    }};
    const MessageBoxWatcher watcher;
    for (const Case& expected : cases) {
        EXPECT_EQ(MessageBoxW(nullptr, L"some text\nin two lines", L"A caption", expected.type), IDOK);
    }
    ASSERT_TRUE(watcher.waitForCount(cases.size()));
    const std::vector<SeenMessageBox> boxes = watcher.boxes();
    ASSERT_EQ(boxes.size(), cases.size());
    for (std::size_t index = 0; index < cases.size(); ++index) {
        EXPECT_EQ(boxes[index].caption, L"A caption");
        EXPECT_EQ(boxes[index].text, L"some text\nin two lines");
        EXPECT_EQ(boxes[index].icon, cases[index].icon) << index;
        EXPECT_EQ(boxes[index].buttons, std::vector<int>{IDOK});
        EXPECT_EQ(boxes[index].threadId, GetCurrentThreadId());
        EXPECT_EQ(boxes[index].owner, nullptr);
    }
}

TEST(MessageBoxWatcher, PressesTheButtonAskedFor) {
    const MessageBoxWatcher watcher(IDNO);
    EXPECT_EQ(MessageBoxW(nullptr, L"text", L"caption", MB_YESNOCANCEL), IDNO);
    EXPECT_EQ(watcher.boxes().at(0).buttons, (std::vector<int>{IDYES, IDNO, IDCANCEL}));
    EXPECT_EQ(MessageBoxW(nullptr, L"text", L"caption", MB_OKCANCEL), IDOK);
}

TEST(MessageBoxWatcher, CallsTheVisitorWhileTheBoxIsOpen) {
    bool wasOpen = false;
    const MessageBoxWatcher watcher(
        IDOK, [&wasOpen](const SeenMessageBox& box) { wasOpen = IsWindowVisible(box.window) != FALSE; });
    MessageBoxW(nullptr, L"text", L"caption", MB_OK);
    EXPECT_TRUE(wasOpen);
}

TEST(MessageBoxWatcher, WaitingEndsWithoutABox) {
    const MessageBoxWatcher watcher;
    EXPECT_FALSE(watcher.waitForCount(1, std::chrono::milliseconds(50)));
    EXPECT_TRUE(watcher.boxes().empty());
}
