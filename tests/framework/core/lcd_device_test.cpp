#include "framework/core/lcd_device.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <vector>

#include "framework/core/lcd_library.h"
#include "framework/core/lcd_sdk_abi.h"
#include "tests/framework/core/lcd_fixture.h"

namespace {

using Panelix::LcdButton;
using Panelix::LcdDevice;
using Panelix::LcdFrame;
using Standins::LcdCall;
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
    device.PushFrame(std::move(frame));
    EXPECT_FALSE(keyboard.lastFrame());
    device.Update();
    ASSERT_TRUE(keyboard.lastFrame());
    EXPECT_EQ(keyboard.lastFrame()->pixels, expected);
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
        std::wstring path = Standins::lcdSdkPath();
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

TEST(LcdLibrary, BeforeItIsLoadedNoButtonIsPressedAndEveryCallDoesNothing) {
    EXPECT_FALSE(Panelix::lcdIsButtonPressed(LcdSdk::kButtonOk));
    Panelix::lcdSetColorBackground(nullptr);
    Panelix::lcdUpdate();
    Panelix::lcdShutdown();
}

/// A library that lacks one export, with all that the program does to it.
class LcdLibraryWithout : public testing::Test {
protected:
    /// Answers what Init answered.
    bool useWithout(const std::string& exportName) {
        registerLcdLibrary(Standins::lcdSdkPathWithout(exportName));
        LcdDevice device;
        const bool initialised = device.Init(L"Kelvaro");
        keyboard.setHeldButtons(LcdSdk::kButtonOk);
        device.PollButtons();
        okPressed = device.Buttons().isPressed(LcdButton::Ok);
        device.PushFrame(std::make_unique<std::uint8_t[]>(Panelix::kLcdFrameBytes));
        device.Update();
        return initialised;
    }

    struct OwnSession {
        OwnSession() { Standins::useOwnSession(); }
    };

    RegistryOverride registry;
    OwnSession session;
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
