#include "framework/core/lcd_device.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "framework/core/lcd_library.h"
#include "framework/core/lcd_sdk_abi.h"
#include "standins/vendor_libraries.h"
#include "tests/framework/core/lcd_fixture.h"
#include "tests/support/import_recorder.h"
#include "tests/support/standin_session.h"
#include "tests/support/temporary_folder.h"

namespace {

using Panelix::LcdButton;
using Panelix::LcdDevice;
using Panelix::LcdFrame;
using Standins::LcdCall;
using testing::ElementsAre;
namespace LcdSdk = Panelix::LcdSdk;

/// Path of the registered library in the longest form that is taken: 259 characters and the terminator.
constexpr std::size_t kLongestPath = 259;

class LcdDeviceWithKeyboard : public WithKeyboard {
protected:
    LcdDevice device;

    void poll(std::uint32_t buttonsDown) {
        keyboard.setHeldButtons(buttonsDown);
        device.PollButtons();
    }

    std::vector<LcdButton> pressed() const {
        std::vector<LcdButton> buttons;
        for (std::size_t i = 0; i < Panelix::kLcdButtonCount; ++i) {
            if (device.Buttons().pressed[i]) {
                buttons.push_back(static_cast<LcdButton>(i));
            }
        }
        return buttons;
    }
};

using Buttons = std::vector<LcdButton>;

TEST_F(LcdDeviceWithKeyboard, AnnouncesTheAppletByNameForTheColourLcd) {
    ASSERT_TRUE(device.Init(L"Kelvaro"));
    EXPECT_EQ(keyboard.initRecord().name, L"Kelvaro");
    EXPECT_EQ(keyboard.initRecord().type, 2);
    EXPECT_EQ(keyboard.callCount(LcdCall::Init), 1U);
}

TEST_F(LcdDeviceWithKeyboard, FalseFromTheLibraryIsPassedOnAndShutdownIsNotCalled) {
    keyboard.setRefuseInit(true);
    {
        LcdDevice refused;
        EXPECT_FALSE(refused.Init(L"Kelvaro"));
    }
    EXPECT_EQ(keyboard.callCount(LcdCall::Init), 1U);
    EXPECT_EQ(keyboard.callCount(LcdCall::Shutdown), 0U);
}

TEST_F(LcdDeviceWithKeyboard, ShutsTheLcdDownWhenItGoes) {
    {
        LcdDevice bound;
        ASSERT_TRUE(bound.Init(L"Kelvaro"));
        EXPECT_EQ(keyboard.callCount(LcdCall::Shutdown), 0U);
    }
    EXPECT_EQ(keyboard.callCount(LcdCall::Shutdown), 1U);
}

TEST_F(LcdDeviceWithKeyboard, NeverAsksWhetherTheKeyboardIsConnected) {
    keyboard.setConnected(false);
    EXPECT_TRUE(device.Init(L"Kelvaro"));
    device.PollButtons();
    EXPECT_EQ(keyboard.callCount(LcdCall::IsConnected), 0U);
}

TEST_F(LcdDeviceWithKeyboard, PollsTheSevenButtonsInTheirOrder) {
    ASSERT_TRUE(device.Init(L"Kelvaro"));
    device.PollButtons();
    std::vector<std::uint32_t> asked;
    for (const auto& call : keyboard.calls()) {
        if (call.call == LcdCall::IsButtonPressed) {
            asked.push_back(call.argument);
        }
    }
    EXPECT_EQ(asked, (std::vector<std::uint32_t>{0x1000, 0x0200, 0x2000, 0x0100, 0x4000, 0x0400, 0x0800}));
}

TEST_F(LcdDeviceWithKeyboard, EachButtonHasItsPlaceInTheRecord) {
    ASSERT_TRUE(device.Init(L"Kelvaro"));
    const std::pair<int, LcdButton> buttons[] = {
        {LcdSdk::kButtonUp, LcdButton::Up},
        {LcdSdk::kButtonRight, LcdButton::Right},
        {LcdSdk::kButtonDown, LcdButton::Down},
        {LcdSdk::kButtonLeft, LcdButton::Left},
        {LcdSdk::kButtonMenu, LcdButton::Menu},
        {LcdSdk::kButtonOk, LcdButton::Ok},
        {LcdSdk::kButtonCancel, LcdButton::Cancel},
    };
    for (const auto& [mask, button] : buttons) {
        poll(static_cast<std::uint32_t>(mask));
        EXPECT_EQ(pressed(), Buttons{button});
        EXPECT_TRUE(device.Buttons().isHeld(button));
        // The bytes that a page reads by index: seven pressed flags, then seven held flags.
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(&device.Buttons());
        EXPECT_EQ(bytes[static_cast<std::size_t>(button)], 1);
        EXPECT_EQ(bytes[7 + static_cast<std::size_t>(button)], 1);
        poll(0);
        EXPECT_EQ(std::count(bytes, bytes + 14, 1), 0);
    }
}

TEST_F(LcdDeviceWithKeyboard, AButtonHeldAcrossPollsIsPressedOnceAndAgainAfterARelease) {
    ASSERT_TRUE(device.Init(L"Kelvaro"));
    poll(LcdSdk::kButtonOk);
    EXPECT_EQ(pressed(), Buttons{LcdButton::Ok});
    for (int i = 0; i < 100; ++i) {
        poll(LcdSdk::kButtonOk);
        EXPECT_EQ(pressed(), Buttons{});
        EXPECT_TRUE(device.Buttons().isHeld(LcdButton::Ok));
    }
    poll(0);
    EXPECT_EQ(pressed(), Buttons{});
    EXPECT_FALSE(device.Buttons().isHeld(LcdButton::Ok));
    poll(LcdSdk::kButtonOk);
    EXPECT_EQ(pressed(), Buttons{LcdButton::Ok});
}

TEST_F(LcdDeviceWithKeyboard, TwoButtonsPressedAtOnceAreBothReported) {
    ASSERT_TRUE(device.Init(L"Kelvaro"));
    poll(LcdSdk::kButtonLeft | LcdSdk::kButtonCancel);
    EXPECT_EQ(pressed(), (Buttons{LcdButton::Left, LcdButton::Cancel}));
}

TEST_F(LcdDeviceWithKeyboard, AFrameReachesTheLcdByteForByteWithTheNextUpdate) {
    ASSERT_TRUE(device.Init(L"Kelvaro"));
    LcdFrame frame = std::make_unique<std::uint8_t[]>(Panelix::kLcdFrameBytes);
    for (std::size_t i = 0; i < Panelix::kLcdFrameBytes; ++i) {
        frame[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    }
    const std::vector<std::uint8_t> expected(frame.get(), frame.get() + Panelix::kLcdFrameBytes);
    device.PushFrame(frame);
    EXPECT_FALSE(keyboard.lastFrame());
    device.Update();
    ASSERT_TRUE(keyboard.lastFrame());
    EXPECT_EQ(keyboard.lastFrame()->pixels, expected);
}

/// Counts how often one address is freed.
class FreeCounter {
public:
    explicit FreeCounter(const void* address) : override_("msvcrt.dll", "free", countedFree) {
        count = 0;
        watched = address;
        original = override_.original<decltype(free)>();
    }
    ~FreeCounter() { watched = nullptr; }
    FreeCounter(const FreeCounter&) = delete;
    FreeCounter& operator=(const FreeCounter&) = delete;

    inline static int count = 0;

private:
    static void countedFree(void* address) {
        count += address != nullptr && address == watched ? 1 : 0;
        original(address);
    }

    inline static const void* watched = nullptr;
    inline static void (*original)(void*) = nullptr;

    ImportOverride override_;
};

TEST_F(LcdDeviceWithKeyboard, AFrameIsOnlyBorrowedHoweverOftenItIsShown) {
    ASSERT_TRUE(device.Init(L"Kelvaro"));
    LcdFrame frame = std::make_unique<std::uint8_t[]>(Panelix::kLcdFrameBytes);
    const FreeCounter freed(frame.get());
    device.PushFrame(frame);
    device.PushFrame(frame);
    EXPECT_EQ(keyboard.callCount(LcdCall::ColorSetBackground), 2U);
    EXPECT_EQ(FreeCounter::count, 0);
    frame.reset();
    EXPECT_EQ(FreeCounter::count, 1);
}

TEST(LcdDevice, HasNoButtonPressedOrHeldBeforeTheFirstPoll) {
    static_assert(sizeof(LcdDevice) == 15);
    const LcdDevice device;
    EXPECT_EQ(device.Buttons().pressed, (std::array<bool, 7>{}));
    EXPECT_EQ(device.Buttons().held, (std::array<bool, 7>{}));
}

// Every way in which the library cannot be had. The caller falls back to desktop mode.

TEST(LcdLibrary, WithoutARegistrationThereIsNoLcd) {
    const RegistryOverride registry;
    LcdDevice device;
    EXPECT_FALSE(device.Init(L"Kelvaro"));
}

TEST(LcdLibrary, TheRegistrationIsClosedWhetherItCanBeReadOrNot) {
    const RegistryOverride registry;
    RegistryOverride::makeKey(HKEY_LOCAL_MACHINE, LcdSdk::kServerBinaryKey);
    const ImportRecorder<&RegOpenKeyExW> opened("ADVAPI32.dll", "RegOpenKeyExW");
    const ImportRecorder<&RegCloseKey> closed("ADVAPI32.dll", "RegCloseKey");
    EXPECT_FALSE(Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor));
    EXPECT_EQ(opened.count(), 1U);
    EXPECT_EQ(closed.count(), 1U);
    registerLcdLibrary(L"C:\\there\\is\\no\\such.dll");
    const std::size_t before = closed.count();
    EXPECT_FALSE(Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor));
    EXPECT_EQ(closed.count(), before + 1);
}

