#pragma once

#include <cstddef>
#include <cstdint>

// Blending with vectors of 32 bytes, as blendPixels does it. Only for a processor and a system with AVX2.
// Each `count` is a multiple of kAvx2Pixels.

namespace Panelix {

/// Pixels in a vector of 32 bytes.
constexpr std::size_t kAvx2Pixels = 8;

/// Bytes of one vector, a bit for each, the first byte's lowest, whose results may have to be one less.
struct Suspects {
    std::uint32_t bytes;
    /// The vector's first pixel.
    std::uint32_t pixel;
};

/// Blue, green and red of eight pixels, in a mask of their bytes.
constexpr std::uint32_t kColourBytes = 0x77777777;

void addPixelsAvx2(std::uint32_t* destination, const std::uint32_t* source, std::size_t count);
void subtractPixelsAvx2(std::uint32_t* destination, const std::uint32_t* source, std::size_t count);

/// Multiplies in whole numbers. `found` has room for the suspects of every vector; the answer is how many
/// were found.
std::size_t multiplyPixelsAvx2(std::uint32_t* destination,
                               const std::uint32_t* source,
                               std::size_t count,
                               Suspects* found);

}  // namespace Panelix
