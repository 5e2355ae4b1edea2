#include "framework/core/preview_placement.h"

#include <gtest/gtest.h>

namespace {

TEST(PreviewPlacement, IsTheBottomRightCornerOfTheWorkArea) {
    struct Case {
        std::int32_t right;
        std::int32_t bottom;
        std::int32_t captionHeight;
        Panelix::WindowPlacement place;
    };
    for (const Case& c : {
             Case{1280, 1024, 16, {952, 760, 336, 272}},
             Case{1920, 1040, 23, {1592, 769, 336, 279}},
             // A work area that the window does not fit into.
             Case{300, 200, 20, {-28, -68, 336, 276}},
         }) {
        const Panelix::WindowPlacement place = Panelix::previewPlacement(c.right, c.bottom, c.captionHeight);
        EXPECT_EQ(place.x, c.place.x);
        EXPECT_EQ(place.y, c.place.y);
        EXPECT_EQ(place.width, c.place.width);
        EXPECT_EQ(place.height, c.place.height);
    }
}

}  // namespace