TEST(LcdLibrary, WithoutTheDefaultValueThereIsNoLcd) {
    const RegistryOverride registry;
    RegistryOverride::makeKey(HKEY_LOCAL_MACHINE, LcdSdk::kServerBinaryKey);
    EXPECT_FALSE(Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor));
}

TEST(LcdLibrary, ARegisteredFileThatIsNotThereGivesNoLcd) {
    const RegistryOverride registry;
    registerLcdLibrary(L"C:\\there\\is\\no\\such.dll");
    EXPECT_FALSE(Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor));
}

TEST(LcdLibrary, ARegisteredFileThatIsNoLibraryGivesNoLcd) {
    const RegistryOverride registry;
    registerLcdLibrary(L"C:\\windows\\win.ini");
    EXPECT_FALSE(Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor));
}

TEST(LcdLibrary, AValueOfNumbersGivesNoLcd) {
    const RegistryOverride registry;
    const DWORD number = 0xFFFFFFFF;
    RegistryOverride::setValue(
        HKEY_LOCAL_MACHINE, LcdSdk::kServerBinaryKey, nullptr, REG_DWORD, &number, sizeof(number));
    EXPECT_FALSE(Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor));
}

TEST(LcdLibrary, AnEmptyPathGivesNoLcd) {
    const RegistryOverride registry;
    registerLcdLibrary(L"");
    EXPECT_FALSE(Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor));
}

