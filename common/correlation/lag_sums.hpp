// Sixteen neighbouring lags of a correlation at once,
//
//   sum[o] = sum over i of a[i] * b[o + i]      o = 0..15
//
// vpmaddwd of the broadcast pair a[i], a[i+1] with the sixteen words at b + i holds the two
// products of every even lag in one 32-bit lane, with the words at b + i + 1 those of every odd
// lag. So no lane is ever summed across.
#pragma once

#include "core/avx2.hpp"
#include "core/spans.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>

namespace zsp::common {

inline constexpr std::size_t kLags = 16;

/// Sums modulo 2^32. The one product pair that does not fit 32 bits wraps as it should.
struct WrappingSums {
    __m256i even = _mm256_setzero_si256(); // lags 0 2 4 .. 14
    __m256i odd = _mm256_setzero_si256();  // lags 1 3 5 .. 15

    void add(__m256i evenPairs, __m256i oddPairs) noexcept
    {
        even = _mm256_add_epi32(even, evenPairs);
        odd = _mm256_add_epi32(odd, oddPairs);
    }

    /// Lags 0 to 7.
    __m256i low() const noexcept
    {
        return _mm256_permute2x128_si256(_mm256_unpacklo_epi32(even, odd), // 0 1 2 3 | 8 9 10 11
                                         _mm256_unpackhi_epi32(even, odd), // 4 5 6 7 | 12 13 14 15
                                         0x20);
    }

    /// Lags 8 to 15.
    __m256i high() const noexcept
    {
        return _mm256_permute2x128_si256(_mm256_unpacklo_epi32(even, odd),
                                         _mm256_unpackhi_epi32(even, odd), 0x31);
    }

    void storeTo(std::array<std::int32_t, kLags>& sums) const noexcept
    {
        avx2::store(&sums[0], low());
        avx2::store(&sums[8], high());
    }
};

/// Exact sums. A sum of two products lies in -2^31 + 2^16 .. 2^31, where vpmaddwd returns the upper
/// end as -2^31; with the bias added every value is a different unsigned 32-bit integer.
class ExactSums {
  public:
    void add(__m256i evenPairs, __m256i oddPairs) noexcept
    {
        accumulate(evenPairs, sums_[0], sums_[2]);
        accumulate(oddPairs, sums_[1], sums_[3]);
        ++pairs_;
    }

    void storeTo(std::array<std::int64_t, kLags>& sums) const noexcept
    {
        const __m256i biases = _mm256_set1_epi64x(pairs_ * kBias);
        for (std::size_t phase = 0; phase < 4; ++phase) {
            const auto lanes =
                std::bit_cast<std::array<std::int64_t, 4>>(_mm256_sub_epi64(sums_[phase], biases));
            for (std::size_t i = 0; i < 4; ++i)
                sums[4 * i + phase] = lanes[i];
        }
    }

  private:
    static constexpr std::int32_t kBias = 0x7fff'ffff;

    static void accumulate(__m256i pairs, __m256i& low, __m256i& high) noexcept
    {
        const __m256i biased = _mm256_add_epi32(pairs, _mm256_set1_epi32(kBias));
        const __m256i lowHalves = _mm256_set1_epi64x(0xffff'ffff);
        low = _mm256_add_epi64(low, _mm256_and_si256(biased, lowHalves));
        high = _mm256_add_epi64(high, _mm256_srli_epi64(biased, 32));
    }

    __m256i sums_[4] = {}; // lags 0 4 8 12, 1 5 9 13, 2 6 10 14, 3 7 11 15
    std::int64_t pairs_ = 0;
};

/// The pair a[0], a[1] in every lane.
inline __m256i broadcastPair(const std::int16_t* a) noexcept
{
    std::int32_t pair;
    std::memcpy(&pair, a, sizeof pair);
    return _mm256_set1_epi32(pair);
}

/// Adds the products of `count` words of `a`. Reads count + 15 words of `b`, none when count is 0.
template <typename Sums>
inline void addLags(const std::int16_t* a, const std::int16_t* b, std::size_t count,
                    Sums& sums) noexcept
{
    const auto add = [&](const std::int16_t* pair, __m256i even, __m256i odd) {
        const __m256i both = broadcastPair(pair);
        sums.add(_mm256_madd_epi16(both, even), _mm256_madd_epi16(both, odd));
    };
    std::size_t i = 0;
    // Two loads give the words at b + i to b + i + 7: vpalignr joins the lower lanes, which begin
    // at b + i and b + i + 8, and likewise the upper ones. The second load takes the next nine
    // samples.
    for (; i + 8 < count; i += 8) {
        const __m256i here = avx2::load(b + i), next = avx2::load(b + i + 8);
        add(a + i, here, _mm256_alignr_epi8(next, here, 2));
        add(a + i + 2, _mm256_alignr_epi8(next, here, 4), _mm256_alignr_epi8(next, here, 6));
        add(a + i + 4, _mm256_alignr_epi8(next, here, 8), _mm256_alignr_epi8(next, here, 10));
        add(a + i + 6, _mm256_alignr_epi8(next, here, 12), _mm256_alignr_epi8(next, here, 14));
    }
    for (; i + 2 <= count; i += 2)
        add(a + i, avx2::load(b + i), avx2::load(b + i + 1));
    if (i < count) {
        // The last word alone: against the lower words of the lanes, then against the upper ones.
        const __m256i one = _mm256_set1_epi32(a[i] & 0xffff);
        const __m256i words = avx2::load(b + i);
        sums.add(_mm256_madd_epi16(one, words),
                 _mm256_madd_epi16(_mm256_slli_epi32(one, 16), words));
    }
}

/// Groups of sixteen lags of two sequences of one length. Beyond the end of src1, its last words
/// continue with zeros in a copy, which serves all groups.
class LagGroups {
  public:
    LagGroups(In16 src1, In16 src2) noexcept : src1_(src1), src2_(src2)
    {
        if (src1.size() >= kTail)
            std::ranges::copy(src1.last<kTail>(), tail_.begin());
        else
            std::ranges::copy(src1, &tail_[kTail - src1.size()]);
    }

    /// The lags from `first`, which is below the length, to first + 15.
    template <typename Sums>
    Sums from(std::size_t first) const noexcept
    {
        const std::size_t overlap = src1_.size() - first;
        const std::size_t rest = std::min(overlap, kTail);
        Sums sums;
        addLags(src2_.data(), src1_.data() + first, overlap - rest, sums);
        addLags(src2_.data() + (overlap - rest), &tail_[kTail - rest], rest, sums);
        return sums;
    }

  private:
    static constexpr std::size_t kTail = kLags - 1;

    In16 src1_, src2_;
    alignas(32) std::array<std::int16_t, kTail + kLags> tail_ = {};
};

} // namespace zsp::common
