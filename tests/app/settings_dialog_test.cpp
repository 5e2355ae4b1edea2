#include "app/settings_dialog.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "app/resource_ids.h"
#include "tests/support/desktop_driver.h"
#include "tests/support/installation.h"
#include "tests/support/registry_override.h"

namespace {

using testing::ElementsAre;

constexpr wchar_t kDialogClass[] = L"#32770";

bool isVisible(HWND dialog, int id) {
    return IsWindowVisible(GetDlgItem(dialog, id)) != FALSE;
}

std::wstring delayText(HWND dialog) {
    return textOf(GetDlgItem(dialog, IDC_DELAY));
}

bool isTicked(HWND dialog) {
    return SendDlgItemMessageW(dialog, IDC_AUTOSTART, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void tick(HWND dialog, bool on) {
    SendDlgItemMessageW(dialog, IDC_AUTOSTART, BM_SETCHECK, on ? BST_CHECKED : BST_UNCHECKED, 0);
}

/// Every message posted to the dialog before this call has been handled when it returns.
void settle(HWND dialog) {
    EXPECT_TRUE(waitUntilPostedIsHandled(dialog));
}

/// Moves the mouse, and gives a dialog that would follow it the time to do so.
void moveMouseAway(HWND dialog, POINT point) {
    SetCursorPos(point.x, point.y);
    Sleep(100);
    settle(dialog);
}

/// A visible window of the calling thread's own, of a class that does not let the mouse through.
class OwnWindow {
public:
    explicit OwnWindow(const RECT& place)
        : window_(CreateWindowExW(0,
                                  L"Button",
                                  L"own window",
                                  WS_POPUP | WS_VISIBLE,
                                  place.left,
                                  place.top,
                                  place.right - place.left,
                                  place.bottom - place.top,
                                  nullptr,
                                  nullptr,
                                  nullptr,
                                  nullptr)) {
        EXPECT_NE(window_, nullptr);
    }
    ~OwnWindow() { DestroyWindow(window_); }
    OwnWindow(const OwnWindow&) = delete;
    OwnWindow& operator=(const OwnWindow&) = delete;

    HWND handle() const { return window_; }

private:
    HWND window_;
};

/// The loop takes out more than the mouse's messages: a button that the real mouse presses is one of them.
void expectCancelWorks(HWND dialog) {
    settle(dialog);
    clickAt(clientCentre(GetDlgItem(dialog, IDC_CANCEL)));
    EXPECT_TRUE(waitUntilGone(dialog));
}

/// The dialog on a registry of the test's own, with the program installed.
class SettingsDialog : public testing::Test {
protected:
    using User = std::function<void(HWND dialog)>;

    SettingsDialog() {
        RegistryOverride::makeKey(HKEY_CURRENT_USER, kRunKey);
        RegistryOverride::setText(HKEY_LOCAL_MACHINE, kProgramKey, L"InstallDir", folder_.path());
    }

    static void setEntry(const std::wstring& text) {
        RegistryOverride::setText(HKEY_CURRENT_USER, kRunKey, L"Kelvaro", text);
    }

    std::wstring entry(const std::wstring& options) const {
        return L"\"" + folder_.executable() + L"\"" + options;
    }

    /// Shows the dialog and lets `user`, on another thread, do what a user does. A dialog that is still open
    /// afterwards is closed.
    static void show(const User& user) {
        std::thread thread([&user] {
            const HWND dialog = waitForVisibleWindow(GetCurrentProcessId(), kDialogClass);
            ASSERT_NE(dialog, nullptr);
            settle(dialog);
            user(dialog);
            if (IsWindow(dialog) != FALSE) {
                PostMessageW(dialog, WM_COMMAND, IDC_CANCEL, 0);
            }
        });
        showSettingsDialog(GetModuleHandleW(nullptr));
        thread.join();
    }

    /// Fills in both settings and saves; the dialog must close.
    static void saveSettings(bool autostart, const std::wstring& typed) {
        show([&](HWND dialog) {
            tick(dialog, autostart);
            typeText(dialog, IDC_DELAY, typed);
            pressButton(dialog, IDC_SAVE);
            EXPECT_TRUE(waitUntilGone(dialog)) << "not saved";
        });
    }

    RegistryOverride registry_;
    InstallationFolder folder_;
};

struct DialogUnits {
    LONG x;
    LONG y;
    LONG width;
    LONG height;
};

/// Position and size are rounded to pixels each for itself.
RECT inPixels(HWND dialog, const DialogUnits& units) {
    RECT rect{units.x, units.y, units.width, units.height};
    MapDialogRect(dialog, &rect);
    return {rect.left, rect.top, rect.left + rect.right, rect.top + rect.bottom};
}

struct ExpectedControl {
    int id;
    const wchar_t* className;
    const wchar_t* text;
    DialogUnits place;
    bool visible;
};

const std::vector<ExpectedControl> kControls = {
    {-1, L"Static", L"Startup with Windows", {7, 16, 74, 8}, true},
    {1000, L"Button", L"Save", {156, 147, 50, 14}, true},
    {1001, L"Edit", L"", {86, 76, 36, 14}, true},
    {1002, L"Button", L"", {86, 16, 16, 10}, true},
    {-1, L"Static", L"Delay in seconds", {7, 79, 54, 8}, true},
    {-1,
     L"Static",
     L"There is a bug in Logitech's driver that disables the G19 LCD keys if this app starts before the "
     L"Logitech software is ready even though the display will always work. So if you find the LCD keys "
     L"don't "
     L"respond, you can increase the delay to something like 15",
     {7, 35, 246, 32},
     true},
    {-1,
     L"Static",
     L"Tip: You might want to disable the CoreTemp G15 applet so that it does not show up on top if this "
     L"applet.",
     {7, 102, 243, 19},
     true},
    {1003, L"Button", L"Cancel", {213, 147, 50, 14}, true},
    {1004, L"Static", L"Delay must be numbers and smaller than 4 digits", {107, 138, 155, 8}, false},
};

TEST_F(SettingsDialog, HasItsControlsInTemplateOrderWithTheirTextsAndPlaces) {
    show([](HWND dialog) {
        const std::vector<Control> controls = controlsOf(dialog);
        ASSERT_EQ(controls.size(), kControls.size());
        for (std::size_t i = 0; i < controls.size(); ++i) {
            const ExpectedControl& expected = kControls[i];
            const Control& control = controls[i];
            EXPECT_EQ(control.text, expected.text);
            EXPECT_EQ(control.className, expected.className) << i;
            // A negative id is cut to 16 bits by some.
            EXPECT_EQ(static_cast<std::int16_t>(control.id), expected.id) << i;
            EXPECT_EQ((control.style & WS_VISIBLE) != 0, expected.visible) << i;
            const RECT place = inPixels(dialog, expected.place);
            EXPECT_NE(EqualRect(&control.rect, &place), FALSE) << i;
        }
    });
}

TEST_F(SettingsDialog, ItsButtonsBoxAndEditAreOfTheirKinds) {
    show([](HWND dialog) {
        const auto style = [dialog](int id) { return styleOf(GetDlgItem(dialog, id)); };
        EXPECT_EQ(style(IDC_AUTOSTART) & BS_TYPEMASK, DWORD{BS_AUTOCHECKBOX});
        EXPECT_EQ(style(IDC_CANCEL) & BS_TYPEMASK, DWORD{BS_PUSHBUTTON});
        EXPECT_NE(style(IDC_DELAY) & ES_AUTOHSCROLL, 0U);
        EXPECT_EQ(style(IDC_DELAY) & ES_NUMBER, 0U) << "letters can be typed and are warned about";
        for (const int id : {IDC_SAVE, IDC_DELAY, IDC_AUTOSTART, IDC_CANCEL}) {
            EXPECT_NE(style(id) & WS_TABSTOP, 0U) << id;
        }
    });
}

TEST_F(SettingsDialog, IsACentredTopmostDialogWithCaptionSystemMenuAndNoOwner) {
    show([](HWND dialog) {
        EXPECT_EQ(textOf(dialog), L"Settings");
        EXPECT_EQ(styleOf(dialog) & (WS_CAPTION | WS_SYSMENU), DWORD{WS_CAPTION | WS_SYSMENU});
        EXPECT_NE(extendedStyleOf(dialog) & WS_EX_TOPMOST, 0U);
        EXPECT_EQ(GetWindow(dialog, GW_OWNER), nullptr);

        const RECT units = inPixels(dialog, {0, 0, 269, 168});
        RECT client{};
        GetClientRect(dialog, &client);
        EXPECT_NE(EqualRect(&client, &units), FALSE);

        RECT workArea{};
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &workArea, 0);
        const RECT place = rectOf(dialog);
        EXPECT_NEAR(place.left - workArea.left, workArea.right - place.right, 1);
        EXPECT_NEAR(place.top - workArea.top, workArea.bottom - place.bottom, 1);
    });
}

TEST_F(SettingsDialog, ItsFontIsMsShellDlgOfEightPoints) {
    show([](HWND dialog) {
        const HDC screen = GetDC(nullptr);
        const LONG eightPoints = -MulDiv(8, GetDeviceCaps(screen, LOGPIXELSY), 72);
        ReleaseDC(nullptr, screen);
        std::vector<HWND> windows{dialog};
        for (const Control& control : controlsOf(dialog)) {
            windows.push_back(control.window);
        }
        for (const HWND window : windows) {
            // The dialog is of this process: its handles mean the same here.
            const LRESULT font = SendMessageW(window, WM_GETFONT, 0, 0);
            LOGFONTW facts{};
            ASSERT_NE(GetObjectW(reinterpret_cast<HGDIOBJ>(font), sizeof(facts), &facts), 0);
            EXPECT_STREQ(facts.lfFaceName, L"MS Shell Dlg");
            EXPECT_EQ(facts.lfHeight, eightPoints);
        }
    });
}

// Handles are not given out again at once, so one that is of no object any more was given back.
TEST_F(SettingsDialog, TakesItsFontAndItsWindowsAlongHoweverItIsClosed) {
    const std::vector<std::function<void(HWND)>> endings = {
        [](HWND dialog) { pressButton(dialog, IDC_CANCEL); },
        [](HWND dialog) { pressButton(dialog, IDC_SAVE); },
        [](HWND dialog) { PostMessageW(dialog, WM_CLOSE, 0, 0); },
        [](HWND dialog) { PostMessageW(dialog, WM_SYSCOMMAND, SC_CLOSE, 0); },
    };
    for (std::size_t i = 0; i < endings.size(); ++i) {
        HGDIOBJ font = nullptr;
        std::vector<HWND> windows;
        show([&](HWND dialog) {
            font = reinterpret_cast<HGDIOBJ>(SendMessageW(dialog, WM_GETFONT, 0, 0));
            EXPECT_EQ(GetObjectType(font), DWORD{OBJ_FONT});
            windows.push_back(dialog);
            for (const Control& control : controlsOf(dialog)) {
                windows.push_back(control.window);
            }
            endings[i](dialog);
            EXPECT_TRUE(waitUntilGone(dialog));
        });
        EXPECT_EQ(GetObjectType(font), 0U) << "the font of ending " << i;
        EXPECT_EQ(windows.size(), kControls.size() + 1);
        for (const HWND window : windows) {
            EXPECT_EQ(IsWindow(window), FALSE) << "ending " << i;
        }
    }
}

TEST_F(SettingsDialog, ShowsTheSettingsOfTheEntry) {
    struct Case {
        const wchar_t* entry;
        bool ticked;
        const wchar_t* delay;
    };
    for (const Case& c : {
             Case{nullptr, false, L""},
             Case{L"\"C:\\Kelvaro.exe\"", true, L""},
             Case{L"\"C:\\Kelvaro.exe\" -delay15", true, L"15"},
             Case{L"\"C:\\Kelvaro.exe\" -delay 15", true, L""},
             Case{L"\"C:\\Kelvaro.exe\" -delay1234", true, L"1234"},
             Case{L"\"C:\\Kelvaro.exe\" -delay2147483647", true, L"2147483647"},
             Case{L"\"C:\\Kelvaro.exe\" -delay2147483648", true, L""},
             Case{L"\"C:\\Kelvaro.exe\" -delay99999999999999999999", true, L""},
         }) {
        if (c.entry != nullptr) {
            setEntry(c.entry);
        }
        show([&c](HWND dialog) {
            EXPECT_EQ(isTicked(dialog), c.ticked);
            EXPECT_EQ(delayText(dialog), c.delay);
            EXPECT_FALSE(isVisible(dialog, IDC_DELAY_WARNING));
        });
    }
}

TEST_F(SettingsDialog, AFailedReadShowsTheDefaultsWhateverWasShownBefore) {
    setEntry(L"\"C:\\Kelvaro.exe\" -delay15");
    show([](HWND dialog) { EXPECT_TRUE(isTicked(dialog)); });
    setEntry(std::wstring(300, L'x') + L" -delay15");
    show([](HWND dialog) {
        EXPECT_FALSE(isTicked(dialog));
        EXPECT_EQ(delayText(dialog), L"");
    });
}

TEST_F(SettingsDialog, AnEntryWhoseDelayDoesNotFitIsNotLostByLooking) {
    const std::wstring odd = L"\"C:\\Kelvaro.exe\" -delay99999999999999999999";
    setEntry(odd);
    show([](HWND dialog) {
        pressButton(dialog, IDC_CANCEL);
        EXPECT_TRUE(waitUntilGone(dialog));
    });
    EXPECT_EQ(runValue(), odd);
    show([](HWND dialog) {
        pressButton(dialog, IDC_SAVE);
        EXPECT_TRUE(waitUntilGone(dialog));
    });
    EXPECT_EQ(runValue(), entry(L"")) << "what the dialog shows is what it saves";
}

TEST_F(SettingsDialog, SavesTheTickedBoxAndTheFirstThreeCharactersOfTheDelay) {
    struct Case {
        const wchar_t* typed;
        const wchar_t* options;
    };
    for (const Case& c : {
             Case{L"15", L" -delay15"},
             Case{L"999", L" -delay999"},
             Case{L"1234", L" -delay123"},
             Case{L"123a", L" -delay123"},
             Case{L"007", L" -delay7"},
             Case{L"", L""},
             Case{L"0", L""},
             Case{L"000", L""},
         }) {
        saveSettings(true, c.typed);
        EXPECT_EQ(runValue(), entry(c.options));
    }
}

TEST_F(SettingsDialog, UntickingDeletesTheEntry) {
    setEntry(entry(L" -delay15"));
    saveSettings(false, L"15");
    EXPECT_EQ(runValue(), std::nullopt);
    saveSettings(false, L"");
    EXPECT_EQ(runValue(), std::nullopt);
}

TEST_F(SettingsDialog, WarnsAboutAnythingButDigitsAndStaysOpen) {
    for (const wchar_t* typed : {L"12a", L"a", L"1 2", L"-5", L"+5", L" 5", L"12a4"}) {
        show([typed](HWND dialog) {
            tick(dialog, true);
            typeText(dialog, IDC_DELAY, typed);
            EXPECT_FALSE(isVisible(dialog, IDC_DELAY_WARNING));
            pressButton(dialog, IDC_SAVE);
            EXPECT_TRUE(waitFor([dialog] { return isVisible(dialog, IDC_DELAY_WARNING); }));
            EXPECT_NE(IsWindow(dialog), FALSE);
        });
        EXPECT_EQ(runValue(), std::nullopt);
    }
}

TEST_F(SettingsDialog, SavesOnceTheDelayIsCorrected) {
    show([](HWND dialog) {
        tick(dialog, true);
        typeText(dialog, IDC_DELAY, L"12a");
        pressButton(dialog, IDC_SAVE);
        ASSERT_TRUE(waitFor([dialog] { return isVisible(dialog, IDC_DELAY_WARNING); }));
        typeText(dialog, IDC_DELAY, L"12");
        pressButton(dialog, IDC_SAVE);
        EXPECT_TRUE(waitUntilGone(dialog));
    });
    EXPECT_EQ(runValue(), entry(L" -delay12"));
}

TEST_F(SettingsDialog, ClosesAsAfterASaveWhenTheInstallationIsMissing) {
    setEntry(L"as it was");
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, kProgramKey);
    saveSettings(true, L"15");
    EXPECT_EQ(runValue(), L"as it was");
}

TEST_F(SettingsDialog, CancelAndTheCloseBoxSaveNothing) {
    setEntry(L"as it was");
    const auto change = [](HWND dialog) {
        tick(dialog, false);
        typeText(dialog, IDC_DELAY, L"99");
    };
    show([&](HWND dialog) {
        change(dialog);
        pressButton(dialog, IDC_CANCEL);
        EXPECT_TRUE(waitUntilGone(dialog));
    });
    show([&](HWND dialog) {
        change(dialog);
        PostMessageW(dialog, WM_SYSCOMMAND, SC_CLOSE, 0);
        EXPECT_TRUE(waitUntilGone(dialog));
    });
    EXPECT_EQ(runValue(), L"as it was");
}

TEST_F(SettingsDialog, EscapeAndReturnInTheDelayBoxDoNothing) {
    setEntry(L"as it was");
    show([](HWND dialog) {
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(dialog, IDC_DELAY)), TRUE);
        ASSERT_EQ(focusedControl(dialog), IDC_DELAY);
        pressKey(dialog, VK_ESCAPE);
        pressKey(dialog, VK_RETURN);
        PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0);
        PostMessageW(dialog, WM_COMMAND, IDOK, 0);
        settle(dialog);
        EXPECT_NE(IsWindow(dialog), FALSE);
    });
    EXPECT_EQ(runValue(), L"as it was");
}

