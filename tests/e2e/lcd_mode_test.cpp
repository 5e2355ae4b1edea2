#include <windows.h>

#include <shlobj.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "framework/drawing/screenshot_name.h"
#include "standins/vendor_libraries.h"
#include "standins/wait_until.h"
#include "tests/e2e/kelvaro_on_keyboard.h"
#include "tests/support/busy_processors.h"
#include "tests/support/desktop_driver.h"
#include "tests/support/system_local_time.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace std::chrono_literals;
using Standins::G19Frame;
using Standins::KeyboardState;
using Standins::LcdCall;
using Standins::waitUntil;
namespace LcdSdk = Panelix::LcdSdk;

TEST_F(KelvaroOnTheKeyboard, AnnouncesItselfShowsFramesAndEndsThroughItsOptionsPageWithCodeZero) {
    const ChildProcess kelvaro(kelvaroProgram());
    ASSERT_TRUE(waitForPasses(5));
    EXPECT_EQ(keyboard.initRecord().name, L"Kelvaro");
    EXPECT_EQ(keyboard.initRecord().type, LcdSdk::kTypeColor);
    EXPECT_EQ(keyboard.processId(), kelvaro.id());
    EXPECT_EQ(keyboard.state(), KeyboardState::Running);

    exitByButtons();
    EXPECT_EQ(kelvaro.waitForExit(), DWORD{0});
    EXPECT_EQ(keyboard.state(), KeyboardState::Ended);
    EXPECT_EQ(keyboard.callCount(LcdCall::Init), 1U);
    EXPECT_EQ(keyboard.callCount(LcdCall::Shutdown), 1U);
    EXPECT_EQ(keyboard.callCount(LcdCall::IsConnected), 0U);
    EXPECT_EQ(keyboard.callCount(LcdCall::ColorSetBackground), keyboard.callCount(LcdCall::Update));
}

TEST_F(KelvaroOnTheKeyboard, FindsALibraryThatIsRegisteredByItsNameBesideItself) {
    const TemporaryFolder folder;
    const std::wstring program = folder.path() + L"\\Kelvaro.exe";
    ASSERT_NE(CopyFileW(kelvaroProgram().c_str(), program.c_str(), TRUE), FALSE);
    ASSERT_NE(CopyFileW(Standins::vendorLibraryPath(Standins::VendorLibrary::LcdSdk).c_str(),
                        (folder.path() + L"\\beside_lcd.dll").c_str(),
                        TRUE),
              FALSE);
    const LcdRegistrationScope byName(L"beside_lcd.dll");
    const ChildProcess kelvaro(program);
    EXPECT_TRUE(waitForPasses(2));
    exitByButtons();
    EXPECT_EQ(kelvaro.waitForExit(), DWORD{0});
}

TEST_F(KelvaroOnTheKeyboard, EveryPassPollsTheSevenButtonsThenShowsOneFrame) {
    const ChildProcess kelvaro(kelvaroProgram());
    ASSERT_TRUE(waitForPasses(20));
    const auto calls = keyboard.calls();
    // From the first whole pass on: seven polls, a frame, an update.
    std::size_t i = 0;
    while (i < calls.size() && calls[i].call != LcdCall::IsButtonPressed) {
        ++i;
    }
    ASSERT_EQ(i, 1U) << "only the initialisation comes before the first poll";
    for (int pass = 0; pass < 10; ++pass) {
        for (const int mask : {0x1000, 0x0200, 0x2000, 0x0100, 0x4000, 0x0400, 0x0800}) {
            EXPECT_EQ(calls[i].call, LcdCall::IsButtonPressed);
            EXPECT_EQ(calls[i++].argument, static_cast<std::uint32_t>(mask));
        }
        EXPECT_EQ(calls[i++].call, LcdCall::ColorSetBackground);
        EXPECT_EQ(calls[i++].call, LcdCall::Update);
    }
}

