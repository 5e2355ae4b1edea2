#include "pages/list_layout.h"
#include "pages/main_page_layout.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(PageGeometry, APointOutsideTheScreenIsSeenAsSuch) {
    EXPECT_TRUE(isOnScreen(PagePoint{0, 0}));
    EXPECT_TRUE(isOnScreen(PagePoint{319, 239}));
    EXPECT_FALSE(isOnScreen(PagePoint{320, 0}));
    EXPECT_FALSE(isOnScreen(PagePoint{0, 240}));
    EXPECT_FALSE(isOnScreen(PagePoint{-1, 0}));
    EXPECT_FALSE(isOnScreen(PagePoint{0, -1}));
}

TEST(PageGeometry, ARectangleMustLieWhollyOnTheScreen) {
    EXPECT_TRUE(isOnScreen(PageRect{0, 0, 320, 240}));
    EXPECT_FALSE(isOnScreen(PageRect{1, 0, 320, 240}));
    EXPECT_FALSE(isOnScreen(PageRect{0, 1, 320, 240}));
    EXPECT_FALSE(isOnScreen(PageRect{-1, 0, 10, 10}));
    EXPECT_FALSE(isOnScreen(PageRect{0, -1, 10, 10}));
    EXPECT_FALSE(isOnScreen(PageRect{5, 5, 0, 10}));
}

TEST(PageGeometry, TheLargestRectangleIsNotOnTheScreen) {
    constexpr int kMost = std::numeric_limits<int>::max();
    EXPECT_FALSE(isOnScreen(PageRect{1, 1, kMost, 1}));
    EXPECT_FALSE(isOnScreen(PageRect{1, 1, 1, kMost}));
    EXPECT_FALSE(isOnScreen(PageRect{kMost, kMost, kMost, kMost}));
}

TEST(ListLayout, TheFirstRowStandsFourPixelsHigherThanTheEvenSpacing) {
    EXPECT_EQ(ListLayout::rowTop(0), 36);
    EXPECT_EQ(ListLayout::rowTop(1), 69);
    EXPECT_EQ(ListLayout::rowTop(2), 98);
    EXPECT_EQ(ListLayout::rowTop(3), 127);
    EXPECT_EQ(ListLayout::rowTop(29), 881);
}

TEST(ListLayout, ATextStandsInTheMiddleOfItsRow) {
    EXPECT_EQ(ListLayout::textMiddle(0), 50.5F);
    EXPECT_EQ(ListLayout::textMiddle(1), 83.5F);
}

TEST(ListLayout, RowsDoNotOverlap) {
    for (int i = 1; i < 40; ++i) {
        const PageRect above = ListLayout::rowRect(i - 1);
        EXPECT_GE(ListLayout::rowRect(i).y, above.y + above.height) << i;
    }
}

TEST(MainPageLayout, TheMixersFullBarsFitIntoTheHighlight) {
    namespace Layout = MainPageLayout;
    const PageRect bar = Layout::volumeBar(Layout::kLeftVolumeBarX, 100);
    EXPECT_GE(bar.x, Layout::kLeftChannelHighlight.x);
    EXPECT_LE(bar.x + bar.width, Layout::kLeftChannelHighlight.x + Layout::kLeftChannelHighlight.width);
    EXPECT_GE(bar.y, Layout::kLeftChannelHighlight.y);
    EXPECT_LE(bar.y + bar.height, Layout::kLeftChannelHighlight.y + Layout::kLeftChannelHighlight.height);
}

}  // namespace
