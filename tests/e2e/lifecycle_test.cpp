#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "standins/vendor_libraries.h"
#include "standins/wait_until.h"
#include "tests/e2e/equipped_kelvaro.h"
#include "tests/support/desktop_driver.h"
#include "tests/support/only_wine.h"

namespace {

using Standins::AudioCall;
using Standins::AudioObject;
using Standins::CallbackEvent;
using Standins::LcdCall;
using Standins::NvapiCall;
using Standins::VendorLibrary;
using Standins::vendorLibraryPath;
using Standins::waitUntil;
using testing::ElementsAre;

struct Event {
    std::uint64_t timeUs;
    std::string name;
};

/// Start and end as the stand-ins of all vendors saw them.
class Lifecycle : public EquippedKelvaro {
protected:
    Lifecycle() {
        audio.addUsualDevices();
        nvidia.setGpuCount(1);
        nvidia.setName(0, "Test GPU");
        coreTemp.setRunning(true);
    }

    /// The calls that begin or end something, and the first poll of the buttons, in the order of their times.
    std::vector<std::string> milestones() {
        std::vector<Event> events;
        bool polled = false;
        for (const auto& entry : keyboard.calls()) {
            if (entry.call == LcdCall::Init) {
                events.push_back({entry.timeUs, "LCD on"});
            } else if (entry.call == LcdCall::Shutdown) {
                events.push_back({entry.timeUs, "LCD off"});
            } else if (entry.call == LcdCall::IsButtonPressed && !polled) {
                polled = true;
                events.push_back({entry.timeUs, "first poll"});
            }
        }
        for (const auto& entry : nvidia.log().entries()) {
            const auto call = static_cast<NvapiCall>(entry.call);
            if (call == NvapiCall::Initialize) {
                events.push_back({entry.timeUs, "GPU driver on"});
            } else if (call == NvapiCall::GpuGetFullName) {
                events.push_back({entry.timeUs, "GPU name"});
            } else if (call == NvapiCall::Unload) {
                events.push_back({entry.timeUs, "GPU driver off"});
            }
        }
        for (const auto& entry : audio.calls()) {
            if (entry.call == AudioCall::CreateEnumerator) {
                events.push_back({entry.timeUs, "sound on"});
            } else if (entry.call == AudioCall::RegisterControlChangeNotify) {
                events.push_back({entry.timeUs, "volume callback on"});
            } else if (entry.call == AudioCall::UnregisterControlChangeNotify) {
                events.push_back({entry.timeUs, "volume callback off"});
            }
        }
        std::stable_sort(
            events.begin(), events.end(), [](const Event& a, const Event& b) { return a.timeUs < b.timeUs; });
        std::vector<std::string> names;
        for (const Event& event : events) {
            names.push_back(event.name);
        }
        return names;
    }

    /// Puts another GDI+ beside the program.
    void useGdiplus(const std::wstring& library) const {
        const std::wstring folder = machine.program().substr(0, machine.program().rfind(L'\\'));
        ASSERT_NE(CopyFileW(library.c_str(), (folder + L"\\gdiplus.dll").c_str(), FALSE), FALSE);
    }

    /// Reads the error box of the program, checks that it still counts as running, answers the box and checks
    /// that the program then ends with code 1.
    void expectErrorBox(const std::wstring& caption, const std::wstring& text) {
        const MessageBoxFacts box = waitForMessageBox(kelvaro->id());
        ASSERT_NE(box.window, nullptr);
        EXPECT_EQ(box.caption, caption);
        EXPECT_EQ(box.text, text);
        EXPECT_EQ(box.owner, nullptr);

        const ChildProcess second(machine.program());
        const MessageBoxFacts refusal = waitForMessageBox(second.id());
        EXPECT_EQ(refusal.text, L"Kelvaro is already running!");
        pressButton(refusal.window, IDOK);
        EXPECT_EQ(second.waitForExit(), DWORD{1});

        pressButton(box.window, IDOK);
        EXPECT_EQ(kelvaro->waitForExit(), DWORD{1});
    }

