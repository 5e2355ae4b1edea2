#include "framework/drawing/pixel_blend_avx2.h"

#include <immintrin.h>

// All of this file is compiled for AVX2: it must not use inline functions that other files share, or the
// linker might pick its copies for them.
//
// How doubles fall short of whole numbers when they add or subtract value / 255.0 and multiply by 255.0:
//
// In base 256, value / 255 is 0.vvvvvvv... with the value as every digit. A double's 53 bits hold six of them
// and the five leading bits of the seventh, rounded; so the seventh digit is the value rounded to five
// significant bits, which changes values from 32 on. The sum of two such numbers has k = d + s in its first
// six digits and the sum of the rounded values in the seventh. It is rounded in turn to five significant bits
// of k, exact halves to even. Where that gives less than k rounded by itself, the sum is less than the double
// nearest to k / 255, and times 255.0 it truncates to k - 1. Otherwise the result is k. With differences it
// is the same.

namespace Panelix {

namespace {

__m256i loadVector(const std::uint32_t* pixels) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels));
}

void storeVector(std::uint32_t* pixels, __m256i values) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(pixels), values);
}

/// One entry for each value of a byte's upper four bits.
__m256i makeTable(char from32, char from64, char from128) {
    return _mm256_broadcastsi128_si256(_mm_setr_epi8(0,
                                                     0,
                                                     from32,
                                                     from32,
                                                     from64,
                                                     from64,
                                                     from64,
                                                     from64,
                                                     from128,
                                                     from128,
                                                     from128,
                                                     from128,
                                                     from128,
                                                     from128,
                                                     from128,
                                                     from128));
}

/// Rounding of bytes to five significant bits, halves up: each to a multiple of its unit, which is 1, 2, 4
/// or 8.
struct Rounding {
    /// The byte plus half its unit.
    __m256i raised;
    /// What `raised` exceeds the rounded byte by.
    __m256i excess;
    __m256i half;
    __m256i upperBits;
};

Rounding roundBytes(__m256i bytes) {
    const __m256i upperBits = _mm256_and_si256(_mm256_srli_epi16(bytes, 4), _mm256_set1_epi8(0x0F));
    const __m256i half = _mm256_shuffle_epi8(makeTable(1, 2, 4), upperBits);
    const __m256i unitLessOne = _mm256_shuffle_epi8(makeTable(1, 3, 7), upperBits);
    const __m256i raised = _mm256_add_epi8(bytes, half);
    return {raised, _mm256_and_si256(raised, unitLessOne), half, upperBits};
}

/// What bytes exceed their rounded values by: -4 to 3.
__m256i lostByRounding(__m256i bytes) {
    const Rounding rounding = roundBytes(bytes);
    return _mm256_sub_epi8(rounding.excess, rounding.half);
}

/// -1 where the doubles fall short of `whole`, elsewhere 0; `lost` is what the rounded values make less than
/// it.
__m256i shortfall(__m256i whole, __m256i lost) {
    const Rounding rounding = roundBytes(whole);
    const __m256i unit = _mm256_shuffle_epi8(makeTable(2, 4, 8), rounding.upperBits);
    const __m256i toEven = _mm256_cmpeq_epi8(_mm256_and_si256(rounding.raised, unit), _mm256_setzero_si256());
    // How far the sum of the rounded values is above the half that is rounded up to `whole` rounded; 0 is the
    // half itself, which goes there only when that is the even one. Below 32, where all is exact, every value
    // is.
    const __m256i aboveHalf = _mm256_sub_epi8(rounding.excess, lost);
    return _mm256_cmpgt_epi8(toEven, _mm256_sub_epi8(aboveHalf, _mm256_set1_epi8(1)));
}

__m256i opaque(__m256i pixels) {
    return _mm256_or_si256(pixels, _mm256_set1_epi32(static_cast<int>(0xFF000000)));
}

/// `clamped` less the shortfall where it is `wrapped`: a clamped result is exact. All pixels opaque.
__m256i finish(__m256i clamped, __m256i wrapped, __m256i lost) {
    const __m256i unclamped = _mm256_cmpeq_epi8(clamped, wrapped);
    const __m256i corrected = _mm256_add_epi8(clamped, _mm256_and_si256(unclamped, shortfall(clamped, lost)));
    return opaque(corrected);
}

/// Multiplies one vector as pixel_blend.cpp does 16 bytes, where the reasons stand; the answer are the
/// suspect bytes.
std::uint32_t multiplyVector(std::uint32_t* destination, const std::uint32_t* source) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i all = _mm256_set1_epi8(-1);
    const __m256i lowBytes = _mm256_set1_epi16(0xFF);
    const __m256i d = loadVector(destination);
    const __m256i s = loadVector(source);
    const __m256i first = _mm256_mullo_epi16(_mm256_unpacklo_epi8(d, zero), _mm256_unpacklo_epi8(s, zero));
    const __m256i second = _mm256_mullo_epi16(_mm256_unpackhi_epi8(d, zero), _mm256_unpackhi_epi8(s, zero));
    const __m256i high = _mm256_packus_epi16(_mm256_srli_epi16(first, 8), _mm256_srli_epi16(second, 8));
    const __m256i low =
        _mm256_packus_epi16(_mm256_and_si256(first, lowBytes), _mm256_and_si256(second, lowBytes));
    const __m256i oneMore = _mm256_cmpeq_epi8(_mm256_adds_epu8(high, low), all);
    storeVector(destination, opaque(_mm256_sub_epi8(high, oneMore)));

    const __m256i whole = _mm256_cmpeq_epi8(_mm256_add_epi8(high, low), all);
    const __m256i exact = _mm256_cmpeq_epi8(_mm256_max_epu8(d, s), all);
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_andnot_si256(exact, whole))) & kColourBytes;
}

}  // namespace

void addPixelsAvx2(std::uint32_t* destination, const std::uint32_t* source, std::size_t count) {
    for (std::size_t pixel = 0; pixel < count; pixel += kAvx2Pixels) {
        const __m256i d = loadVector(destination + pixel);
        const __m256i s = loadVector(source + pixel);
        const __m256i lost = _mm256_add_epi8(lostByRounding(d), lostByRounding(s));
        storeVector(destination + pixel, finish(_mm256_adds_epu8(d, s), _mm256_add_epi8(d, s), lost));
    }
}

void subtractPixelsAvx2(std::uint32_t* destination, const std::uint32_t* source, std::size_t count) {
    for (std::size_t pixel = 0; pixel < count; pixel += kAvx2Pixels) {
        const __m256i d = loadVector(destination + pixel);
        const __m256i s = loadVector(source + pixel);
        const __m256i lost = _mm256_sub_epi8(lostByRounding(d), lostByRounding(s));
        storeVector(destination + pixel, finish(_mm256_subs_epu8(d, s), _mm256_sub_epi8(d, s), lost));
    }
}

std::size_t multiplyPixelsAvx2(std::uint32_t* destination,
                               const std::uint32_t* source,
                               std::size_t count,
                               Suspects* found) {
    std::size_t foundCount = 0;
    for (std::size_t pixel = 0; pixel < count; pixel += kAvx2Pixels) {
        const std::uint32_t bytes = multiplyVector(destination + pixel, source + pixel);
        // Always noted, but counted only with suspects: a branch here would often be predicted wrongly.
        found[foundCount] = {bytes, static_cast<std::uint32_t>(pixel)};
        foundCount += bytes != 0 ? 1U : 0U;
    }
    return foundCount;
}

}  // namespace Panelix
