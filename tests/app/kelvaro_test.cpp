#include "app/kelvaro.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <cstdint>
#include <functional>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "app/open_dialog.h"
#include "app/resource_ids.h"
#include "framework/core/command_codes.h"
#include "tests/support/desktop_driver.h"
#include "tests/support/import_override.h"
#include "tests/support/import_recorder.h"
#include "tests/support/installation.h"
#include "tests/support/lcd_registration.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr wchar_t kDialogClass[] = L"#32770";
constexpr wchar_t kAbout[] = L"About Kelvaro";
constexpr wchar_t kSettings[] = L"Settings";

/// What was asked of the system: "box" and the like.
std::vector<std::string> shown;

int WINAPI noteBox(HWND, LPCWSTR, LPCWSTR, UINT) {
    shown.emplace_back("box");
    return IDOK;
}

struct DialogCall {
    HINSTANCE instance;
    LPCWSTR resource;
    HWND owner;
    LPARAM parameter;
    bool operator==(const DialogCall&) const = default;
};

std::vector<DialogCall> dialogCalls;

INT_PTR WINAPI noteDialog(HINSTANCE instance, LPCWSTR resource, HWND owner, DLGPROC, LPARAM parameter) {
    shown.emplace_back("dialog");
    dialogCalls.push_back({instance, resource, owner, parameter});
    return 0;
}

/// The real application object in desktop mode. Its loop does not run: only boxes and dialogs take out
/// messages.
class KelvaroObject : public testing::Test {
protected:
    using User = std::function<void()>;

    /// Gives `command`, whose box or dialog holds this thread, while `user` works on another one. What is
    /// open afterwards is closed.
    void commandWhile(std::uint32_t command, const User& user) {
        std::thread thread([this, &user] {
            user();
            for (const wchar_t* caption : {kAbout, kSettings}) {
                for (const HWND window : open(caption)) {
                    close(window);
                }
            }
        });
        kelvaro.HandleCommand(command);
        thread.join();
    }

    /// As the tray menu does.
    void ask(std::uint32_t command) { PostMessageW(kelvaro.window(), WM_COMMAND, command, 0); }

    /// As a right click on the tray icon does.
    void askForTrayMenu() { PostMessageW(kelvaro.window(), WM_APP, 1, WM_RBUTTONDOWN); }

    /// Visible or not.
    static std::vector<HWND> existing(const wchar_t* caption) {
        std::vector<HWND> found;
        for (HWND window = FindWindowExW(nullptr, nullptr, kDialogClass, caption); window != nullptr;
             window = FindWindowExW(nullptr, window, kDialogClass, caption)) {
            DWORD process = 0;
            GetWindowThreadProcessId(window, &process);
            if (process == GetCurrentProcessId()) {
                found.push_back(window);
            }
        }
        return found;
    }

    static std::vector<HWND> open(const wchar_t* caption) {
        return visibleWindows(GetCurrentProcessId(), kDialogClass, caption);
    }

    static HWND waitFor(const wchar_t* caption) {
        return waitForVisibleWindow(GetCurrentProcessId(), kDialogClass, caption);
    }

    /// OK of the box, Cancel of the dialog. In nested loops the outer window is hidden only.
    static void close(HWND window) {
        pressButton(window, textOf(window) == kAbout ? IDOK : IDC_CANCEL);
        EXPECT_TRUE(::waitFor([window] { return IsWindowVisible(window) == FALSE; }));
    }

    /// What was asked for has been opened when it returns, unless it never will be.
    void settle() { EXPECT_TRUE(waitUntilPostedIsHandled(kelvaro.window())); }

    LcdRegistrationScope noLcd{L""};
    CleanProgramEntries entries;
    Kelvaro kelvaro{GetModuleHandleW(nullptr)};
};

TEST_F(KelvaroObject, OtherCommandsThanAboutAndSettingsDoNothing) {
    const ImportOverride box("user32.dll", "MessageBoxW", noteBox);
    const ImportOverride dialog("user32.dll", "DialogBoxParamW", noteDialog);
    for (const std::uint32_t command : {0U,
                                        1U,
                                        2U,
                                        Panelix::kCommandShow,
                                        Panelix::kCommandHide,
                                        Panelix::kCommandExit,
                                        Panelix::kCommandSettings + 1,
                                        Panelix::kCommandAbout | 0x10000U,
                                        0xFFFFU,
                                        0xFFFFFFFFU}) {
        kelvaro.HandleCommand(command);
    }
    EXPECT_THAT(shown, IsEmpty());
    EXPECT_NE(IsWindow(kelvaro.window()), FALSE);
    EXPECT_EQ(IsWindowVisible(kelvaro.window()), FALSE);
    kelvaro.HandleCommand(Panelix::kCommandAbout);
    kelvaro.HandleCommand(Panelix::kCommandSettings);
    EXPECT_THAT(shown, ElementsAre("box", "dialog"));
}

