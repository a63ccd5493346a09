// What all LSF quantisers of ITU-T G.729 share, those of speech (clause 3.2.4) and of silence
// descriptors (Annex B, clause B.4.2.2): vectors that are kept apart, and a moving average over the
// last four of them. Frequencies are Q13, radians.
#pragma once

#include "codecs/g729/g729.hpp"
#include "codecs/shared/words.hpp"

#include <algorithm>
#include <array>

namespace zsp::g729 {

using LsfVector = std::array<Word, kOrder>;
using LsfPredictor = std::array<LsfVector, 4>;

/// The last four vectors, the newest first.
inline constexpr std::size_t kLsfMemory = 4 * kOrder;

/// Moves neighbours apart that are closer than the gap, from `first` on and its predecessor.
constexpr void keepApart(Out<kOrder> v, Word gap, std::size_t first = 1,
                         std::size_t last = kOrder - 1) noexcept
{
    for (std::size_t j = first; j <= last; ++j) {
        const Word excess = fx::shr(fx::add(fx::sub(v[j - 1], v[j]), gap), 1);
        if (excess <= 0) continue;
        v[j - 1] = fx::sub(v[j - 1], excess);
        v[j] = fx::add(v[j], excess);
    }
}

/// How much errors of each frequency count: more between close neighbours. Clause 3.2.4.
constexpr void lsfWeights(In<kOrder> lsf, Out<kOrder> weights) noexcept
{
    Word most = 0;
    for (std::size_t j = 0; j < kOrder; ++j) {
        const Word gap = j == 0            ? fx::sub(lsf[1], 9221)
                         : j == kOrder - 1 ? fx::sub(15485, lsf[8])
                                           : fx::sub(fx::sub(lsf[j + 1], lsf[j - 1]), 8192);
        Word weight = 2048;
        if (gap <= 0) {
            Word t = fx::extract_h(fx::l_shl(fx::l_mult(gap, gap), 2));
            t = fx::extract_h(fx::l_shl(fx::l_mult(t, 20480), 2));
            weight = fx::add(t, 2048);
        }
        if (j == 4 || j == 5) weight = fx::extract_h(fx::l_shl(fx::l_mult(weight, 19661), 1));
        weights[j] = weight;
        most = std::max(most, weight);
    }
    const int shift = fx::norm_s(most);
    for (Word& weight : weights)
        weight = fx::shl(weight, shift);
}

/// The vector with which the predicted frequencies become `lsf`.
constexpr void extractTarget(In<kOrder> lsf, const LsfPredictor& predictor,
                             const LsfVector& inverse_Q12, In<kLsfMemory> memory,
                             Out<kOrder> target) noexcept
{
    for (std::size_t j = 0; j < kOrder; ++j) {
        Long sum = fx::l_deposit_h(lsf[j]);
        for (std::size_t k = 0; k < predictor.size(); ++k)
            sum = fx::l_msu(sum, memory[kOrder * k + j], predictor[k][j]);
        target[j] = fx::extract_h(fx::l_shl(fx::l_mult(fx::extract_h(sum), inverse_Q12[j]), 3));
    }
}

/// Brings frequencies into an order that makes a stable filter.
constexpr void stabilise(Out<kOrder> lsf) noexcept
{
    for (std::size_t j = 0; j + 1 < kOrder; ++j)
        if (lsf[j + 1] < lsf[j]) std::swap(lsf[j], lsf[j + 1]);
    lsf[0] = std::max<Word>(lsf[0], 40);
    for (std::size_t j = 0; j + 1 < kOrder; ++j)
        if (lsf[j + 1] - lsf[j] < 321) lsf[j + 1] = fx::add(lsf[j], 321);
    lsf[kOrder - 1] = std::min<Word>(lsf[kOrder - 1], 25681);
}

/// Frequencies of a vector and the last four, among which it is from now on.
constexpr void composeLsf(In<kOrder> v, const LsfPredictor& predictor, const LsfVector& rest_Q15,
                          Out<kLsfMemory> memory, Out<kOrder> lsf) noexcept
{
    LsfVector result{};
    for (std::size_t j = 0; j < kOrder; ++j) {
        Long sum = fx::l_mult(v[j], rest_Q15[j]);
        for (std::size_t k = 0; k < predictor.size(); ++k)
            sum = fx::l_mac(sum, memory[kOrder * k + j], predictor[k][j]);
        result[j] = fx::extract_h(sum);
    }
    codecs::push(memory, v);
    stabilise(result);
    std::ranges::copy(result, lsf.begin());
}

} // namespace zsp::g729
