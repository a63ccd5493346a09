// The half-band filter bank of half_band_bank.hpp, sixteen words at a time.
//
// The words of a block are lanes: all splits of a stage are filtered at once, block after block.
// Only t[n] = x[n] - c t[n-1] of an all-pass is a recursion; its output t[n-1] + c t[n] is computed
// for the whole vector. In every round each stage takes the vector that the stage before it
// finished in the last round: the recursions of all stages run side by side, within a processor's
// reach.
#pragma once

#include "codecs/shared/vad/half_band_bank.hpp"
#include "codecs/shared/vad/half_band_bank_avx2_lanes.hpp"
#include "core/avx2.hpp"

#include <array>
#include <tuple>
#include <utility>

namespace zsp::vad {

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
