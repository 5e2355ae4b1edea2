#include <gtest/gtest.h>

#include <new>

#include "pages/options_page.h"
#include "tests/pages/failing_allocations.h"
#include "tests/pages/main_page_fixture.h"
#include "tests/support/gdiplus_ledger.h"

namespace {

/// Draws with the first allocation failing, then the second, and so on until there are no more. Each failure
/// must come out of the drawing and leave nothing allocated. Returns how many there were.
template <typename Draw>
std::size_t failEachAllocation(const Draw& draw) {
    for (std::size_t failing = 0;; ++failing) {
        const GdiplusLedger ledger;
        const std::ptrdiff_t before = liveAllocations();
        bool thrown = false;
        bool failed = false;
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
        EXPECT_EQ(liveAllocations(), before) << "allocation " << failing;
        EXPECT_EQ(ledger.outstanding(), GdiplusLedger::Numbers{}) << "allocation " << failing;
        if (!failed) {
            return failing;
        }
    }
}

using PageOutOfMemory = MainPageOnKeyboard;

TEST_F(PageOutOfMemory, EveryFailureLeavesTheMainPagesDrawingAndIsForgottenAfterwards) {
    sampler.unreadMail = 1'234'567'890;
    sampler.gpuStats.coreClock = 4'000'000'000;
    EXPECT_GT(failEachAllocation([this] { page->Draw(app.canvas(), {}); }), 3U);
    drawAndCompare("drawn again");
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
    EXPECT_GT(failEachAllocation([&] { options.Draw(app.canvas(), {}); }), 0U);
    EXPECT_TRUE(samePixels(PagePixels(*options.bitmap()), before));
}

}  // namespace
