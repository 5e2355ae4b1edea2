#include "framework/drawing/pixel_blend.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <random>
#include <vector>

#include "tests/framework/drawing/blend_definition.h"

using Panelix::BlendMode;
using Panelix::blendPixels;

namespace {

constexpr std::uint32_t kValues = 256;
constexpr std::array kModes{BlendMode::Multiply, BlendMode::Add, BlendMode::Subtract};

struct Pixels {
    std::vector<std::uint32_t> destination;
    std::vector<std::uint32_t> source;
};

/// Every pair of values in every channel, a different pair in each channel of a pixel.
Pixels allPairs() {
    Pixels pixels;
    for (std::uint32_t d = 0; d < kValues; ++d) {
        for (std::uint32_t s = 0; s < kValues; ++s) {
            const std::uint32_t alpha = (d ^ s) << 24;
            pixels.destination.push_back(alpha | d << 16 | (d + 85) % kValues << 8 | (d + 170) % kValues);
            pixels.source.push_back(alpha | s << 16 | (s + 31) % kValues << 8 | (s + 62) % kValues);
        }
    }
    return pixels;
}

Pixels randomPixels(std::size_t count) {
    std::mt19937 random(20);
    Pixels pixels{std::vector<std::uint32_t>(count), std::vector<std::uint32_t>(count)};
    std::generate(pixels.destination.begin(), pixels.destination.end(), std::ref(random));
    std::generate(pixels.source.begin(), pixels.source.end(), std::ref(random));
    return pixels;
}

std::vector<std::uint32_t> defined(Pixels pixels, std::uint32_t mode) {
    blendByDefinition(pixels.destination.data(), pixels.source.data(), pixels.source.size(), mode);
    return pixels.destination;
}

std::vector<std::uint32_t> blended(Pixels pixels, BlendMode mode) {
    blendPixels(pixels.destination.data(), pixels.source.data(), pixels.source.size(), mode);
    return pixels.destination;
}

}  // namespace

TEST(PixelBlend, AllPairsOfValuesAreBitForBitTheDefinition) {
    const Pixels pixels = allPairs();
    ASSERT_EQ(pixels.source.size(), 65'536U);
    for (const BlendMode mode : kModes) {
        const std::vector<std::uint32_t> expected = defined(pixels, static_cast<std::uint32_t>(mode));
        const std::vector<std::uint32_t> actual = blended(pixels, mode);
        const auto [wrong, right] = std::mismatch(actual.begin(), actual.end(), expected.begin());
        if (wrong != actual.end()) {
            const auto index = static_cast<std::size_t>(wrong - actual.begin());
            ADD_FAILURE() << "mode " << static_cast<std::uint32_t>(mode) << ": " << std::hex
                          << pixels.destination[index] << " with " << pixels.source[index] << " gave "
                          << *wrong << ", expected " << *right;
        }
    }
}

TEST(PixelBlend, DoublesThatFallShortOfAWholeNumberAreKept) {
    struct Case {
        BlendMode mode;
        std::uint32_t destination;
        std::uint32_t source;
        std::uint32_t result;
    };
    // In whole numbers these were 13, 27, 33 and 1.
    constexpr std::array<Case, 4> cases{{
        {BlendMode::Multiply, 17, 195, 12},
        {BlendMode::Multiply, 81, 85, 26},
        {BlendMode::Add, 1, 32, 32},
        {BlendMode::Subtract, 34, 33, 0},
    }};
    for (const Case& expected : cases) {
        std::vector<std::uint32_t> destination(33, expected.destination);
        const std::vector<std::uint32_t> source(33, expected.source);
        blendPixels(destination.data(), source.data(), destination.size(), expected.mode);
        EXPECT_EQ(destination, std::vector<std::uint32_t>(33, 0xFF000000 | expected.result))
            << expected.destination << " and " << expected.source;
    }
}

TEST(PixelBlend, AnyCountAndAddressBlendsExactlyThosePixels) {
    constexpr std::size_t kGuard = 3;
    constexpr std::uint32_t kUntouched = 0x12345678;
    for (const BlendMode mode : kModes) {
        for (std::size_t count = 0; count <= 70; ++count) {
            const Pixels pixels = randomPixels(count);
            std::vector<std::uint32_t> destination(count + 2 * kGuard, kUntouched);
            std::copy(pixels.destination.begin(), pixels.destination.end(), destination.begin() + kGuard);
            blendPixels(destination.data() + kGuard, pixels.source.data(), count, mode);

            std::vector<std::uint32_t> expected(count + 2 * kGuard, kUntouched);
            const std::vector<std::uint32_t> results = defined(pixels, static_cast<std::uint32_t>(mode));
            std::copy(results.begin(), results.end(), expected.begin() + kGuard);
            EXPECT_EQ(destination, expected) << count << " pixels";
        }
    }
}

TEST(PixelBlend, PixelsInAnyOrderAreTheDefinition) {
    const Pixels pixels = randomPixels(100'000);
    for (const BlendMode mode : kModes) {
        EXPECT_TRUE(blended(pixels, mode) == defined(pixels, static_cast<std::uint32_t>(mode)))
            << static_cast<std::uint32_t>(mode);
    }
}

TEST(PixelBlend, UnknownModesGiveOpaqueBlack) {
    for (const std::uint32_t mode : {3U, 7U, 0xFFFFFFFFU}) {
        EXPECT_EQ(blended(randomPixels(100), static_cast<BlendMode>(mode)),
                  std::vector<std::uint32_t>(100, 0xFF000000));
    }
}

TEST(PixelBlend, AlphaOfBothSidesIsIgnored) {
    for (const BlendMode mode : kModes) {
        std::uint32_t transparent = 0x00808080;
        std::uint32_t opaque = 0xFF808080;
        const std::uint32_t transparentSource = 0x00404040;
        const std::uint32_t opaqueSource = 0xFF404040;
        blendPixels(&transparent, &transparentSource, 1, mode);
        blendPixels(&opaque, &opaqueSource, 1, mode);
        EXPECT_EQ(transparent, opaque);
        EXPECT_EQ(opaque >> 24, 0xFFU);
    }
}
