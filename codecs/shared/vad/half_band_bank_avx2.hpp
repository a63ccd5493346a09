// The half-band filter bank of half_band_bank.hpp, sixteen words at a time.
//
// The words of a block are lanes: all splits of a stage are filtered at once, block after block.
// Only t[n] = x[n] - c t[n-1] of an all-pass is a recursion; its output t[n-1] + c t[n] is computed
// for the whole vector. In every round each stage takes the vector that the stage before it
// finished in the last round: the recursions of all stages run side by side, within a processor's
// reach.
#pragma once

#include "codecs/shared/vad/half_band_bank.hpp"
#include "core/avx2.hpp"

#include <tuple>
#include <utility>

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

/// One stage on its way through the frame: the t of the last vector, and of the last block again
/// from lane 0 on.
template <const auto& kBank, std::size_t kStage>
class StageFilter {
    static constexpr const Stage& kDesign = kBank.stages[kStage];
    static constexpr const Lanes& kMine = kLanes<kBank, kStage>;
    static constexpr std::size_t kBlock = kDesign.block;

  public:
    template <typename State>
    void load(const State& state) noexcept
    {
        alignas(32) Lanes::Words t{};
        for (const Split& s : kDesign.used()) {
            if (s.order == 5) t[s.lower % 16] = state.a_data5[s.memory][0];
            t[s.upper % 16] = s.order == 5 ? state.a_data5[s.memory][1] : state.a_data3[s.memory];
        }
        last_ = avx2::load8(t.data());
        if constexpr (kBlock >= 16) history_ = avx2::load(t.data());
        if constexpr (kBlock == 8) history_ = _mm256_broadcastsi128_si256(last_);
        if constexpr (kBlock == 4) history_ = _mm256_broadcastq_epi64(last_);
        if constexpr (kBlock == 2) history_ = _mm256_broadcastd_epi32(last_);
    }

    template <typename State>
    void save(State& state) const noexcept
    {
        alignas(32) Lanes::Words t;
        avx2::store(t.data(), history_);
        constexpr std::size_t kLast = kBlock < 16 ? 16 - kBlock : 0;
        for (const Split& s : kDesign.used()) {
            if (s.order == 5) state.a_data5[s.memory][0] = t[kLast + s.lower % 16];
            (s.order == 5 ? state.a_data5[s.memory][1] : state.a_data3[s.memory]) =
                t[kLast + s.upper % 16];
        }
    }

    /// Blocks of up to 16 words.
    __m256i run(__m256i x) noexcept requires(kBlock <= 16)
    {
        const __m256i filtered = allPasses(x);
        const __m256i v = kMine.allFiltered ? filtered : choose(x, filtered, kMine.filtered);
        const __m256i merged =
            mergeLanes<kDesign.merge>(v, swapHalves<kBlock>(v), avx2::load(kMine.upper.data()));
        return kMine.allUsed ? merged : choose(x, merged, kMine.used);
    }

    /// Blocks of 32 words, with 3rd-order splits only.
    void run(__m256i& lower, __m256i& upper) noexcept requires(kBlock == 32)
    {
        const __m256i q = allPasses(upper);
        const __m256i sum = mergeLanes<kDesign.merge>(lower, q, _mm256_setzero_si256());
        const __m256i difference = mergeLanes<kDesign.merge>(q, lower, _mm256_set1_epi16(-1));
        lower = choose(lower, sum, kMine.used);
        upper = choose(upper, difference, kMine.used);
    }

  private:
    __m256i allPasses(__m256i x) noexcept
    {
        __m256i t, delayed;
        if constexpr (kBlock >= 16) {
            t = _mm256_subs_epi16(x, multCoefficient<kMine>(history_));
            delayed = history_;
        } else {
            Blocks<kBlock> blocks = cut<kBlock>(x);
            for (__m128i& block : blocks.at)
                block = last_ = _mm_subs_epi16(block, multCoefficient<kMine>(last_));
            t = join(blocks);
            // the vectors one after the other, 16 words from a block before the new one
            const __m256i between = _mm256_permute2x128_si256(history_, t, 0x21);
            delayed = _mm256_alignr_epi8(t, between, 16 - 2 * kBlock);
        }
        history_ = t;
        return _mm256_adds_epi16(delayed, multCoefficient<kMine>(t));
    }

    __m256i history_;
    __m128i last_;
};

/// Sums of absolute words, a column for each place in 16 words.
class ColumnSums {
  public:
    void add(__m256i x) noexcept
    {
        const __m256i zero = _mm256_setzero_si256();
        const __m256i magnitude = _mm256_max_epi16(x, _mm256_subs_epi16(zero, x)); // abs_s
        low_ = _mm256_add_epi32(low_, _mm256_unpacklo_epi16(magnitude, zero));
        high_ = _mm256_add_epi32(high_, _mm256_unpackhi_epi16(magnitude, zero));
    }