TEST_F(SettingsDialog, TheTabKeyGoesThroughTheTemplatesOrder) {
    show([](HWND dialog) {
        std::vector<int> focused;
        for (int i = 0; i < 5; ++i) {
            focused.push_back(focusedControl(dialog));
            pressKey(dialog, VK_TAB);
            settle(dialog);
        }
        EXPECT_THAT(focused, ElementsAre(IDC_SAVE, IDC_DELAY, IDC_AUTOSTART, IDC_CANCEL, IDC_SAVE));
    });
}

TEST_F(SettingsDialog, TheSpaceKeyTicksTheBoxAndPressesTheFocusedButton) {
    show([](HWND dialog) {
        SendMessageW(
            dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(dialog, IDC_AUTOSTART)), TRUE);
        pressKey(dialog, VK_SPACE);
        EXPECT_TRUE(waitFor([dialog] { return isTicked(dialog); }));
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(dialog, IDC_SAVE)), TRUE);
        pressKey(dialog, VK_SPACE);
        EXPECT_TRUE(waitUntilGone(dialog));
    });
    EXPECT_EQ(runValue(), entry(L""));
}

TEST_F(SettingsDialog, TheReturnKeyPressesTheButtonReachedByTab) {
    show([](HWND dialog) {
        tick(dialog, true);
        for (int i = 0; i < 4; ++i) {
            pressKey(dialog, VK_TAB);
            settle(dialog);
        }
        ASSERT_EQ(focusedControl(dialog), IDC_SAVE);
        pressKey(dialog, VK_RETURN);
        EXPECT_TRUE(waitUntilGone(dialog));
    });
    EXPECT_EQ(runValue(), entry(L""));
}

