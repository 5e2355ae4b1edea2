#include "framework/drawing/pixel_blend.h"

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

namespace Panelix {

namespace {

constexpr std::uint32_t kOpaqueBlack = 0xFF000000;
constexpr std::size_t kChannelValues = 256;
constexpr std::size_t kChannels = 3;
constexpr std::size_t kVectorPixels = sizeof(__m128i) / sizeof(std::uint32_t);

/// The definition. Its roundings are part of the result: 17 times 195 gives 12, not 13, and every quicker way
/// has to answer the same.
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

/// Results of one mode, indexed by destination value * 256 + source value.
using BlendTable = std::array<std::uint8_t, kChannelValues * kChannelValues>;

BlendTable makeTable(BlendMode mode) {
    BlendTable table;
    for (std::size_t destination = 0; destination < kChannelValues; ++destination) {
        for (std::size_t source = 0; source < kChannelValues; ++source) {
            table[destination * kChannelValues + source] = blendChannel(destination, source, mode);
        }
    }
    return table;
}

/// Never called with an unknown mode.
const BlendTable& tableOf(BlendMode mode) {
    static const std::array<BlendTable, 3> tables{
        makeTable(BlendMode::Multiply), makeTable(BlendMode::Add), makeTable(BlendMode::Subtract)};
    return tables[static_cast<std::size_t>(mode)];
}

__m128i loadVector(const void* pixels) {
    return _mm_loadu_si128(static_cast<const __m128i*>(pixels));
}

void storeVector(void* pixels, __m128i values) {
    _mm_storeu_si128(static_cast<__m128i*>(pixels), values);
}

__m128i opaqueBlackVector() {
    return _mm_set1_epi32(static_cast<int>(kOpaqueBlack));
}

void blendPixelByTable(std::uint32_t& destination, std::uint32_t source, const BlendTable& table) {
    std::uint32_t result = kOpaqueBlack;
    for (const unsigned shift : {0U, 8U, 16U}) {
        const std::size_t d = (destination >> shift) & 0xFF;
        const std::size_t s = (source >> shift) & 0xFF;
        result |= std::uint32_t{table[d * kChannelValues + s]} << shift;
    }
    destination = result;
}

void blendVectorByTable(std::uint32_t* destination, const std::uint32_t* source, const BlendTable& table) {
    const __m128i d = loadVector(destination);
    const __m128i s = loadVector(source);
    // Interleaving the bytes makes the table indices of all channels at once.
    std::array<std::uint16_t, kVectorPixels * sizeof(std::uint32_t)> indices;
    storeVector(indices.data(), _mm_unpacklo_epi8(s, d));
    storeVector(indices.data() + indices.size() / 2, _mm_unpackhi_epi8(s, d));

    storeVector(destination, opaqueBlackVector());
    auto* results = reinterpret_cast<std::uint8_t*>(destination);
    for (std::size_t pixel = 0; pixel < indices.size(); pixel += sizeof(std::uint32_t)) {
        for (std::size_t channel = pixel; channel < pixel + kChannels; ++channel) {
            results[channel] = table[indices[channel]];
        }
    }
}

// Multiply without a table, but for a few values: the doubles truncate d * s / 255, so they can differ from
// the integer quotient only where that division leaves nothing and they come out just below the whole number.
// Such suspects are rare once 0 and 255 are taken out, with which the result is always exact.

/// Two runs of pixels share the 64 bits of one suspect mask: the processor predicts one longer loop over bits
/// better than two short ones.
constexpr std::size_t kRunPixels = 16;
constexpr std::size_t kRunBytes = kRunPixels * sizeof(std::uint32_t);
constexpr std::size_t kBlockPixels = 2 * kRunPixels;

struct Quotients {
    __m128i values;
    /// All bits set where the division left nothing.
    __m128i whole;
};

/// d * s / 255 of eight 16-bit lanes.
Quotients multiplyLanes(__m128i destination, __m128i source) {
    const __m128i product = _mm_mullo_epi16(destination, source);
    // (p + 1) * 257 / 65,536 is p / 255 for every product p of two bytes.
    const __m128i values = _mm_mulhi_epu16(_mm_add_epi16(product, _mm_set1_epi16(1)), _mm_set1_epi16(257));
    return {values, _mm_cmpeq_epi16(_mm_mullo_epi16(values, _mm_set1_epi16(255)), product)};
}

/// Multiplies four pixels; the answer has a bit for every suspect byte.
std::uint64_t multiplyVector(std::uint32_t* destination, const std::uint32_t* source) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i alpha = opaqueBlackVector();
    const __m128i d = loadVector(destination);
    const __m128i s = loadVector(source);
    const Quotients low = multiplyLanes(_mm_unpacklo_epi8(d, zero), _mm_unpacklo_epi8(s, zero));
    const Quotients high = multiplyLanes(_mm_unpackhi_epi8(d, zero), _mm_unpackhi_epi8(s, zero));
    const __m128i values = _mm_packus_epi16(low.values, high.values);
    const __m128i whole = _mm_packs_epi16(low.whole, high.whole);
    // With 0 or 255 on one side the quotient equals one of the two.
    const __m128i sure =
        _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(values, d), _mm_cmpeq_epi8(values, s)), alpha);
    storeVector(destination, _mm_or_si128(values, alpha));
    return static_cast<std::uint64_t>(_mm_movemask_epi8(_mm_andnot_si128(sure, whole)));
}

