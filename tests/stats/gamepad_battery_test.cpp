#include "stats/gamepad_battery.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "standins/xinput/virtual_gamepad.h"
#include "tests/support/standin_session.h"

namespace {

using Standins::VirtualGamepads;
using Standins::XinputCall;

constexpr std::uint8_t kDisconnected = 0;
constexpr std::uint8_t kWired = 1;
constexpr std::uint8_t kAlkaline = 2;
constexpr std::uint8_t kNimh = 3;
constexpr std::uint8_t kUnknown = 0xFF;

class GamepadBattery : public testing::Test {
private:
    StandinSession session_;

protected:
    VirtualGamepads gamepads_;
};

TEST_F(GamepadBattery, NoGamepadIsZero) {
    gamepads_.setBattery(0, kAlkaline, 3);
    EXPECT_EQ(readGamepadBattery(), 0);
    EXPECT_EQ(gamepads_.callCount(XinputCall::GetState), 1u) << "the stand-in was not asked";
    EXPECT_EQ(gamepads_.callCount(XinputCall::GetBatteryInformation), 0u);
}

TEST_F(GamepadBattery, TypeAndLevelGiveTheCode) {
    struct Case {
        std::uint8_t type;
        std::uint8_t level;
        std::int32_t expected;
    };
    const Case cases[] = {
        {kWired, 0, 1},
        {kWired, 3, 1},
        {kAlkaline, 0, 2},
        {kAlkaline, 1, 3},
        {kAlkaline, 2, 4},
        {kAlkaline, 3, 5},
        {kNimh, 0, 2},
        {kNimh, 3, 5},
        {kNimh, 4, 0},
        {kDisconnected, 3, 0},
        {kUnknown, 3, 0},
        {4, 3, 0},
    };
    gamepads_.setConnected(0, true);
    for (const Case& c : cases) {
        gamepads_.setBattery(0, c.type, c.level);
        EXPECT_EQ(readGamepadBattery(), c.expected) << int{c.type} << ' ' << int{c.level};
    }
}

TEST_F(GamepadBattery, FirstGamepadIsAskedForItsOwnBattery) {
    gamepads_.setConnected(0, true);
    gamepads_.setConnected(1, true);
    gamepads_.setBattery(0, kNimh, 1);
    gamepads_.setBattery(1, kWired, 0);
    EXPECT_EQ(readGamepadBattery(), 3);
    const std::vector<Standins::LoggedCall> calls = gamepads_.log().entries();
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(calls[0].call, static_cast<std::uint32_t>(XinputCall::GetState));
    EXPECT_THAT(calls[0].arguments, testing::Each(0));
    EXPECT_EQ(calls[1].call, static_cast<std::uint32_t>(XinputCall::GetBatteryInformation));
    EXPECT_THAT(calls[1].arguments, testing::Each(0));
}

TEST_F(GamepadBattery, OtherGamepadsDoNotCount) {
    gamepads_.setConnected(1, true);
    gamepads_.setBattery(1, kWired, 0);
    EXPECT_EQ(readGamepadBattery(), 0);
}

TEST_F(GamepadBattery, BatteryThatCannotBeReadIsZero) {
    gamepads_.setConnected(0, true);
    gamepads_.setBattery(0, kWired, 0);
    gamepads_.setBatteryResult(ERROR_DEVICE_NOT_CONNECTED);
    EXPECT_EQ(readGamepadBattery(), 0);
    EXPECT_EQ(gamepads_.callCount(XinputCall::GetBatteryInformation), 1u);
}

TEST_F(GamepadBattery, BatteryThatCannotBeReadAnyMoreIsZero) {
    gamepads_.setConnected(0, true);
    gamepads_.setBattery(0, kNimh, 3);
    EXPECT_EQ(readGamepadBattery(), 5);
    gamepads_.setBatteryResult(ERROR_DEVICE_NOT_CONNECTED);
    EXPECT_EQ(readGamepadBattery(), 0);
    gamepads_.setBatteryResult(ERROR_SUCCESS);
    EXPECT_EQ(readGamepadBattery(), 5);
    gamepads_.setConnected(0, false);
    EXPECT_EQ(readGamepadBattery(), 0);
}

// What this program imports from a library: ordinals, or 0 for an import by name.
std::vector<std::uint64_t> importsFrom(const char* library) {
    const auto* const image = reinterpret_cast<const char*>(GetModuleHandleW(nullptr));
    const auto* const dosHeader = reinterpret_cast<const IMAGE_DOS_HEADER*>(image);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(image + dosHeader->e_lfanew);
    const DWORD offset = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    std::vector<std::uint64_t> imports;
    for (const auto* entry = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(image + offset);
         entry->Name != 0;
         ++entry) {
        if (_stricmp(image + entry->Name, library) != 0) {
            continue;
        }
        for (const auto* thunk =
                 reinterpret_cast<const IMAGE_THUNK_DATA64*>(image + entry->OriginalFirstThunk);
             thunk->u1.AddressOfData != 0;
             ++thunk) {
            const std::uint64_t word = thunk->u1.Ordinal;
            imports.push_back(IMAGE_SNAP_BY_ORDINAL64(word) ? IMAGE_ORDINAL64(word) : 0);
        }
    }
    return imports;
}

TEST_F(GamepadBattery, XinputIsImportedByItsOrdinals) {
    EXPECT_THAT(importsFrom("XINPUT1_4.dll"), testing::UnorderedElementsAre(2, 7));
}

}  // namespace