    void store(std::int32_t* columns) const noexcept
    {
        avx2::store(columns, _mm256_permute2x128_si256(low_, high_, 0x20));
        avx2::store(columns + 8, _mm256_permute2x128_si256(low_, high_, 0x31));
    }

  private:
    __m256i low_ = _mm256_setzero_si256();  // columns 0..3, 8..11
    __m256i high_ = _mm256_setzero_si256(); // columns 4..7, 12..15
};

/// Both words of a split stand half a block apart, and no part of a frame ends within a vector.
template <const auto& kBank>
constexpr bool fitsVectors() noexcept
{
    const std::size_t width = kBank.stages.back().block;
    for (const Stage& stage : kBank.stages)
        for (const Split& s : stage.used())
            if (s.upper != s.lower + stage.block / 2) return false;
    return (width == 16 || width == 32) && kBank.frame % width == 0 && kBank.kept % width == 0;
}

template <const auto& kBank, typename State, std::size_t... kStage, std::size_t... kBand>
void filterBankLanes(std::span<const std::int16_t, kBank.frame> input, State& state,
                     std::span<std::int16_t, kBank.bands.size()> level,
                     std::index_sequence<kStage...> /*stages*/,
                     std::index_sequence<kBand...> /*bands*/) noexcept
{
    static_assert(fitsVectors<kBank>());
    constexpr std::size_t kWidth = kBank.stages.back().block;
    constexpr std::size_t kVectors = kBank.frame / 16;
    constexpr std::size_t kDepth = kBank.stages.size() - (kWidth == 32 ? 1 : 0);

    std::tuple<StageFilter<kBank, kStage>...> stages;
    (std::get<kStage>(stages).load(state), ...);
    __m256i x[kDepth + 1] = {}; // what each stage has left for the next one
    __m256i lower = _mm256_setzero_si256();
    ColumnSums sums[kWidth / 16];
    std::array<std::int32_t, kWidth> head, all;
    const auto storeSums = [&sums](std::array<std::int32_t, kWidth>& columns) {
        for (std::size_t i = 0; i < std::size(sums); ++i)
            sums[i].store(&columns[16 * i]);
    };

    for (std::size_t round = 0; round < kVectors + kDepth - 1; ++round) {
        if (round < kVectors)
            x[0] = _mm256_srai_epi16(avx2::load(&input[16 * round]), kBank.inputShift);
        const auto step = [&]<std::size_t kAt>(std::integral_constant<std::size_t, kAt>) {
            if constexpr (kAt < kDepth) {
                // before its first vector, round - kAt wraps
                if (round - kAt < kVectors) x[kAt + 1] = std::get<kAt>(stages).run(x[kAt]);
            }
        };
        (step(std::integral_constant<std::size_t, sizeof...(kStage) - 1 - kStage>{}), ...);

        if (round < kDepth - 1) continue;
        const std::size_t vector = round - (kDepth - 1);
        if (vector == kBank.kept / 16) storeSums(head);
        if constexpr (kWidth == 16) {
            sums[0].add(x[kDepth]);
        } else if (vector % 2 == 0) {
            lower = x[kDepth];
        } else {
            std::get<kDepth>(stages).run(lower, x[kDepth]);
            sums[0].add(lower);
            sums[1].add(x[kDepth]);
        }
    }
    storeSums(all);
    (std::get<kStage>(stages).save(state), ...);

    const auto sumOf = [](const Band& band, const std::array<std::int32_t, kWidth>& columns) {
        std::int32_t sum = 0;
        for (std::size_t k = band.start; k < kWidth; k += band.step)
            sum += columns[k];
        return sum;
    };
    const auto finish = [&]<std::size_t kAt>(std::integral_constant<std::size_t, kAt>) {
        constexpr Band kDesign = kBank.bands[kAt];
        const std::int32_t bandHead = sumOf(kDesign, head);
        level[kAt] = bandLevel(bandHead, sumOf(kDesign, all) - bandHead, kDesign.scale,
                               state.sub_level[kAt]);
    };
    (finish(std::integral_constant<std::size_t, kBand>{}), ...);
}

/// Equal to filterBankScalar in every result.
template <const auto& kBank, typename State>
void filterBankAvx2(std::span<const std::int16_t, kBank.frame> input, State& state,
                    std::span<std::int16_t, kBank.bands.size()> level) noexcept
{
    filterBankLanes<kBank>(input, state, level, std::make_index_sequence<kBank.stages.size()>{},
                           std::make_index_sequence<kBank.bands.size()>{});
}

} // namespace zsp::vad
