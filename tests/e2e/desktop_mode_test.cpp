#include <windows.h>

#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "app/resource_ids.h"
#include "standins/vendor_libraries.h"
#include "tests/e2e/desktop_fixture.h"
#include "tests/support/temporary_folder.h"

namespace {

using testing::ElementsAre;

constexpr wchar_t kDialogClass[] = L"#32770";
constexpr std::size_t kShowOrHideItem = 0;
constexpr std::size_t kAboutItem = 1;
constexpr std::size_t kSettingsItem = 2;
constexpr std::size_t kExitItem = 3;

/// What a menu with these texts looks like at the mouse. A menu of another process tells its texts by its
/// picture only.
ScreenPicture pictureOfMenu(const std::vector<const wchar_t*>& texts) {
    const HWND owner = CreateWindowExW(
        0, L"Static", L"menu owner", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    const HMENU menu = CreatePopupMenu();
    for (const wchar_t* text : texts) {
        AppendMenuW(menu, MF_STRING, 1, text);
    }
    ScreenPicture picture{};
    std::thread user([&] {
        waitFor([] { return openMenu(GetCurrentProcessId()) != nullptr; });
        picture = captureSettled(openMenu(GetCurrentProcessId()));
        dismissMenu(owner);
    });
    POINT mouse{};
    GetCursorPos(&mouse);
    SetForegroundWindow(owner);
    TrackPopupMenu(menu, TPM_BOTTOMALIGN, mouse.x, mouse.y, 0, owner, nullptr);
    user.join();
    DestroyMenu(menu);
    DestroyWindow(owner);
    return picture;
}

/// A taskbar in front of the session's own that obeys nobody, for as long as it lives.
class BusyTaskbar {
public:
    BusyTaskbar() {
        thread_ = std::thread([this] { run(); });
        while (!window_) {
            std::this_thread::yield();
        }
        EXPECT_EQ(FindWindowW(kClass, nullptr), window_.load());
    }
    ~BusyTaskbar() {
        PostMessageW(window_, WM_CLOSE, 0, 0);
        thread_.join();
    }
    BusyTaskbar(const BusyTaskbar&) = delete;
    BusyTaskbar& operator=(const BusyTaskbar&) = delete;

    int requests() const { return requests_; }

private:
    static constexpr wchar_t kClass[] = L"Shell_TrayWnd";

    static LRESULT CALLBACK refuse(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
        if (message == WM_COPYDATA) {
            ++requests_;
            return FALSE;
        }
        if (message == WM_DESTROY) {
            PostQuitMessage(0);
            return 0;
        }
        return DefWindowProcW(window, message, wParam, lParam);
    }

    void run() {
        requests_ = 0;
        WNDCLASSW facts{};
        facts.lpfnWndProc = refuse;
        facts.hInstance = GetModuleHandleW(nullptr);
        facts.lpszClassName = kClass;
        RegisterClassW(&facts);
        window_ = CreateWindowExW(
            WS_EX_TOPMOST, kClass, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, facts.hInstance, nullptr);
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
            DispatchMessageW(&message);
        }
        UnregisterClassW(kClass, facts.hInstance);
    }

    inline static std::atomic<int> requests_ = 0;

    std::atomic<HWND> window_ = nullptr;
    std::thread thread_;
};

/// The machine's PATH and current directory, as programs that are started now get them.
class StartingFolder {
public:
    explicit StartingFolder(const std::wstring& folder) {
        GetCurrentDirectoryW(static_cast<DWORD>(directory_.size()), directory_.data());
        GetEnvironmentVariableW(L"PATH", path_.data(), static_cast<DWORD>(path_.size()));
        EXPECT_NE(SetCurrentDirectoryW(folder.c_str()), FALSE);
        EXPECT_NE(SetEnvironmentVariableW(L"PATH", (folder + L";" + path_.data()).c_str()), FALSE);
    }
    ~StartingFolder() {
        SetEnvironmentVariableW(L"PATH", path_.data());
        SetCurrentDirectoryW(directory_.data());
    }
    StartingFolder(const StartingFolder&) = delete;
    StartingFolder& operator=(const StartingFolder&) = delete;

private:
    std::array<wchar_t, MAX_PATH> directory_{};
    std::array<wchar_t, 32'767> path_{};
};

TEST_F(KelvaroOnTheDesktop, StartsHiddenAtTheBottomRightOfTheWorkAreaWithATrayIcon) {
    start();
    EXPECT_EQ(IsWindowVisible(window), FALSE);
    EXPECT_EQ(textOf(window), L"Kelvaro");
    // The window manager adds WS_CLIPSIBLINGS and WS_EX_WINDOWEDGE.
    EXPECT_EQ(styleOf(window) & ~DWORD{WS_CLIPSIBLINGS}, 0x80C80000U);
    EXPECT_EQ(extendedStyleOf(window) & ~DWORD{WS_EX_WINDOWEDGE}, 0x88U);
    RECT workArea{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &workArea, 0);
    const LONG captionHeight = GetSystemMetrics(SM_CYSMCAPTION);
    const RECT place = rectOf(window);
    EXPECT_EQ(place.left, workArea.right - 328);
    EXPECT_EQ(place.top, workArea.bottom - captionHeight - 248);
    EXPECT_EQ(place.right - place.left, 336);
    EXPECT_EQ(place.bottom - place.top, captionHeight + 256);
    EXPECT_TRUE(hasTrayIcon(window));
}

TEST_F(KelvaroOnTheDesktop, IsWhatEveryFailureOfTheLcdLibraryLeadsTo) {
    for (const std::wstring& library :
         {std::wstring(L"C:\\missing\\LogitechLcd.dll"),
          kelvaroProgram(),
          Standins::vendorLibraryPath(Standins::VendorLibrary::LcdSdk, "without_LogiLcdInit")}) {
        const LcdRegistrationScope registration(library);
        start();
        choose(kExitItem);
        EXPECT_EQ(kelvaro->waitForExit(), DWORD{0});
    }
}

TEST_F(KelvaroOnTheDesktop, IsWhatAnLcdLibraryLeadsToThatIsPlantedWhereTheProgramIsStarted) {
    const TemporaryFolder folder;
    ASSERT_NE(CopyFileW(Standins::vendorLibraryPath(Standins::VendorLibrary::LcdSdk).c_str(),
                        (folder.path() + L"\\planted_lcd.dll").c_str(),
                        TRUE),
              FALSE);
    const StartingFolder starting(folder.path());
    for (const wchar_t* value : {L"planted_lcd.dll", L".\\planted_lcd.dll"}) {
        const LcdRegistrationScope registration(value);
        start();
        choose(kExitItem);
        EXPECT_EQ(kelvaro->waitForExit(), DWORD{0});
    }
}

TEST_F(KelvaroOnTheDesktop, GetsItsIconFromAShellThatWasBusyAtItsStart) {
    {
        const BusyTaskbar shell;
        start();
        EXPECT_TRUE(waitFor([&shell] { return shell.requests() >= 2; }, std::chrono::seconds(30)));
    }
    EXPECT_FALSE(hasTrayIcon(window));
    EXPECT_TRUE(waitFor([this] { return hasTrayIcon(window); }, std::chrono::seconds(30)));
    choose(kExitItem);
    EXPECT_EQ(kelvaro->waitForExit(), DWORD{0});
    EXPECT_FALSE(hasTrayIcon(window));
}

TEST_F(KelvaroOnTheDesktop, GetsItsIconWhileItsAboutBoxIsOpenToo) {
    {
        const BusyTaskbar shell;
        start();
        PostMessageW(window, WM_COMMAND, 0x8004, 0);
        ASSERT_NE(waitForMessageBox(kelvaro->id()).window, nullptr);
    }
    EXPECT_FALSE(hasTrayIcon(window));
    EXPECT_TRUE(waitFor([this] { return hasTrayIcon(window); }, std::chrono::seconds(30)));
    EXPECT_NE(findWindow(kelvaro->id(), L"#32770"), nullptr) << "the box is still open";
}

TEST_F(KelvaroOnTheDesktop, ComesBackIntoTheWorkAreaWhenItsMonitorIsGone) {
    start();
    const RECT first = rectOf(window);
    // Where a second monitor was.
    SetWindowPos(window, nullptr, 4000, 300, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    ASSERT_EQ(rectOf(window).left, 4000);
    choose(kShowOrHideItem);
    ASSERT_TRUE(becomesVisible(true));
    const RECT shown = rectOf(window);
    EXPECT_NE(EqualRect(&shown, &first), FALSE) << shown.left << ' ' << shown.top;
}

TEST_F(KelvaroOnTheDesktop, ADoubleClickOnTheIconShowsAndHidesTheWindow) {
    start();
    PostMessageW(window, WM_APP, 1, WM_LBUTTONDBLCLK);
    EXPECT_TRUE(becomesVisible(true));
    PostMessageW(window, WM_APP, 1, WM_LBUTTONDBLCLK);
    EXPECT_TRUE(becomesVisible(false));
}

TEST_F(KelvaroOnTheDesktop, ShowsTheMainPageInItsWindow) {
    start();
    choose(kShowOrHideItem);
    ASSERT_TRUE(becomesVisible(true));
    // The page is dark over most of its left half and light at its right; the empty window is one colour.
    const auto brightness = [this](int left, int right) {
        const ScreenPicture picture = captureClient(window);
        std::uint64_t sum = 0;
        for (int x = left; x < right && x < picture.width; ++x) {
            sum += picture.pixels[static_cast<std::size_t>(165 * picture.width + x)] & 0xFFU;
        }
        return sum / static_cast<std::uint64_t>(right - left);
    };
    EXPECT_TRUE(waitFor([&] { return brightness(20, 180) < 64 && brightness(240, 310) > 96; }));
}

TEST_F(KelvaroOnTheDesktop, IsDraggedByItsPictureAndHiddenByItsCloseBox) {
    start();
    choose(kShowOrHideItem);
    ASSERT_TRUE(becomesVisible(true));
    const RECT before = rectOf(window);
    const POINT grip = clientCentre(window);
    dragFromTo(grip, {grip.x - 300, grip.y - 200});
    EXPECT_TRUE(waitFor([&] { return rectOf(window).left == before.left - 300; }));
    const RECT place = rectOf(window);
    EXPECT_EQ(place.top, before.top - 200);

    clickAt({place.right - 10, place.top + GetSystemMetrics(SM_CYSMCAPTION) / 2 + 2});
    EXPECT_TRUE(becomesVisible(false));
    EXPECT_TRUE(kelvaro->isRunning());
    EXPECT_TRUE(hasTrayIcon(window));
    choose(kShowOrHideItem);
    EXPECT_TRUE(becomesVisible(true));
    EXPECT_EQ(rectOf(window).left, place.left) << "it comes back where it was";
}

TEST_F(KelvaroOnTheDesktop, TheTrayMenuOffersShowOrHideAboutSettingsAndExit) {
    start();
    SetCursorPos(300, 400);
    const ScreenPicture withShow = pictureOfMenu({L"Show", L"About", L"Settings", L"Exit"});
    const ScreenPicture withHide = pictureOfMenu({L"Hide", L"About", L"Settings", L"Exit"});
    ASSERT_FALSE(withShow.pixels.empty());
    ASSERT_NE(withShow, withHide);
    const auto opened = [this](UINT notice) {
        const ScreenPicture picture = captureSettled(openTrayMenu(window, notice));
        EXPECT_TRUE(dismissMenu(window));
        return picture;
    };
    for (const UINT notice : {UINT{WM_RBUTTONDOWN}, UINT{WM_CONTEXTMENU}}) {
        EXPECT_TRUE(opened(notice) == withShow) << notice;
    }
    choose(kShowOrHideItem);
    ASSERT_TRUE(becomesVisible(true));
    for (const UINT notice : {UINT{WM_RBUTTONDOWN}, UINT{WM_CONTEXTMENU}}) {
        EXPECT_TRUE(opened(notice) == withHide) << notice;
    }
    choose(kShowOrHideItem);
    EXPECT_TRUE(becomesVisible(false));
}

TEST_F(KelvaroOnTheDesktop, ExitRemovesTheIconAndEndsWithCodeZero) {
    start();
    choose(kExitItem);
    EXPECT_EQ(kelvaro->waitForExit(), DWORD{0});
    EXPECT_EQ(IsWindow(window), FALSE);
    EXPECT_FALSE(hasTrayIcon(window));
}

TEST_F(KelvaroOnTheDesktop, AboutIsABoxOfThePreviewWindow) {
    start();
    choose(kAboutItem);
    const MessageBoxFacts box = waitForMessageBox(kelvaro->id());
    ASSERT_NE(box.window, nullptr);
    EXPECT_EQ(box.caption, L"About Kelvaro");
    EXPECT_EQ(box.owner, window);
    EXPECT_THAT(box.buttons, ElementsAre(IDOK));
    const std::size_t firstEnd = box.text.find(L'\n');
    ASSERT_NE(firstEnd, std::wstring::npos);
    EXPECT_EQ(box.text.compare(0, 7, L"Kelvaro"), 0);
    EXPECT_EQ(
        box.text.substr(firstEnd),
        L"\n\nKelvaro shows stats about your CPU, GPU, audio, email count and time! Run Core Temp in the "
        L"background if you want CPU temps (make it start on boot).");
    const ScreenPicture icon = captureSettled(box.icon);
    pressButton(box.window, IDOK);
    EXPECT_TRUE(waitUntilGone(box.window));
    const ScreenPicture information = pictureOfIcon(MB_ICONINFORMATION);
    EXPECT_FALSE(information.pixels.empty());
    EXPECT_TRUE(icon == information);

    choose(kShowOrHideItem);
    EXPECT_TRUE(becomesVisible(true)) << "the program goes on";
}

TEST_F(KelvaroOnTheDesktop, HasOneAboutBoxAndOneSettingsDialogAndBringsTheOpenOneToTheFront) {
    struct Kind {
        std::size_t item;
        std::uint32_t command;
        const wchar_t* caption;
        int closingButton;
    };
    const Kind about{kAboutItem, 0x8004, L"About Kelvaro", IDOK};
    const Kind settings{kSettingsItem, 0x8005, L"Settings", IDC_CANCEL};
    start();
    for (const auto& [outer, inner] : {std::pair{about, settings}, std::pair{settings, about}}) {
        choose(outer.item);
        const HWND outerWindow = waitForVisibleWindow(kelvaro->id(), kDialogClass, outer.caption);
        ASSERT_NE(outerWindow, nullptr);
        choose(inner.item);
        const HWND innerWindow = waitForVisibleWindow(kelvaro->id(), kDialogClass, inner.caption);
        ASSERT_NE(innerWindow, nullptr);
        for (const auto& [kind, dialog] : {std::pair{outer, outerWindow}, std::pair{inner, innerWindow}}) {
            {
                const RivalWindow rival;
                choose(kind.item);
                EXPECT_TRUE(comesToFront(dialog)) << "from the menu";
            }
            {
                const RivalWindow rival;
                ask(kind.command);
                EXPECT_TRUE(comesToFront(dialog)) << "without the menu";
            }
        }
        EXPECT_THAT(dialogs(outer.caption), ElementsAre(outerWindow));
        EXPECT_THAT(dialogs(inner.caption), ElementsAre(innerWindow));
        pressButton(innerWindow, inner.closingButton);
        EXPECT_TRUE(waitUntilGone(innerWindow));
        pressButton(outerWindow, outer.closingButton);
        EXPECT_TRUE(waitUntilGone(outerWindow));
    }
    choose(kShowOrHideItem);
    EXPECT_TRUE(becomesVisible(true)) << "the program goes on";
}

TEST_F(KelvaroOnTheDesktop, CanExitWhileItsBoxOrItsDialogIsOpen) {
    for (const std::size_t item : {kAboutItem, kSettingsItem}) {
        start();
        choose(item);
        ASSERT_NE(waitForVisibleWindow(kelvaro->id(), kDialogClass), nullptr);
        PostMessageW(window, WM_COMMAND, 0x8003, 0);
        EXPECT_EQ(kelvaro->waitForExit(), DWORD{0});
    }
}

}  // namespace
