#pragma once

#include <optional>

#include "framework/core/lcd_buttons.h"

/// The volume channel that the main page's mixer column has selected.
enum class MixerChannel { None = 0, Left = 1, Right = 2 };

/// The selection after this pass's presses. RIGHT walks none, left, right; LEFT walks the other way round and
/// wins over RIGHT.
MixerChannel movedSelection(MixerChannel selected, const Panelix::LcdButtons& buttons);

/// The volume in percent to ask for while UP or DOWN is held, for a channel that stands at `percent`; nothing
/// when neither is. UP wins, and raises by more than DOWN lowers. The result may lie outside 0 to 100.
std::optional<int> requestedVolume(int percent, const Panelix::LcdButtons& buttons);

/// Number of a channel at the endpoint: 0 left, 1 right. `channel` is not None.
unsigned endpointChannel(MixerChannel channel);
