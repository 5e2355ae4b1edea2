#include "framework/drawing/pixel_blend.h"

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <bitset>

#include "framework/drawing/pixel_blend_avx2.h"

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

__m128i loadVector(const void* pixels) {
    return _mm_loadu_si128(static_cast<const __m128i*>(pixels));
}

void storeVector(void* pixels, __m128i values) {
    _mm_storeu_si128(static_cast<__m128i*>(pixels), values);
}

__m128i opaqueBlackVector() {
    return _mm_set1_epi32(static_cast<int>(kOpaqueBlack));
}

std::uint32_t blendPixel(std::uint32_t destination, std::uint32_t source, BlendMode mode) {
    std::uint32_t result = kOpaqueBlack;
    for (const unsigned shift : {0U, 8U, 16U}) {
        const std::uint8_t value =
            blendChannel((destination >> shift) & 0xFF, (source >> shift) & 0xFF, mode);
        result |= std::uint32_t{value} << shift;
    }
    return result;
}

// Add and subtract without AVX2: a table, for the doubles fall short of the whole-number result at thousands
// of pairs, and working out which takes as long with vectors of 16 bytes.

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

void blendVectorByTable(std::uint32_t* destination, const std::uint32_t* source, const BlendTable& table) {
    const __m128i d = loadVector(destination);
    const __m128i s = loadVector(source);
    // Interleaving the bytes makes the table indices of all channels at once.
    std::array<std::uint16_t, kVectorPixels * sizeof(std::uint32_t)> indices{};
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

/// Whole vectors.
void blendVectorsByTable(std::uint32_t* destination,
                         const std::uint32_t* source,
                         std::size_t count,
                         const BlendTable& table) {
    for (std::size_t pixel = 0; pixel < count; pixel += kVectorPixels) {
        blendVectorByTable(destination + pixel, source + pixel, table);
    }
}

/// Whole vectors of `unit`.
void addVectors(std::uint32_t* destination, const std::uint32_t* source, std::size_t count, VectorUnit unit) {
    if (unit == VectorUnit::Avx2) {
        addPixelsAvx2(destination, source, count);
        return;
    }
    static const BlendTable table = makeTable(BlendMode::Add);
    blendVectorsByTable(destination, source, count, table);
}

/// Whole vectors of `unit`.
void subtractVectors(std::uint32_t* destination,
                     const std::uint32_t* source,
                     std::size_t count,
                     VectorUnit unit) {
    if (unit == VectorUnit::Avx2) {
        subtractPixelsAvx2(destination, source, count);
        return;
    }
    static const BlendTable table = makeTable(BlendMode::Subtract);
    blendVectorsByTable(destination, source, count, table);
}

// Multiply: whole numbers. The doubles truncate d * s / 255, so they can differ from the integer quotient
// only where that division leaves nothing and they come out just below the whole number. Such suspects are
// rare once 0 and 255 are taken out, with which the result is always exact. They are looked up in 8 KiB: with
// a table of results, most of the time would go into bringing it back to the nearest cache.

/// For each quotient the source values with which the doubles fall short of it. As nothing is left, quotient
/// and source stand for one destination value.
using ShortfallTable = std::array<std::bitset<kChannelValues>, kChannelValues>;

ShortfallTable makeShortfallTable() {
    ShortfallTable table;
    for (std::size_t destination = 0; destination < kChannelValues; ++destination) {
        for (std::size_t source = 0; source < kChannelValues; ++source) {
            const std::size_t quotient = destination * source / 255;
            if (blendChannel(destination, source, BlendMode::Multiply) < quotient) {
                table[quotient].set(source);
            }
        }
    }
    return table;
}

/// So many pixels at a time that what is noted about them stays in the nearest cache.
constexpr std::size_t kChunkPixels = 256;

/// Multiplies four pixels; the answer are the suspect bytes.
std::uint32_t multiplyVector(std::uint32_t* destination, const std::uint32_t* source) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i all = _mm_set1_epi8(-1);
    const __m128i d = loadVector(destination);
    const __m128i s = loadVector(source);
    const __m128i first = _mm_mullo_epi16(_mm_unpacklo_epi8(d, zero), _mm_unpacklo_epi8(s, zero));
    const __m128i second = _mm_mullo_epi16(_mm_unpackhi_epi8(d, zero), _mm_unpackhi_epi8(s, zero));
    // A product is 256 * high + low, which is 255 * high + (high + low). As the sum is below 510, the
    // quotient is high, or one more when the sum is 255 or more; it is whole when the product is 0 or the sum
    // is 255.
    const __m128i high = _mm_packus_epi16(_mm_srli_epi16(first, 8), _mm_srli_epi16(second, 8));
    const __m128i lowBytes = _mm_set1_epi16(0xFF);
    const __m128i low = _mm_packus_epi16(_mm_and_si128(first, lowBytes), _mm_and_si128(second, lowBytes));
    const __m128i oneMore = _mm_cmpeq_epi8(_mm_adds_epu8(high, low), all);
    storeVector(destination, _mm_or_si128(_mm_sub_epi8(high, oneMore), opaqueBlackVector()));

    const __m128i whole = _mm_cmpeq_epi8(_mm_add_epi8(high, low), all);
    const __m128i exact = _mm_cmpeq_epi8(_mm_max_epu8(d, s), all);
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_andnot_si128(exact, whole))) & kColourBytes;
}

