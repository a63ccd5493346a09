// The filters of a decoder of ITU-T G.723.1 over sub-frames of 60: synthesis (clause 3.7), formant
// post-filter (3.8) and gain control (3.9).

#include "codecs/g723/g723.hpp"
#include "codecs/g723/g723_fast.hpp"
#include "core/entries.hpp"

#include <array>

namespace zsp::g723 {

void synthesisFilterScalar(In<kOrder> lpc_Q13, In<kSubframe> src, Out<kSubframe> dst,
                           Out<kOrder> memory) noexcept
{
    for (std::size_t i = 0; i < kSubframe; ++i) {
        const Long sum = dot(lpc_Q13, memory.data(), fx::l_deposit_h(src[i]) >> 3);
        push(memory, fx::round_fx(fx::l_shl(sum, 2)));
        dst[i] = memory[0];
    }
}

namespace {

/// First reflection coefficient and energy of a sub-frame.
struct Tilt {
    Word reflection_Q15;
    Long energy;
};

Tilt tiltFrom(Long neighbours, Long own, int shift) noexcept
{
    Tilt t{0, fx::l_shr(own, 2 * shift + 4)};
    if (const Word upper = fx::extract_h(own); upper != 0) {
        const Long half = neighbours >> 1;
        const Word ratio = div_l(fx::l_abs(half), upper);
        t.reflection_Q15 = half < 0 ? fx::negate(ratio) : ratio;
    }
    return t;
}

Tilt tiltOf(In<kSubframe> samples) noexcept
{
    std::array<Word, kSubframe> v;
    std::ranges::copy(samples, v.begin());
    const int shift = normalise(v);
    const Long neighbours = dot(std::span(v).last<kSubframe - 1>(), v.data());
    return tiltFrom(neighbours, energy(v), shift);
}

/// Lets the smoothed tilt go on; what the filter adds of the sample before.
Word followTilt(Word& tilt, const Tilt& t) noexcept
{
    tilt = fx::round_fx(
        fx::l_mac(fx::l_msu(fx::l_deposit_h(tilt), tilt, 8192), t.reflection_Q15, 8192));
    return static_cast<Word>(fx::mult(tilt, -16384) & -4);
}

} // namespace

Long formantPostFilterScalar(In<kOrder> lpc_Q13, In<kSubframe> src, Out<kSubframe> dst,
                             Out<kPostFilterMemory> memory) noexcept
{
    std::array<Word, kOrder> zeros{}, poles{};
    for (std::size_t j = 0; j < kOrder; ++j) {
        zeros[j] = fx::mult_r(lpc_Q13[j], kPostFilterZero[j]);
        poles[j] = fx::mult_r(lpc_Q13[j], kPostFilterPole[j]);
    }
    const Out<kOrder> inputs = memory.first<10>(), outputs = memory.subspan<10, 10>();

    const Tilt t = tiltOf(src);
    const Word against = followTilt(memory[20], t);
    for (std::size_t i = 0; i < kSubframe; ++i) {
        const Word x = src[i];
        Long sum = fx::l_deposit_h(x) >> 2;
        for (std::size_t j = 0; j < kOrder; ++j)
            sum = fx::l_msu(sum, zeros[j], inputs[j]);
        push(inputs, x);
        sum = fx::l_shl(dot(poles, outputs.data(), sum), 2);
        dst[i] = fx::round_fx(fx::l_mac(sum, outputs[0], against));
        push(outputs, fx::round_fx(sum));
    }
    return t.energy;
}

namespace {

/// The gain that gives an energy the wanted one, Q12.
Word gainTarget(Long has, Long wanted) noexcept
{
    if (has == 0 || wanted == 0) return 4096;
    const int n1 = fx::norm_l(has), n0 = fx::norm_l(wanted);
    const Word ratio = div_l(fx::l_shl(wanted, n0) >> 1, fx::extract_h(fx::l_shl(has, n1)));
    return sqrt_l(fx::l_shr(fx::l_deposit_h(ratio), std::max(0, 6 - (n1 - n0 + 1))));
}

} // namespace

void gainControlScalar(Out<kSubframe> samples, Long wanted, Word& gain) noexcept
{
    Long has = 0;
    for (const Word x : samples)
        has = fx::l_mac(has, static_cast<Word>(x >> 2), static_cast<Word>(x >> 2));
    const Word target = gainTarget(has, wanted);
    for (Word& x : samples) {
        gain = fx::round_fx(fx::l_mac(fx::l_msu(fx::l_deposit_h(gain), gain, 2048), target, 2048));
        const Word raised = fx::add(gain, static_cast<Word>(gain >> 4));
        x = fx::round_fx(fx::l_shl(fx::l_mult(x, raised), 4));
    }
}

// The fast forms: sums that wrap, whose reach tells afterwards that no step would have saturated.

void synthesisFilterFast(In<kOrder> lpc_Q13, In<kSubframe> src, Out<kSubframe> dst,
                         Out<kOrder> memory) noexcept
{
    const Taps taps(lpc_Q13);
    Signal y;
    y.begin(memory.data());
    for (std::size_t i = 0; i < kSubframe; ++i)
        y[i] = outputOf(static_cast<std::uint32_t>(src[i] * 8192) + taps.over(y, i));
    if ((1 << 28) + taps.reach(y) > kReach) return synthesisFilterScalar(lpc_Q13, src, dst, memory);
    for (std::size_t i = 0; i < kSubframe; ++i)
        dst[i] = static_cast<Word>(y[i]);
    y.end(memory.data());
}

namespace {

/// As tiltOf(): 60 squares of 13 bits leave room for their doubled sum.
Tilt tiltAvx2(In<kSubframe> samples) noexcept
{
    std::array<Word, kSubframe> v;
    std::ranges::copy(samples, v.begin());
    const int shift = normalise(v);
    const Long own = 2 * plainDot<kSubframe>(v.data(), v.data());
    const std::array<Word, kSubframe> later = [&v] {
        std::array<Word, kSubframe> moved{};
        std::copy(v.begin() + 1, v.end(), moved.begin());
        return moved;
    }();
    return tiltFrom(2 * plainDot<kSubframe>(v.data(), later.data()), own, shift);
}

} // namespace

Long formantPostFilterFast(In<kOrder> lpc_Q13, In<kSubframe> src, Out<kSubframe> dst,
                           Out<kPostFilterMemory> memory) noexcept
{
    std::array<Word, kOrder> zeros{}, poles{};
    for (std::size_t j = 0; j < kOrder; ++j) {
        zeros[j] = fx::mult_r(lpc_Q13[j], kPostFilterZero[j]);
        poles[j] = fx::mult_r(lpc_Q13[j], kPostFilterPole[j]);
    }
    ZerosAndPoles filter;
    if (!filter.run(zeros, poles, src, memory.data()))
        return formantPostFilterScalar(lpc_Q13, src, dst, memory);

    const Tilt t = tiltAvx2(src);
    const Word against = followTilt(memory[20], t);
    for (std::size_t i = 0; i < kSubframe; ++i)
        dst[i] =
            fx::round_fx(fx::l_mac(fx::sat32(4 * std::int64_t{static_cast<Long>(filter.sums[i])}),
                                   static_cast<Word>(filter.y.words[kOrder + i - 1]), against));
    filter.keep(memory.data());
    return t.energy;
}

void gainControlFast(Out<kSubframe> samples, Long wanted, Word& gain) noexcept
{
    std::array<Word, kSubframe> quarters;
    for (std::size_t i = 0; i < kSubframe; ++i)
        quarters[i] = static_cast<Word>(samples[i] >> 2);
    const Word target = gainTarget(fx::sat32(2 * exactEnergy<kSubframe>(quarters.data())), wanted);
    // 15/16 of the gain and 1/16 of the target stay within a word.
    std::array<std::int32_t, kSubframe> raised;
    std::int32_t g = gain;
    for (std::size_t i = 0; i < kSubframe; ++i) {
        g = (g * 61440 + target * 4096 + 0x8000) >> 16;
        raised[i] = std::min(g + (g >> 4), 32767);
    }
    gain = static_cast<Word>(g);
    for (std::size_t i = 0; i < kSubframe; ++i)
        samples[i] = static_cast<Word>(
            std::clamp((samples[i] * std::max(raised[i], -32768) + 1024) >> 11, -32768, 32767));
}

} // namespace zsp::g723

