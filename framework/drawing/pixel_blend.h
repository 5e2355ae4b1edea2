#pragma once

#include <cstddef>
#include <cstdint>

namespace Panelix {

/// What becomes of a destination and a source value of one channel, both taken as 0 to 1 and the result
/// clamped to that range. Any other mode gives black.
enum class BlendMode : std::uint32_t { Multiply = 0, Add = 1, Subtract = 2 };

/// What blending may use; every x64 processor has the first.
enum class VectorUnit { Sse2, Avx2 };

/// The better one of those that this machine has.
VectorUnit bestVectorUnit();

/// Blends `count` pixels (blue, green, red, alpha in memory) of `source` into `destination`; the results are
/// opaque. Bit for bit what double-precision arithmetic on value / 255.0, times 255.0, truncated, gives.
/// The machine must have `unit`.
void blendPixels(std::uint32_t* destination,
                 const std::uint32_t* source,
                 std::size_t count,
                 BlendMode mode,
                 VectorUnit unit = bestVectorUnit());

}  // namespace Panelix
