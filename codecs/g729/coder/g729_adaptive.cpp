// The adaptive codebook of an encoder of ITU-T G.729: the lag in steps of a third of a sample
// (clauses 3.7 and A.3.7), the gain of the vector found (3.7.3), and what keeps errors of the past
// excitation from growing without end.

#include "codecs/g729/coder/g729_lagsearch.hpp"
#include "codecs/g729/coder/g729_sums.hpp"
#include "codecs/g729/tables/g729_pitch_tables.hpp"
#include "common/math/inv_sqrt.hpp"
#include "core/entries.hpp"

#include <algorithm>
#include <array>

namespace zsp::g729 {

void convolveScalar(In<kSubframe> x, In<kSubframe> h, Out<kSubframe> y) noexcept
{
    for (std::size_t n = 0; n < kSubframe; ++n) {
        Long sum = 0;
        for (std::size_t i = 0; i <= n; ++i)
            sum = fx::l_mac(sum, x[i], h[n - i]);
        y[n] = fx::extract_h(fx::l_shl(sum, 3));
    }
}

namespace {

/// Norm_Corr: correlations of the target with the filtered past excitation, each divided by the
/// root of its energy, for `count` lags from `first` on.
void normalisedCorrelations(In<kSubframe> target, In<kSubframe> h, int first, std::size_t count,
                            const Word* e, std::array<Word, kLagCorrelations>& corr) noexcept
{
    std::array<Word, kSubframe> filtered;
    convolveScalar(spanOf<kSubframe>(e - first), h, filtered);
    int shift = 0, up = 3;
    if (celp::energy(filtered) > 67108864) {
        shift = 2;
        up = 1;
        for (Word& v : filtered)
            v = fx::shr(v, shift);
    }
    for (std::size_t k = 0; k < count; ++k) {
        const Long root = common::invSqrt(celp::energy(filtered));
        const Long sum = celp::dot(target, filtered.data());
        corr[k] =
            fx::extract_h(fx::l_shl(celp::mpy_32(fx::l_extract(sum), fx::l_extract(root)), 16));
        if (k + 1 == count) break;
        const Word next = *(e - (first + static_cast<int>(k) + 1));
        for (std::size_t j = kSubframe - 1; j > 0; --j)
            filtered[j] =
                fx::add(fx::extract_h(fx::l_shl(fx::l_mult(next, h[j]), up)), filtered[j - 1]);
        filtered[0] = fx::shr(next, shift);
    }
}

/// Interpol_3: a correlation `fraction` thirds beyond x.
Word between(const Word* x, int fraction) noexcept
{
    const auto& c = kInterpolateCorrelation;
    if (fraction < 0) {
        fraction += 3;
        --x;
    }
    const auto phase = static_cast<std::size_t>(fraction);
    Long sum = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        sum = fx::l_mac(sum, *(x - i), c[phase + 3 * i]);
        sum = fx::l_mac(sum, x[1 + i], c[3 - phase + 3 * i]);
    }
    return fx::round_fx(sum);
}

} // namespace

Lag refineLag(const Word* corr, int lag) noexcept
{
    int best = -2;
    Word most = between(corr, -2);
    for (int f = -1; f <= 2; ++f)
        if (const Word value = between(corr, f); value > most) {
            most = value;
            best = f;
        }
    if (best == -2) return {static_cast<Word>(lag - 1), 1};
    if (best == 2) return {static_cast<Word>(lag + 1), -1};
    return {static_cast<Word>(lag), static_cast<Word>(best)};
}

Lag adaptiveSearchScalar(In<kSubframe> target, In<kSubframe> response, int first, int last,
                         bool isFirst, Excitation excitation) noexcept
{
    return searchLag(normalisedCorrelations, target, response, first, last, isFirst, excitation);
}

Lag adaptiveSearchAScalar(In<kSubframe> correlation, int first, int last, bool isFirst,
                          Excitation excitation) noexcept
{
    return searchLagA([](In<kSubframe> x, const Word* y) { return celp::dot(x, y); }, correlation,
                      first, last, isFirst, excitation);
}

PitchSums pitchSums(In<kSubframe> target, In<kSubframe> filtered) noexcept
{
    std::array<Word, kSubframe> quarter;
    std::ranges::transform(filtered, quarter.begin(), [](Word v) { return fx::shr(v, 2); });

    celp::MarkedSum energy = fastDot(filtered, filtered, 1);
    int energyShift = 0, shift = 0;
    if (energy.overflowed) {
        energy.value = celp::energy(quarter, 1);
        energyShift = -4;
    }
    const int energyNorm = fx::norm_l(energy.value);
    celp::MarkedSum sum = fastDot(target, filtered, 0);
    if (sum.overflowed) {
        sum.value = celp::dot(target, quarter.data());
        shift = -2;
    }
    const int norm = fx::norm_l(sum.value);
    const Word correlation = fx::round_fx(fx::l_shl(sum.value, norm));
    return {fx::round_fx(fx::l_shl(energy.value, energyNorm)),
            static_cast<Word>(15 - (energyNorm + energyShift)), correlation,
            static_cast<Word>(correlation <= 0 ? -15 : 15 - (norm + shift))};
}

Word pitchGain(const PitchSums& s) noexcept
{
    if (s.correlation <= 0) return 0;
    const Word gain = fx::shr(fx::div_s(static_cast<Word>(s.correlation >> 1), s.energy),
                              s.energyExponent - s.correlationExponent);
    return std::min<Word>(gain, 19661);
}