/// A bit for every suspect byte of the run, the first byte's lowest.
std::uint64_t multiplyRun(std::uint32_t* destination, const std::uint32_t* source) {
    std::uint64_t suspects = 0;
    for (std::size_t pixel = 0; pixel < kRunPixels; pixel += kVectorPixels) {
        suspects |= multiplyVector(destination + pixel, source + pixel) << (pixel * sizeof(std::uint32_t));
    }
    return suspects;
}

void multiplyBlock(std::uint32_t* destination, const std::uint32_t* source, const BlendTable& table) {
    std::array<std::uint8_t, 2 * kRunBytes> before;
    std::memcpy(before.data(), destination, before.size());
    std::uint64_t suspects = multiplyRun(destination, source);
    suspects |= multiplyRun(destination + kRunPixels, source + kRunPixels);

    auto* results = reinterpret_cast<std::uint8_t*>(destination);
    const auto* factors = reinterpret_cast<const std::uint8_t*>(source);
    for (; suspects != 0; suspects &= suspects - 1) {
        const auto first = static_cast<std::size_t>(std::countr_zero(suspects));
        const std::size_t second = first + kRunBytes;
        results[first] = table[before[first] * kChannelValues + factors[first]];
        results[second] = table[before[second] * kChannelValues + factors[second]];
    }
}

/// Calls `blendStep` for every whole step of pixels and blends the rest one by one.
template <typename Step>
void blendInSteps(std::uint32_t* destination,
                  const std::uint32_t* source,
                  std::size_t count,
                  const BlendTable& table,
                  std::size_t stepPixels,
                  Step blendStep) {
    std::size_t done = 0;
    for (; done + stepPixels <= count; done += stepPixels) {
        blendStep(destination + done, source + done, table);
    }
    for (; done < count; ++done) {
        blendPixelByTable(destination[done], source[done], table);
    }
}

}  // namespace

void blendPixels(std::uint32_t* destination, const std::uint32_t* source, std::size_t count, BlendMode mode) {
    switch (mode) {
        case BlendMode::Multiply:
            blendInSteps(destination, source, count, tableOf(mode), kBlockPixels, multiplyBlock);
            return;
        case BlendMode::Add:
        case BlendMode::Subtract:
            blendInSteps(destination, source, count, tableOf(mode), kVectorPixels, blendVectorByTable);
            return;
    }
    std::fill_n(destination, count, kOpaqueBlack);
}

}  // namespace Panelix
