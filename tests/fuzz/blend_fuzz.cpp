#include <algorithm>
#include <cstring>
#include <vector>

#include "framework/drawing/pixel_blend.h"
#include "tests/framework/drawing/blend_definition.h"
#include "tests/fuzz/fuzz_support.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < sizeof(std::uint32_t)) {
        return 0;
    }
    std::uint32_t mode = 0;
    std::memcpy(&mode, data, sizeof(mode));
    // Most inputs are to be of a mode that there is.
    mode = mode % 16 == 15 ? mode : mode % 3;
    const std::size_t count = (size - sizeof(mode)) / (2 * sizeof(std::uint32_t));
    std::vector<std::uint32_t> destination(count);
    std::vector<std::uint32_t> source(count);
    const std::size_t bytes = count * sizeof(std::uint32_t);
    if (bytes > 0) {
        std::memcpy(destination.data(), data + sizeof(mode), bytes);
        std::memcpy(source.data(), data + sizeof(mode) + bytes, bytes);
    }
    std::vector<std::uint32_t> promised = destination;
    blendByDefinition(promised.data(), source.data(), count, mode);
    const std::vector<std::uint32_t> sourceBefore = source;
    Panelix::blendPixels(destination.data(), source.data(), count, static_cast<Panelix::BlendMode>(mode));
    require(destination == promised, "pixels are blended by the definition");
    require(source == sourceBefore, "the source stays as it is");
    require(
        std::all_of(
            destination.begin(), destination.end(), [](std::uint32_t pixel) { return pixel >> 24U == 0xFF; }),
        "blended pixels are opaque");
    return 0;
}