TEST_F(KelvaroOnTheKeyboard, FramesComeEvery66MillisecondsAtRest) {
    const ChildProcess kelvaro(kelvaroProgram());
    ASSERT_TRUE(waitForPasses(45));
    std::vector<double> gapsMs;
    for (std::uint64_t i = 11; i <= 40; ++i) {
        gapsMs.push_back(static_cast<double>(keyboard.frame(i)->timeUs - keyboard.frame(i - 1)->timeUs) /
                         1000.0);
    }
    // The sum has the period as its lower bound; the shortest gap is a pass that nothing disturbed.
    double total = 0;
    for (const double gap : gapsMs) {
        total += gap;
    }
    EXPECT_GE(total, 30 * 64.0);
    EXPECT_LT(*std::min_element(gapsMs.begin(), gapsMs.end()), 75.0);
}

/// Whether two frames differ within these columns (to `right`, without it) and rows (to `bottom`).
bool differ(const G19Frame& a, const G19Frame& b, RECT area) {
    for (LONG y = area.top; y < area.bottom; ++y) {
        const auto offset = static_cast<std::size_t>(y * 320 + area.left) * 4;
        const auto bytes = static_cast<std::size_t>(area.right - area.left) * 4;
        if (std::memcmp(a.pixels.data() + offset, b.pixels.data() + offset, bytes) != 0) {
            return true;
        }
    }
    return false;
}

TEST_F(KelvaroOnTheKeyboard, TheClockMovesOn) {
    const ChildProcess kelvaro(kelvaroProgram());
    ASSERT_TRUE(waitForPasses(3));
    const auto first = keyboard.lastFrame();
    ASSERT_TRUE(first);
    EXPECT_TRUE(waitUntil([&] { return differ(*first, *keyboard.lastFrame(), {4, 210, 316, 240}); }, 10s));
}

/// The leftmost column of the CPU graph in which a sample of at least four percent stands, told by its
/// brighter red: the whole plot is red up to the present load. The plot's right edge when there is none.
int leftmostSample(const G19Frame& frame) {
    constexpr int kPlotLeft = 4;
    constexpr int kPlotRight = 205;
    constexpr int kRow = 100;
    const auto red = [&frame](int column) {
        return int{frame.pixels[static_cast<std::size_t>(kRow * 320 + column) * 4 + 2]};
    };
    int column = kPlotRight;
    while (column > kPlotLeft + 1 && red(column - 1) > red(kPlotLeft) + 40) {
        --column;
    }
    return column;
}

TEST_F(KelvaroOnTheKeyboard, TheCpuGraphGrowsToTheLeftWhileTheMachineIsBusy) {
    const BusyProcessors busy;
    const ChildProcess kelvaro(kelvaroProgram());
    ASSERT_TRUE(waitForPasses(3));
    int reached = leftmostSample(*keyboard.lastFrame());
    for (int sample = 0; sample < 5; ++sample) {
        const int before = reached;
        ASSERT_TRUE(
            waitUntil([&] { return (reached = leftmostSample(*keyboard.lastFrame())) < before; }, 20s))
            << "from " << before;
    }
}

TEST_F(KelvaroOnTheKeyboard, OkShowsThePictureAndOkAgainThePage) {
    const ChildProcess kelvaro(kelvaroProgram());
    ASSERT_TRUE(waitForPasses(3));
    const auto page = keyboard.lastFrame();
    press(LcdSdk::kButtonOk);
    const auto picture = keyboard.lastFrame();
    ASSERT_TRUE(waitForPasses(keyboard.passCount() + 30));
    const auto samePicture = keyboard.lastFrame();
    ASSERT_TRUE(page && picture && samePicture);
    EXPECT_NE(picture->checksum, page->checksum);
    EXPECT_EQ(picture->checksum, samePicture->checksum) << "nothing moves on the picture";
    press(LcdSdk::kButtonOk);
    EXPECT_NE(keyboard.lastFrame()->checksum, picture->checksum);
}

/// The screenshots in the user's Documents folder, with their folder.
std::vector<std::wstring> screenshots() {
    wchar_t documents[MAX_PATH] = L"";
    SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, SHGFP_TYPE_CURRENT, documents);
    const std::wstring folder = std::wstring(documents) + L"\\";
    std::vector<std::wstring> files;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((folder + L"kelvaro shot *.bmp").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) {
        return files;
    }
    do {
        files.push_back(folder + found.cFileName);
    } while (FindNextFileW(search, &found) != FALSE);
    FindClose(search);
    return files;
}

