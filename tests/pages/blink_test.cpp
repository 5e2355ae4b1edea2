#include "pages/blink.h"

#include <gtest/gtest.h>

namespace {

TEST(Blink, StartsOff) {
    EXPECT_FALSE(Blink().isOn());
}

TEST(Blink, EachPhaseLastsNineUpdates) {
    Blink blink;
    bool expected = false;
    for (int phase = 0; phase < 6; ++phase) {
        for (int update = 0; update < 8; ++update) {
            blink.advance();
            EXPECT_EQ(blink.isOn(), expected) << "phase " << phase << ", update " << update;
        }
        blink.advance();
        expected = !expected;
        EXPECT_EQ(blink.isOn(), expected) << "ninth update of phase " << phase;
    }
}

}  // namespace
