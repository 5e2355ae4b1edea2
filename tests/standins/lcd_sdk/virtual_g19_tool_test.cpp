#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gdiplus.h>

#include "framework/core/lcd_sdk_abi.h"
#include "standins/lcd_sdk/gdiplus_session.h"
#include "standins/lcd_sdk/virtual_g19.h"
#include "standins/vendor_libraries.h"
#include "tests/standins/lcd_sdk/loaded_lcd_sdk.h"
#include "tests/support/child_process.h"

// The built tool, with this process as the program that draws on the LCD.

namespace {

using namespace Panelix;
using testing::ElementsAre;

constexpr std::uint32_t kMenu = 0x4000;
constexpr std::uint32_t kOk = 0x0400;

std::wstring toolPath() {
    return std::filesystem::path(Standins::vendorLibraryPath(Standins::VendorLibrary::LcdSdk))
        .replace_filename(L"virtual_g19_tool.exe")
        .wstring();
}

// Draws frames of one colour until it is stopped, as fast as a program that slides its pages.
class DrawingProgram {
public:
    DrawingProgram() : thread_([this] { draw(); }) {}
    ~DrawingProgram() {
        stop_ = true;
        thread_.join();
    }
    DrawingProgram(const DrawingProgram&) = delete;
    DrawingProgram& operator=(const DrawingProgram&) = delete;

private:
    void draw() {
        const LoadedLcdSdk library(Standins::vendorLibraryPath(Standins::VendorLibrary::LcdSdk));
        std::vector<std::uint8_t> pixels(LcdSdk::kColorFrameBytes, 0x40);
        library.find<LcdSdk::LogiLcdInit>("LogiLcdInit")(L"Test", 2);
        while (!stop_) {
            library.find<LcdSdk::LogiLcdColorSetBackground>("LogiLcdColorSetBackground")(pixels.data());
            library.find<LcdSdk::LogiLcdUpdate>("LogiLcdUpdate")();
            std::this_thread::sleep_for(std::chrono::milliseconds(16));
        }
        library.find<LcdSdk::LogiLcdShutdown>("LogiLcdShutdown")();
    }

    std::atomic<bool> stop_ = false;
    std::thread thread_;
};

class VirtualG19Tool : public testing::Test {
protected:
    VirtualG19Tool() {
        Standins::useOwnSession();
        wchar_t folder[MAX_PATH];
        GetTempPathW(MAX_PATH, folder);
        shot_ = std::wstring(folder) + L"shot_" + std::to_wstring(GetCurrentProcessId()) + L".png";
    }
    ~VirtualG19Tool() override { std::filesystem::remove(shot_); }

    std::wstring shotArguments(const std::wstring& others) const {
        return L"--shot \"" + shot_ + L"\" " + others;
    }

    std::wstring shot_;
};

TEST_F(VirtualG19Tool, ShotPressesEachButtonForTwoPassesAndSavesThePicture) {
    const Standins::VirtualG19 keyboard;
    {
        const DrawingProgram program;
        const ChildProcess tool(toolPath(), shotArguments(L"--seconds 0 --press menu,ok"));
        ASSERT_EQ(tool.waitForExit(), std::optional<DWORD>(0));
    }

    std::vector<std::uint32_t> pressed;
    for (std::uint64_t sequence = 1; sequence <= keyboard.frameCount(); ++sequence) {
        const auto frame = keyboard.frame(sequence);
        if (frame.has_value() && frame->buttons != 0) {
            pressed.push_back(frame->buttons);
        }
    }
    EXPECT_THAT(pressed, ElementsAre(kMenu, kMenu, kOk, kOk));

    const Standins::GdiplusSession gdiplus;
    Gdiplus::Bitmap picture(shot_.c_str());
    Gdiplus::Color colour;
    ASSERT_EQ(picture.GetPixel(160, 120, &colour), Gdiplus::Ok);
    EXPECT_EQ(colour.GetValue(), 0xFF404040);
}

TEST_F(VirtualG19Tool, ShotFailsWhenNothingIsDrawn) {
    const ChildProcess tool(toolPath(), shotArguments(L"--wait 1"));
    EXPECT_EQ(tool.waitForExit(), std::optional<DWORD>(1));
    EXPECT_FALSE(std::filesystem::exists(shot_));
}

TEST_F(VirtualG19Tool, ShotFailsWhenThePictureCannotBeWritten) {
    const DrawingProgram program;
    const ChildProcess tool(toolPath(), L"--shot \"C:\\no such folder\\lcd.png\" --seconds 0");
    EXPECT_EQ(tool.waitForExit(), std::optional<DWORD>(1));
}

TEST_F(VirtualG19Tool, WrongOptionsHaveAnExitCodeOfTheirOwn) {
    EXPECT_EQ(ChildProcess(toolPath(), shotArguments(L"--press back")).waitForExit(),
              std::optional<DWORD>(2));
    EXPECT_EQ(ChildProcess(toolPath(), L"").waitForExit(), std::optional<DWORD>(2));
    EXPECT_EQ(ChildProcess(toolPath(), L"--help").waitForExit(), std::optional<DWORD>(0));
}

}  // namespace
