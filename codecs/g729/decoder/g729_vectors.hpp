// Sums and mixes over sub-frames of ITU-T G.729 in vectors.
#pragma once

#include "codecs/g729/g729.hpp"
#include "core/avx2.hpp"

namespace zsp::g729 {

/// sum of x[i] y[i] over a sub-frame, not doubled, wrapping.
inline Long dot40(const Word* x, const Word* y) noexcept
{
    const __m256i a = _mm256_madd_epi16(avx2::load(x), avx2::load(y));
    const __m256i b = _mm256_madd_epi16(avx2::load(x + 16), avx2::load(y + 16));
    const __m256i c =
        _mm256_zextsi128_si256(_mm_madd_epi16(avx2::load8(x + 32), avx2::load8(y + 32)));
    return avx2::sum32(_mm256_add_epi32(_mm256_add_epi32(a, b), c));
}

inline __m256i sumOf3(__m256i x0, __m256i y0, __m256i x1, __m256i y1, __m256i x2,
                      __m256i y2) noexcept
{
    return _mm256_add_epi32(_mm256_add_epi32(_mm256_madd_epi16(x0, y0), _mm256_madd_epi16(x1, y1)),
                            _mm256_madd_epi16(x2, y2));
}

/// Eight sums of eight lanes each.
inline __m256i sumEach(const __m256i* v) noexcept
{
    const __m256i a =
        _mm256_hadd_epi32(_mm256_hadd_epi32(v[0], v[1]), _mm256_hadd_epi32(v[2], v[3]));
    const __m256i b =
        _mm256_hadd_epi32(_mm256_hadd_epi32(v[4], v[5]), _mm256_hadd_epi32(v[6], v[7]));
    return _mm256_add_epi32(_mm256_permute2x128_si256(a, b, 0x20),
                            _mm256_permute2x128_si256(a, b, 0x31));
}

/// Sixteen words of Q15 sums that were made of unpacked halves: rounded and saturated.
inline __m256i roundPairs(__m256i low, __m256i high) noexcept
{
    const __m256i half = _mm256_set1_epi32(0x4000);
    return _mm256_packs_epi32(_mm256_srai_epi32(_mm256_add_epi32(low, half), 15),
                              _mm256_srai_epi32(_mm256_add_epi32(high, half), 15));
}

/// Eight words (a g + b h) >> shift, rounded and saturated; `gains` holds pairs of g and h.
template <int shift>
__m128i mixPairs(__m128i a, __m128i b, __m256i gains) noexcept
{
    const __m256i pairs = _mm256_set_m128i(_mm_unpackhi_epi16(a, b), _mm_unpacklo_epi16(a, b));
    const __m256i sum = _mm256_srai_epi32(
        _mm256_add_epi32(_mm256_madd_epi16(pairs, gains), _mm256_set1_epi32(1 << (shift - 1))),
        shift);
    return _mm_packs_epi32(_mm256_castsi256_si128(sum), _mm256_extracti128_si256(sum, 1));
}

} // namespace zsp::g729
