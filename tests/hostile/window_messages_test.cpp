#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstring>

#include "app/resource_ids.h"
#include "framework/core/command_codes.h"
#include "tests/e2e/desktop_fixture.h"
#include "tests/hostile/random_inputs.h"

// Another program of the user's sends whatever there is to the windows of the shipped program, as any program
// may.

namespace {

constexpr wchar_t kDialogClass[] = L"#32770";
constexpr UINT kLastMessage = 0xFFFF;
constexpr unsigned kMessagesBetweenPauses = 1'000;
/// A message that is sent waits for the program's next pass.
constexpr unsigned kPostedForOneSent = 150;
/// A message that brings memory has a first parameter below this: a kind or a count of what is in it.
constexpr WPARAM kSmallParameters = 5;
/// The last of the messages whose parameters the system carries to another process.
constexpr UINT kLastOfTheSystem = WM_USER - 1;

WPARAM randomParameter(RandomInputs& inputs) {
    constexpr std::array<WPARAM, 12> kValues = {
        0, 1, 2, 3, 4, 0xFFFF, 0x10000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, ~WPARAM{0}, WPARAM{1} << 63};
    switch (inputs.below(4)) {
        case 0:
            return inputs.longNumber();
        case 1:
            return inputs.number();
        case 2:
            return inputs.below(0x10000);
        default:
            return inputs.oneOf(kValues);
    }
}

/// They say that the window or its thread is over, and are the system's to say: the program believes them.
bool endsTheWindow(UINT message) {
    return message == WM_DESTROY || message == WM_NCDESTROY || message == WM_QUIT;
}

/// They open the window's system menu. Of menus that are opened and cancelled this quickly Wine leaves one on
/// the screen now and then, which no message closes.
bool opensTheSystemMenu(UINT message, WPARAM wParam) {
    constexpr UINT kPopupSystemMenu = 0x0313;
    switch (message) {
        case WM_CONTEXTMENU:
        case WM_RBUTTONUP:
        case WM_NCRBUTTONDOWN:
        case WM_NCRBUTTONUP:
        case WM_SYSKEYDOWN:
        case WM_SYSKEYUP:
        case WM_SYSCHAR:
        case kPopupSystemMenu:
            return true;
        case WM_NCLBUTTONDOWN:
            return wParam == HTSYSMENU;
        case WM_SYSCOMMAND:
            return (wParam & 0xFFF0) == SC_KEYMENU || (wParam & 0xFFF0) == SC_MOUSEMENU;
        default:
            return false;
    }
}

/// Wine's GDI takes such a number for a metafile's device context and follows it without asking whether there
/// is one, in messages that come with a device context.
bool isMetafileForWine(WPARAM wParam) {
    return (wParam & 0x7F0000) == 0x660000;
}

/// Memory of this process for messages that bring some: the system copies as much of it as the message is
/// about.
class Enclosure {
public:
    /// Null where the record would hold further addresses, which nobody but the sender's own process can
    /// follow.
    LPARAM of(UINT message, RandomInputs& inputs) {
        bytes_.fill(0);
        if (message == WM_COPYDATA) {
            copied_ = {inputs.number(), inputs.below(4096), bytes_.data()};
            return reinterpret_cast<LPARAM>(&copied_);
        }
        if (message == WM_MDICREATE) {
            return 0;
        }
        // A number where a record has its first member, which of WM_CREATE's is what the window was made
        // with.
        const std::uint32_t first = 0x00610062U ^ inputs.below(0x40);
        std::memcpy(bytes_.data(), &first, sizeof(first));
        return reinterpret_cast<LPARAM>(bytes_.data());
    }

private:
    alignas(16) std::array<std::uint8_t, 65536> bytes_{};
    COPYDATASTRUCT copied_{};
};

class NeighbourMessages : public KelvaroOnTheDesktop {
protected:
    /// Posts every message and sends those of the system, but for those that `isLeftOut` tells of.
    template <typename IsLeftOut>
    void sendAll(HWND target, RandomInputs& inputs, const IsLeftOut& isLeftOut) {
        Enclosure enclosure;
        for (unsigned sent = 0; sent < kMessagesBetweenPauses && inputs.next(); ++sent) {
            const bool bringsMemory = inputs.chance(kPostedForOneSent);
            const UINT message =
                bringsMemory || inputs.chance(3) ? inputs.below(kLastOfTheSystem + 1) : nextMessage();
            const WPARAM wParam = bringsMemory ? inputs.below(kSmallParameters) : randomParameter(inputs);
            const auto lParam = static_cast<LPARAM>(randomParameter(inputs));
            if (endsTheWindow(message) || opensTheSystemMenu(message, wParam) || isMetafileForWine(wParam) ||
                isLeftOut(message, wParam)) {
                continue;
            }
            if (bringsMemory && message != WM_COMMAND) {
                DWORD_PTR result = 0;
                SendMessageTimeoutW(
                    target, message, wParam, enclosure.of(message, inputs), SMTO_ABORTIFHUNG, 100, &result);
            } else {
                PostMessageW(target, message, wParam, lParam);
            }
        }
        ASSERT_NO_FATAL_FAILURE(calm(target)) << inputs.place();
    }

