#include "framework/core/preview_window.h"

#include <windows.h>

#include <shellapi.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "framework/core/app.h"
#include "framework/core/command_codes.h"
#include "framework/core/preview_placement.h"
#include "framework/drawing/sys_exception.h"
#include "tests/framework/core/probe_app.h"
#include "tests/support/desktop_driver.h"
#include "tests/support/import_recorder.h"
#include "tests/support/registry_override.h"

namespace {

using testing::ElementsAre;

constexpr wchar_t kClassName[] = L"PanelixWindow";

/// Of icon.rc.
const LPCWSTR kIcon = MAKEINTRESOURCEW(1);

HINSTANCE thisModule() {
    return GetModuleHandleW(nullptr);
}

std::unique_ptr<Panelix::PreviewWindow> makeWindow() {
    return std::make_unique<Panelix::PreviewWindow>(thisModule(), L"Probe", kIcon);
}

bool isVisible(HWND window) {
    return IsWindowVisible(window) != FALSE;
}

/// Dispatches what is queued; true when the quit message was among it.
bool pump() {
    MSG message;
    bool quit = false;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        quit = quit || message.message == WM_QUIT;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return quit;
}

/// Dispatches messages while `user` runs on another thread. True when the quit message came.
bool pumpWhile(const std::function<void()>& user) {
    std::atomic<bool> done = false;
    std::thread thread([&] {
        user();
        done = true;
    });
    bool quit = false;
    while (!done) {
        quit = pump() || quit;
        Sleep(5);
    }
    thread.join();
    return pump() || quit;
}

LRESULT hitTest(HWND window, POINT point) {
    return SendMessageW(window, WM_NCHITTEST, 0, MAKELPARAM(point.x, point.y));
}

/// A preview window that takes its window with it.
class PreviewWindow : public testing::Test {
protected:
    ~PreviewWindow() override {
        if (window && window->handle() != nullptr) {
            DestroyWindow(window->handle());
        }
        pump();
    }