void settle(const Suspects& suspects,
            std::uint32_t* destination,
            const std::uint32_t* source,
            const ShortfallTable& shortfall) {
    auto* results = reinterpret_cast<std::uint8_t*>(destination + suspects.pixel);
    const auto* factors = reinterpret_cast<const std::uint8_t*>(source + suspects.pixel);
    for (std::uint32_t bytes = suspects.bytes; bytes != 0; bytes &= bytes - 1) {
        const auto index = static_cast<std::size_t>(std::countr_zero(bytes));
        if (shortfall[results[index]][factors[index]]) {
            --results[index];
        }
    }
}

/// As multiplyPixelsAvx2, with vectors of 16 bytes.
std::size_t multiplyPixelsSse2(std::uint32_t* destination,
                               const std::uint32_t* source,
                               std::size_t count,
                               Suspects* found) {
    std::size_t foundCount = 0;
    for (std::size_t pixel = 0; pixel < count; pixel += kVectorPixels) {
        const std::uint32_t bytes = multiplyVector(destination + pixel, source + pixel);
        // Always noted, but counted only with suspects: a branch here would often be predicted wrongly.
        found[foundCount] = {bytes, static_cast<std::uint32_t>(pixel)};
        foundCount += bytes != 0 ? 1U : 0U;
    }
    return foundCount;
}

/// At most kChunkPixels, whole vectors of `unit`.
void multiplyChunk(std::uint32_t* destination,
                   const std::uint32_t* source,
                   std::size_t count,
                   VectorUnit unit,
                   const ShortfallTable& shortfall) {
    // Every entry is written before it is counted.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): zeroing it costs a tenth of the time
    std::array<Suspects, kChunkPixels / kVectorPixels> found;
    const auto multiply = unit == VectorUnit::Avx2 ? multiplyPixelsAvx2 : multiplyPixelsSse2;
    const std::size_t foundCount = multiply(destination, source, count, found.data());
    for (std::size_t index = 0; index < foundCount; ++index) {
        settle(found[index], destination, source, shortfall);
    }
}

/// Whole vectors of `unit`.
void multiplyVectors(std::uint32_t* destination,
                     const std::uint32_t* source,
                     std::size_t count,
                     VectorUnit unit) {
    static const ShortfallTable shortfall = makeShortfallTable();
    for (std::size_t done = 0; done < count; done += kChunkPixels) {
        const std::size_t chunk = std::min(kChunkPixels, count - done);
        multiplyChunk(destination + done, source + done, chunk, unit, shortfall);
    }
}

}  // namespace

VectorUnit bestVectorUnit() {
    static const bool hasAvx2 = __builtin_cpu_supports("avx2") != 0;
    return hasAvx2 ? VectorUnit::Avx2 : VectorUnit::Sse2;
}

void blendPixels(std::uint32_t* destination,
                 const std::uint32_t* source,
                 std::size_t count,
                 BlendMode mode,
                 VectorUnit unit) {
    const std::size_t wholeVectors = count - count % (unit == VectorUnit::Avx2 ? kAvx2Pixels : kVectorPixels);
    switch (mode) {
        case BlendMode::Multiply:
            multiplyVectors(destination, source, wholeVectors, unit);
            break;
        case BlendMode::Add:
            addVectors(destination, source, wholeVectors, unit);
            break;
        case BlendMode::Subtract:
            subtractVectors(destination, source, wholeVectors, unit);
            break;
        default:
            std::fill_n(destination, count, kOpaqueBlack);
            return;
    }
    for (std::size_t pixel = wholeVectors; pixel < count; ++pixel) {
        destination[pixel] = blendPixel(destination[pixel], source[pixel], mode);
    }
}

}  // namespace Panelix