    UINT nextMessage() {
        ++inOrder_;
        return message_++ & kLastMessage;
    }

    /// The long forms are long enough to have had every message in its turn.
    void expectEveryMessageWhenLong(const RandomInputs& inputs) const {
        EXPECT_TRUE(inputs.total() <= kLastMessage || inOrder_ > kLastMessage) << inOrder_;
    }

    /// Ends the menus, the dragging and the boxes that messages have led to, as a user would, until the
    /// preview obeys: everything posted before has been handled then.
    void calm(HWND target) {
        const bool calmed = waitFor(
            [&] {
                for (const HWND receiver : {target, window}) {
                    PostMessageW(receiver, WM_CANCELMODE, 0, 0);
                    PostMessageW(receiver, WM_KEYDOWN, VK_ESCAPE, 1);
                    PostMessageW(receiver, WM_LBUTTONUP, 0, 0);
                }
                for (const HWND box : visibleWindows(kelvaro->id(), kDialogClass, L"About Kelvaro")) {
                    pressButton(box, IDOK);
                }
                return obeys(Panelix::kCommandHide, false) && obeys(Panelix::kCommandShow, true);
            },
            std::chrono::seconds(30));
        ASSERT_TRUE(kelvaro->isRunning());
        ASSERT_TRUE(calmed);
    }

    bool obeys(std::uint32_t command, bool visible) const {
        ask(command);
        return waitFor([&] { return (IsWindowVisible(window) != FALSE) == visible; },
                       std::chrono::milliseconds(400));
    }

    /// The clock goes on in what the window shows.
    bool showsFrames() const {
        const ScreenPicture before = captureClient(window);
        return waitFor([&] { return captureClient(window) != before; });
    }

    /// The next one in order, and how many there were.
    UINT message_ = 0;
    unsigned inOrder_ = 0;
};

TEST_F(NeighbourMessages, LeaveThePreviewAsItIs) {
    RandomInputs inputs("messages to the preview window", 3'000, 100'000);
    message_ = inputs.below(0x10000);
    ASSERT_NO_FATAL_FAILURE(start());
    while (inputs.taken() < inputs.total()) {
        ASSERT_NO_FATAL_FAILURE(sendAll(window, inputs, [](UINT message, WPARAM wParam) {
            return message == WM_COMMAND && LOWORD(wParam) == Panelix::kCommandExit;
        }));
    }
    expectEveryMessageWhenLong(inputs);
    SetWindowPos(window, nullptr, 300, 300, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    EXPECT_TRUE(showsFrames());
    ASSERT_NE(openTrayMenu(window), nullptr);
    EXPECT_TRUE(dismissMenu(window));
    ask(Panelix::kCommandExit);
    EXPECT_EQ(kelvaro->waitForExit(), DWORD{0});
}

TEST_F(NeighbourMessages, LeaveTheSettingsDialogAsItIs) {
    RandomInputs inputs("messages to the settings dialog", 1'500, 100'000);
    message_ = inputs.below(0x10000);
    ASSERT_NO_FATAL_FAILURE(start());
    while (inputs.taken() < inputs.total()) {
        // Some messages close it, as Alt and F4 do: it opens again.
        ask(Panelix::kCommandSettings);
        const HWND dialog = waitForVisibleWindow(kelvaro->id(), kDialogClass, L"Settings");
        ASSERT_NE(dialog, nullptr) << inputs.place();
        ASSERT_NO_FATAL_FAILURE(
            sendAll(dialog, inputs, [](UINT message, WPARAM) { return message == WM_SETTEXT; }));
        pressButton(dialog, IDC_CANCEL);
        EXPECT_TRUE(waitUntilGone(dialog)) << inputs.place();
    }
    expectEveryMessageWhenLong(inputs);
    EXPECT_TRUE(showsFrames());
    ask(Panelix::kCommandExit);
    EXPECT_EQ(kelvaro->waitForExit(), DWORD{0});
}

}  // namespace