    /// True when the sound system has got everything back.
    bool soundIsBalanced() const {
        return audio.liveObjects() == 0 && audio.callbackReferences() == 0 &&
               audio.callbackEvents(CallbackEvent::Abandoned) == 0;
    }
};

TEST_F(Lifecycle, EveryVendorIsStartedAndEndedOnceAndInOrder) {
    start();
    ASSERT_TRUE(waitForPasses(5));
    exitByButtons();
    ASSERT_EQ(kelvaro->waitForExit(), DWORD{0});
    EXPECT_THAT(milestones(),
                ElementsAre("LCD on",
                            "sound on",
                            "volume callback on",
                            "volume callback on",
                            "GPU driver on",
                            "GPU name",
                            "first poll",
                            "volume callback off",
                            "volume callback off",
                            "GPU driver off",
                            "LCD off"));
    EXPECT_TRUE(soundIsBalanced());
    EXPECT_EQ(coreTemp.callCount(Standins::CoreTempCall::Constructor),
              coreTemp.callCount(Standins::CoreTempCall::Destructor));
    EXPECT_GT(coreTemp.callCount(Standins::CoreTempCall::GetData), 0U);
}

TEST_F(Lifecycle, WithoutASoundSystemTheErrorIsShownAndTheLcdIsEnded) {
    audio.failCall(AudioCall::CreateEnumerator, {.result = E_FAIL});
    start();
    expectErrorBox(L"Kelvaro - System Info Error", L"Could not create Audio Device Enumerator");
    EXPECT_THAT(milestones(), ElementsAre("LCD on", "sound on", "LCD off"));
    EXPECT_EQ(keyboard.frameCount(), 0U);
    EXPECT_TRUE(soundIsBalanced());
}

TEST_F(Lifecycle, WhenGdiPlusDoesNotStartTheErrorIsShownAndEverythingIsGivenBack) {
    SKIP_ON_WINDOWS(kGdiplusIsTheSystems);
    useGdiplus(vendorLibraryPath(VendorLibrary::Gdiplus));
    start();
    expectErrorBox(L"Kelvaro - Drawing Error",
                   L"Failed to load bitmap: GdiplusNotInitialized: Indicates that the GDI+ API is not in an "
                   L"initialized state. To function, all GDI+ objects require that GDI+ be in an initialized "
                   L"state. Initialize GDI+ by calling GdiplusStartup.");
    EXPECT_THAT(milestones(),
                ElementsAre("LCD on",
                            "sound on",
                            "volume callback on",
                            "volume callback on",
                            "GPU driver on",
                            "GPU name",
                            "volume callback off",
                            "volume callback off",
                            "GPU driver off",
                            "LCD off"));
    EXPECT_EQ(keyboard.frameCount(), 0U);
    EXPECT_TRUE(soundIsBalanced());
}

TEST_F(Lifecycle, AnErrorOutOfTheLoopIsShownBeforeAnythingEndsAndThenEverythingIsGivenBack) {
    SKIP_ON_WINDOWS(kGdiplusIsTheSystems);
    useGdiplus(vendorLibraryPath(VendorLibrary::Gdiplus, "without_frames"));
    start();
    ASSERT_NE(waitForMessageBox(kelvaro->id()).window, nullptr);
    const std::vector<std::string> beforeTheBoxIsClosed = milestones();
    expectErrorBox(
        L"Kelvaro - Drawing Error",
        L"Failed to retrieve background bitmap: OutOfMemory: Indicates that the operating system is out "
        L"of memory and could not allocate memory to process the method call.");
    EXPECT_THAT(beforeTheBoxIsClosed,
                ElementsAre("LCD on",
                            "sound on",
                            "volume callback on",
                            "volume callback on",
                            "GPU driver on",
                            "GPU name",
                            "first poll"));
    EXPECT_THAT(milestones(),
                ElementsAre("LCD on",
                            "sound on",
                            "volume callback on",
                            "volume callback on",
                            "GPU driver on",
                            "GPU name",
                            "first poll",
                            "volume callback off",
                            "volume callback off",
                            "GPU driver off",
                            "LCD off"));
    EXPECT_EQ(keyboard.frameCount(), 0U);
    EXPECT_TRUE(soundIsBalanced());
    EXPECT_EQ(coreTemp.callCount(Standins::CoreTempCall::Constructor),
              coreTemp.callCount(Standins::CoreTempCall::Destructor));
}

TEST_F(Lifecycle, AKeyboardThatRefusesLeavesItsLibraryAlone) {
    keyboard.setRefuseInit(true);
    start();
    ASSERT_TRUE(waitUntil([&] { return audio.callCount(AudioCall::RegisterControlChangeNotify) == 2; },
                          std::chrono::seconds(20)));
    EXPECT_NE(findWindow(kelvaro->id(), L"PanelixWindow"), nullptr);
    EXPECT_EQ(keyboard.callCount(LcdCall::Shutdown), 0U);
    EXPECT_EQ(keyboard.callCount(LcdCall::IsButtonPressed), 0U);
    EXPECT_EQ(keyboard.callCount(LcdCall::Update), 0U);
}

}  // namespace