/// Date and hour as a screenshot of that time bears them.
std::wstring dateAndHour(const std::tm& time) {
    const std::wstring text = Panelix::screenshotTimeText(time);
    return text.substr(0, text.find(L'-', text.find(L' ')) + 1);
}

// CTest gives the program a TZ that the C runtime takes for universal time.
TEST_F(KelvaroOnTheKeyboard, DownSavesOneScreenshotInTheDocumentsFolderNamedByTheLocalTime) {
    const auto before = screenshots();
    const std::wstring earliest = dateAndHour(systemLocalTime());
    const ChildProcess kelvaro(kelvaroProgram());
    ASSERT_TRUE(waitForPasses(3));
    press(LcdSdk::kButtonDown);
    auto files = screenshots();
    std::erase_if(files, [&before](const std::wstring& file) {
        return std::find(before.begin(), before.end(), file) != before.end();
    });
    ASSERT_EQ(files.size(), 1U);
    const std::wstring name = files.front().substr(files.front().rfind(L'\\') + 1);
    EXPECT_THAT(name,
                testing::AnyOf(testing::StartsWith(L"kelvaro shot " + earliest),
                               testing::StartsWith(L"kelvaro shot " + dateAndHour(systemLocalTime()))));
    WIN32_FILE_ATTRIBUTE_DATA data{};
    ASSERT_NE(GetFileAttributesExW(files.front().c_str(), GetFileExInfoStandard, &data), FALSE);
    // A file header, an info header and at least 24 bits for each pixel.
    EXPECT_GE(data.nFileSizeLow, 54U + 320 * 240 * 3);
    DeleteFileW(files.front().c_str());
}

TEST_F(KelvaroOnTheKeyboard, AboutHasNoOwnerAndNoFrameComesUntilItIsClosed) {
    const ChildProcess kelvaro(kelvaroProgram());
    ASSERT_TRUE(waitForPasses(3));
    press(LcdSdk::kButtonMenu);
    press(LcdSdk::kButtonRight);
    ASSERT_TRUE(keyboard.addScriptStep(LcdSdk::kButtonOk, 1));
    const MessageBoxFacts box = waitForMessageBox(kelvaro.id());
    ASSERT_NE(box.window, nullptr);
    EXPECT_EQ(box.caption, L"About Kelvaro");
    EXPECT_EQ(box.owner, nullptr);
    const std::uint64_t framesBefore = keyboard.frameCount();
    std::this_thread::sleep_for(300ms);
    EXPECT_NE(IsWindow(box.window), FALSE);
    EXPECT_EQ(keyboard.frameCount(), framesBefore);
    pressButton(box.window, IDOK);
    EXPECT_TRUE(waitUntilGone(box.window));
    EXPECT_TRUE(waitUntil([&] { return keyboard.frameCount() > framesBefore + 3; }, 30s));
}

TEST_F(KelvaroOnTheKeyboard, ASecondStartIsRefusedAndLeavesTheFirstAlone) {
    const ChildProcess first(kelvaroProgram());
    ASSERT_TRUE(waitForPasses(3));
    const ChildProcess second(kelvaroProgram());
    const MessageBoxFacts box = waitForMessageBox(second.id());
    ASSERT_NE(box.window, nullptr);
    EXPECT_EQ(box.caption, L"Kelvaro Error");
    EXPECT_EQ(box.text, L"Kelvaro is already running!");
    pressButton(box.window, IDOK);
    EXPECT_EQ(second.waitForExit(), DWORD{1});
    EXPECT_TRUE(first.isRunning());
    ASSERT_TRUE(waitForPasses(keyboard.passCount() + 3));
    EXPECT_EQ(keyboard.callCount(LcdCall::Init), 1U);
}

TEST_F(KelvaroOnTheKeyboard, TheStartDelayHoldsBackEverything) {
    const auto start = std::chrono::steady_clock::now();
    const ChildProcess kelvaro(kelvaroProgram(), L"-delay1");
    ASSERT_TRUE(waitForPasses(1));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 1s);
}

}  // namespace
