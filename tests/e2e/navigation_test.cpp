#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "framework/drawing/slide.h"
#include "tests/e2e/kelvaro_on_keyboard.h"

namespace {

using Panelix::TransitionKind;
using Standins::G19Frame;
namespace LcdSdk = Panelix::LcdSdk;

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr std::uint64_t kSlideFrames = 10;

const std::uint8_t* pixelAt(const G19Frame& frame, int x, int y) {
    return frame.pixels.data() + static_cast<std::size_t>(y * kWidth + x) * 4;
}

/// Top-left corner of a page on the LCD.
struct Corner {
    int x;
    int y;
};

/// Covers nothing.
constexpr Corner kNowhere{kWidth, kHeight};

bool covers(Corner page, int x, int y) {
    return x >= page.x && x < page.x + kWidth && y >= page.y && y < page.y + kHeight;
}

/// Pixels of a slide's frame that do not show `page`, drawn at `at`, where nothing lies over it.
int strangePixels(const G19Frame& frame, const G19Frame& page, Corner at, Corner coveredBy) {
    int strange = 0;
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            if (covers(at, x, y) && !covers(coveredBy, x, y) &&
                std::memcmp(pixelAt(frame, x, y), pixelAt(page, x - at.x, y - at.y), 3) != 0) {
                ++strange;
            }
        }
    }
    return strange;
}

enum class Shown { Main, AudioDevices, Options };

struct Step {
    const char* name;
    int button;
    TransitionKind direction;
    Shown target;
};

// Every edge of the graph of pages, each starting where the one before ended.
constexpr Step kWalk[] = {
    {"main, MENU", LcdSdk::kButtonMenu, TransitionKind::SlideFromBottom, Shown::AudioDevices},
    {"audio devices, MENU", LcdSdk::kButtonMenu, TransitionKind::SlideFromTop, Shown::Main},
    {"main again", LcdSdk::kButtonMenu, TransitionKind::SlideFromBottom, Shown::AudioDevices},
    {"audio devices, CANCEL", LcdSdk::kButtonCancel, TransitionKind::SlideFromTop, Shown::Main},
    {"main again", LcdSdk::kButtonMenu, TransitionKind::SlideFromBottom, Shown::AudioDevices},
    {"audio devices, RIGHT", LcdSdk::kButtonRight, TransitionKind::SlideFromRight, Shown::Options},
    {"options, LEFT", LcdSdk::kButtonLeft, TransitionKind::SlideFromLeft, Shown::AudioDevices},
    {"audio devices again", LcdSdk::kButtonRight, TransitionKind::SlideFromRight, Shown::Options},
    {"options, CANCEL", LcdSdk::kButtonCancel, TransitionKind::SlideFromLeft, Shown::AudioDevices},
    {"audio devices again", LcdSdk::kButtonRight, TransitionKind::SlideFromRight, Shown::Options},
    {"options, MENU", LcdSdk::kButtonMenu, TransitionKind::SlideFromTop, Shown::Main},
};

class Navigation : public KelvaroOnTheKeyboard {
protected:
    /// The frame of the first pass in which `button` was down, at or after the frame `from`.
    std::uint64_t firstFrameWith(int button, std::uint64_t from) const {
        while (from <= keyboard.frameCount()) {
            const auto frame = keyboard.frame(from);
            if (frame && (frame->buttons & static_cast<std::uint32_t>(button)) != 0) {
                return from;
            }
            ++from;
        }
        return 0;
    }

    /// Checks the ten frames of a slide that begins with frame `first`, away from what the frame before
    /// shows. Unless null, `newPage` is what the new page shows all the while.
    void expectSlide(std::uint64_t first, TransitionKind direction, const G19Frame* newPage) const {
        const auto left = keyboard.frame(first - 1);
        ASSERT_TRUE(left);
        float progress = 0.0F;
        for (std::uint64_t i = 0; i < kSlideFrames; ++i) {
            const auto frame = keyboard.frame(first + i);
            ASSERT_TRUE(frame);
            progress = std::min(progress + 0.1F, 1.0F);
            const Panelix::SlideOffsets at = Panelix::slideOffsets(progress, direction);
            const Corner leaving{at.previousX, at.previousY};
            const Corner entering{at.currentX, at.currentY};
            EXPECT_EQ(strangePixels(*frame, *left, leaving, entering), 0) << "slide frame " << i + 1;
            if (newPage != nullptr) {
                EXPECT_EQ(strangePixels(*frame, *newPage, entering, kNowhere), 0) << "slide frame " << i + 1;
            }
        }
    }
};

TEST_F(Navigation, EveryEdgeOfTheGraphSlidesInItsDirectionToItsPage) {
    const ChildProcess kelvaro(kelvaroProgram());
    ASSERT_TRUE(waitForPasses(5));
    std::optional<G19Frame> audioDevices;
    std::optional<G19Frame> options;
    for (const Step& step : kWalk) {
        SCOPED_TRACE(step.name);
        const std::uint64_t before = keyboard.frameCount() + 1;
        press(step.button);
        const std::uint64_t first = firstFrameWith(step.button, before);
        ASSERT_NE(first, 0U);
        const auto shown = keyboard.lastFrame();
        ASSERT_TRUE(shown);
        // A list page shows the same when it comes in as when it has come to rest.
        const bool standsStill = step.target != Shown::Main;
        expectSlide(first, step.direction, standsStill ? &*shown : nullptr);

        // The list pages stand still, so each visit shows the same picture, and no other page shows it.
        std::optional<G19Frame>* const still = step.target == Shown::AudioDevices ? &audioDevices
                                               : step.target == Shown::Options    ? &options
                                                                                  : nullptr;
        if (still != nullptr) {
            if (!*still) {
                *still = shown;
            }
            EXPECT_EQ(shown->checksum, (*still)->checksum);
        } else {
            EXPECT_TRUE(audioDevices && shown->checksum != audioDevices->checksum);
        }
    }
    ASSERT_TRUE(audioDevices && options);
    EXPECT_NE(audioDevices->checksum, options->checksum);
}

TEST_F(Navigation, ExitAppletEndsTheProgramWithCodeZeroAfterOneLastPass) {
    const ChildProcess kelvaro(kelvaroProgram());
    ASSERT_TRUE(waitForPasses(3));
    press(LcdSdk::kButtonMenu);
    press(LcdSdk::kButtonRight);
    press(LcdSdk::kButtonDown);
    press(LcdSdk::kButtonDown);
    const std::uint64_t before = keyboard.frameCount() + 1;
    ASSERT_TRUE(keyboard.addScriptStep(LcdSdk::kButtonOk, 2));
    EXPECT_EQ(kelvaro.waitForExit(), DWORD{0});
    const std::uint64_t pressed = firstFrameWith(LcdSdk::kButtonOk, before);
    ASSERT_NE(pressed, 0U);
    // The pass of the press still begins the slide; the next one ends the loop and is shown as well.
    EXPECT_EQ(keyboard.frameCount(), pressed + 1);
}

}  // namespace