TEST_F(KelvaroObject, ItsDialogHasNoOwnerEvenWhenThePreviewIsActive) {
    const ImportOverride dialog("user32.dll", "DialogBoxParamW", noteDialog);
    ShowWindow(kelvaro.window(), SW_RESTORE);
    SetForegroundWindow(kelvaro.window());
    ASSERT_EQ(GetActiveWindow(), kelvaro.window());
    kelvaro.HandleCommand(Panelix::kCommandSettings);
    EXPECT_THAT(
        dialogCalls,
        ElementsAre(DialogCall{GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_SETTINGS), nullptr, 0}));
}

TEST_F(KelvaroObject, HasOneAboutBoxAndOneSettingsDialogWhicheverIsAskedForInside) {
    for (const std::uint32_t first : {Panelix::kCommandAbout, Panelix::kCommandSettings}) {
        commandWhile(first, [&] {
            ASSERT_NE(waitFor(first == Panelix::kCommandAbout ? kAbout : kSettings), nullptr);
            for (int round = 0; round < 2; ++round) {
                ask(Panelix::kCommandAbout);
                ask(Panelix::kCommandSettings);
                settle();
            }
            EXPECT_TRUE(::waitFor([] { return !open(kAbout).empty() && !open(kSettings).empty(); }));
            EXPECT_EQ(open(kAbout).size(), 1U);
            EXPECT_EQ(open(kSettings).size(), 1U);
        });
    }
}

struct Choice {
    std::uint32_t command;
    const wchar_t* caption;
};

constexpr Choice kBothChoices[] = {{Panelix::kCommandAbout, kAbout}, {Panelix::kCommandSettings, kSettings}};

// The dialog's loop takes the second request out before it has nothing else to do.
TEST_F(KelvaroObject, RequestsThatWaitInTheQueueWhileTheFirstIsOpenedOpenNoSecondOne) {
    for (const Choice& choice : kBothChoices) {
        ask(choice.command);
        ask(choice.command);
        commandWhile(choice.command, [&] {
            const HWND window = waitFor(choice.caption);
            ASSERT_NE(window, nullptr);
            settle();
            EXPECT_THAT(existing(choice.caption), ElementsAre(window));
            close(window);
        });
        EXPECT_THAT(existing(choice.caption), IsEmpty());
    }
}

TEST_F(KelvaroObject, BoxAndDialogAreVisibleWhileATrayMenuThatWasAskedForBeforeIsOpen) {
    for (const Choice& choice : kBothChoices) {
        askForTrayMenu();
        commandWhile(choice.command, [&] {
            ASSERT_TRUE(::waitFor([] { return openMenu(GetCurrentProcessId()) != nullptr; }));
            EXPECT_EQ(open(choice.caption).size(), 1U);
            EXPECT_TRUE(dismissMenu(kelvaro.window()));
        });
    }
}

TEST_F(KelvaroObject, ChoicesInTwoTrayMenusOpenOneDialog) {
    for (const Choice& choice : kBothChoices) {
        askForTrayMenu();
        commandWhile(choice.command, [&] {
            ASSERT_TRUE(::waitFor([] { return openMenu(GetCurrentProcessId()) != nullptr; }));
            // Taken out by the menu's loop, in which a second dialog would open.
            ask(choice.command);
            settle();
            EXPECT_EQ(existing(choice.caption).size(), 1U);
            EXPECT_TRUE(chooseMenuItem(kelvaro.window(), choice.command == Panelix::kCommandAbout ? 1 : 2));
            settle();
            EXPECT_EQ(existing(choice.caption).size(), 1U);
        });
        EXPECT_THAT(existing(choice.caption), IsEmpty());
    }
}

TEST_F(KelvaroObject, BoxAndDialogCanBeOpenedAgainHoweverTheyWereClosed) {
    for (const Choice& choice : kBothChoices) {
        for (const UINT message : {UINT{WM_CLOSE}, UINT{WM_COMMAND}, UINT{WM_SYSCOMMAND}}) {
            commandWhile(choice.command, [&] {
                const HWND window = waitFor(choice.caption);
                ASSERT_NE(window, nullptr);
                if (message == WM_COMMAND) {
                    close(window);
                } else {
                    PostMessageW(window, message, message == WM_SYSCOMMAND ? SC_CLOSE : 0, 0);
                }
                EXPECT_TRUE(waitUntilGone(window));
            });
            EXPECT_THAT(existing(choice.caption), IsEmpty());
        }
    }
}

INT_PTR WINAPI refuseDialog(HINSTANCE, LPCWSTR, HWND, DLGPROC, LPARAM) {
    return -1;
}

int WINAPI refuseBox(HWND, LPCWSTR, LPCWSTR, UINT) {
    return 0;
}

TEST_F(KelvaroObject, BoxAndDialogThatCouldNotBeMadeCanBeAskedForAgain) {
    {
        const ImportOverride box("user32.dll", "MessageBoxW", refuseBox);
        const ImportOverride dialog("user32.dll", "DialogBoxParamW", refuseDialog);
        kelvaro.HandleCommand(Panelix::kCommandAbout);
        kelvaro.HandleCommand(Panelix::kCommandSettings);
    }
    for (const Choice& choice : kBothChoices) {
        commandWhile(choice.command, [&] { EXPECT_NE(waitFor(choice.caption), nullptr); });
    }
}

