// The search and the filter of the long-term post-filter of ITU-T G.729, clause 4.2.1, which are
// made of sums that the definition and the fast form add up in ways of their own.
#pragma once

#include "codecs/g729/decoder/g729_decoder.hpp"
#include "codecs/g729/tables/g729_postfilter_tables.hpp"

#include <cassert>
#include <cstdlib>

namespace zsp::g729::longterm {

inline constexpr std::size_t kPhases = 7;
inline constexpr std::size_t kOutputs = kSubframe + 1; // of a phase: with the one before or after

/// The residual with three bits to spare, and the word before all that a delay of 146 reads, for
/// which the Recommendation has no value.
struct Scaled {
    alignas(32) std::array<Word, 1 + kResidualPast + kSubframe + 7> words{};
    int shift = 0; // right

    /// The word `n` places after the first of the sub-frame.
    const Word* at(int n) const noexcept
    {
        return words.data() + (static_cast<int>(1 + kResidualPast) + n);
    }
};

/// What one phase of the short filter gives: 41 words, of which the first 40 or the last 40 are
/// what lies a delay before.
struct Phase {
    Word first, last;             // words
    std::array<Long, 2> energies; // of the first 40, of the last 40
    std::array<Long, 2> crosses;  // of them with the sub-frame
};
using Phases = std::array<Phase, kPhases>;

/// A value and the right shift that has made it a word.
struct Mantissa {
    Word word;
    int shift;
};

/// One that has room for squares of what it is compared with.
inline Mantissa narrow(Long x) noexcept
{
    const int shift = std::max(16 - fx::norm_l(x), 0);
    return {fx::extract_l(x >> shift), shift};
}

/// What is added to the residual.
struct Match {
    Word delay = 0; // 0: nothing
    std::size_t phase = 0, later = 1;
    Mantissa num{}, den{};
};

template <typename Form>
Match findDelay(const Scaled& z, Word lag) noexcept
{
    const Long own = Form::energy(z.at(0));
    if (own == 0) return {};
    const Mantissa en = narrow(own);

    int lambda = 0;
    Long best = -1;
    for (int t = lag - 1; t <= lag + 1; ++t) {
        const Long cross = std::max<Long>(Form::cross(z.at(0), z.at(-t)), 0);
        if (cross > best) {
            best = cross;
            lambda = t;
        }
    }
    if (best == 0) return {};
    const Long past = Form::energy(z.at(-lambda));
    if (past == 0) return {};

    Phases phases;
    Form::allPhases(z.at(0), z.at(-lambda + 1), phases);
    Long most = past;
    for (const Phase& y : phases)
        most = std::max(most, y.energies[fx::abs_s(y.first) > fx::abs_s(y.last) ? 0 : 1]);
    const int shiftDen = 16 - fx::norm_l(most);
    if (shiftDen <= 0) return {};

    const int shiftNum = std::max(shiftDen, en.shift);
    Match m{.num = {fx::extract_l(best >> shiftNum), shiftNum},
            .den = {fx::extract_l(past >> shiftDen), shiftDen}};
    Long square = fx::l_mult(m.num.word, m.num.word);
    for (std::size_t p = 0; p < kPhases; ++p) {
        for (std::size_t o = 0; o < 2; ++o) {
            const Word num = fx::extract_l(std::max<Long>(phases[p].crosses[o] >> shiftNum, 0));
            const Word den = fx::extract_l(phases[p].energies[o] >> shiftDen);
            const Long s = fx::l_mult(num, num);
            if (fx::l_sub(fx::mpy_32_16(s, m.den.word), fx::mpy_32_16(square, den)) <= 0) continue;
            square = s;
            m.num.word = num;
            m.den.word = den;
            m.phase = p + 1;
            m.later = o;
        }
    }
    if (m.num.word == 0 || m.den.word <= 1) return {};
    Long product = fx::l_mult(m.den.word, en.word);
    Long squared = celp::l_comp(fx::l_extract(square));
    const int x = 2 * shiftNum - shiftDen - en.shift + 1;
    (x < 0 ? squared : product) >>= std::min(std::abs(x), 31);
    if (fx::l_sub(squared, product) < 0) return {};
    m.delay = static_cast<Word>(lambda + 1 - static_cast<int>(m.later));
    return m;
}

/// What the residual is added to, and its gain: the short filter's output is at hand, the long one
/// is tried.
template <typename Form>
void filter(const Scaled& z, Match m, PostResidual residual, Out<kSubframe> dst) noexcept
{
    const Word* r = &residual[kResidualPast];
    std::array<Word, 48> y;
    if (m.phase == 0) {
        std::copy_n(r - m.delay, kSubframe, y.begin());
    } else {
        std::array<Word, 48> longer;
        Form::longFilter(kLongInterpolation[m.phase - 1], z.at(8 - m.delay), longer.data());
        const Long cross = Form::longCross(z.at(0), longer.data());
        const Mantissa num = cross < 0 ? Mantissa{0, 0} : narrow(cross);
        const Mantissa den = narrow(Form::energy(longer.data()));
        bool takesLong = den.word != 0;
        if (takesLong) {
            Long a = fx::mpy_32_16(fx::l_mult(m.num.word, m.num.word), den.word);
            Long b = fx::mpy_32_16(fx::l_mult(num.word, num.word), m.den.word);
            const int x = 2 * m.num.shift + den.shift, v = m.den.shift + 2 * num.shift;
            (v > x ? a : b) >>= std::min(std::abs(v - x), 31);
            takesLong = fx::l_sub(b, a) > 0;
        }
        if (takesLong) {
            y = longer;
            m.num = num;
            m.den = den;
        } else {
            const int lambda = m.delay - 1 + static_cast<int>(m.later);
            Form::shortFilter(kShortInterpolation[m.phase - 1], z.at(-lambda + 1), y.data());
            if (m.later != 0) std::copy(y.begin() + 1, y.begin() + 41, y.begin());
        }
        for (std::size_t n = 0; n < kSubframe; ++n) // as shl(), of which a compiler makes vectors
            y[n] = static_cast<Word>(std::clamp(
                (y[n] * (1 << std::max(z.shift, 0))) >> std::max(-z.shift, 0), -32768, 32767));
    }

    const int x = m.num.shift - m.den.shift;
    Word num = m.num.word, den = m.den.word;
    if (x >= 0)
        den = fx::shr(den, x);
    else
        num = fx::shr(num, -x);
    Word gain_Q15 = 21845; // 1 / (1 + 0.5)
    if (num < den) {
        num = static_cast<Word>(num >> 2);
        den = static_cast<Word>(den >> 1);
        gain_Q15 = fx::div_s(den, fx::add(den, num));
    }
    Form::mix(gain_Q15, r, y.data(), dst);
}

template <typename Form>
Word longTermPostFilter(Word lag, PostResidual residual, Out<kSubframe> dst) noexcept
{
    assert(lag >= kLowestLag && lag <= kHighestLag);
    Scaled z;
    z.shift = Form::scale(residual, &z.words[1]);
    const Match m = findDelay<Form>(z, lag);
    if (m.delay == 0)
        std::ranges::copy(residual.last<kSubframe>(), dst.begin());
    else
        filter<Form>(z, m, residual, dst);
    return m.delay;
}

} // namespace zsp::g729::longterm
