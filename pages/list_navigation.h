#pragma once

#include "framework/core/lcd_buttons.h"

/// What a list page does with its cursor in one pass.
enum class ListCommand { None, Down, Up, Choose };

/// The command of the buttons pressed in this pass. Of several, DOWN wins over UP, and UP over OK.
ListCommand listCommand(const Panelix::LcdButtons& buttons);

/// The row that the cursor stands on after `command`; it stops at the first and at the last of `rowCount`
/// rows.
int movedCursor(int cursor, int rowCount, ListCommand command);
