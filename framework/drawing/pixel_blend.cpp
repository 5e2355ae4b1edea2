#include "framework/drawing/pixel_blend.h"

#include <algorithm>
#include <array>

namespace Panelix {

namespace {

constexpr std::uint32_t kOpaqueBlack = 0xFF000000;
constexpr std::size_t kChannelValues = 256;

/// The definition. Its roundings are part of the result: 17 times 195 gives 12, not 13, and 1 plus 32 gives
/// 32, so no whole-number arithmetic can take its place.
std::uint8_t blendChannel(std::size_t destination, std::size_t source, BlendMode mode) {
    const double d = static_cast<double>(destination) / 255.0;
    const double s = static_cast<double>(source) / 255.0;
    double result = 0.0;
    switch (mode) {
        case BlendMode::Multiply:
            result = d * s;
            break;
        case BlendMode::Add:
            result = d + s;
            break;
        case BlendMode::Subtract:
            result = d - s;
            break;
    }
    return static_cast<std::uint8_t>(std::clamp(result, 0.0, 1.0) * 255.0);
}

/// Results of one mode, by destination and source value.
using BlendTable = std::array<std::array<std::uint8_t, kChannelValues>, kChannelValues>;

BlendTable makeTable(BlendMode mode) {
    BlendTable table;
    for (std::size_t destination = 0; destination < kChannelValues; ++destination) {
        for (std::size_t source = 0; source < kChannelValues; ++source) {
            table[destination][source] = blendChannel(destination, source, mode);
        }
    }
    return table;
}

template <BlendMode mode>
void blendByTable(std::uint32_t* destination, const std::uint32_t* source, std::size_t count) {
    static const BlendTable table = makeTable(mode);
    for (std::size_t pixel = 0; pixel < count; ++pixel) {
        const std::uint32_t d = destination[pixel];
        const std::uint32_t s = source[pixel];
        const auto channel = [d, s](unsigned shift) {
            return std::uint32_t{table[d >> shift & 0xFF][s >> shift & 0xFF]} << shift;
        };
        destination[pixel] = kOpaqueBlack | channel(16) | channel(8) | channel(0);
    }
}

}  // namespace

void blendPixels(std::uint32_t* destination, const std::uint32_t* source, std::size_t count, BlendMode mode) {
    switch (mode) {
        case BlendMode::Multiply:
            blendByTable<BlendMode::Multiply>(destination, source, count);
            break;
        case BlendMode::Add:
            blendByTable<BlendMode::Add>(destination, source, count);
            break;
        case BlendMode::Subtract:
            blendByTable<BlendMode::Subtract>(destination, source, count);
            break;
        default:
            std::fill_n(destination, count, kOpaqueBlack);
            break;
    }
}

}  // namespace Panelix