TEST_F(SettingsDialog, ItsFrameAnswersTheMouse) {
    show([](HWND dialog) {
        const RECT place = rectOf(dialog);
        const auto hit = [dialog](LONG x, LONG y) {
            return SendMessageW(dialog, WM_NCHITTEST, 0, MAKELPARAM(x, y));
        };
        const POINT caption = captionOf(dialog);
        const POINT closeBox = closeBoxOf(dialog);
        EXPECT_EQ(hit(caption.x, caption.y), HTCAPTION);
        EXPECT_EQ(hit(closeBox.x, closeBox.y), HTCLOSE);
        EXPECT_EQ(hit(place.left + 60, place.bottom - 60), HTCLIENT);
        EXPECT_NE(SendMessageW(dialog, WM_NCACTIVATE, FALSE, 0), FALSE) << "may be deactivated";
    });
}

TEST_F(SettingsDialog, HasNoOwnerEvenWhenAnotherWindowOfTheThreadIsActive) {
    const OwnWindow active({0, 0, 100, 100});
    SetForegroundWindow(active.handle());
    ASSERT_EQ(GetActiveWindow(), active.handle());
    show([&active](HWND dialog) {
        EXPECT_EQ(GetWindow(dialog, GW_OWNER), nullptr);
        EXPECT_NE(IsWindowEnabled(active.handle()), FALSE) << "an owner would be locked";
    });
}

