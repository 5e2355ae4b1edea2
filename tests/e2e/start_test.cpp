#include <windows.h>

#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <optional>
#include <string>

#include "tests/e2e/desktop_fixture.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

/// Code of a process that the C runtime ended because of an exception that nobody caught.
constexpr DWORD kAbnormalEnd = 3;

using Start = KelvaroOnTheDesktop;

std::chrono::milliseconds timeUntilPreview(const ChildProcess& process,
                                           std::chrono::steady_clock::time_point begin) {
    EXPECT_NE(waitForPreview(process), nullptr);
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
}

TEST_F(Start, ASecondOneIsRefusedWithABoxAndCodeOneAndTheFirstGoesOn) {
    start();
    const ChildProcess second(kelvaroProgram());
    const MessageBoxFacts box = waitForMessageBox(second.id());
    ASSERT_NE(box.window, nullptr);
    EXPECT_EQ(box.caption, L"Kelvaro Error");
    EXPECT_EQ(box.text, L"Kelvaro is already running!");
    EXPECT_EQ(box.owner, nullptr);
    EXPECT_THAT(box.buttons, ElementsAre(IDOK));
    EXPECT_EQ(findWindow(second.id(), kPreviewClass), nullptr);
    EXPECT_TRUE(second.isRunning());
    const ScreenPicture icon = captureSettled(box.icon);
    pressButton(box.window, IDOK);
    EXPECT_EQ(second.waitForExit(), DWORD{1});
    const ScreenPicture error = pictureOfIcon(MB_ICONERROR);
    EXPECT_FALSE(error == pictureOfIcon(MB_ICONWARNING));
    EXPECT_TRUE(icon == error);

    PostMessageW(window, WM_APP, 1, WM_LBUTTONDBLCLK);
    EXPECT_TRUE(becomesVisible(true)) << "the first goes on";
}

TEST_F(Start, IsRefusedDuringTheDelayOfAnotherToo) {
    const ChildProcess first(kelvaroProgram(), L"-delay 60");
    // The first takes the instance before it sleeps; nothing else of it can be seen.
    ASSERT_TRUE(waitFor([] {
        const Panelix::UniqueHandle instance(OpenMutexW(SYNCHRONIZE, FALSE, L"KELVARO_G19"));
        return static_cast<bool>(instance);
    }));
    const ChildProcess second(kelvaroProgram());
    const MessageBoxFacts box = waitForMessageBox(second.id());
    ASSERT_NE(box.window, nullptr);
    EXPECT_EQ(box.caption, L"Kelvaro Error");
    pressButton(box.window, IDOK);
    EXPECT_EQ(second.waitForExit(), DWORD{1});
    EXPECT_TRUE(first.isRunning());
}

TEST_F(Start, IsFreeAgainOnceTheFirstHasEnded) {
    start();
    PostMessageW(window, WM_COMMAND, 0x8003, 0);
    ASSERT_EQ(kelvaro->waitForExit(), DWORD{0});
    start();
    EXPECT_TRUE(kelvaro->isRunning());
}

TEST_F(Start, GoesOnWithoutProtectionWhenTheMutexCannotBeHad) {
    // Another kind of object of that name: creating the mutex fails, and not because it is there already.
    const Panelix::UniqueHandle event(CreateEventW(nullptr, TRUE, FALSE, L"KELVARO_G19"));
    ASSERT_TRUE(event);
    ASSERT_EQ(CreateMutexW(nullptr, FALSE, L"KELVARO_G19"), nullptr);
    ASSERT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    start();
    const ChildProcess second(kelvaroProgram());
    EXPECT_NE(waitForPreview(second), nullptr);
    for (const HWND preview : {window, waitForPreview(second)}) {
        PostMessageW(preview, WM_COMMAND, 0x8003, 0);
    }
    EXPECT_EQ(kelvaro->waitForExit(), DWORD{0});
    EXPECT_EQ(second.waitForExit(), DWORD{0});
}

TEST_F(Start, WaitsForItsDelay) {
    struct Case {
        const wchar_t* arguments;
        std::chrono::milliseconds atLeast;
        std::chrono::milliseconds lessThan;
    };
    for (const Case& c : {
             Case{L"-delay 0", 0s, 15s},
             Case{L"-delay0", 0s, 15s},
             Case{L"-delay 2", 2s, 17s},
             Case{L"-delay2", 2s, 17s},
             Case{L"--no-delay2x", 2s, 17s},
             Case{L"-delay 0 -delay 60", 0s, 15s},
             Case{L"-Delay 60", 0s, 15s},
         }) {
        const auto begin = std::chrono::steady_clock::now();
        const ChildProcess process(kelvaroProgram(), c.arguments);
        const auto time = timeUntilPreview(process, begin);
        EXPECT_GE(time, c.atLeast) << time.count() << " ms";
        EXPECT_LT(time, c.lessThan) << time.count() << " ms";
    }
}

TEST_F(Start, ADelayInThePathCountsToo) {
    const TemporaryFolder parent;
    const std::wstring folder = parent.path() + L"\\my-delay2";
    ASSERT_NE(CreateDirectoryW(folder.c_str(), nullptr), FALSE);
    const std::wstring copy = folder + L"\\Kelvaro.exe";
    ASSERT_NE(CopyFileW(kelvaroProgram().c_str(), copy.c_str(), TRUE), FALSE);
    {
        const auto begin = std::chrono::steady_clock::now();
        const ChildProcess process(copy);
        EXPECT_GE(timeUntilPreview(process, begin), 2s);
    }
    EXPECT_TRUE(waitFor([&] { return DeleteFileW(copy.c_str()) != FALSE; }));
    EXPECT_NE(RemoveDirectoryW(folder.c_str()), FALSE);
}

/// What a program writes to its standard error until its end, and its exit code.
struct LastWords {
    std::string text;
    std::optional<DWORD> exitCode;
};

LastWords lastWords(const std::wstring& arguments) {
    SECURITY_ATTRIBUTES inheritable{sizeof(inheritable), nullptr, TRUE};
    Panelix::UniqueHandle reading;
    Panelix::UniqueHandle writing;
    EXPECT_NE(CreatePipe(reading.put(), writing.put(), &inheritable, 0), FALSE);
    const ChildProcess process(kelvaroProgram(), arguments, writing.get());
    LastWords words{{}, process.waitForExit()};
    // The last one to write has gone: reading then ends with the text.
    writing.reset();
    std::array<char, 256> part{};
    DWORD bytes = 0;
    while (ReadFile(reading.get(), part.data(), static_cast<DWORD>(part.size()), &bytes, nullptr) != FALSE &&
           bytes != 0) {
        words.text.append(part.data(), bytes);
    }
    return words;
}

TEST_F(Start, WithoutAReadableDelayEndsAbnormallyAndWithoutABox) {
    for (const wchar_t* arguments :
         {L"-delay", L"-delay soon", L"-delay-", L"-delay 2147483648", L"-delay 99999999999999999999"}) {
        // A box would keep the process until it is answered.
        const LastWords words = lastWords(arguments);
        EXPECT_EQ(words.exitCode, kAbnormalEnd);
        // The usual way, through abort(), to which the boxes of the system belong, begins with a message
        // here.
        EXPECT_EQ(words.text, "");
    }
}

}  // namespace