TEST(LcdLibrary, AValueThatFillsTheBufferWithoutATerminatorGivesNoLcd) {
    const RegistryOverride registry;
    const std::wstring path(260, L'x');
    RegistryOverride::setValue(
        HKEY_LOCAL_MACHINE, LcdSdk::kServerBinaryKey, nullptr, REG_BINARY, path.data(), 520);
    EXPECT_FALSE(Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor));
}

TEST(LcdLibrary, AnOddNumberOfBytesGivesNoLcd) {
    const RegistryOverride registry;
    RegistryOverride::setValue(HKEY_LOCAL_MACHINE, LcdSdk::kServerBinaryKey, nullptr, REG_BINARY, "abc", 3);
    EXPECT_FALSE(Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor));
}

class LcdLibraryPath : public testing::Test {
protected:
    /// The stand-in's path, stretched by "\." parts to a length.
    static std::wstring pathOfLength(std::size_t length) {
        std::wstring path = Standins::vendorLibraryPath(Standins::VendorLibrary::LcdSdk);
        std::replace(path.begin(), path.end(), L'/', L'\\');
        const std::size_t file = path.rfind(L'\\');
        std::wstring padding;
        while (path.size() + padding.size() + 2 <= length) {
            padding += L"\\.";
        }
        if (path.size() + padding.size() < length) {
            padding += L"\\";
        }
        return path.substr(0, file) + padding + path.substr(file);
    }

    RegistryOverride registry;
};

TEST_F(LcdLibraryPath, Of259CharactersIsLoaded) {
    Standins::useOwnSession();
    const std::wstring path = pathOfLength(kLongestPath);
    ASSERT_EQ(path.size(), kLongestPath);
    registerLcdLibrary(path);
    EXPECT_TRUE(Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor));
}

