#pragma once

#include <cstddef>
#include <cstdint>

namespace Panelix {

/// Pixels in a vector of 32 bytes.
constexpr std::size_t kAvx2Pixels = 8;

/// Adds or subtracts as blendPixels does. `count` is a multiple of kAvx2Pixels. Only for a processor and a
/// system with AVX2.
void addPixelsAvx2(std::uint32_t* destination, const std::uint32_t* source, std::size_t count);
void subtractPixelsAvx2(std::uint32_t* destination, const std::uint32_t* source, std::size_t count);

}  // namespace Panelix