TEST_F(KelvaroObject, BoxAndDialogEachTakeTheirHookAwayWhetherTheyWereMadeOrNot) {
    const ImportRecorder<&SetWindowsHookExW> set("user32.dll", "SetWindowsHookExW");
    const ImportRecorder<&UnhookWindowsHookEx> unset("user32.dll", "UnhookWindowsHookEx");
    for (const Choice& choice : kBothChoices) {
        commandWhile(choice.command, [&] {
            const HWND window = waitFor(choice.caption);
            ASSERT_NE(window, nullptr);
            // No longer than until it is complete: a hook slows every message of the thread down.
            EXPECT_EQ(unset.count(), set.count());
        });
    }
    const ImportOverride box("user32.dll", "MessageBoxW", refuseBox);
    const ImportOverride dialog("user32.dll", "DialogBoxParamW", refuseDialog);
    kelvaro.HandleCommand(Panelix::kCommandAbout);
    kelvaro.HandleCommand(Panelix::kCommandSettings);
    EXPECT_EQ(set.count(), 4U);
    EXPECT_EQ(unset.arguments(), set.results());
}

TEST_F(KelvaroObject, WithoutAHookThereIsStillOneOfEach) {
    ImportRecorder<&SetWindowsHookExW> set("user32.dll", "SetWindowsHookExW");
    for (const Choice& choice : kBothChoices) {
        ask(choice.command);
        ask(choice.command);
        set.failWith(nullptr);
        commandWhile(choice.command, [&] {
            ASSERT_NE(waitFor(choice.caption), nullptr);
            set.goThroughAgain();
            settle();
            EXPECT_EQ(existing(choice.caption).size(), 1U);
        });
        EXPECT_THAT(existing(choice.caption), IsEmpty());
    }
}

TEST(OpenDialogRequest, ThatEndsByAnExceptionLeavesNothingOpen) {
    OpenDialog dialog;
    EXPECT_THROW(dialog.show([] { throw std::bad_alloc(); }), std::bad_alloc);
    bool opened = false;
    dialog.show([&opened] { opened = true; });
    EXPECT_TRUE(opened);
}

TEST(OpenDialogRequest, DuringTheOpeningOpensNoSecondOne) {
    OpenDialog dialog;
    int opened = 0;
    dialog.show([&] {
        ++opened;
        dialog.show([&opened] { ++opened; });
    });
    EXPECT_EQ(opened, 1);
}

TEST_F(KelvaroObject, BoxAndDialogEachOpenOnceWhenBothWaitInTheQueue) {
    for (const std::size_t first : {std::size_t{0}, std::size_t{1}}) {
        const Choice& outer = kBothChoices[first];
        const Choice& inner = kBothChoices[1 - first];
        ask(inner.command);
        ask(outer.command);
        ask(inner.command);
        commandWhile(outer.command, [&] {
            ASSERT_NE(waitFor(inner.caption), nullptr);
            settle();
            EXPECT_EQ(existing(outer.caption).size(), 1U);
            EXPECT_EQ(existing(inner.caption).size(), 1U);
        });
    }
}

TEST_F(KelvaroObject, OneThatWasClosedUnderAnotherOnesLoopCanBeOpenedAgain) {
    struct Case {
        std::uint32_t outer;
        const wchar_t* outerCaption;
        std::uint32_t inner;
        const wchar_t* innerCaption;
    };
    for (const Case& c : {
             Case{Panelix::kCommandSettings, kSettings, Panelix::kCommandAbout, kAbout},
             Case{Panelix::kCommandAbout, kAbout, Panelix::kCommandSettings, kSettings},
         }) {
        commandWhile(c.outer, [&] {
            const HWND outer = waitFor(c.outerCaption);
            ask(c.inner);
            const HWND inner = waitFor(c.innerCaption);
            ASSERT_NE(inner, nullptr);
            close(outer);
            ASSERT_THAT(open(c.outerCaption), IsEmpty());

            ask(c.outer);
            const HWND again = waitFor(c.outerCaption);
            ASSERT_NE(again, nullptr);
            EXPECT_NE(again, outer);
            ask(c.outer);
            settle();
            EXPECT_THAT(open(c.outerCaption), ElementsAre(again));
            EXPECT_THAT(open(c.innerCaption), ElementsAre(inner));
            close(again);
        });
    }
}

TEST_F(KelvaroObject, AnotherWindowOfThatCaptionIsNotItsBox) {
    const HWND noDialog = CreateWindowExW(
        0, L"Static", kAbout, WS_POPUP | WS_VISIBLE, 0, 0, 50, 50, nullptr, nullptr, nullptr, nullptr);
    std::thread otherThread([] { MessageBoxW(nullptr, L"of another thread", kAbout, MB_OK); });
    EXPECT_NE(waitFor(kAbout), nullptr);
    commandWhile(Panelix::kCommandAbout,
                 [] { EXPECT_TRUE(::waitFor([] { return open(kAbout).size() == 2; })); });
    otherThread.join();
    DestroyWindow(noDialog);
}

}  // namespace
