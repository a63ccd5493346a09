// AVX2 helpers that several blocks of ITU-T G.728 use.
#pragma once

#include "codecs/g728/g728_ops.hpp"
#include "core/avx2.hpp"

#include <cstring>

namespace zsp::g728 {

/// Two neighbouring words in all lanes.
inline __m256i pairAt(const Word* p) noexcept
{
    std::int32_t pair;
    std::memcpy(&pair, p, sizeof pair);
    return _mm256_set1_epi32(pair);
}

/// Lane i holds the words i and i + 1.
template <std::size_t n>
std::array<std::int32_t, n - 1> neighbours(const std::array<Word, n>& words) noexcept
{
    static_assert((n - 1) % 8 == 0);
    std::array<std::int32_t, n - 1> pairs;
    for (std::size_t i = 0; i + 1 < n; i += 8) {
        const __m128i first = avx2::load8(&words[i]), second = avx2::load8(&words[i + 1]);
        avx2::store(&pairs[i], _mm256_set_m128i(_mm_unpackhi_epi16(first, second),
                                                _mm_unpacklo_epi16(first, second)));
    }
    return pairs;
}

/// Eight products of words.
inline __m256i products8(const Word* a, const Word* b) noexcept
{
    // With zeros beside the words a pair's sum is one product.
    return _mm256_madd_epi16(_mm256_cvtepu16_epi32(avx2::load8(a)),
                             _mm256_cvtepu16_epi32(avx2::load8(b)));
}

/// The upper words after adding half of the lower, saturated: rh().
inline __m128i upperWords(__m256i lanes) noexcept
{
    const __m256i half = _mm256_and_si256(_mm256_srli_epi32(lanes, 15), _mm256_set1_epi32(1));
    const __m256i upper = _mm256_add_epi32(_mm256_srai_epi32(lanes, 16), half);
    return _mm_packs_epi32(_mm256_castsi256_si128(upper), _mm256_extracti128_si256(upper, 1));
}

/// Whether one of eight or more words is -32768. Four of them wrap where two products are added in
/// a lane.
inline bool hasLeast(std::span<const Word> words) noexcept
{
    assert(words.size() >= 8);
    const auto isLeast = [&](std::size_t i) {
        return _mm_cmpeq_epi16(avx2::load8(&words[i]), _mm_set1_epi16(-32768));
    };
    __m128i found = isLeast(words.size() - 8);
    for (std::size_t i = 0; i + 8 < words.size(); i += 8)
        found = _mm_or_si128(found, isLeast(i));
    return !_mm_testz_si128(found, found);
}

/// Sums of 32-bit lanes that may leave 32 bits, of some dozens of terms.
class Sums {
  public:
    void add(__m256i lanes) noexcept
    {
        wrapped_ = _mm256_add_epi32(wrapped_, lanes);
        upper_ = _mm256_add_epi32(upper_, _mm256_srai_epi32(lanes, 16));
    }
    void subtract(__m256i lanes) noexcept
    {
        wrapped_ = _mm256_sub_epi32(wrapped_, lanes);
        upper_ = _mm256_sub_epi32(upper_, _mm256_srai_epi32(lanes, 16));
    }
    std::array<Wide, 8> byLane() const noexcept
    {
        // The lower halves of so few terms fit.
        const __m256i lower = _mm256_sub_epi32(wrapped_, _mm256_slli_epi32(upper_, 16));
        alignas(32) std::array<std::int32_t, 8> u, l;
        avx2::store(u.data(), upper_);
        avx2::store(l.data(), lower);
        std::array<Wide, 8> sums;
        for (std::size_t i = 0; i < sums.size(); ++i)
            sums[i] = u[i] * Wide{65536} + l[i];
        return sums;
    }
    Wide total() const noexcept
    {
        const __m256i lower = _mm256_sub_epi32(wrapped_, _mm256_slli_epi32(upper_, 16));
        return avx2::sum32(upper_) * Wide{65536} + avx2::sum32(lower);
    }

  private:
    __m256i wrapped_ = _mm256_setzero_si256(), upper_ = _mm256_setzero_si256();
};

} // namespace zsp::g728