namespace zsp::entry {

ZspStatus zspsSynthesisFilter_G723_16s(const std::int16_t* lpc, const std::int16_t* src,
                                       std::int16_t* dst, std::int16_t* memory)
{
    if (!lpc || !src || !dst || !memory) return zspStsNullPtrErr;

    g723::synthesisFilterFast(spanOf<10>(lpc), spanOf<60>(src), spanOf<60>(dst),
                              spanOf<10>(memory));
    return zspStsNoErr;
}

ZspStatus zspsFormantPostFilter_G723_16s(const std::int16_t* lpc, const std::int16_t* src,
                                         std::int16_t* dst, std::int32_t* energy,
                                         std::int16_t* memory)
{
    if (!lpc || !src || !dst || !energy || !memory) return zspStsNullPtrErr;

    *energy = g723::formantPostFilterFast(spanOf<10>(lpc), spanOf<60>(src), spanOf<60>(dst),
                                          spanOf<21>(memory));
    return zspStsNoErr;
}

ZspStatus zspsGainControl_G723_16s_I(std::int16_t* srcDst, std::int32_t energy, std::int16_t* gain)
{
    if (!srcDst || !gain) return zspStsNullPtrErr;
    if (energy < 0) return zspStsRangeErr;

    g723::gainControlFast(spanOf<60>(srcDst), energy, *gain);
    return zspStsNoErr;
}

} // namespace zsp::entry
