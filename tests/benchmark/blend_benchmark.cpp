// Time of blending one full screen beside its definition written out in double precision, measured
// alternately in one run. Prints the medians of both and their ratio, for pictures of two kinds: noise, where
// every pair of values is as likely as any other and neighbours have nothing in common, and soft gradients
// like those of the program's artwork.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

#include "framework/drawing/lcd_frame.h"
#include "framework/drawing/pixel_blend.h"
#include "tests/framework/drawing/blend_definition.h"

using Panelix::BlendMode;
using Panelix::VectorUnit;

namespace {

constexpr int kRounds = 101;
constexpr std::size_t kWidth = Panelix::kLcdWidth;
constexpr std::size_t kHeight = Panelix::kLcdHeight;

using Pixels = std::vector<std::uint32_t>;

struct Pictures {
    const char* kind;
    Pixels destination;
    Pixels source;
};

Pixels noise(unsigned seed) {
    std::mt19937 random(seed);
    Pixels pixels(kWidth * kHeight);
    std::generate(pixels.begin(), pixels.end(), [&random] { return static_cast<std::uint32_t>(random()); });
    return pixels;
}

std::uint32_t grey(std::size_t level) {
    return 0xFF000000 | static_cast<std::uint32_t>(level) * 0x010101;
}

/// From `start` on, rising by `range` along one axis.
Pixels gradient(std::size_t start, std::size_t range, bool vertical) {
    Pixels pixels;
    for (std::size_t y = 0; y < kHeight; ++y) {
        for (std::size_t x = 0; x < kWidth; ++x) {
            pixels.push_back(grey(start + range * (vertical ? y : x) / (vertical ? kHeight : kWidth)));
        }
    }
    return pixels;
}

template <typename Blend>
double microseconds(const Pictures& pictures, Pixels& result, Blend blend) {
    result = pictures.destination;
    const auto start = std::chrono::steady_clock::now();
    blend(result.data(), pictures.source.data(), result.size());
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Whether both gave the same pixels.
bool compare(const Pictures& pictures, const char* name, BlendMode mode, VectorUnit unit) {
    Pixels defined;
    Pixels blended;
    std::vector<double> definitionTimes;
    std::vector<double> blendTimes;
    for (int round = 0; round < kRounds; ++round) {
        definitionTimes.push_back(
            microseconds(pictures, defined, [mode](auto* destination, const auto* source, std::size_t count) {
                blendByDefinition(destination, source, count, static_cast<std::uint32_t>(mode));
            }));
        blendTimes.push_back(microseconds(
            pictures, blended, [mode, unit](auto* destination, const auto* source, std::size_t count) {
                Panelix::blendPixels(destination, source, count, mode, unit);
            }));
    }
    const double definition = median(definitionTimes);
    const double blend = median(blendTimes);
    std::printf("%-9s %-8s %-4s  definition %7.1f us, program %6.1f us, ratio %5.1f\n",
                pictures.kind,
                name,
                unit == VectorUnit::Avx2 ? "AVX2" : "SSE2",
                definition,
                blend,
                definition / blend);
    return defined == blended;
}

}  // namespace

int main() {
#ifndef NDEBUG
    std::puts("This is a debug build: its figures say nothing.");
#endif
    const std::array<Pictures, 2> allPictures{{
        {"noise", noise(1), noise(2)},
        {"gradients", gradient(30, 150, true), gradient(128, 100, false)},
    }};
    std::printf("%zu x %zu pixels, medians of %d rounds\n", kWidth, kHeight, kRounds);
    std::vector<VectorUnit> units{VectorUnit::Sse2};
    if (Panelix::bestVectorUnit() == VectorUnit::Avx2) {
        units.push_back(VectorUnit::Avx2);
    } else {
        std::puts("This machine has no AVX2.");
    }
    bool same = true;
    for (const Pictures& pictures : allPictures) {
        for (const VectorUnit unit : units) {
            same = compare(pictures, "multiply", BlendMode::Multiply, unit) && same;
            same = compare(pictures, "add", BlendMode::Add, unit) && same;
            same = compare(pictures, "subtract", BlendMode::Subtract, unit) && same;
        }
    }
    std::puts(same ? "All results are the definition's." : "The results differ from the definition's!");
    return same ? 0 : 1;
}
