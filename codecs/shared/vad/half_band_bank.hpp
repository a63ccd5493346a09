// The filter bank of the 3GPP voice activity detectors, TS 26.094 option 1 and TS 26.194: a tree of
// half-band splits, worked in place in a buffer of one frame, and the level of each band.
//
// A split takes two words of every block, filters one or both with an all-pass, and puts the lower
// half-band (sum) and the upper one (difference) where the two words were. A block of one stage is
// two blocks of the stage before it, so words that belong to one band stand `step` apart at the
// end.
#pragma once

#include "core/fixed_point.hpp"
#include "core/spans.hpp"

#include <array>
#include <cassert>

namespace zsp::vad {

/// What becomes of the sum and the difference of a split's two words.
enum class Merge {
    word,     // saturated
    halfWord, // saturated, then halved: GSM-AMR
    half,     // the 17-bit result halved, which then fits a word: AMR-WB
};

/// One split: order 5 filters both words, order 3 only the one at `upper`.
struct Split {
    int order;
    std::size_t lower;  // places in the block
    std::size_t upper;  // lower + half a block
    std::size_t memory; // row of a_data5, or element of a_data3
};

struct Stage {
    Merge merge;
    std::size_t block; // words
    std::size_t splitCount;
    std::array<Split, 3> splits;

    constexpr std::span<const Split> used() const noexcept { return {splits.data(), splitCount}; }
};

/// The words start, start + step, .. of the buffer; the level is 2^(scale - 15) of their sum.
struct Band {
    std::size_t step;
    std::size_t start;
    int scale;
};

template <std::size_t kStages, std::size_t kBands>
struct Bank {
    int inputShift;    // the input is shifted right by so many bits
    std::size_t frame; // samples
    std::size_t kept;  // from this sample on a frame counts for the next one as well
    std::array<Stage, kStages> stages;
    std::array<Band, kBands> bands;
};

inline constexpr fx::Word kAllPass5Lower_Q15 = 21955; // COEFF5_1
inline constexpr fx::Word kAllPass5Upper_Q15 = 6390;  // COEFF5_2
inline constexpr fx::Word kAllPass3_Q15 = 13363;      // COEFF3

/// (c + z^-1) / (1 + c z^-1).
constexpr fx::Word allPass(fx::Word c_Q15, fx::Word& memory, fx::Word x) noexcept
{
    const fx::Word t = fx::sub(x, fx::mult(c_Q15, memory));
    const fx::Word y = fx::add(memory, fx::mult(c_Q15, t));
    memory = t;
    return y;
}

constexpr fx::Word merge(Merge how, std::int32_t exact) noexcept
{
    switch (how) {
    case Merge::word:
        return fx::sat16(exact);
    case Merge::halfWord:
        return static_cast<fx::Word>(fx::sat16(exact) >> 1);
    default:
        return static_cast<fx::Word>(exact >> 1);
    }
}

/// The level of a band, from two sums of absolute values: those before the last part of the frame,
/// and those in it. The level covers this frame and the last part of the frame before, which
/// `subLevel` holds; afterwards it holds that of this frame.
///
/// A band has at most 64 words, so sums and levels of words do not saturate before the last shift.
constexpr fx::Word bandLevel(std::int32_t head, std::int32_t tail, int scale,
                             fx::Word& subLevel) noexcept
{
    assert(0 <= head && 0 <= tail && head + tail <= 64 * 32767);
    const fx::Long all = 2 * head + 2 * tail + fx::l_shl(subLevel, 16 - scale);
    subLevel = fx::extract_h(fx::l_shl(2 * tail, scale));
    return fx::extract_h(fx::l_shl(all, scale));
}

/// One split of words `a` and `b` into half-bands. `State` has the memories a_data5 and a_data3.
template <typename State>
constexpr void splitWords(const Split& s, Merge how, State& state, fx::Word& a,
                          fx::Word& b) noexcept
{
    fx::Word p = a, q = 0;
    if (s.order == 5) {
        p = allPass(kAllPass5Lower_Q15, state.a_data5[s.memory][0], a);
        q = allPass(kAllPass5Upper_Q15, state.a_data5[s.memory][1], b);
    } else {
        q = allPass(kAllPass3_Q15, state.a_data3[s.memory], b);
    }
    a = merge(how, p + q);
    b = merge(how, p - q);
}

/// The definition. `State` also has the band levels sub_level.
template <const auto& kBank, typename State>
void filterBankScalar(std::span<const std::int16_t, kBank.frame> input, State& state,
                      std::span<std::int16_t, kBank.bands.size()> level) noexcept
{
    std::array<fx::Word, kBank.frame> x;
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<fx::Word>(input[i] >> kBank.inputShift);

    for (const Stage& stage : kBank.stages) {
        for (std::size_t block = 0; block < x.size(); block += stage.block) {
            for (const Split& s : stage.used())
                splitWords(s, stage.merge, state, x[block + s.lower], x[block + s.upper]);
        }
    }

    for (std::size_t i = 0; i < level.size(); ++i) {
        const Band& band = kBank.bands[i];
        std::int32_t head = 0, tail = 0;
        for (std::size_t k = band.start; k < kBank.frame; k += band.step)
            (k < kBank.kept ? head : tail) += fx::abs_s(x[k]);
        level[i] = bandLevel(head, tail, band.scale, state.sub_level[i]);
    }
}

} // namespace zsp::vad
