#include "pages/list_navigation.h"

#include <gtest/gtest.h>

#include "tests/pages/buttons.h"

namespace {

using Panelix::LcdButton;

TEST(ListNavigation, OneButtonIsOneCommand) {
    EXPECT_EQ(listCommand(pressed({LcdButton::Down})), ListCommand::Down);
    EXPECT_EQ(listCommand(pressed({LcdButton::Up})), ListCommand::Up);
    EXPECT_EQ(listCommand(pressed({LcdButton::Ok})), ListCommand::Choose);
    EXPECT_EQ(listCommand(Panelix::LcdButtons{}), ListCommand::None);
}

TEST(ListNavigation, DownWinsOverUpAndUpOverOk) {
    EXPECT_EQ(listCommand(pressed({LcdButton::Down, LcdButton::Up})), ListCommand::Down);
    EXPECT_EQ(listCommand(pressed({LcdButton::Down, LcdButton::Ok})), ListCommand::Down);
    EXPECT_EQ(listCommand(pressed({LcdButton::Up, LcdButton::Ok})), ListCommand::Up);
    EXPECT_EQ(listCommand(pressed({LcdButton::Down, LcdButton::Up, LcdButton::Ok})), ListCommand::Down);
}

TEST(ListNavigation, HeldButtonsDoNotRepeat) {
    EXPECT_EQ(listCommand(held({LcdButton::Down, LcdButton::Up, LcdButton::Ok})), ListCommand::None);
}

TEST(ListNavigation, TheCursorStopsAtBothEnds) {
    struct Case {
        int cursor;
        int rowCount;
        int afterDown;
        int afterUp;
    };
    const Case cases[] = {
        {0, 3, 1, 0},
        {1, 3, 2, 0},
        {2, 3, 2, 1},
        {0, 1, 0, 0},
        {0, 0, 0, 0},
        {28, 30, 29, 27},
        {29, 30, 29, 28},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(movedCursor(c.cursor, c.rowCount, ListCommand::Down), c.afterDown) << c.cursor;
        EXPECT_EQ(movedCursor(c.cursor, c.rowCount, ListCommand::Up), c.afterUp) << c.cursor;
        EXPECT_EQ(movedCursor(c.cursor, c.rowCount, ListCommand::None), c.cursor);
        EXPECT_EQ(movedCursor(c.cursor, c.rowCount, ListCommand::Choose), c.cursor);
    }
}

}  // namespace