TEST_F(SettingsDialog, IsDraggedByItsCaptionAndLetGo) {
    show([](HWND dialog) {
        const RECT before = rectOf(dialog);
        const POINT grip = captionOf(dialog);
        dragFromTo(grip, {grip.x + 80, grip.y + 40});
        EXPECT_TRUE(waitFor([&] { return rectOf(dialog).left == before.left + 80; }));
        const RECT dropped = rectOf(dialog);
        EXPECT_EQ(dropped.top, before.top + 40);
        // The button is up: the dialog stays where it is.
        moveMouseAway(dialog, {grip.x + 200, grip.y + 100});
        const RECT after = rectOf(dialog);
        EXPECT_NE(EqualRect(&after, &dropped), FALSE);
        expectCancelWorks(dialog);
    });
}

TEST_F(SettingsDialog, ARightClickOnItsCaptionOpensTheWindowsMenuAndHoldsNothingUp) {
    show([](HWND dialog) {
        // Apart from one another: two clicks at one place would be a double one.
        for (const LONG x : {0, 80}) {
            const POINT caption = captionOf(dialog);
            rightClickAt({caption.x + x, caption.y});
            ASSERT_TRUE(waitFor([] { return openMenu(GetCurrentProcessId()) != nullptr; })) << x;
            ASSERT_TRUE(dismissMenu(dialog));
        }
        expectCancelWorks(dialog);
    });
}