TEST_F(LcdLibraryPath, Of260CharactersDoesNotFitAndGivesNoLcd) {
    Standins::useOwnSession();
    const std::wstring path = pathOfLength(kLongestPath + 1);
    ASSERT_EQ(path.size(), kLongestPath + 1);
    registerLcdLibrary(path);
    EXPECT_FALSE(Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor));
}

/// A working library that somebody has put where programs look by habit.
class PlantedLcdLibrary : public testing::Test {
protected:
    PlantedLcdLibrary() {
        Standins::useOwnSession();
        SetLastError(ERROR_SUCCESS);
        EXPECT_NE(CopyFileW(Standins::vendorLibraryPath(Standins::VendorLibrary::LcdSdk).c_str(),
                            inFolder(kName).c_str(),
                            TRUE),
                  FALSE);
        GetCurrentDirectoryW(static_cast<DWORD>(directory.size()), directory.data());
    }
    ~PlantedLcdLibrary() override { SetCurrentDirectoryW(directory.data()); }

    std::wstring inFolder(const std::wstring& file) const { return folder.path() + L"\\" + file; }

    /// Whether the library is loaded when this is registered.
    static bool isLoadedAs(const std::wstring& value) {
        registerLcdLibrary(value);
        const bool usable = Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor);
        const HMODULE module = GetModuleHandleW(kName);
        if (module != nullptr) {
            FreeLibrary(module);
        }
        EXPECT_EQ(usable, module != nullptr);
        return usable;
    }

    static constexpr wchar_t kName[] = L"planted_lcd.dll";

    TemporaryFolder folder;
    RegistryOverride registry;
    std::array<wchar_t, MAX_PATH> directory{};
};

TEST_F(PlantedLcdLibrary, IsLoadedByItsFullPathOnly) {
    ASSERT_NE(SetCurrentDirectoryW(folder.path().c_str()), FALSE);
    const std::wstring name = kName;
    const std::wstring withoutDrive = inFolder(name).substr(2);
    for (const std::wstring& value :
         {name, L".\\" + name, L"./" + name, folder.path().substr(0, 2) + name, withoutDrive}) {
        EXPECT_FALSE(isLoadedAs(value)) << std::string(value.begin(), value.end());
    }
    EXPECT_TRUE(isLoadedAs(inFolder(name)));
}

TEST_F(PlantedLcdLibrary, InAFolderOfThePathIsNotLoadedByItsName) {
    std::array<wchar_t, 32'767> path{};
    GetEnvironmentVariableW(L"PATH", path.data(), static_cast<DWORD>(path.size()));
    ASSERT_NE(SetEnvironmentVariableW(L"PATH", (folder.path() + L";" + path.data()).c_str()), FALSE);
    const HMODULE byHabit = LoadLibraryW(kName);
    EXPECT_NE(byHabit, nullptr) << "the plain call finds it";
    FreeLibrary(byHabit);
    EXPECT_FALSE(isLoadedAs(kName));
    SetEnvironmentVariableW(L"PATH", path.data());
}

TEST(LcdLibrary, ANameIsLookedForBesideTheProgramAndInTheSystemFolder) {
    const RegistryOverride registry;
    registerLcdLibrary(L"version.dll");
    const ImportRecorder<&LoadLibraryExW> loads("KERNEL32.dll", "LoadLibraryExW");
    EXPECT_FALSE(Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor)) << "it is no LCD library";
    EXPECT_THAT(loads.results(), ElementsAre(testing::NotNull())) << "the system folder has it";
    EXPECT_THAT(loads.arguments<2>(),
                ElementsAre(DWORD{LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32}));
}

std::vector<std::wstring> loadedPaths;

HMODULE WINAPI noteLoad(LPCWSTR path, HANDLE, DWORD) {
    loadedPaths.emplace_back(path);
    return nullptr;
}

// Windows takes slashes in most places, but not where it looks for what lies beside a library.
TEST(LcdLibrary, SlashesInItsPathBecomeBackslashes) {
    const RegistryOverride registry;
    const ImportOverride load("KERNEL32.dll", "LoadLibraryExW", noteLoad);
    for (const wchar_t* path :
         {L"C:/Program Files/there/lcd.dll", L"C:\\there/is\\lcd.dll", L"//server/share/lcd.dll"}) {
        registerLcdLibrary(path);
        EXPECT_FALSE(Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor));
    }
    EXPECT_THAT(
        loadedPaths,
        ElementsAre(
            L"C:\\Program Files\\there\\lcd.dll", L"C:\\there\\is\\lcd.dll", L"\\\\server\\share\\lcd.dll"));
}

