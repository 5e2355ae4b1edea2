#include <windows.h>

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <optional>
#include <string>

#include "app/resource_ids.h"
#include "tests/e2e/desktop_fixture.h"

namespace {

constexpr wchar_t kDialogClass[] = L"#32770";
constexpr std::size_t kShowOrHideItem = 0;
constexpr std::size_t kSettingsItem = 2;
constexpr std::size_t kExitItem = 3;

/// The program with its Settings dialog, on the session's real registry.
class KelvaroSettings : public KelvaroOnTheDesktop {
protected:
    using User = std::function<void(HWND dialog)>;

    KelvaroSettings() {
        std::array<wchar_t, MAX_PATH> path{};
        GetFullPathNameW(kelvaroProgram().c_str(), static_cast<DWORD>(path.size()), path.data(), nullptr);
        executable = path.data();
        folder = executable.substr(0, executable.rfind(L'\\'));
        CleanProgramEntries::setInstallFolder(folder);
    }

    /// The dialog is visible before it has handled what it posts to itself to fill itself in. A message that
    /// is posted later, and whose effect other processes see, shows that it has.
    static void waitUntilFilledIn(HWND dialog) {
        const HWND box = GetDlgItem(dialog, IDC_AUTOSTART);
        PostMessageW(box, BM_SETSTATE, TRUE, 0);
        EXPECT_TRUE(waitFor([box] { return (SendMessageW(box, BM_GETSTATE, 0, 0) & BST_PUSHED) != 0; }));
        SendMessageW(box, BM_SETSTATE, FALSE, 0);
    }

    /// Opens the dialog from the tray menu, lets `user` work on it, and closes it if he left it open.
    void openSettings(const User& user) {
        choose(kSettingsItem);
        const HWND dialog = waitForVisibleWindow(kelvaro->id(), kDialogClass, L"Settings");
        ASSERT_NE(dialog, nullptr);
        waitUntilFilledIn(dialog);
        user(dialog);
        if (IsWindow(dialog) != FALSE) {
            pressButton(dialog, IDC_CANCEL);
            ASSERT_TRUE(waitUntilGone(dialog));
        }
    }

    void save(bool autostart, const std::wstring& delay) {
        openSettings([&](HWND dialog) {
            const HWND box = GetDlgItem(dialog, IDC_AUTOSTART);
            SendMessageW(box, BM_SETCHECK, autostart ? BST_CHECKED : BST_UNCHECKED, 0);
            typeText(dialog, IDC_DELAY, delay);
            pressButton(dialog, IDC_SAVE);
            EXPECT_TRUE(waitUntilGone(dialog)) << "not saved";
        });
    }

    void expectShown(bool autostart, const wchar_t* delay) {
        openSettings([&](HWND dialog) {
            const HWND box = GetDlgItem(dialog, IDC_AUTOSTART);
            EXPECT_TRUE(
                waitFor([&] { return (SendMessageW(box, BM_GETCHECK, 0, 0) == BST_CHECKED) == autostart; }));
            EXPECT_EQ(textOf(GetDlgItem(dialog, IDC_DELAY)), delay);
        });
    }

    std::wstring entry(const std::wstring& options) const { return L"\"" + executable + L"\"" + options; }