TEST_F(SettingsDialog, ADoubleClickOnItsCaptionDoesNothing) {
    show([](HWND dialog) {
        const RECT before = rectOf(dialog);
        doubleClickAt(captionOf(dialog));
        moveMouseAway(dialog, {10, 10});
        const RECT after = rectOf(dialog);
        EXPECT_NE(EqualRect(&after, &before), FALSE);
        expectCancelWorks(dialog);
    });
}

TEST_F(SettingsDialog, ItsCloseBoxClosesItWithoutSaving) {
    setEntry(L"as it was");
    show([](HWND dialog) {
        tick(dialog, true);
        typeText(dialog, IDC_DELAY, L"99");
        clickAt(closeBoxOf(dialog));
        EXPECT_TRUE(waitUntilGone(dialog));
    });
    EXPECT_EQ(runValue(), L"as it was");
}

TEST_F(SettingsDialog, KeepsItsClientAreaWhenTheFrameIsCalculatedAnew) {
    show([](HWND dialog) {
        RECT before{};
        GetClientRect(dialog, &before);
        const RECT place = rectOf(dialog);
        SetWindowPos(dialog, nullptr, 0, 0, 0, 0, SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER);
        RECT after{};
        GetClientRect(dialog, &after);
        EXPECT_NE(EqualRect(&after, &before), FALSE) << after.right << " x " << after.bottom;
        const RECT samePlace = rectOf(dialog);
        EXPECT_NE(EqualRect(&samePlace, &place), FALSE);
    });
}

