#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>

#include "standins/lcd_sdk/virtual_g19.h"

namespace Standins {

/// What the viewer shows.
struct ViewerState {
    /// Nothing before the first frame.
    std::optional<G19Frame> frame;
    /// The program has ended: the frame is the last one it drew.
    bool ended = false;
    std::uint32_t buttonsDown = 0;
    /// The name that the program gave to the LCD library; may be empty.
    std::wstring programName;
};

/// Paints the whole client area, kClientWidth x kClientHeight pixels. GDI+ must be running.
void paintViewer(HDC dc, const ViewerState& state);

}  // namespace Standins