bool needsTaming(std::span<const Long, 4> errors, Lag lag) noexcept
{
    const int longest = lag.whole + (lag.thirds > 0 ? 1 : 0);
    const auto from = static_cast<std::size_t>(std::max(longest - 50, 0) / 40);
    const auto to = static_cast<std::size_t>((longest + 8) / 40);
    for (std::size_t zone = from; zone <= to; ++zone)
        if (errors[zone] > 983040000) return true;
    return false;
}

void updateTaming(Word gain_Q14, Word lag, TamingErrors errors) noexcept
{
    const auto grow = [gain_Q14](Long error) {
        return fx::l_add(16384, fx::l_shl(fx::mpy_32_16(error, gain_Q14), 1));
    };
    Long most = -1;
    if (lag < static_cast<Word>(kSubframe)) {
        const Long once = grow(errors[0]);
        most = std::max({most, once, grow(once)});
    } else {
        const auto from = static_cast<std::size_t>((lag - 40) / 40);
        const auto to = static_cast<std::size_t>((lag - 1) / 40);
        for (std::size_t zone = from; zone <= to; ++zone)
            most = std::max(most, grow(errors[zone]));
    }
    std::copy_backward(errors.begin(), errors.end() - 1, errors.end());
    errors[0] = most;
}

} // namespace zsp::g729

namespace zsp::entry {

namespace {

bool isRange(std::int32_t first, std::int32_t last)
{
    return first >= 20 && last <= 143 && last >= first && last - first < g729::kMostLags;
}

bool isCodedLag(std::int32_t lag)
{
    return lag >= g729::kLowestLag && lag <= g729::kHighestLag;
}

g729::Excitation excitationAt(std::int16_t* words)
{
    return spanOf<g729::kPast + g729::kSubframe>(words);
}

} // namespace

ZspStatus zspsConvPartial_G729_16s(const std::int16_t* src, const std::int16_t* response,
                                   std::int16_t* dst)
{
    if (!src || !response || !dst) return zspStsNullPtrErr;

    g729::convolveAvx2(spanOf<g729::kSubframe>(src), spanOf<g729::kSubframe>(response),
                       spanOf<g729::kSubframe>(dst));
    return zspStsNoErr;
}

ZspStatus zspsAdaptiveCodebookSearch_G729_16s(const std::int16_t* target,
                                              const std::int16_t* response, std::int32_t lagMin,
                                              std::int32_t lagMax, std::int32_t subframe,
                                              std::int16_t* srcDst, std::int16_t* lag,
                                              std::int16_t* fraction)
{
    if (!target || !response || !srcDst || !lag || !fraction) return zspStsNullPtrErr;
    if (!isRange(lagMin, lagMax)) return zspStsCodecRangeErr;
    if (subframe != 0 && subframe != 1) return zspStsCodecRangeErr;

    const g729::Lag found =
        g729::adaptiveSearchAvx2(spanOf<g729::kSubframe>(target), spanOf<g729::kSubframe>(response),
                                 lagMin, lagMax, subframe == 0, excitationAt(srcDst));
    *lag = found.whole;
    *fraction = found.thirds;
    return zspStsNoErr;
}

ZspStatus zspsAdaptiveCodebookSearch_G729A_16s(const std::int16_t* corr, std::int32_t lagMin,
                                               std::int32_t lagMax, std::int32_t subframe,
                                               std::int16_t* srcDst, std::int16_t* lag,
                                               std::int16_t* fraction)
{
    if (!corr || !srcDst || !lag || !fraction) return zspStsNullPtrErr;
    if (!isRange(lagMin, lagMax)) return zspStsCodecRangeErr;
    if (subframe != 0 && subframe != 1) return zspStsCodecRangeErr;

    const g729::Lag found = g729::adaptiveSearchAAvx2(spanOf<g729::kSubframe>(corr), lagMin, lagMax,
                                                      subframe == 0, excitationAt(srcDst));
    *lag = found.whole;
    *fraction = found.thirds;
    return zspStsNoErr;
}

ZspStatus zspsAdaptiveCodebookGain_G729_16s(const std::int16_t* target,
                                            const std::int16_t* filtered, std::int16_t* sums,
                                            std::int16_t* gain)
{
    if (!target || !filtered || !sums || !gain) return zspStsNullPtrErr;

    const g729::PitchSums s =
        g729::pitchSums(spanOf<g729::kSubframe>(target), spanOf<g729::kSubframe>(filtered));
    sums[0] = s.energy;
    sums[1] = s.energyExponent;
    sums[2] = s.correlation;
    sums[3] = s.correlationExponent;
    *gain = g729::pitchGain(s);
    return zspStsNoErr;
}

ZspStatus zspsTamingTest_G729_32s(const std::int32_t* errors, std::int32_t lag,
                                  std::int32_t fraction, std::int32_t* tame)
{
    if (!errors || !tame) return zspStsNullPtrErr;
    if (!isCodedLag(lag) || fraction < -1 || fraction > 1) return zspStsCodecRangeErr;

    *tame = g729::needsTaming(spanOf<4>(errors),
                              {static_cast<g729::Word>(lag), static_cast<g729::Word>(fraction)});
    return zspStsNoErr;
}

ZspStatus zspsTamingUpdate_G729_32s_I(std::int16_t gain, std::int32_t lag, std::int32_t* errors)
{
    if (!errors) return zspStsNullPtrErr;
    if (!isCodedLag(lag)) return zspStsCodecRangeErr;

    g729::updateTaming(gain, static_cast<g729::Word>(lag), spanOf<4>(errors));
    return zspStsNoErr;
}

} // namespace zsp::entry
