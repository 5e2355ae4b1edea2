#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Panelix {

inline constexpr int kLcdWidth = 320;
inline constexpr int kLcdHeight = 240;
inline constexpr std::size_t kLcdFrameBytes = std::size_t{kLcdWidth} * kLcdHeight * 4;
static_assert(kLcdFrameBytes == 307'200);

/// One frame for the colour LCD: rows top to bottom without padding, four bytes per pixel in the order blue,
/// green, red, alpha (which the LCD ignores). kLcdFrameBytes long.
using LcdFrame = std::unique_ptr<std::uint8_t[]>;

}  // namespace Panelix
