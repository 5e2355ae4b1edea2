#include "pages/main_page.h"

#include <gtest/gtest.h>

#include "tests/pages/main_page_fixture.h"

namespace {

using MainPageHistory = MainPageOnKeyboard;

TEST_F(MainPageHistory, EachNewReadingAddsOneEntryAtTheRight) {
    drawAndCompare("nothing yet");
    for (const int load : {10, 100, 0, 55}) {
        sampler.cpuLoad = static_cast<std::uint32_t>(load);
        sampler.gpuStats.load = 100 - load;
        compare(drawNewReading(), "load " + std::to_string(load));
    }
}

TEST_F(MainPageHistory, AReadingIsRecordedOnceHoweverOftenThePageIsDrawn) {
    drawNewReading();
    EXPECT_FALSE(sampler.dataReady);
    for (int i = 0; i < 3; ++i) {
        drawAndCompare("drawn again");
    }
}

TEST_F(MainPageHistory, GrowsOnlyWhileThePageIsDrawn) {
    drawNewReading();
    sampler.dataReady = true;
    for (int i = 0; i < 30; ++i) {
        page->Update(false, {});
    }
    EXPECT_TRUE(sampler.dataReady) << "the reading waits for the next drawing";
    setOrdinaryFigures(sampler);
    compare(drawNewReading(), "one entry more");
}

TEST_F(MainPageHistory, TheCpusGrowsWithoutAGpuLoad) {
    drawNewReading();
    sampler.gpuStats.loadValid = false;
    compare(drawNewReading(), "no GPU load");
    EXPECT_FALSE(sampler.dataReady);
    sampler.gpuAvailable = false;
    compare(drawNewReading(), "no GPU");
    setOrdinaryFigures(sampler);
    drawAndCompare("the GPU's entry from before is still there");
    EXPECT_EQ(expected.gpuHistory.size(), 1U);
    EXPECT_EQ(expected.cpuHistory.size(), 3U);
}

TEST_F(MainPageHistory, NeverHoldsMoreThan201EntriesAndTheOldestStandsAtTheLeftEdge) {
    for (int i = 1; i <= 210; ++i) {
        sampler.cpuLoad = static_cast<std::uint32_t>(i % 90 + 5);
        sampler.gpuStats.load = (i * 7) % 90 + 5;
        const PagePixels shown = drawNewReading();
        if (i >= 199) {
            compare(shown, "reading " + std::to_string(i));
        }
    }
    EXPECT_EQ(expected.cpuHistory.size(), 201U);
    // The column at the left edge holds a line, the one before it none.
    sampler.cpuLoad = 0;
    const PagePixels shown = draw();
    const int top = 4 + 99 - expected.cpuHistory.back();
    EXPECT_NE(shown.at(4, top), shown.at(4, top - 1));
    EXPECT_EQ(shown.at(3, top), shown.at(3, top - 1));
}

}  // namespace
