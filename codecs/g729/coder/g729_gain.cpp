// The gain quantiser of ITU-T G.729, clause 3.9: the best gains without limits preselect four
// entries of the first book and eight of the second, of which all pairs are tried.

#include "codecs/g729/coder/g729_searches.hpp"
#include "codecs/g729/coder/g729_sums.hpp"
#include "codecs/g729/tables/g729_gain_tables.hpp"
#include "core/entries.hpp"

#include <algorithm>
#include <array>

namespace zsp::g729 {

namespace {

/// A sum of products, which is at least `first`, normalised.
struct Scaled {
    Word value;
    int exponent;
};

Scaled scaled(In<kSubframe> x, const std::array<Word, kSubframe>& y, Long first) noexcept
{
    const Long sum = fastDot(x, y, first).value;
    const int e = fx::norm_l(sum);
    return {fx::round_fx(fx::l_shl(sum, e)), e};
}

/// A long of a certain exponent.
struct Float {
    Long value;
    int exponent;
};

/// a - b; both are first divided by 2^guard.
Float difference(Float a, Float b, int guard) noexcept
{
    if (a.exponent > b.exponent)
        return {fx::l_sub(fx::l_shr(a.value, a.exponent - b.exponent + guard),
                          fx::l_shr(b.value, guard)),
                b.exponent - guard};
    return {
        fx::l_sub(fx::l_shr(a.value, guard), fx::l_shr(b.value, b.exponent - a.exponent + guard)),
        a.exponent - guard};
}

struct Normalised {
    Word value;
    int exponent;
};

Normalised normalised(Float x) noexcept
{
    const int s = fx::norm_l(x.value);
    return {fx::extract_h(fx::l_shl(x.value, s)), x.exponent + s - 16};
}

struct BestGains {
    Word pitch_Q9, code_Q2;
};

BestGains bestGains(const GainSums& s, bool isTamed) noexcept
{
    const auto product = [&s](std::size_t i, std::size_t j, int extra) {
        return Float{fx::l_mult(s.sums[i], s.sums[j]), s.exponents[i] + s.exponents[j] + extra};
    };
    const Normalised den = normalised(difference(product(0, 2, -1), product(4, 4, 1), 0));
    // Of sums that no vectors have, the denominator may be 0 or negative.
    const Word inverse = den.value >= 16384 ? fx::negate(fx::div_s(16384, den.value)) : Word{0};
    const int inverseExponent = 29 - den.exponent;
    const auto over = [&](Float numerator, int format) {
        const Normalised n = normalised(numerator);
        return fx::extract_h(
            fx::l_shr(fx::l_mult(n.value, inverse), n.exponent + inverseExponent - format));
    };
    BestGains best{over(difference(product(2, 1, 0), product(3, 4, 1), 1), 24),
                   over(difference(product(0, 3, 0), product(1, 4, 1), 1), 17)};
    if (isTamed) best.pitch_Q9 = std::min<Word>(best.pitch_Q9, 481);
    return best;
}

/// How many thresholds a value is beyond, as long as it is, at most all.
template <std::size_t n>
std::size_t beyond(Long value, const std::array<Word, n>& thresholds, Word scale,
                   int shift) noexcept
{
    std::size_t i = 0;
    for (; i < n; ++i) {
        const Long d = fx::l_sub(value, fx::l_mult(thresholds[i], scale) >> shift);
        if (scale > 0 ? d <= 0 : d >= 0) break;
    }
    return i;
}

// Coefficients of the preselection, Table 7 of the reference: words in Q10, Q14, Q16, and two longs
// in Q30 and Q35.
constexpr Word kCoef00 = 31881, kCoef10 = 31548, kInverse = -17103;
constexpr Long kCoef01 = 1731217536, kCoef11 = 1822990272;

struct Window {
    std::size_t first, second;
};

Window preselect(BestGains best, Word codeGain_Q4) noexcept
{
    const auto c = codeGain_Q4;
    const Long pitch = fx::l_mult(kCoef00, best.pitch_Q9);
    Word u = fx::extract_h(fx::l_add(pitch, kCoef11 >> 15));
    Long t = fx::l_sub(fx::l_shl(best.code_Q2, 7), fx::l_mult(u, c));
    const Long x = fx::l_mult(fx::extract_h(fx::l_shl(t, 2)), kInverse);
    u = fx::mult(fx::extract_h(fx::l_sub(pitch, kCoef01 >> 10)), c);
    t = fx::l_sub(fx::l_mult(u, kCoef10), fx::l_mult(kCoef00, best.code_Q2) >> 3);
    const Long y = fx::l_mult(fx::extract_h(fx::l_shl(t, 2)), kInverse);
    return {beyond(y, kGainThreshold1, c, 3), beyond(x, kGainThreshold2, c, 5)};
}

} // namespace

GainSums gainSums(const PitchSums& pitch, In<kSubframe> target, In<kSubframe> adaptive,
                  In<kSubframe> fixed) noexcept
{
    std::array<Word, kSubframe> z;
    std::ranges::transform(fixed, z.begin(), [](Word v) { return fx::shr(v, 3); });
    const Scaled energy = scaled(z, z, 1), withTarget = scaled(target, z, 1),
                 between = scaled(adaptive, z, 1);
    return {{pitch.energy, fx::negate(pitch.correlation), energy.value,
             fx::negate(withTarget.value), between.value},
            {fx::negate(pitch.energyExponent), fx::negate(fx::add(pitch.correlationExponent, 1)),
             static_cast<Word>(energy.exponent + 3), static_cast<Word>(withTarget.exponent - 7),
             static_cast<Word>(between.exponent - 7)}};
}

int quantiseGains(const GainSums& g, bool isTamed, In<kSubframe> code, Out<4> past,
                  Gains& gains) noexcept
{
    const PredictedGain predicted = predictCodeGain(code, past);
    const int q = predicted.q;
    const Word predicted_Q4 = q >= 4 ? fx::shr(predicted.mantissa, q - 4)
                                     : fx::extract_h(fx::l_shl(predicted.mantissa, 20 - q));
    const Window window = preselect(bestGains(g, isTamed), predicted_Q4);

    const auto& x = g.exponents;
    const std::array<int, 5> exponents = {x[0] + 13, x[1] + 14, x[2] + 2 * q - 21, x[3] + q - 3,
                                          x[4] + q - 4};
    const int least = *std::ranges::min_element(exponents);
    std::array<fx::SplitLong, 5> k;
    for (std::size_t i = 0; i < k.size(); ++i)
        k[i] = fx::l_extract(fx::l_shr(fx::l_deposit_h(g.sums[i]), exponents[i] - least));

    Long smallest = fx::kMax32;
    std::size_t bestA = window.first, bestB = window.second;
    for (std::size_t a = window.first; a < window.first + 4; ++a) {
        for (std::size_t b = window.second; b < window.second + 8; ++b) {
            const Word p = fx::add(kGainBook1[a].pitch_Q14, kGainBook2[b].pitch_Q14);
            if (isTamed && p >= 16383) continue;
            const auto c =
                static_cast<Word>((kGainBook1[a].code_Q13 + kGainBook2[b].code_Q13) >> 1);
            const Word u = fx::mult(predicted.mantissa, c);
            Long d = fx::mpy_32_16(k[0], fx::mult(p, p));
            d = fx::l_add(d, fx::mpy_32_16(k[1], p));
            d = fx::l_add(d, fx::mpy_32_16(k[2], fx::mult(u, u)));
            d = fx::l_add(d, fx::mpy_32_16(k[3], u));
            d = fx::l_add(d, fx::mpy_32_16(k[4], fx::mult(u, p)));
            if (fx::l_sub(d, smallest) < 0) {
                smallest = d;
                bestA = a;
                bestB = b;
            }
        }
    }
    gains.pitch_Q14 = fx::add(kGainBook1[bestA].pitch_Q14, kGainBook2[bestB].pitch_Q14);
    const Long correction_Q13 = kGainBook1[bestA].code_Q13 + kGainBook2[bestB].code_Q13;
    const Long product = fx::l_mult(fx::extract_l(correction_Q13 >> 1), predicted.mantissa);
    gains.code_Q1 = fx::extract_h(fx::l_shl(product, 4 - q));
    updateGainMemory(correction_Q13, past);
    return kGainCode1[bestA] * 16 + kGainCode2[bestB];
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsGainCorrelation_G729_16s(const std::int16_t* pitchSums, const std::int16_t* target,
                                       const std::int16_t* adaptive, const std::int16_t* fixed,
                                       std::int16_t* sums, std::int16_t* exponents)
{
    if (!pitchSums || !target || !adaptive || !fixed || !sums || !exponents)
        return zspStsNullPtrErr;

    const g729::PitchSums pitch = {pitchSums[0], pitchSums[1], pitchSums[2], pitchSums[3]};
    const g729::GainSums g =
        g729::gainSums(pitch, spanOf<g729::kSubframe>(target), spanOf<g729::kSubframe>(adaptive),
                       spanOf<g729::kSubframe>(fixed));
    std::ranges::copy(g.sums, sums);
    std::ranges::copy(g.exponents, exponents);
    return zspStsNoErr;
}

ZspStatus zspsGainQuant_G729_16s(const std::int16_t* sums, const std::int16_t* exponents,
                                 std::int32_t tame, const std::int16_t* code, std::int16_t* past,
                                 std::int16_t* pitchGain, std::int16_t* codeGain,
                                 std::int16_t* index)
{
    if (!sums || !exponents || !code || !past || !pitchGain || !codeGain || !index)
        return zspStsNullPtrErr;
    const auto isExponent = [](std::int16_t x) { return x >= -100 && x <= 100; };
    if (!std::all_of(exponents, exponents + 5, isExponent)) return zspStsRangeErr;

    g729::GainSums g;
    std::copy_n(sums, 5, g.sums.begin());
    std::copy_n(exponents, 5, g.exponents.begin());
    g729::Gains gains{};
    *index = static_cast<std::int16_t>(
        g729::quantiseGains(g, tame != 0, spanOf<g729::kSubframe>(code), spanOf<4>(past), gains));
    *pitchGain = gains.pitch_Q14;
    *codeGain = gains.code_Q1;
    return zspStsNoErr;
}

} // namespace zsp::entry