    std::wstring executable;
    std::wstring folder;
};

TEST_F(KelvaroSettings, AreSavedInTheRunEntryAndReadBack) {
    start();
    expectShown(false, L"");
    save(true, L"15");
    EXPECT_EQ(runValue(), entry(L" -delay15"));
    expectShown(true, L"15");
    save(true, L"1234");
    EXPECT_EQ(runValue(), entry(L" -delay123"));
    expectShown(true, L"123");
    save(true, L"");
    EXPECT_EQ(runValue(), entry(L""));
    expectShown(true, L"");
    save(false, L"7");
    EXPECT_EQ(runValue(), std::nullopt);
    expectShown(false, L"");
}

TEST_F(KelvaroSettings, LettersAreWarnedAboutAndNothingIsSaved) {
    start();
    openSettings([](HWND dialog) {
        const HWND warning = GetDlgItem(dialog, IDC_DELAY_WARNING);
        EXPECT_EQ(textOf(warning), L"Delay must be numbers and smaller than 4 digits");
        EXPECT_EQ(IsWindowVisible(warning), FALSE);
        SendDlgItemMessageW(dialog, IDC_AUTOSTART, BM_SETCHECK, BST_CHECKED, 0);
        typeText(dialog, IDC_DELAY, L"12a");
        pressButton(dialog, IDC_SAVE);
        EXPECT_TRUE(waitFor([warning] { return IsWindowVisible(warning) != FALSE; }));
        EXPECT_NE(IsWindow(dialog), FALSE);
    });
    EXPECT_EQ(runValue(), std::nullopt);
}

TEST_F(KelvaroSettings, WithoutAnInstallationNothingIsSaved) {
    CleanProgramEntries::removeInstallFolder();
    start();
    save(true, L"15");
    EXPECT_EQ(runValue(), std::nullopt);
    CleanProgramEntries::setInstallFolder(folder + L"\\missing");
    save(true, L"15");
    EXPECT_EQ(runValue(), std::nullopt);
}

TEST_F(KelvaroSettings, OddEntriesNeverDisturbTheProgram) {
    start();
    CleanProgramEntries::setRunValue(L"\"C:\\Kelvaro.exe\" -delay 15");
    expectShown(true, L"");
    const std::wstring beyondAll = L"\"C:\\Kelvaro.exe\" -delay99999999999999999999";
    CleanProgramEntries::setRunValue(beyondAll);
    expectShown(true, L"");
    EXPECT_EQ(runValue(), beyondAll);
    CleanProgramEntries::setRunValue(std::wstring(300, L'x'));
    expectShown(false, L"");
    EXPECT_TRUE(kelvaro->isRunning());
}

TEST_F(KelvaroSettings, CanBeCancelledAfterAnyClickOnTheCaption) {
    start();
    for (const bool right : {true, false}) {
        openSettings([&](HWND dialog) {
            if (right) {
                rightClickAt(captionOf(dialog));
                ASSERT_TRUE(waitFor([&] { return openMenu(kelvaro->id()) != nullptr; }));
                ASSERT_TRUE(dismissMenu(dialog));
            } else {
                doubleClickAt(captionOf(dialog));
            }
            clickAt(clientCentre(GetDlgItem(dialog, IDC_CANCEL)));
            EXPECT_TRUE(waitUntilGone(dialog));
        });
    }
    choose(kShowOrHideItem);
    EXPECT_TRUE(becomesVisible(true)) << "the program goes on";
}

TEST_F(KelvaroSettings, LeaveTheShownPreviewWindowFree) {
    start();
    choose(kShowOrHideItem);
    ASSERT_TRUE(becomesVisible(true));
    openSettings([this](HWND dialog) {
        EXPECT_EQ(GetWindow(dialog, GW_OWNER), nullptr);
        EXPECT_NE(IsWindowEnabled(window), FALSE);
    });
}

TEST_F(KelvaroSettings, AFolderBeyondAsciiIsWrittenInTheAnsiCodePage) {
    ASSERT_EQ(GetACP(), 1252U);
    const InstallationFolder installation(L" \u00FC\u20AC");
    CleanProgramEntries::setInstallFolder(installation.path());
    start();
    save(true, L"15");
    EXPECT_EQ(runValue(), L"\"" + installation.executable() + L"\" -delay15");
    expectShown(true, L"15");
}

TEST_F(KelvaroSettings, TheSavedEntryStartsTheProgramAfterItsDelay) {
    start();
    save(true, L"2");
    choose(kExitItem);
    ASSERT_EQ(kelvaro->waitForExit(), DWORD{0});

    const std::optional<std::wstring> line = runValue();
    ASSERT_TRUE(line.has_value());
    ASSERT_EQ(line->compare(0, executable.size() + 2, L"\"" + executable + L"\""), 0);
    const auto begin = std::chrono::steady_clock::now();
    kelvaro = std::make_unique<ChildProcess>(executable, line->substr(executable.size() + 3));
    window = waitForPreview(*kelvaro);
    EXPECT_NE(window, nullptr);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
}

}  // namespace
