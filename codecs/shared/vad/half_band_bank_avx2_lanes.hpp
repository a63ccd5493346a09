// Sixteen words of the half-band filter bank at a time: which lanes a stage filters and merges, the
// arithmetic of all-pass and merge, and the blocks of a vector.
#pragma once

#include "codecs/shared/vad/half_band_bank.hpp"
#include "core/avx2.hpp"

#include <array>
#include <cstddef>

namespace zsp::vad {

/// What a stage does with the words of a vector; of a block of 32 words, with its upper half.
struct alignas(32) Lanes {
    using Words = std::array<fx::Word, 16>;

    Words factor{};   // twice the coefficient, less 2^16 where that is no signed word
    Words wrapped{};  // -1 at those
    Words filtered{}; // -1 where an all-pass is
    Words upper{};    // -1 at the upper word of a split
    Words used{};     // -1 at both words of a split
    bool anyWrapped = false;
    bool allFiltered = true;
    bool allUsed = true;
};

constexpr Lanes lanesOf(const Stage& stage) noexcept
{
    Lanes lanes;
    const auto set = [&](std::size_t at, int coefficient_Q15, bool upper) {
        lanes.factor[at] = static_cast<fx::Word>(2 * coefficient_Q15);
        lanes.wrapped[at] = static_cast<fx::Word>(coefficient_Q15 > 16383 ? -1 : 0);
        lanes.filtered[at] = static_cast<fx::Word>(coefficient_Q15 != 0 ? -1 : 0);
        lanes.upper[at] = static_cast<fx::Word>(upper ? -1 : 0);
        lanes.used[at] = -1;
    };
    for (const Split& s : stage.used())
        for (std::size_t block = 0; block < 16; block += stage.block) {
            set((block + s.lower) % 16, s.order == 5 ? kAllPass5Lower_Q15 : 0, false);
            set((block + s.upper) % 16, s.order == 5 ? kAllPass5Upper_Q15 : kAllPass3_Q15, true);
        }
    for (std::size_t i = 0; i < 16; ++i) {
        lanes.anyWrapped = lanes.anyWrapped || lanes.wrapped[i] != 0;
        lanes.allFiltered = lanes.allFiltered && lanes.filtered[i] != 0;
        lanes.allUsed = lanes.allUsed && lanes.used[i] != 0;
    }
    return lanes;
}

template <const auto& kBank, std::size_t kStage>
inline constexpr Lanes kLanes = lanesOf(kBank.stages[kStage]);

/// mult(coefficient, t). vpmulhw by the factor gives it, short of t where the factor is wrapped.
template <const Lanes& kStageLanes>
__m256i multCoefficient(__m256i t) noexcept
{
    const __m256i product = _mm256_mulhi_epi16(t, avx2::load(kStageLanes.factor.data()));
    if constexpr (!kStageLanes.anyWrapped) return product;
    const __m256i wrapped = avx2::load(kStageLanes.wrapped.data());
    return _mm256_add_epi16(product, _mm256_and_si256(t, wrapped));
}

/// The same for the first eight lanes.
template <const Lanes& kStageLanes>
__m128i multCoefficient(__m128i t) noexcept
{
    const __m128i product = _mm_mulhi_epi16(t, avx2::load8(kStageLanes.factor.data()));
    if constexpr (!kStageLanes.anyWrapped) return product;
    const __m128i wrapped = avx2::load8(kStageLanes.wrapped.data());
    return _mm_add_epi16(product, _mm_and_si128(t, wrapped));
}

/// The blocks of a vector, each from lane 0 on; lanes behind a block hold anything.
template <std::size_t kBlock>
struct Blocks {
    static constexpr std::size_t kCount = 16 / kBlock;
    __m128i at[kCount];
};

template <std::size_t kBlock>
Blocks<kBlock> cut(__m256i v) noexcept
{
    if constexpr (kBlock == 8) {
        return {{_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1)}};
    } else {
        Blocks<kBlock> blocks;
        const Blocks<2 * kBlock> pairs = cut<2 * kBlock>(v);
        for (std::size_t i = 0; i < pairs.kCount; ++i) {
            const __m128i pair = pairs.at[i];
            blocks.at[2 * i] = pair;
            blocks.at[2 * i + 1] =
                kBlock == 4 ? _mm_unpackhi_epi64(pair, pair) : _mm_srli_epi64(pair, 32);
        }
        return blocks;
    }
}

/// The inverse of cut().
template <std::size_t kBlock>
__m256i join(const Blocks<kBlock>& blocks) noexcept
{
    if constexpr (kBlock == 8) {
        return _mm256_set_m128i(blocks.at[1], blocks.at[0]);
    } else {
        Blocks<2 * kBlock> pairs;
        for (std::size_t i = 0; i < pairs.kCount; ++i) {
            const __m128i first = blocks.at[2 * i], second = blocks.at[2 * i + 1];
            pairs.at[i] =
                kBlock == 4 ? _mm_unpacklo_epi64(first, second) : _mm_unpacklo_epi32(first, second);
        }
        return join(pairs);
    }
}

/// Exchanges the halves of every block.
template <std::size_t kBlock>
__m256i swapHalves(__m256i v) noexcept
{
    if constexpr (kBlock == 16) return _mm256_permute4x64_epi64(v, 0x4e);
    if constexpr (kBlock == 8) return _mm256_shuffle_epi32(v, 0x4e);
    if constexpr (kBlock == 4) return _mm256_shuffle_epi32(v, 0xb1);
    return _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(v, 0xb1), 0xb1);
}

/// v + other, and where `upper` is -1, other - v.
///
/// The half of a 17-bit result comes from vpavgw, (a + b + 1) >> 1 of unsigned words, which an
/// exchanged sign bit makes one of signed words: a - b is a + ~b + 1, and a + b is ~(~a + ~b + 1).
template <Merge kMerge>
__m256i mergeLanes(__m256i v, __m256i other, __m256i upper) noexcept
{
    if constexpr (kMerge == Merge::half) {
        const __m256i all = _mm256_set1_epi16(0x7fff); // ~ and the sign bit
        const __m256i some = _mm256_xor_si256(all, upper);
        const __m256i mean =
            _mm256_avg_epu16(_mm256_xor_si256(v, all), _mm256_xor_si256(other, some));
        return _mm256_xor_si256(mean, some);
    }
    const __m256i merged =
        _mm256_blendv_epi8(_mm256_adds_epi16(v, other), _mm256_subs_epi16(other, v), upper);
    return kMerge == Merge::word ? merged : _mm256_srai_epi16(merged, 1);
}

/// Takes `b` where the mask is -1.
inline __m256i choose(__m256i a, __m256i b, const Lanes::Words& mask) noexcept
{
    return _mm256_blendv_epi8(a, b, avx2::load(mask.data()));
}

} // namespace zsp::vad
