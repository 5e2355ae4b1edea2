#include "pages/mixer.h"

#include <gtest/gtest.h>

#include "tests/pages/buttons.h"

namespace {

using Panelix::LcdButton;
using enum MixerChannel;

TEST(Mixer, LeftAndRightWalkTheChannelsInOppositeDirections) {
    struct Case {
        MixerChannel before;
        MixerChannel afterRight;
        MixerChannel afterLeft;
    };
    const Case cases[] = {
        {None, Left, Right},
        {Left, Right, None},
        {Right, None, Left},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(movedSelection(c.before, pressed({LcdButton::Right})), c.afterRight);
        EXPECT_EQ(movedSelection(c.before, pressed({LcdButton::Left})), c.afterLeft);
        EXPECT_EQ(movedSelection(c.before, pressed({LcdButton::Left, LcdButton::Right})), c.afterLeft)
            << "LEFT wins";
    }
}

TEST(Mixer, NothingElseMovesTheSelection) {
    for (const MixerChannel channel : {None, Left, Right}) {
        EXPECT_EQ(movedSelection(channel, Panelix::LcdButtons{}), channel);
        EXPECT_EQ(
            movedSelection(
                channel,
                pressed({LcdButton::Up, LcdButton::Down, LcdButton::Menu, LcdButton::Ok, LcdButton::Cancel})),
            channel);
        EXPECT_EQ(movedSelection(channel, held({LcdButton::Left})), channel);
        EXPECT_EQ(movedSelection(channel, held({LcdButton::Right})), channel);
    }
}

TEST(Mixer, UpRaisesByTwoAndDownLowersByOneWhileHeld) {
    struct Case {
        int percent;
        int raised;
        int lowered;
    };
    // The ends are the endpoint's business: it clamps what it is asked for.
    const Case cases[] = {{50, 52, 49}, {99, 101, 98}, {100, 102, 99}, {1, 3, 0}, {0, 2, -1}};
    for (const Case& c : cases) {
        EXPECT_EQ(requestedVolume(c.percent, held({LcdButton::Up})), c.raised);
        EXPECT_EQ(requestedVolume(c.percent, held({LcdButton::Down})), c.lowered);
        EXPECT_EQ(requestedVolume(c.percent, held({LcdButton::Up, LcdButton::Down})), c.raised) << "UP wins";
    }
}

TEST(Mixer, APressAloneRequestsNoVolume) {
    EXPECT_EQ(requestedVolume(50, Panelix::LcdButtons{}), std::nullopt);
    EXPECT_EQ(requestedVolume(50, pressed({LcdButton::Up, LcdButton::Down})), std::nullopt);
    EXPECT_EQ(requestedVolume(50, held({LcdButton::Left, LcdButton::Right, LcdButton::Ok})), std::nullopt);
}

TEST(Mixer, LeftIsTheEndpointsFirstChannel) {
    EXPECT_EQ(endpointChannel(Left), 0U);
    EXPECT_EQ(endpointChannel(Right), 1U);
}

}  // namespace
