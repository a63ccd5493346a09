// The weighted domain of an encoder of ITU-T G.723.1: perceptual weighting (clause 2.8), harmonic
// noise shaping (2.11), impulse response (2.12), ringing (2.13) and its update (2.19).
//
//   synthesis and weighting of a sub-frame:  1/A(z) . (1 - Z(z)) / (1 - O(z)) . (1 - gain z^-lag)

#include "codecs/g723/g723.hpp"
#include "codecs/g723/g723_fast.hpp"
#include "core/entries.hpp"

#include <array>

namespace zsp::g723 {

void weightingCoefficients(In<kOrder> lpc_Q13, Out<20> dst_Q13) noexcept
{
    for (std::size_t j = 0; j < kOrder; ++j) {
        dst_Q13[j] = fx::mult_r(lpc_Q13[j], kPerceptualZero[j]);
        dst_Q13[kOrder + j] = fx::mult_r(lpc_Q13[j], kPerceptualPole[j]);
    }
}

namespace {

Long subtractDot(Long sum, In<kOrder> a, const Word* x) noexcept
{
    for (std::size_t j = 0; j < kOrder; ++j)
        sum = fx::l_msu(sum, a[j], x[j]);
    return sum;
}

In<kOrder> zerosOf(In<20> weighting) noexcept
{
    return weighting.first<kOrder>();
}

In<kOrder> polesOf(In<20> weighting) noexcept
{
    return weighting.last<kOrder>();
}

/// The memories of synthesis and weighting: `fir` holds what goes into the zeros, `iir` what the
/// poles gave.
struct Cascade {
    std::array<Word, kOrder> fir{}, iir{};

    /// One sample, Q29 in; the last of `iir` is the result. The impulse response alone is doubled
    /// between the two filters.
    void step(Long sum, In<kOrder> lpc_Q13, In<20> weighting, bool doubled) noexcept
    {
        sum = dot(lpc_Q13, fir.data(), sum);
        const Long synthesis = fx::l_shl(sum, 2);
        sum = subtractDot(sum, zerosOf(weighting), fir.data());
        if (doubled) sum = fx::l_shl(sum, 1);
        push(std::span(fir), fx::round_fx(synthesis));
        sum = dot(polesOf(weighting), iir.data(), sum);
        push(std::span(iir), fx::round_fx(fx::l_shl(sum, 2)));
    }
};

} // namespace

void perceptualWeightingScalar(In<20> weighting, In<kSubframe> src, Out<kSubframe> dst,
                               Out<20> memory) noexcept
{
    const Out<kOrder> inputs = memory.first<kOrder>(), outputs = memory.last<kOrder>();
    for (std::size_t i = 0; i < kSubframe; ++i) {
        const Word x = src[i];
        Long sum = subtractDot(fx::l_mult(x, 8192), zerosOf(weighting), inputs.data());
        push(inputs, x);
        sum = dot(polesOf(weighting), outputs.data(), sum);
        push(outputs, fx::round_fx(fx::l_shl(sum, 2)));
        dst[i] = outputs[0];
    }
}

Harmonic harmonicSearch(const Word* x, Word lag) noexcept
{
    constexpr std::size_t kLags = 7;
    std::array<Long, 1 + 2 * kLags> longs{}; // own energy, correlations, energies
    const std::int64_t own = exactEnergy<kSubframe>(x);
    longs[0] = fx::sat32(2 * own);
    for (std::size_t t = 0; t < kLags; ++t) {
        const Word* past = x - lag - static_cast<int>(t) + 3;
        const std::int64_t power = exactEnergy<kSubframe>(past); // squares only saturate at the end
        longs[1 + t] =
            staysSmall(own, power) ? 2 * plainDot<kSubframe>(x, past) : dot({x, kSubframe}, past);
        longs[1 + kLags + t] = fx::sat32(2 * power);
    }
    const int shift = fx::norm_l(largest(longs));
    std::array<Word, longs.size()> words{};
    for (std::size_t i = 0; i < longs.size(); ++i)
        words[i] = fx::round_fx(fx::l_shl(longs[i], shift));

    std::size_t best = kLags;
    Word square = 1, other = fx::kMax16;
    for (std::size_t t = 0; t < kLags; ++t) {
        const Word cross = words[1 + t], power = words[1 + kLags + t];
        if (cross <= 0) continue;
        const Word q = fx::mult_r(cross, cross);
        if (fx::l_msu(fx::l_mult(q, other), power, square) <= 0) continue;
        square = q;
        other = power;
        best = t;
    }
    if (best == kLags) return {lag, 0};

    Harmonic h{static_cast<Word>(lag - 3 + static_cast<int>(best)), 0};
    const Word cross = words[1 + best];
    const Long product = fx::l_mult(words[0], other);
    const Long threshold = fx::l_add(product >> 2, product >> 3);
    if (fx::l_sub(threshold, fx::l_mult(cross, cross)) < 0)
        h.gain_Q15 = cross >= other ? Word{10240} : fx::mult_r(fx::div_s(cross, other), 10240);
    return h;
}

void harmonicFilter(const Word* x, Harmonic h, Out<kSubframe> dst) noexcept
{
    for (std::size_t k = 0; k < kSubframe; ++k)
        dst[k] = fx::round_fx(fx::l_msu(fx::l_deposit_h(x[k]), h.gain_Q15, *(x + k - h.lag)));
}

void impulseResponseScalar(In<kOrder> lpc_Q13, In<20> weighting, Harmonic h,
                           Out<kSubframe> dst) noexcept
{
    Cascade filters;
    std::array<Word, kPast + kSubframe> response{};
    for (std::size_t i = 0; i < kSubframe; ++i) {
        filters.step(i == 0 ? 1 << 26 : 0, lpc_Q13, weighting, true);
        response[kPast + i] = filters.iir[0];
    }
    harmonicFilter(&response[kPast], h, dst);
}

void subtractRingingScalar(In<kOrder> lpc_Q13, In<20> weighting, Harmonic h,
                           In<kRingingMemory> memory, Out<kSubframe> target) noexcept
{
    Cascade filters;
    std::copy_n(memory.begin(), kOrder, filters.fir.begin());
    std::copy_n(memory.begin() + kOrder, kOrder, filters.iir.begin());
    std::array<Word, kPast + kSubframe> ringing{};
    std::copy_n(memory.begin() + 2 * kOrder, kPast, ringing.begin());
    for (std::size_t i = 0; i < kSubframe; ++i) {
        filters.step(0, lpc_Q13, weighting, false);
        ringing[kPast + i] = filters.iir[0];
        const Word past = ringing[kPast + i - static_cast<std::size_t>(h.lag)];
        const Word left = fx::sub(target[i], filters.iir[0]);
        target[i] = fx::round_fx(fx::l_mac(fx::l_deposit_h(left), h.gain_Q15, past));
    }
}

void updateRingingScalar(In<kOrder> lpc_Q13, In<20> weighting, In<kSubframe> excitation,
                         Out<kRingingMemory> memory) noexcept
{
    Cascade filters;
    std::copy_n(memory.begin(), kOrder, filters.fir.begin());
    std::copy_n(memory.begin() + kOrder, kOrder, filters.iir.begin());
    const Out<kPast> past = memory.last<kPast>();
    std::copy(past.begin() + kSubframe, past.end(), past.begin());
    for (std::size_t i = 0; i < kSubframe; ++i) {
        filters.step(fx::l_deposit_h(excitation[i]) >> 3, lpc_Q13, weighting, false);
        past[kPast - kSubframe + i] = filters.iir[0];
    }
    std::ranges::copy(filters.fir, memory.begin());
    std::ranges::copy(filters.iir, memory.begin() + kOrder);
}

} // namespace zsp::g723