TEST(LcdLibrary, WhatALibraryOfAFullPathNeedsMayLieBesideIt) {
    const RegistryOverride registry;
    registerLcdLibrary(L"C:\\there\\is\\no\\such.dll");
    const ImportRecorder<&LoadLibraryExW> loads("KERNEL32.dll", "LoadLibraryExW");
    EXPECT_FALSE(Panelix::LoadLcdLibrary(L"Kelvaro", LcdSdk::kTypeColor));
    EXPECT_THAT(loads.arguments<2>(),
                ElementsAre(DWORD{LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS}));
}

TEST(LcdLibrary, BeforeItIsLoadedNoButtonIsPressedAndEveryCallDoesNothing) {
    EXPECT_FALSE(Panelix::lcdIsButtonPressed(LcdSdk::kButtonOk));
    Panelix::lcdSetColorBackground(nullptr);
    Panelix::lcdUpdate();
    Panelix::lcdShutdown();
}

/// A library that lacks one export, with all that the program does to it.
class LcdLibraryWithout : public testing::Test {
protected:
    /// Returns what Init returned.
    bool useWithout(const std::string& exportName) {
        registerLcdLibrary(Standins::vendorLibraryPath(Standins::VendorLibrary::LcdSdk,
                                                       std::string("without_") + exportName));
        LcdDevice device;
        const bool initialised = device.Init(L"Kelvaro");
        keyboard.setHeldButtons(LcdSdk::kButtonOk);
        device.PollButtons();
        okPressed = device.Buttons().isPressed(LcdButton::Ok);
        device.PushFrame(std::make_unique<std::uint8_t[]>(Panelix::kLcdFrameBytes));
        device.Update();
        return initialised;
    }

    RegistryOverride registry;
    StandinSession session;
    Standins::VirtualG19 keyboard;
    bool okPressed = false;
};

TEST_F(LcdLibraryWithout, InitThereIsNoLcd) {
    EXPECT_FALSE(useWithout("LogiLcdInit"));
    EXPECT_EQ(keyboard.callCount(LcdCall::Shutdown), 0U);
}

TEST_F(LcdLibraryWithout, IsButtonPressedNoButtonIsEverPressed) {
    EXPECT_TRUE(useWithout("LogiLcdIsButtonPressed"));
    EXPECT_FALSE(okPressed);
    EXPECT_EQ(keyboard.frameCount(), 1U);
}

TEST_F(LcdLibraryWithout, UpdateTheRestStillWorks) {
    EXPECT_TRUE(useWithout("LogiLcdUpdate"));
    EXPECT_TRUE(okPressed);
    EXPECT_EQ(keyboard.callCount(LcdCall::ColorSetBackground), 1U);
}

TEST_F(LcdLibraryWithout, ShutdownTheEndIsQuiet) {
    EXPECT_TRUE(useWithout("LogiLcdShutdown"));
    EXPECT_TRUE(okPressed);
    EXPECT_EQ(keyboard.frameCount(), 1U);
}

TEST_F(LcdLibraryWithout, ColorSetBackgroundButtonsStillWork) {
    EXPECT_TRUE(useWithout("LogiLcdColorSetBackground"));
    EXPECT_TRUE(okPressed);
    EXPECT_EQ(keyboard.frameCount(), 0U);
    EXPECT_EQ(keyboard.callCount(LcdCall::Update), 1U);
}

TEST_F(LcdLibraryWithout, AnyUnusedExportNothingIsMissed) {
    for (const char* unused : {"LogiLcdIsConnected",
                               "LogiLcdMonoSetBackground",
                               "LogiLcdMonoSetText",
                               "LogiLcdColorSetTitle",
                               "LogiLcdColorSetText"}) {
        EXPECT_TRUE(useWithout(unused)) << unused;
        EXPECT_TRUE(okPressed) << unused;
    }
    EXPECT_EQ(keyboard.frameCount(), 5U);
    EXPECT_EQ(keyboard.callCount(LcdCall::Shutdown), 5U);
}

}  // namespace
