#include "framework/drawing/slide.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>

using Panelix::easedPosition;
using Panelix::SlideOffsets;
using Panelix::slideOffsets;
using Panelix::TransitionKind;

namespace {

/// A slide as the main loop drives it: the progress grows by a tenth per pass, in single precision.
float progressAfter(int passes) {
    float progress = 0.0F;
    for (int pass = 0; pass < passes; ++pass) {
        progress += 0.1F;
    }
    return std::min(progress, 1.0F);
}

void expectOffsets(const SlideOffsets& actual, const SlideOffsets& expected) {
    EXPECT_EQ(actual.currentX, expected.currentX);
    EXPECT_EQ(actual.currentY, expected.currentY);
    EXPECT_EQ(actual.previousX, expected.previousX);
    EXPECT_EQ(actual.previousY, expected.previousY);
}

}  // namespace

TEST(Slide, EaseStartsAndEndsSlowlyAndIsHalfWayInTheMiddle) {
    EXPECT_EQ(easedPosition(0.0F), 0.0F);
    EXPECT_EQ(easedPosition(0.5F), 0.5F);
    EXPECT_EQ(easedPosition(1.0F), 1.0F);
    EXPECT_NEAR(easedPosition(0.1F), 0.0011977, 1e-6);
    EXPECT_NEAR(easedPosition(0.3F), 0.0849605, 1e-6);
    EXPECT_NEAR(easedPosition(0.9F), 0.9988023, 1e-6);
}

TEST(Slide, EaseNeverGoesBack) {
    float last = 0.0F;
    for (int step = 0; step <= 1000; ++step) {
        const float position = easedPosition(static_cast<float>(step) / 1000.0F);
        EXPECT_GE(position, last) << step;
        last = position;
    }
}

TEST(Slide, PagesStandWhereTheirDirectionSaysInEveryPass) {
    struct Pass {
        /// Distance still to go and gone, in pixels.
        int leftX;
        int goneX;
        int leftY;
        int goneY;
    };
    constexpr std::array<Pass, 11> passes{{
        {320, 0, 240, 0},
        {320, 0, 240, 0},
        {314, 6, 236, 4},
        {293, 27, 220, 20},
        {244, 76, 183, 57},
        {160, 160, 120, 120},
        {76, 244, 57, 183},
        {27, 293, 20, 220},
        {6, 314, 4, 236},
        {0, 320, 0, 240},
        {0, 320, 0, 240},
    }};
    for (std::size_t index = 0; index < passes.size(); ++index) {
        SCOPED_TRACE(index);
        const Pass& pass = passes[index];
        const float progress = progressAfter(static_cast<int>(index));
        expectOffsets(slideOffsets(progress, TransitionKind::SlideFromLeft),
                      {.currentX = -pass.leftX, .currentY = 0, .previousX = pass.goneX, .previousY = 0});
        expectOffsets(slideOffsets(progress, TransitionKind::SlideFromRight),
                      {.currentX = pass.leftX, .currentY = 0, .previousX = -pass.goneX, .previousY = 0});
        expectOffsets(slideOffsets(progress, TransitionKind::SlideFromTop),
                      {.currentX = 0, .currentY = -pass.leftY, .previousX = 0, .previousY = pass.goneY});
        expectOffsets(slideOffsets(progress, TransitionKind::SlideFromBottom),
                      {.currentX = 0, .currentY = pass.leftY, .previousX = 0, .previousY = -pass.goneY});
    }
}

TEST(Slide, HalfWayFromTheRightThePagesMeetInTheMiddle) {
    expectOffsets(slideOffsets(0.5F, TransitionKind::SlideFromRight),
                  {.currentX = 160, .currentY = 0, .previousX = -160, .previousY = 0});
}

TEST(Slide, AtTheEndTheOldPageHasJustLeft) {
    expectOffsets(slideOffsets(1.0F, TransitionKind::SlideFromLeft),
                  {.currentX = 0, .currentY = 0, .previousX = 320, .previousY = 0});
    expectOffsets(slideOffsets(1.0F, TransitionKind::SlideFromRight),
                  {.currentX = 0, .currentY = 0, .previousX = -320, .previousY = 0});
    expectOffsets(slideOffsets(1.0F, TransitionKind::SlideFromTop),
                  {.currentX = 0, .currentY = 0, .previousX = 0, .previousY = 240});
    expectOffsets(slideOffsets(1.0F, TransitionKind::SlideFromBottom),
                  {.currentX = 0, .currentY = 0, .previousX = 0, .previousY = -240});
}

TEST(Slide, AnUnknownDirectionMovesNothing) {
    for (const std::uint32_t direction : {4U, 7U, 0xFFFFFFFFU}) {
        expectOffsets(slideOffsets(0.3F, static_cast<TransitionKind>(direction)),
                      {.currentX = 0, .currentY = 0, .previousX = 0, .previousY = 0});
    }
}
