#pragma once

#include <cstddef>
#include <cstdint>

namespace Panelix {

/// What becomes of a destination and a source value of one channel, both taken as 0 to 1 and the result
/// clamped to that range. Any other mode gives black.
enum class BlendMode : std::uint32_t { Multiply = 0, Add = 1, Subtract = 2 };

/// Blends `count` pixels (blue, green, red, alpha in memory) of `source` into `destination`; the results are
/// opaque. Bit for bit what double-precision arithmetic on value / 255.0, times 255.0, truncated, gives. The
/// first call with a mode makes that mode's table.
void blendPixels(std::uint32_t* destination, const std::uint32_t* source, std::size_t count, BlendMode mode);

}  // namespace Panelix
