// The long-term post-filter of ITU-T G.729, clause 4.2.1: the residual plus what lies a delay
// before, which is found in steps of 1/8 sample.

#include "codecs/g729/decoder/g729_decoder.hpp"
#include "codecs/g729/tables/g729_postfilter_tables.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <cassert>

namespace zsp::g729 {

namespace {

constexpr std::size_t kPhases = 7;
constexpr std::size_t kOutputs = kSubframe + 1; // of a phase: with the one before or after

/// The residual with three bits to spare, and the word before all that a delay of 146 reads, for
/// which the Recommendation has no value.
struct Scaled {
    alignas(32) std::array<Word, 1 + kResidualPast + kSubframe + 7> words{};
    int shift = 0; // right

    explicit Scaled(PostResidual residual) noexcept
    {
        int bits = 0;
        for (const Word x : residual)
            bits |= fx::abs_s(x);
        shift = 3 - fx::norm_s(static_cast<Word>(bits));
        for (std::size_t i = 0; i < residual.size(); ++i)
            words[1 + i] = fx::shr(residual[i], shift);
    }
    /// The word `n` places after the first of the sub-frame.
    const Word* at(int n) const noexcept
    {
        return words.data() + (static_cast<int>(1 + kResidualPast) + n);
    }
};

/// What the search is made of; the two forms of it differ in how they sum.
struct Sums {
    Long own;                  // energy of the sub-frame
    std::array<Long, 3> cross; // with lags lag - 1 to lag + 1
    std::array<std::array<Word, 48>, kPhases> phases;
    std::array<std::array<Long, 2>, kPhases> phaseEnergy; // of its first 40 and its last 40
    std::array<std::array<Long, 2>, kPhases> phaseCross;  // likewise
};

/// A value and the right shift that has made it a word.
struct Mantissa {
    Word word;
    int shift;
};

/// One that has room for squares of what it is compared with.
Mantissa narrow(Long x) noexcept
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
    const Long own = Form::energy(z.at(0), 40);
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
    const Long past = Form::energy(z.at(-lambda), 40);
    if (past == 0) return {};

    std::array<std::array<Word, 48>, kPhases> y;
    std::array<std::array<Long, 2>, kPhases> energies;
    Long most = past;
    for (std::size_t p = 0; p < kPhases; ++p) {
        Form::shortFilter(kShortInterpolation[p], z.at(-lambda + 1), y[p].data());
        const Long inner = Form::energy(&y[p][1], 39);
        energies[p] = {fx::l_mac(inner, y[p][0], y[p][0]), fx::l_mac(inner, y[p][40], y[p][40])};
        const bool first = fx::abs_s(y[p][0]) > fx::abs_s(y[p][40]);
        most = std::max(most, energies[p][first ? 0 : 1]);
    }
    const int shiftDen = 16 - fx::norm_l(most);
    if (shiftDen <= 0) return {};

    const int shiftNum = std::max(shiftDen, en.shift);
    Match m{.num = {fx::extract_l(best >> shiftNum), shiftNum},
            .den = {fx::extract_l(past >> shiftDen), shiftDen}};
    Long square = fx::l_mult(m.num.word, m.num.word);
    for (std::size_t p = 0; p < kPhases; ++p)
        for (std::size_t o = 0; o < 2; ++o) {
            const Long cross = Form::cross(z.at(0), &y[p][o]);
            const Word num = fx::extract_l(std::max<Long>(cross >> shiftNum, 0));
            const Word den = fx::extract_l(energies[p][o] >> shiftDen);
            const Long s = fx::l_mult(num, num);
            if (fx::l_sub(fx::mpy_32_16(s, m.den.word), fx::mpy_32_16(square, den)) <= 0) continue;
            square = s;
            m.num.word = num;
            m.den.word = den;
            m.phase = p + 1;
            m.later = o;
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
        const Mantissa den = narrow(Form::energy(longer.data(), 40));
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
        for (std::size_t n = 0; n < kSubframe; ++n)
            y[n] = fx::shl(y[n], z.shift);
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

struct Plainly {
    static Long energy(const Word* x, std::size_t n) noexcept { return celp::energy({x, n}); }
    static Long cross(const Word* x, const Word* y) noexcept { return celp::dot({x, 40}, y); }
    static Long longCross(const Word* x, const Word* y) noexcept { return cross(x, y); }

    template <std::size_t taps>
    static void interpolate(const std::array<Word, taps>& h, const Word* newest, std::size_t count,
                            Word* y) noexcept
    {
        for (std::size_t n = 0; n < count; ++n) {
            Long sum = 0;
            for (std::size_t i = 0; i < taps; ++i)
                sum = fx::l_mac(sum, h[i], *(newest + n - i));
            y[n] = fx::round_fx(sum);
        }
    }
    static void shortFilter(const std::array<Word, 4>& h, const Word* newest, Word* y) noexcept
    {
        interpolate(h, newest, kOutputs, y);
    }
    static void longFilter(const std::array<Word, 16>& h, const Word* newest, Word* y) noexcept
    {
        interpolate(h, newest, kSubframe, y);
    }
    static void mix(Word gain_Q15, const Word* r, const Word* y, Out<kSubframe> dst) noexcept
    {
        const auto rest = static_cast<Word>(32768 - gain_Q15);
        for (std::size_t n = 0; n < kSubframe; ++n)
            dst[n] = fx::round_fx(fx::l_mac(fx::l_mult(gain_Q15, *(r + n)), rest, *(y + n)));
    }
};

template <typename Form>
Word longTermPostFilter(Word lag, PostResidual residual, Out<kSubframe> dst) noexcept
{
    assert(lag >= kLowestLag && lag <= kHighestLag);
    const Scaled z(residual);
    const Match m = findDelay<Form>(z, lag);
    if (m.delay == 0)
        std::ranges::copy(residual.last<kSubframe>(), dst.begin());
    else
        filter<Form>(z, m, residual, dst);
    return m.delay;
}

} // namespace

Word longTermPostFilterScalar(Word lag, PostResidual residual, Out<kSubframe> dst) noexcept
{
    return longTermPostFilter<Plainly>(lag, residual, dst);
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsLongTermPostFilter_G729_16s(std::int32_t lag, const std::int16_t* src,
                                          std::int16_t* dst, std::int16_t* delay)
{
    if (!src || !dst || !delay) return zspStsNullPtrErr;
    if (lag < g729::kLowestLag || lag > g729::kHighestLag) return zspStsCodecRangeErr;

    *delay = g729::longTermPostFilterScalar(static_cast<std::int16_t>(lag), spanOf<192>(src),
                                            spanOf<40>(dst));
    return zspStsNoErr;
}

} // namespace zsp::entry
