#include "framework/drawing/plot_rows.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>

using Panelix::barRows;
using Panelix::kLcdHeight;
using Panelix::LcdRows;
using Panelix::nearestLcdRow;

namespace {

constexpr int kLeast = std::numeric_limits<int>::min();
constexpr int kMost = std::numeric_limits<int>::max();

/// Whether a rectangle from row `top` to before row `bottom` fills `row`.
bool fills(std::int64_t top, std::int64_t bottom, int row) {
    return top <= row && row < bottom;
}

}  // namespace

TEST(PlotRows, RowsOfTheLcdAndThoseNextToItStay) {
    for (int row = -1; row <= kLcdHeight; ++row) {
        EXPECT_EQ(nearestLcdRow(row), row);
    }
}

TEST(PlotRows, OtherRowsBecomeTheOneNextToTheLcd) {
    for (const std::int64_t row : {std::int64_t{-2}, std::int64_t{kLeast}, -(std::int64_t{1} << 40)}) {
        EXPECT_EQ(nearestLcdRow(row), -1) << row;
    }
    for (const std::int64_t row : {std::int64_t{241}, std::int64_t{kMost}, std::int64_t{1} << 40}) {
        EXPECT_EQ(nearestLcdRow(row), kLcdHeight) << row;
    }
}

TEST(PlotRows, ABarFillsTheRowsOfTheLcdThatAreItsOwn) {
    for (const int bottom : {-300, -1, 0, 1, 104, 209, 239, 240, 241, 500}) {
        for (int height = -400; height <= 400; ++height) {
            const LcdRows rows = barRows(bottom, height);
            for (int row = 0; row < kLcdHeight; ++row) {
                ASSERT_EQ(fills(rows.top, rows.top + rows.height, row), fills(bottom - height, bottom, row))
                    << "bottom " << bottom << ", height " << height << ", row " << row;
            }
        }
    }
}

TEST(PlotRows, ABarOnTheLcdIsAsItWas) {
    for (int height = -136; height <= 104; ++height) {
        const LcdRows rows = barRows(104, height);
        EXPECT_EQ(rows.top, 104 - height);
        EXPECT_EQ(rows.height, height);
    }
}

TEST(PlotRows, TheLargestFiguresStayWithinTheRowsNextToTheLcd) {
    for (const int bottom : {kLeast, -1, 104, kLcdHeight, kMost}) {
        for (const int height : {kLeast, kLeast + 1, -1, 0, 1, kMost - 1, kMost}) {
            const LcdRows rows = barRows(bottom, height);
            EXPECT_GE(rows.top, -1);
            EXPECT_LE(rows.top, kLcdHeight);
            EXPECT_LE(rows.top + rows.height, kLcdHeight);
            EXPECT_GE(rows.top + rows.height, -1);
        }
    }
    EXPECT_EQ(barRows(104, kMost).height, 105) << "the whole bar above its foot, and one row out of sight";
    EXPECT_LE(barRows(104, kLeast).height, 0);
}
