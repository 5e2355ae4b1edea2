#pragma once

#include <cstddef>
#include <cstdint>

/// What blending means, written out in double precision: the yardstick of the tests.
/// `mode` as in Panelix::BlendMode; any value may be given.
void blendByDefinition(std::uint32_t* destination,
                       const std::uint32_t* source,
                       std::size_t count,
                       std::uint32_t mode);
