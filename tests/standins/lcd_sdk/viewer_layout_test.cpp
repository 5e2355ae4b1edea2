#include "standins/lcd_sdk/viewer_layout.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace {

using namespace Standins;

TEST(ViewerLayout, EveryButtonIsHitInsideItsRectangleOnly) {
    for (const ViewerButton& button : kViewerButtons) {
        const ViewerRect& rect = button.rect;
        const int right = rect.x + rect.width - 1;
        const int bottom = rect.y + rect.height - 1;
        EXPECT_EQ(buttonAt(rect.x, rect.y), button.mask);
        EXPECT_EQ(buttonAt(right, bottom), button.mask);
        EXPECT_EQ(buttonAt(rect.x - 1, rect.y), 0u);
        EXPECT_EQ(buttonAt(right + 1, bottom), 0u);
        EXPECT_EQ(buttonAt(rect.x, rect.y - 1), 0u);
        EXPECT_EQ(buttonAt(right, bottom + 1), 0u);
    }
    EXPECT_EQ(buttonAt(kLcdRect.x + 300, kLcdRect.y + 200), 0u);
}

TEST(ViewerLayout, SevenButtonsStandBelowTheLcdInsideTheWindow) {
    std::uint32_t masks = 0;
    for (const ViewerButton& button : kViewerButtons) {
        masks |= button.mask;
        EXPECT_GT(button.rect.y, kLcdRect.y + kLcdRect.height);
        EXPECT_LE(button.rect.x + button.rect.width, kClientWidth);
        EXPECT_LE(button.rect.y + button.rect.height, kClientHeight);
    }
    EXPECT_EQ(masks, 0x7F00u);
    EXPECT_EQ(kLcdRect.width, 640);
    EXPECT_EQ(kLcdRect.height, 480);
}

TEST(ViewerLayout, KeysStandForTheButtonsOfTheirMeaning) {
    EXPECT_EQ(buttonForKey(VK_UP), 0x1000u);
    EXPECT_EQ(buttonForKey(VK_RIGHT), 0x0200u);
    EXPECT_EQ(buttonForKey(VK_DOWN), 0x2000u);
    EXPECT_EQ(buttonForKey(VK_LEFT), 0x0100u);
    EXPECT_EQ(buttonForKey('M'), 0x4000u);
    EXPECT_EQ(buttonForKey(VK_RETURN), 0x0400u);
    EXPECT_EQ(buttonForKey(VK_ESCAPE), 0x0800u);
    EXPECT_EQ(buttonForKey(VK_SPACE), 0u);
}

}  // namespace