TEST_F(SettingsDialog, GivesTheFocusBackToItsControlWhenItIsActivatedAgain) {
    const OwnWindow rival({0, 0, 100, 100});
    show([&rival](HWND dialog) {
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(dialog, IDC_DELAY)), TRUE);
        ASSERT_EQ(focusedControl(dialog), IDC_DELAY);
        clickAt(clientCentre(rival.handle()));
        SetForegroundWindow(rival.handle());
        ASSERT_TRUE(waitFor([dialog] { return focusedControl(dialog) != IDC_DELAY; }));
        clickAt(captionOf(dialog));
        EXPECT_TRUE(waitFor([dialog] { return focusedControl(dialog) == IDC_DELAY; }));
    });
}

TEST_F(SettingsDialog, KnowsItsDefaultButton) {
    show([](HWND dialog) {
        SendMessageW(dialog, DM_SETDEFID, IDC_CANCEL, 0);
        const LRESULT answer = SendMessageW(dialog, DM_GETDEFID, 0, 0);
        EXPECT_EQ(HIWORD(answer), DC_HASDEFID);
        EXPECT_EQ(LOWORD(answer), IDC_CANCEL);
    });
}

TEST_F(SettingsDialog, HasTheColourOfDialogsBehindItsTextsToo) {
    show([](HWND dialog) {
        const ScreenPicture picture = captureSettled(dialog);
        ASSERT_FALSE(picture.pixels.empty());
        const COLORREF face = GetSysColor(COLOR_3DFACE);
        const std::uint32_t expected = GetRValue(face) << 16 | GetGValue(face) << 8 | GetBValue(face);
        const auto colourAt = [&picture](LONG x, LONG y) {
            return picture.pixels[static_cast<std::size_t>(y * picture.width + x)];
        };
        EXPECT_EQ(colourAt(1, 1), expected);
        for (const Control& control : controlsOf(dialog)) {
            if (control.className == L"Static" && (control.style & WS_VISIBLE) != 0) {
                EXPECT_EQ(colourAt(control.rect.right - 1, control.rect.bottom - 1), expected);
            }
        }
    });
}

TEST_F(SettingsDialog, AnswersAListBoxAsTheDefaultProcedureDoes) {
    show([](HWND dialog) {
        // There is none; -1 would tell it to go on by itself.
        EXPECT_EQ(SendMessageW(dialog, WM_VKEYTOITEM, MAKEWPARAM(VK_DOWN, 0), 0), -1);
        EXPECT_EQ(SendMessageW(dialog, WM_CHARTOITEM, MAKEWPARAM(L'a', 0), 0), -1);
    });
}

}  // namespace