    std::unique_ptr<Panelix::PreviewWindow> window = makeWindow();
};

TEST_F(PreviewWindow, IsCreatedHiddenAtTheBottomRightOfTheWorkArea) {
    const HWND handle = window->handle();
    EXPECT_EQ(findWindow(GetCurrentProcessId(), kClassName), handle);
    EXPECT_FALSE(isVisible(handle));
    EXPECT_EQ(textOf(handle), L"Probe");

    RECT workArea{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &workArea, 0);
    const LONG captionHeight = GetSystemMetrics(SM_CYSMCAPTION);
    const RECT place = rectOf(handle);
    EXPECT_EQ(place.left, workArea.right - 328);
    EXPECT_EQ(place.top, workArea.bottom - captionHeight - 248);
    EXPECT_EQ(place.right - place.left, 336);
    EXPECT_EQ(place.bottom - place.top, captionHeight + 256);
}

TEST_F(PreviewWindow, IsATopmostToolWindowWithCaptionAndSystemMenu) {
    const HWND handle = window->handle();
    // The window manager adds WS_CLIPSIBLINGS and WS_EX_WINDOWEDGE.
    EXPECT_EQ(styleOf(handle) & ~DWORD{WS_CLIPSIBLINGS}, 0x80C80000U);
    EXPECT_EQ(extendedStyleOf(handle) & ~DWORD{WS_EX_WINDOWEDGE}, 0x88U);
    EXPECT_EQ(GetMenu(handle), nullptr);
    EXPECT_EQ(GetWindow(handle, GW_OWNER), nullptr);
    EXPECT_EQ(GetParent(handle), nullptr);
}

TEST_F(PreviewWindow, ItsClassRedrawsOnResizeAndHasIconArrowAndWindowColour) {
    WNDCLASSEXW facts{};
    facts.cbSize = sizeof(facts);
    ASSERT_NE(GetClassInfoExW(thisModule(), kClassName, &facts), FALSE);
    EXPECT_EQ(facts.style, DWORD{CS_HREDRAW | CS_VREDRAW});
    EXPECT_EQ(facts.cbClsExtra, 0);
    EXPECT_EQ(facts.cbWndExtra, 0);
    EXPECT_EQ(facts.hCursor, LoadCursorW(nullptr, IDC_ARROW));
    EXPECT_EQ(facts.hbrBackground, reinterpret_cast<HBRUSH>(std::intptr_t{6}));
    EXPECT_EQ(facts.lpszMenuName, nullptr);
    EXPECT_NE(facts.hIcon, nullptr);
    EXPECT_EQ(facts.hIcon, LoadIconW(thisModule(), kIcon));
    EXPECT_EQ(facts.hIconSm, facts.hIcon);
}

TEST_F(PreviewWindow, HasATrayIconUntilItIsDestroyed) {
    const HWND handle = window->handle();
    EXPECT_TRUE(hasTrayIcon(handle));
    DestroyWindow(handle);
    EXPECT_FALSE(hasTrayIcon(handle));
    EXPECT_EQ(window->handle(), nullptr);
    EXPECT_TRUE(pump()) << "the loop is told to end";
}

TEST_F(PreviewWindow, BringsTheTrayIconBackWhenTheTaskbarIsStartedAnew) {
    NOTIFYICONDATAW record = Panelix::trayRecord(sizeof(record), window->handle(), L"");
    ASSERT_NE(Shell_NotifyIconW(NIM_DELETE, &record), FALSE);
    SendMessageW(window->handle(), RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
    EXPECT_TRUE(hasTrayIcon(window->handle()));
}

// A shell that is too busy.

/// The notification area refuses everything until it is told not to.
class PreviewWindowWithBusyShell : public testing::Test {
protected:
    PreviewWindowWithBusyShell() {
        shell.failWith(FALSE);
        window = makeWindow();
        handle = window->handle();
    }
    ~PreviewWindowWithBusyShell() override {
        shell.goThroughAgain();
        DestroyWindow(handle);
        pump();
    }

    /// Whether the window is going to ask again; if so, it is not from now on.
    bool asksAgain() const { return KillTimer(handle, kTimer) != FALSE; }

    void letTimePass() const { SendMessageW(handle, WM_TIMER, kTimer, 0); }

    static constexpr UINT_PTR kTimer = 1;

    ImportRecorder<&Shell_NotifyIconW> shell{"SHELL32.dll", "Shell_NotifyIconW"};
    std::unique_ptr<Panelix::PreviewWindow> window;
    HWND handle = nullptr;
};

TEST_F(PreviewWindowWithBusyShell, AsksAgainEveryFewSecondsUntilTheIconIsThere) {
    EXPECT_FALSE(hasTrayIcon(handle));
    const auto begin = std::chrono::steady_clock::now();
    const std::size_t before = shell.count();
    EXPECT_TRUE(waitFor(
        [&] {
            pump();
            return shell.count() > before;
        },
        std::chrono::seconds(30)));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    shell.goThroughAgain();
    EXPECT_TRUE(waitFor(
        [this] {
            pump();
            return hasTrayIcon(handle);
        },
        std::chrono::seconds(30)));
    EXPECT_FALSE(asksAgain());
}

TEST_F(PreviewWindowWithBusyShell, WaitsForOneTimeOutAtATime) {
    EXPECT_EQ(shell.count(), 1U);
    for (std::size_t i = 2; i < 6; ++i) {
        letTimePass();
        EXPECT_EQ(shell.count(), i);
    }
    EXPECT_TRUE(asksAgain());
}

TEST_F(PreviewWindowWithBusyShell, ThePauseBeginsAnewAfterEachAttempt) {
    const ImportRecorder<&SetTimer> timers("USER32.dll", "SetTimer");
    letTimePass();
    EXPECT_THAT(timers.arguments<0>(), ElementsAre(handle));
    EXPECT_THAT(timers.arguments<2>(), ElementsAre(testing::AllOf(testing::Ge(1000U), testing::Le(5000U))));
}

TEST_F(PreviewWindowWithBusyShell, AsksNoMoreOnceAStartedTaskbarHasTheIcon) {
    shell.goThroughAgain();
    SendMessageW(handle, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
    EXPECT_TRUE(hasTrayIcon(handle));
    EXPECT_FALSE(asksAgain());
}

TEST_F(PreviewWindowWithBusyShell, AsksAgainForAStartedTaskbarThatIsBusyToo) {
    shell.goThroughAgain();
    SendMessageW(handle, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
    shell.failWith(FALSE);
    SendMessageW(handle, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
    EXPECT_TRUE(asksAgain());
}

TEST_F(PreviewWindowWithBusyShell, AnIconThatIsThereAlreadyIsNotAskedForForEver) {
    // The shell obeys, but too late for its answer.
    NOTIFYICONDATAW record = Panelix::trayRecord(sizeof(record), handle, L"");
    shell.goThroughAgain();
    ASSERT_NE(Shell_NotifyIconW(NIM_ADD, &record), FALSE);
    EXPECT_EQ(Shell_NotifyIconW(NIM_ADD, &record), FALSE);
    letTimePass();
    EXPECT_FALSE(asksAgain());
    EXPECT_TRUE(hasTrayIcon(handle));
}

TEST_F(PreviewWindowWithBusyShell, AsksNoMoreOnceItIsDestroyed) {
    const ImportRecorder<&SetTimer> timers("USER32.dll", "SetTimer");
    // The removal is waited for as well, and messages come in meanwhile.
    shell.goThroughAgain();
    shell.onCall([this] {
        shell.onCall(nullptr);
        SendMessageW(handle, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
        letTimePass();
    });
    DestroyWindow(handle);
    EXPECT_THAT(shell.arguments<0>(), ElementsAre(NIM_ADD, NIM_DELETE));
    EXPECT_EQ(timers.count(), 0U);
    EXPECT_FALSE(hasTrayIcon(handle));
}

TEST_F(PreviewWindowWithBusyShell, OtherTimersAreNoneOfItsBusiness) {
    EXPECT_EQ(SendMessageW(handle, WM_TIMER, kTimer + 1, 0), 0);
    EXPECT_EQ(shell.count(), 1U);
}

TEST_F(PreviewWindow, HasNoTimerWhenTheIconIsThereAtOnce) {
    EXPECT_EQ(KillTimer(window->handle(), 1), FALSE);
}

// A monitor that is gone.

RECT workArea() {
    RECT area{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
    return area;
}

TEST_F(PreviewWindow, ComesBackToItsFirstPlaceWhenItsMonitorIsGone) {
    const HWND handle = window->handle();
    const RECT first = rectOf(handle);
    for (const POINT lost : {POINT{5000, 100}, POINT{100, 5000}, POINT{-5000, -5000}}) {
        for (const bool byMenu : {false, true}) {
            ShowWindow(handle, SW_HIDE);
            SetWindowPos(handle, nullptr, lost.x, lost.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
            ASSERT_EQ(rectOf(handle).left, lost.x);
            if (byMenu) {
                SendMessageW(handle, WM_COMMAND, Panelix::kCommandShow, 0);
            } else {
                SendMessageW(handle, WM_APP, 1, WM_LBUTTONDBLCLK);
            }
            const RECT shown = rectOf(handle);
            EXPECT_NE(EqualRect(&shown, &first), FALSE) << shown.left << ' ' << shown.top;
            EXPECT_TRUE(isVisible(handle));
        }
    }
}

TEST_F(PreviewWindow, KeepsAPlaceOfWhichAnythingIsOnAMonitor) {
    const HWND handle = window->handle();
    const RECT area = workArea();
    for (const POINT kept : {POINT{0, 0}, POINT{area.right - 50, 200}, POINT{-250, area.bottom - 50}}) {
        ShowWindow(handle, SW_HIDE);
        SetWindowPos(handle, nullptr, kept.x, kept.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
        SendMessageW(handle, WM_COMMAND, Panelix::kCommandShow, 0);
        EXPECT_EQ(rectOf(handle).left, kept.x);
        EXPECT_EQ(rectOf(handle).top, kept.y);
    }
}

TEST_F(PreviewWindow, IsNotBoundToAnObjectThatALaterCreationMessageNames) {
    std::array<std::uint8_t, 4096> other{};
    CREATESTRUCTW creation{};
    creation.lpCreateParams = other.data();
    const HWND handle = window->handle();
    SendMessageW(handle, WM_NCCREATE, 0, reinterpret_cast<LPARAM>(&creation));
    EXPECT_EQ(std::count(other.begin(), other.end(), 0), std::ssize(other)) << "nothing is written there";
    ShowWindow(handle, SW_SHOW);
    SendMessageW(handle, WM_CLOSE, 0, 0);
    EXPECT_FALSE(IsWindowVisible(handle)) << "it is still its own object's";
}

TEST_F(PreviewWindow, TheCloseBoxHidesIt) {
    for (const UINT message : {UINT{WM_CLOSE}, UINT{WM_SYSCOMMAND}}) {
        ShowWindow(window->handle(), SW_RESTORE);
        ASSERT_TRUE(isVisible(window->handle()));
        EXPECT_EQ(SendMessageW(window->handle(), message, SC_CLOSE, 0), 0);
        EXPECT_NE(IsWindow(window->handle()), FALSE);
        EXPECT_FALSE(isVisible(window->handle()));
    }
    EXPECT_TRUE(hasTrayIcon(window->handle()));
    EXPECT_FALSE(pump()) << "the program goes on";
}

TEST_F(PreviewWindow, ItsPictureCountsAsCaptionAndItsFrameAsItIs) {
    const HWND handle = window->handle();
    ShowWindow(handle, SW_RESTORE);
    const RECT place = rectOf(handle);
    const LONG captionMiddle = place.top + GetSystemMetrics(SM_CYSMCAPTION) / 2 + 2;
    EXPECT_EQ(hitTest(handle, clientCentre(handle)), HTCAPTION);
    EXPECT_EQ(hitTest(handle, {place.left + 60, captionMiddle}), HTCAPTION);
    EXPECT_EQ(hitTest(handle, {place.right - 12, captionMiddle}), HTCLOSE);
    EXPECT_EQ(hitTest(handle, {place.left - 20, place.top - 20}), HTNOWHERE);
}

TEST_F(PreviewWindow, IsDraggedByItsPicture) {
    const HWND handle = window->handle();
    ShowWindow(handle, SW_RESTORE);
    const RECT before = rectOf(handle);
    const POINT grip = clientCentre(handle);
    pumpWhile([&] { dragFromTo(grip, {grip.x - 100, grip.y - 60}); });
    const RECT after = rectOf(handle);
    EXPECT_EQ(after.left, before.left - 100);
    EXPECT_EQ(after.top, before.top - 60);
}

TEST_F(PreviewWindow, ShowHideAndOkCommandsSetItsVisibility) {
    const HWND handle = window->handle();
    struct Case {
        WPARAM command;
        bool visible;
    };
    for (const Case& c : {
             Case{0x8001, true},
             Case{0x8001, true},
             Case{0x8002, false},
             Case{0x8002, false},
             Case{0x8001, true},
             Case{IDOK, false},
             // Only the low word is the command: this one is of an accelerator key.
             Case{MAKEWPARAM(0x8001, 1), true},
             Case{IDCANCEL, true},
         }) {
        EXPECT_EQ(SendMessageW(handle, WM_COMMAND, c.command, 0), 0);
        EXPECT_EQ(isVisible(handle), c.visible) << std::hex << c.command;
    }
}

TEST_F(PreviewWindow, ExitDestroysItAndEndsTheLoop) {
    const HWND handle = window->handle();
    EXPECT_EQ(SendMessageW(handle, WM_COMMAND, Panelix::kCommandExit, 0), 0);
    EXPECT_EQ(IsWindow(handle), FALSE);
    EXPECT_EQ(window->handle(), nullptr);
    EXPECT_TRUE(pump());
}

TEST_F(PreviewWindow, ADoubleClickOnTheTrayIconTogglesItAndOtherNoticesDoNothing) {
    const HWND handle = window->handle();
    const auto notify = [handle](LPARAM notice) { return SendMessageW(handle, WM_APP, 1, notice); };
    EXPECT_EQ(notify(WM_LBUTTONDBLCLK), 0);
    EXPECT_TRUE(isVisible(handle));
    for (const LPARAM notice : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONUP, WM_RBUTTONUP, WM_RBUTTONDBLCLK}) {
        EXPECT_EQ(notify(notice), 0);
        EXPECT_TRUE(isVisible(handle));
        EXPECT_EQ(openMenu(GetCurrentProcessId()), nullptr);
    }
    EXPECT_EQ(notify(WM_LBUTTONDBLCLK), 0);
    EXPECT_FALSE(isVisible(handle));
}

TEST_F(PreviewWindow, TheTrayMenuOffersShowWhileHiddenAndHideWhileShown) {
    const HWND handle = window->handle();
    for (const bool visible : {false, true}) {
        ShowWindow(handle, visible ? SW_RESTORE : SW_HIDE);
        for (const UINT notice : {UINT{WM_RBUTTONDOWN}, UINT{WM_CONTEXTMENU}}) {
            std::vector<MenuItem> items;
            pumpWhile([&] {
                const HWND menu = openTrayMenu(handle, notice);
                items = menuItems(menu);
                EXPECT_TRUE(dismissMenu(handle));
            });
            const MenuItem first = visible ? MenuItem{L"Hide", 0x8002} : MenuItem{L"Show", 0x8001};
            EXPECT_THAT(items,
                        ElementsAre(first,
                                    MenuItem{L"About", 0x8004},
                                    MenuItem{L"Settings", 0x8005},
                                    MenuItem{L"Exit", 0x8003}));
            EXPECT_EQ(isVisible(handle), visible) << "nothing was chosen";
        }
    }
}

TEST_F(PreviewWindow, TheTrayMenuOpensAboveTheMouseAndBringsTheWindowToTheForeground) {
    const HWND handle = window->handle();
    ShowWindow(handle, SW_RESTORE);
    SetCursorPos(400, 500);
    RECT place{};
    HWND foreground = nullptr;
    pumpWhile([&] {
        const HWND menu = openTrayMenu(handle);
        place = rectOf(menu);
        foreground = GetForegroundWindow();
        EXPECT_TRUE(dismissMenu(handle));
    });
    EXPECT_EQ(place.left, 400);
    EXPECT_EQ(place.bottom, 500);
    EXPECT_EQ(foreground, handle);
}

TEST_F(PreviewWindow, ComesToTheForegroundBeforeItsTrayMenuOpens) {
    const HWND handle = window->handle();
    ShowWindow(handle, SW_RESTORE);
    const HWND rival = CreateWindowExW(WS_EX_TOPMOST,
                                       L"Static",
                                       L"rival",
                                       WS_POPUP | WS_VISIBLE,
                                       10,
                                       10,
                                       50,
                                       50,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr);
    SetForegroundWindow(rival);
    ASSERT_EQ(GetForegroundWindow(), rival);
    ImportRecorder<&TrackPopupMenu> tracked("USER32.dll", "TrackPopupMenu");
    tracked.failWith(FALSE);
    tracked.onCall([handle] { EXPECT_EQ(GetForegroundWindow(), handle); });
    SendMessageW(handle, WM_APP, 1, WM_RBUTTONDOWN);
    EXPECT_EQ(tracked.count(), 1U);
    DestroyWindow(rival);
}

TEST_F(PreviewWindow, EveryTrayMenuIsDestroyedAndFollowedByAMessage) {
    const HWND handle = window->handle();
    const ImportRecorder<&CreatePopupMenu> created("USER32.dll", "CreatePopupMenu");
    const ImportRecorder<&DestroyMenu> destroyed("USER32.dll", "DestroyMenu");
    ImportRecorder<&TrackPopupMenu> tracked("USER32.dll", "TrackPopupMenu");
    const ImportRecorder<&PostMessageW> posted("USER32.dll", "PostMessageW");
    // The menu closes at once.
    tracked.failWith(FALSE);
    tracked.onCall([&] {
        EXPECT_EQ(created.count(), destroyed.count() + 1);
        EXPECT_EQ(posted.count(), destroyed.count());
    });
    for (std::size_t i = 1; i <= 3; ++i) {
        SendMessageW(handle, WM_APP, 1, WM_RBUTTONDOWN);
        EXPECT_EQ(tracked.count(), i);
    }
    EXPECT_EQ(destroyed.arguments(), created.results());
    EXPECT_THAT(posted.arguments<0>(), ElementsAre(handle, handle, handle));
    EXPECT_THAT(posted.arguments<1>(), ElementsAre(UINT{WM_NULL}, UINT{WM_NULL}, UINT{WM_NULL}));
}

TEST_F(PreviewWindow, WithoutAMenuNothingComesToTheForeground) {
    ImportRecorder<&CreatePopupMenu> created("USER32.dll", "CreatePopupMenu");
    const ImportRecorder<&SetForegroundWindow> foreground("USER32.dll", "SetForegroundWindow");
    const ImportRecorder<&TrackPopupMenu> tracked("USER32.dll", "TrackPopupMenu");
    const ImportRecorder<&DestroyMenu> destroyed("USER32.dll", "DestroyMenu");
    created.failWith(nullptr);
    SendMessageW(window->handle(), WM_APP, 1, WM_RBUTTONDOWN);
    EXPECT_EQ(created.count(), 1U);
    EXPECT_EQ(foreground.count() + tracked.count() + destroyed.count(), 0U);
}

TEST_F(PreviewWindow, ChosenMenuItemsShowHideAndExit) {
    const HWND handle = window->handle();
    const auto choose = [handle](std::size_t position) {
        return pumpWhile([&] {
            openTrayMenu(handle);
            EXPECT_TRUE(chooseMenuItem(handle, position));
        });
    };
    EXPECT_FALSE(choose(0));
    EXPECT_TRUE(isVisible(handle));
    EXPECT_FALSE(choose(0));
    EXPECT_FALSE(isVisible(handle));
    EXPECT_TRUE(choose(3));
    EXPECT_EQ(IsWindow(handle), FALSE);
}

TEST_F(PreviewWindow, WithoutApplicationPaintsNothingAndIsSatisfied) {
    ShowWindow(window->handle(), SW_RESTORE);
    pump();
    window->invalidate();
    EXPECT_NE(GetUpdateRect(window->handle(), nullptr, FALSE), FALSE);
    pump();
    EXPECT_EQ(GetUpdateRect(window->handle(), nullptr, FALSE), FALSE);
}

TEST_F(PreviewWindow, EveryPaintingThatBeginsEnds) {
    const HWND handle = window->handle();
    ShowWindow(handle, SW_RESTORE);
    pump();
    const ImportRecorder<&BeginPaint> begun("USER32.dll", "BeginPaint");
    const ImportRecorder<&EndPaint> ended("USER32.dll", "EndPaint");
    for (std::size_t i = 1; i <= 5; ++i) {
        window->invalidate();
        UpdateWindow(handle);
        EXPECT_EQ(begun.count(), i);
        EXPECT_EQ(ended.count(), i);
    }
    EXPECT_EQ(ended.arguments<0>(), begun.arguments<0>());
}

TEST_F(PreviewWindow, OnceDestroyedInvalidatesNoOtherWindow) {
    const HWND other = CreateWindowExW(WS_EX_TOPMOST,
                                       L"Static",
                                       L"other",
                                       WS_POPUP | WS_VISIBLE,
                                       10,
                                       10,
                                       50,
                                       50,
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       nullptr);
    DestroyWindow(window->handle());
    pump();
    ValidateRect(other, nullptr);
    window->invalidate();
    EXPECT_EQ(GetUpdateRect(other, nullptr, FALSE), FALSE);
    DestroyWindow(other);
}

TEST_F(PreviewWindow, LeavesWindowAndIconBehindAnsweringNothing) {
    const HWND handle = window->handle();
    window.reset();
    EXPECT_NE(IsWindow(handle), FALSE);
    EXPECT_TRUE(hasTrayIcon(handle));
    SendMessageW(handle, WM_COMMAND, Panelix::kCommandShow, 0);
    SendMessageW(handle, WM_APP, 1, WM_LBUTTONDBLCLK);
    EXPECT_FALSE(isVisible(handle));
    ShowWindow(handle, SW_RESTORE);
    EXPECT_EQ(hitTest(handle, clientCentre(handle)), HTCLIENT);
    DestroyWindow(handle);
    EXPECT_FALSE(pump());
    // The class could not go before its window.
    EXPECT_NE(UnregisterClassW(kClassName, thisModule()), FALSE);
}

TEST(PreviewWindowCreation, CanBeMadeAgainOnceItIsGone) {
    for (int round = 0; round < 3; ++round) {
        const auto window = makeWindow();
        ASSERT_NE(window->handle(), nullptr);
        DestroyWindow(window->handle());
        EXPECT_TRUE(pump());
    }
}

std::optional<std::wstring> creationError() {
    try {
        DestroyWindow(makeWindow()->handle());
        return std::nullopt;
    } catch (const Panelix::SysException& error) {
        return error.title + L": " + error.message;
    }
}

// Wine has no such filter; Windows keeps the message from a program that runs as administrator otherwise.
TEST(PreviewWindowCreation, AllowsTheMessageOfAShellThatRunsWithFewerRights) {
    const ImportRecorder<&ChangeWindowMessageFilterEx> filters("USER32.dll", "ChangeWindowMessageFilterEx");
    const auto window = makeWindow();
    EXPECT_THAT(filters.arguments<0>(), ElementsAre(window->handle()));
    EXPECT_THAT(filters.arguments<1>(), ElementsAre(RegisterWindowMessageW(L"TaskbarCreated")));
    EXPECT_THAT(filters.arguments<2>(), ElementsAre(DWORD{MSGFLT_ALLOW}));
    DestroyWindow(window->handle());
    pump();
}

TEST(PreviewWindowCreation, ThrowsWhenItsClassIsTaken) {
    WNDCLASSEXW taken{};
    taken.cbSize = sizeof(taken);
    taken.lpfnWndProc = DefWindowProcW;
    taken.hInstance = thisModule();
    taken.lpszClassName = kClassName;
    ASSERT_NE(RegisterClassExW(&taken), 0);
    EXPECT_EQ(creationError(), L"Panelix Window System: Cannot create main ATOM");
    EXPECT_NE(UnregisterClassW(kClassName, thisModule()), FALSE) << "the other's class is left alone";
}

/// Refuses the creation of every window, as another program's hook may.
LRESULT CALLBACK refuseCreation(int code, WPARAM wParam, LPARAM lParam) noexcept {
    return code == HCBT_CREATEWND ? 1 : CallNextHookEx(nullptr, code, wParam, lParam);
}

TEST(PreviewWindowCreation, ThrowsWhenTheWindowIsRefusedAndLeavesNothing) {
    const HHOOK hook = SetWindowsHookExW(WH_CBT, refuseCreation, nullptr, GetCurrentThreadId());
    ASSERT_NE(hook, nullptr);
    const std::optional<std::wstring> error = creationError();
    UnhookWindowsHookEx(hook);
    EXPECT_EQ(error, L"Panelix Window System: Cannot create main window");
    EXPECT_EQ(creationError(), std::nullopt) << "the class is free again";
}

/// An application in desktop mode: no LCD library is registered.
class PreviewWindowOfAnApp : public testing::Test {
protected:
    explicit PreviewWindowOfAnApp(std::uint64_t framePeriodMs = 20) : app(framePeriodMs) {}
    ~PreviewWindowOfAnApp() override {
        if (app.window() != nullptr) {
            DestroyWindow(app.window());
        }
        pump();
    }

    RegistryOverride registry;
    ProbeApp app;
    CallLog log;
};

TEST_F(PreviewWindowOfAnApp, HandsCommandsFromAboutOnToTheApplication) {
    ASSERT_NE(app.window(), nullptr);
    for (const WPARAM code : {0x8004U, 0x8005U, 0x8006U, 0xFFFFU, 0x8001U, 0x8002U, 1U, 2U, 0x8000U}) {
        EXPECT_EQ(SendMessageW(app.window(), WM_COMMAND, code, 0), 0);
    }
    EXPECT_EQ(SendMessageW(app.window(), WM_COMMAND, MAKEWPARAM(0x8004, 1), 0), 0);
    EXPECT_THAT(app.commands, ElementsAre(0x8004U, 0x8005U, 0x8006U, 0xFFFFU, 0x8004U));
}

TEST_F(PreviewWindowOfAnApp, MenuItemsReachTheApplication) {
    for (const std::size_t position : {std::size_t{1}, std::size_t{2}}) {
        pumpWhile([&] {
            openTrayMenu(app.window());
            EXPECT_TRUE(chooseMenuItem(app.window(), position));
        });
    }
    EXPECT_THAT(app.commands, ElementsAre(Panelix::kCommandAbout, Panelix::kCommandSettings));
}

TEST_F(PreviewWindowOfAnApp, ShowsTheComposedPictureOnTheWindowColour) {
    constexpr std::uint32_t kPageColour = 0x00336699;
    auto page = std::make_unique<ProbePage>("main", &app, &log, Gdiplus::Color(255, 0x33, 0x66, 0x99));
    int passes = 0;
    page->onUpdate = [&](const Panelix::LcdButtons&) {
        if (++passes == 1) {
            ShowWindow(app.window(), SW_RESTORE);
        }
        return passes < 5;
    };
    app.SetMainPage(std::move(page));
    app.Run();

    ScreenPicture picture{};
    pumpWhile([&] {
        // What was painted reaches the screen a little later.
        waitFor([&] {
            picture = captureClient(app.window());
            return !picture.pixels.empty() && picture.pixels.front() == kPageColour;
        });
    });
    ASSERT_GE(picture.width, 320);
    ASSERT_GE(picture.height, 240);
    int wrongInside = 0;
    int wrongOutside = 0;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const std::uint32_t pixel = picture.pixels[static_cast<std::size_t>(y * picture.width + x)];
            const bool inside = x < 320 && y < 240;
            wrongInside += inside && pixel != kPageColour ? 1 : 0;
            wrongOutside += !inside && pixel != 0x00FFFFFF ? 1 : 0;
        }
    }
    EXPECT_EQ(wrongInside, 0);
    EXPECT_EQ(wrongOutside, 0);
}

TEST_F(PreviewWindowOfAnApp, ThePictureIsDrawnBeforeThePaintingEndsAndWithNothingKept) {
    ShowWindow(app.window(), SW_RESTORE);
    pump();
    std::vector<std::string> calls;
    ImportRecorder<&BeginPaint> begun("USER32.dll", "BeginPaint");
    ImportRecorder<&Gdiplus::DllExports::GdipCreateFromHDC> made("gdiplus.dll", "GdipCreateFromHDC");
    ImportRecorder<&Gdiplus::DllExports::GdipDeleteGraphics> deleted("gdiplus.dll", "GdipDeleteGraphics");
    ImportRecorder<&EndPaint> ended("USER32.dll", "EndPaint");
    begun.onCall([&] { calls.emplace_back("begin"); });
    made.onCall([&] { calls.emplace_back("graphics"); });
    deleted.onCall([&] { calls.emplace_back("no graphics"); });
    ended.onCall([&] { calls.emplace_back("end"); });
    InvalidateRect(app.window(), nullptr, FALSE);
    UpdateWindow(app.window());
    EXPECT_THAT(calls, ElementsAre("begin", "graphics", "no graphics", "end"));
}

constexpr std::chrono::milliseconds kLongPeriod(100);

class PreviewWindowOfAnAppWithALongPeriod : public PreviewWindowOfAnApp {
protected:
    PreviewWindowOfAnAppWithALongPeriod() : PreviewWindowOfAnApp(kLongPeriod.count()) {}
};

TEST_F(PreviewWindowOfAnAppWithALongPeriod, ACommandLongerThanAPassIsFollowedByAFullPeriod) {
    using Clock = std::chrono::steady_clock;
    Clock::time_point commandEnd;
    std::vector<Clock::time_point> updates;
    app.onCommand = [&commandEnd](std::uint32_t) {
        std::this_thread::sleep_for(3 * kLongPeriod);
        commandEnd = Clock::now();
    };
    auto page = std::make_unique<ProbePage>("main", &app, &log);
    page->onUpdate = [&updates](const Panelix::LcdButtons&) {
        updates.push_back(Clock::now());
        return updates.size() < 2;
    };
    app.SetMainPage(std::move(page));
    PostMessageW(app.window(), WM_COMMAND, Panelix::kCommandAbout, 0);
    app.Run();
    EXPECT_THAT(app.commands, ElementsAre(Panelix::kCommandAbout));
    ASSERT_EQ(updates.size(), 2U);
    EXPECT_GE(updates[0], commandEnd) << "the first Update is of the command's own pass";
    // The loop counts in whole milliseconds.
    EXPECT_GE(updates[1] - commandEnd, kLongPeriod - std::chrono::milliseconds(1));
}

}  // namespace
