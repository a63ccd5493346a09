// Loads and stores of AVX2 vectors by element type, at any alignment. Reductions and other helpers
// that more than one family uses stand here as well.
#pragma once

#include <cstdint>
#include <immintrin.h>

namespace zsp::avx2 {

inline __m256i load(const std::int16_t* p) noexcept
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

inline __m256i load(const std::uint16_t* p) noexcept
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

inline __m256i load(const std::int32_t* p) noexcept
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

inline __m256 load(const float* p) noexcept
{
    return _mm256_loadu_ps(p);
}

/// Eight words.
inline __m128i load8(const std::int16_t* p) noexcept
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

/// Sixteen bytes.
inline __m128i load16(const std::uint8_t* p) noexcept
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

inline void store(std::uint8_t* p, __m256i v) noexcept
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
}

inline void store(std::int16_t* p, __m256i v) noexcept
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
}

inline void store(std::int32_t* p, __m256i v) noexcept
{
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
}

inline void store(float* p, __m256 v) noexcept
{
    _mm256_storeu_ps(p, v);
}

/// Eight words.
inline void store8(std::int16_t* p, __m128i v) noexcept
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}

/// (a * b) >> 15 of words, whose upper and lower halves overlap by a bit. -32768 squared gives
/// -32768, where the basic operation mult saturates.
inline __m256i mult(__m256i a, __m256i b) noexcept
{
    return _mm256_or_si256(_mm256_slli_epi16(_mm256_mulhi_epi16(a, b), 1),
                           _mm256_srli_epi16(_mm256_mullo_epi16(a, b), 15));
}

/// The two middle quarters exchanged. Packing, unpacking and shuffles work in 128-bit halves; this
/// joins what they leave.
inline __m256i swapMiddle(__m256i v) noexcept
{
    return _mm256_permute4x64_epi64(v, 0xd8);
}

inline __m256 swapMiddle(__m256 v) noexcept
{
    return _mm256_castpd_ps(_mm256_permute4x64_pd(_mm256_castps_pd(v), 0xd8));
}

/// Sixteen words from two times eight 32-bit lanes, saturated, in order.
inline __m256i packInOrder(__m256i lower, __m256i upper) noexcept
{
    return swapMiddle(_mm256_packs_epi32(lower, upper));
}

/// The number of the leading one of positive 32-bit lanes, 0 to 30. With the bit below the leading
/// one cleared, the conversion to float cannot round up to the next power of two: its exponent is
/// that number.
inline __m256i leadingBit(__m256i v) noexcept
{
    const __m256i cut = _mm256_andnot_si256(_mm256_srli_epi32(v, 1), v);
    const __m256i biased = _mm256_srli_epi32(_mm256_castps_si256(_mm256_cvtepi32_ps(cut)), 23);
    return _mm256_sub_epi32(biased, _mm256_set1_epi32(127));
}

/// Two neighbouring words of a table for each lane of `index`, the first in the lower half; `bytes`
/// is the distance that an index counts.
template <int bytes>
__m256i gatherPairs(const std::int16_t* table, __m256i index) noexcept
{
    return _mm256_i32gather_epi32(reinterpret_cast<const int*>(table), index, bytes);
}

/// Sum of the eight 32-bit lanes, wrapping.
inline std::int32_t sum32(__m256i v) noexcept
{
    __m128i s = _mm_add_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    s = _mm_add_epi32(s, _mm_shuffle_epi32(s, 0x4e)); // swap the 64-bit halves
    s = _mm_add_epi32(s, _mm_shuffle_epi32(s, 0xb1)); // swap neighbours
    return _mm_cvtsi128_si32(s);
}

/// The smallest of the eight 32-bit lanes.
inline std::int32_t min32(__m256i v) noexcept
{
    __m128i s = _mm_min_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    s = _mm_min_epi32(s, _mm_shuffle_epi32(s, 0x4e)); // swap the 64-bit halves
    s = _mm_min_epi32(s, _mm_shuffle_epi32(s, 0xb1)); // swap neighbours
    return _mm_cvtsi128_si32(s);
}

/// Sum of the four 64-bit lanes, wrapping.
inline std::int64_t sum64(__m256i v) noexcept
{
    const __m128i s = _mm_add_epi64(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    return _mm_cvtsi128_si64(_mm_add_epi64(s, _mm_unpackhi_epi64(s, s)));
}

/// Largest of the eight signed 32-bit lanes.
inline std::int32_t max32(__m256i v) noexcept
{
    __m128i m = _mm_max_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    m = _mm_max_epi32(m, _mm_shuffle_epi32(m, 0x4e)); // swap the 64-bit halves
    m = _mm_max_epi32(m, _mm_shuffle_epi32(m, 0xb1)); // swap neighbours
    return _mm_cvtsi128_si32(m);
}

/// The largest of sixteen magnitudes without a sign, as vpabsw gives them: 32767 for 32768, like
/// the basic operation abs.
inline std::int16_t maxMagnitude(__m256i v) noexcept
{
    const __m128i m = _mm_max_epu16(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
    // vphminposuw finds a minimum: that of the complements
    const __m128i found = _mm_minpos_epu16(_mm_xor_si128(m, _mm_set1_epi16(-1)));
    const int largest = ~_mm_cvtsi128_si32(found) & 0xffff;
    return static_cast<std::int16_t>(largest > 32767 ? 32767 : largest);
}

} // namespace zsp::avx2