namespace zsp::entry {

namespace {

using g723::Harmonic;

/// The caller has 145 samples before the sub-frame, as far back as a lag may point.
bool harmonicFits(std::int16_t lag) noexcept
{
    return lag >= 1 && lag <= 145;
}

} // namespace

ZspStatus zspsWeightingCoefs_G723_16s(const std::int16_t* lpc, std::int16_t* coefs)
{
    if (!lpc || !coefs) return zspStsNullPtrErr;

    g723::weightingCoefficients(spanOf<10>(lpc), spanOf<20>(coefs));
    return zspStsNoErr;
}

ZspStatus zspsPerceptualWeighting_G723_16s(const std::int16_t* coefs, const std::int16_t* src,
                                           std::int16_t* dst, std::int16_t* memory)
{
    if (!coefs || !src || !dst || !memory) return zspStsNullPtrErr;

    g723::perceptualWeightingFast(spanOf<20>(coefs), spanOf<60>(src), spanOf<60>(dst),
                                  spanOf<20>(memory));
    return zspStsNoErr;
}

ZspStatus zspsHarmonicSearch_G723_16s(const std::int16_t* src, std::int16_t lag,
                                      std::int16_t* harmonicLag, std::int16_t* gain)
{
    if (!src || !harmonicLag || !gain) return zspStsNullPtrErr;
    if (lag < 18 || lag > 142) return zspStsCodecRangeErr;

    const Harmonic h = g723::harmonicSearch(src, lag);
    *harmonicLag = h.lag;
    *gain = h.gain_Q15;
    return zspStsNoErr;
}

ZspStatus zspsHarmonicFilter_G723_16s(const std::int16_t* src, std::int16_t lag, std::int16_t gain,
                                      std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (!harmonicFits(lag)) return zspStsCodecRangeErr;

    g723::harmonicFilter(src, {lag, gain}, spanOf<60>(dst));
    return zspStsNoErr;
}

ZspStatus zspsImpulseResponse_G723_16s(const std::int16_t* lpc, const std::int16_t* coefs,
                                       std::int16_t lag, std::int16_t gain, std::int16_t* dst)
{
    if (!lpc || !coefs || !dst) return zspStsNullPtrErr;
    if (!harmonicFits(lag)) return zspStsCodecRangeErr;

    g723::impulseResponseFast(spanOf<10>(lpc), spanOf<20>(coefs), {lag, gain}, spanOf<60>(dst));
    return zspStsNoErr;
}

ZspStatus zspsRingingSubtract_G723_16s_I(const std::int16_t* lpc, const std::int16_t* coefs,
                                         std::int16_t lag, std::int16_t gain,
                                         const std::int16_t* memory, std::int16_t* target)
{
    if (!lpc || !coefs || !memory || !target) return zspStsNullPtrErr;
    if (!harmonicFits(lag)) return zspStsCodecRangeErr;

    g723::subtractRingingFast(spanOf<10>(lpc), spanOf<20>(coefs), {lag, gain}, spanOf<165>(memory),
                              spanOf<60>(target));
    return zspStsNoErr;
}

ZspStatus zspsRingingUpdate_G723_16s(const std::int16_t* lpc, const std::int16_t* coefs,
                                     const std::int16_t* excitation, std::int16_t* memory)
{
    if (!lpc || !coefs || !excitation || !memory) return zspStsNullPtrErr;

    g723::updateRingingFast(spanOf<10>(lpc), spanOf<20>(coefs), spanOf<60>(excitation),
                            spanOf<165>(memory));
    return zspStsNoErr;
}

} // namespace zsp::entry
