#include "pages/list_navigation.h"

using Panelix::LcdButton;

ListCommand listCommand(const Panelix::LcdButtons& buttons) {
    if (buttons.isPressed(LcdButton::Down)) {
        return ListCommand::Down;
    }
    if (buttons.isPressed(LcdButton::Up)) {
        return ListCommand::Up;
    }
    return buttons.isPressed(LcdButton::Ok) ? ListCommand::Choose : ListCommand::None;
}

int movedCursor(int cursor, int rowCount, ListCommand command) {
    if (command == ListCommand::Down && cursor < rowCount - 1) {
        return cursor + 1;
    }
    if (command == ListCommand::Up && cursor > 0) {
        return cursor - 1;
    }
    return cursor;
}
