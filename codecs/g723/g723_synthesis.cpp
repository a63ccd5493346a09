// The filters of a decoder of ITU-T G.723.1 over sub-frames of 60: synthesis (clause 3.7), formant
// post-filter (3.8) and gain control (3.9).

#include "codecs/g723/g723.hpp"
#include "core/entries.hpp"

#include <array>

namespace zsp::g723 {

void synthesisFilterScalar(In<kOrder> lpc_Q13, In<kSubframe> src, Out<kSubframe> dst,
                           Out<kOrder> memory) noexcept
{
    for (std::size_t i = 0; i < kSubframe; ++i) {
        const Long sum = dot(lpc_Q13, memory.data(), fx::l_deposit_h(src[i]) >> 3);
        shiftIn(memory, fx::round_fx(fx::l_shl(sum, 2)));
        dst[i] = memory[0];
    }
}

namespace {

/// First reflection coefficient and energy of a sub-frame.
struct Tilt {
    Word reflection_Q15;
    Long energy;
};

Tilt tiltOf(In<kSubframe> samples) noexcept
{
    std::array<Word, kSubframe> v;
    std::ranges::copy(samples, v.begin());
    const int shift = normalise(v);
    const Long neighbours = dot(std::span(v).last<kSubframe - 1>(), v.data());
    const Long own = energy(v);
    Tilt t{0, fx::l_shr(own, 2 * shift + 4)};
    if (const Word upper = fx::extract_h(own); upper != 0) {
        const Long half = neighbours >> 1;
        const Word ratio = div_l(fx::l_abs(half), upper);
        t.reflection_Q15 = half < 0 ? fx::negate(ratio) : ratio;
    }
    return t;
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
    Word& tilt = memory[20];

    const Tilt t = tiltOf(src);
    tilt = fx::round_fx(
        fx::l_mac(fx::l_msu(fx::l_deposit_h(tilt), tilt, 8192), t.reflection_Q15, 8192));
    const auto against = static_cast<Word>(fx::mult(tilt, -16384) & -4);
    for (std::size_t i = 0; i < kSubframe; ++i) {
        const Word x = src[i];
        Long sum = fx::l_deposit_h(x) >> 2;
        for (std::size_t j = 0; j < kOrder; ++j)
            sum = fx::l_msu(sum, zeros[j], inputs[j]);
        shiftIn(inputs, x);
        sum = fx::l_shl(dot(poles, outputs.data(), sum), 2);
        dst[i] = fx::round_fx(fx::l_mac(sum, outputs[0], against));
        shiftIn(outputs, fx::round_fx(sum));
    }
    return t.energy;
}

void gainControlScalar(Out<kSubframe> samples, Long wanted, Word& gain) noexcept
{
    Long has = 0;
    for (const Word x : samples)
        has = fx::l_mac(has, static_cast<Word>(x >> 2), static_cast<Word>(x >> 2));
    Word target = 4096;
    if (has != 0 && wanted != 0) {
        const int n1 = fx::norm_l(has), n0 = fx::norm_l(wanted);
        const Word ratio = div_l(fx::l_shl(wanted, n0) >> 1, fx::extract_h(fx::l_shl(has, n1)));
        target = sqrt_l(fx::l_shr(fx::l_deposit_h(ratio), std::max(0, 6 - (n1 - n0 + 1))));
    }
    for (Word& x : samples) {
        gain = fx::round_fx(fx::l_mac(fx::l_msu(fx::l_deposit_h(gain), gain, 2048), target, 2048));
        const Word raised = fx::add(gain, static_cast<Word>(gain >> 4));
        x = fx::round_fx(fx::l_shl(fx::l_mult(x, raised), 4));
    }
}

} // namespace zsp::g723

namespace zsp::entry {

ZspStatus zspsSynthesisFilter_G723_16s(const std::int16_t* lpc, const std::int16_t* src,
                                       std::int16_t* dst, std::int16_t* memory)
{
    if (!lpc || !src || !dst || !memory) return zspStsNullPtrErr;

    g723::synthesisFilterScalar(spanOf<10>(lpc), spanOf<60>(src), spanOf<60>(dst),
                                spanOf<10>(memory));
    return zspStsNoErr;
}

ZspStatus zspsFormantPostFilter_G723_16s(const std::int16_t* lpc, const std::int16_t* src,
                                         std::int16_t* dst, std::int32_t* energy,
                                         std::int16_t* memory)
{
    if (!lpc || !src || !dst || !energy || !memory) return zspStsNullPtrErr;

    *energy = g723::formantPostFilterScalar(spanOf<10>(lpc), spanOf<60>(src), spanOf<60>(dst),
                                            spanOf<21>(memory));
    return zspStsNoErr;
}

ZspStatus zspsGainControl_G723_16s_I(std::int16_t* srcDst, std::int32_t energy, std::int16_t* gain)
{
    if (!srcDst || !gain) return zspStsNullPtrErr;
    if (energy < 0) return zspStsRangeErr;

    g723::gainControlScalar(spanOf<60>(srcDst), energy, *gain);
    return zspStsNoErr;
}

} // namespace zsp::entry
