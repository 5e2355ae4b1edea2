#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>
#include <utility>

#include "pages/options_page.h"
#include "tests/pages/failing_allocations.h"
#include "tests/pages/main_page_fixture.h"
#include "tests/support/gdiplus_ledger.h"

namespace {

/// Draws with the first allocation failing, then the second, and so on until there are no more. Each failure
/// must come out of the drawing and leave nothing allocated once the page is drawn again. Returns how many
/// there were. `change` gives the next drawing something to paint.
template <typename Change, typename Draw>
std::size_t failEachAllocation(const Change& change, const Draw& draw) {
    // What a page remembers of its drawings is complete after the second one.
    const auto drawTwice = [&] {
        for (int i = 0; i < 2; ++i) {
            change();
            draw();
        }
    };
    for (std::size_t failing = 0;; ++failing) {
        drawTwice();
        const GdiplusLedger ledger;
        const std::ptrdiff_t before = liveAllocations();
        bool thrown = false;
        bool failed = false;
        change();
        {
            const FailingAllocation failure(failing);
            try {
                draw();
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            failed = failure.hasFailed();
        }
        EXPECT_EQ(thrown, failed) << "allocation " << failing;
        drawTwice();
        EXPECT_EQ(liveAllocations(), before) << "allocation " << failing;
        EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{}) << "allocation " << failing;
        if (!failed) {
            return failing;
        }
    }
}

/// How far the next allocation to fail is behind this one. The plates of the graphs alone take about a
/// thousand of the same kind, one for each sample, of which some fail.
std::size_t stepFrom(std::size_t failing) {
    constexpr std::size_t kVaried = 60;
    if (failing < kVaried) {
        return 1;
    }
    return std::getenv("KELVARO_ALL") != nullptr ? 5 : 47;
}

using PageOutOfMemory = MainPageOnKeyboard;

TEST_F(PageOutOfMemory, EveryFailureLeavesTheMainPagesDrawingAndIsForgottenAfterwards) {
    sampler.unreadMail = 1'234'567'890;
    sampler.gpuStats.coreClock = 4'000'000'000;
    const std::size_t failures =
        failEachAllocation([this] { ++sampler.unreadMail; }, [this] { page->Draw(app.canvas(), {}); });
    EXPECT_GT(failures, 4U) << "painting it";
    drawAndCompare("drawn again");
}

TEST_F(PageOutOfMemory, WhatAFailureLeftHalfPaintedIsPaintedAnewAlthoughNothingElseChanged) {
    drawAndCompare("before");
    for (std::size_t failing = 0;; failing += stepFrom(failing)) {
        sampler.unreadMail = 1'000'000'000 + static_cast<std::int32_t>(failing);
        const FailingAllocation failure(failing);
        try {
            page->Draw(app.canvas(), {});
            break;
        } catch (const std::bad_alloc&) {
            smear();
        }
        drawAndCompare("after failure " + std::to_string(failing));
    }
}

TEST_F(PageOutOfMemory, AFailedDrawingLeavesTheReadingForTheNextOne) {
    sampler.dataReady = true;
    const FailingAllocation failure(0);
    EXPECT_THROW(page->Draw(app.canvas(), {}), std::bad_alloc);
    EXPECT_TRUE(sampler.dataReady);
}

TEST_F(PageOutOfMemory, EveryFailureLeavesTheOptionsPagesDrawing) {
    OptionsPage options(&app);
    options.Init(app.canvas());
    options.Draw(app.canvas(), {});
    const PagePixels before(*options.bitmap());
    bool atTheTop = true;
    Panelix::LcdButtons buttons;
    const std::size_t failures = failEachAllocation(
        [&] {
            buttons = down({atTheTop ? Panelix::LcdButton::Down : Panelix::LcdButton::Up});
            atTheTop = !atTheTop;
        },
        [&] { options.Draw(app.canvas(), std::exchange(buttons, {})); });
    EXPECT_GT(failures, 0U);
    options.OnActivate();
    options.Draw(app.canvas(), {});
    EXPECT_TRUE(samePixels(PagePixels(*options.bitmap()), before));
}

}  // namespace
