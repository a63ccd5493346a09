// The post-filter of ITU-T G.729 Annex A, clause A.4.2: a whole number of samples of delay, tilt by
// the response's first two correlations, and gain control by energies.

#include "codecs/g729/decoder/g729_decoder.hpp"
#include "common/math/inv_sqrt.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <cassert>

namespace zsp::g729 {

namespace {

/// The shares of the residual and of what lies the delay before, Q15.
struct Shares {
    Word own, past;
};

/// From the largest correlation and both energies; none of the past where it explains little.
Shares sharesOf(Long cross, Long past, Long own) noexcept
{
    const int shift = fx::norm_l(std::max({cross, past, own}));
    const Word c = fx::round_fx(fx::l_shl(cross, shift));
    const Word e = fx::round_fx(fx::l_shl(past, shift));
    const Word e0 = fx::round_fx(fx::l_shl(own, shift));
    if (fx::l_sub(fx::l_mult(c, c), fx::l_mult(e, e0) >> 1) < 0) return {fx::kMax16, 0};
    if (c > e) return {21845, 10923}; // 1 / (1 + 0.5)
    const auto half = static_cast<Word>(fx::mult(c, 16384) >> 1);
    const Word sum = fx::add(half, static_cast<Word>(e >> 1));
    if (sum <= 0) return {fx::kMax16, 0};
    const Word gain = fx::div_s(half, sum);
    return {fx::sub(fx::kMax16, gain), gain};
}

struct Range {
    int first, last;
};

Range rangeAround(Word lag) noexcept
{
    return lag > 140 ? Range{137, 143} : Range{lag - 3, lag + 3};
}

} // namespace

void longTermPostFilterAScalar(Word lag, PostResidualA residual, Out<kSubframe> dst) noexcept
{
    assert(lag >= kLowestLag && lag <= kHighestLag);
    std::array<Word, kResidualPastA + kSubframe> quarters;
    std::ranges::transform(residual, quarters.begin(),
                           [](Word x) { return static_cast<Word>(x >> 2); });
    const Word* q = &quarters[kResidualPastA];
    const std::span<const Word> now(q, kSubframe);
    const auto [first, last] = rangeAround(lag);
    int best = first;
    Long cross = fx::kMin32;
    for (int t = first; t <= last; ++t)
        if (const Long sum = celp::dot(now, q - t); sum > cross) {
            cross = sum;
            best = t;
        }
    const Long past = celp::energy({q - best, kSubframe}, 1), own = celp::energy(now, 1);
    const Shares s = sharesOf(std::max<Long>(cross, 0), past, own);
    const Word* r = &residual[kResidualPastA];
    if (s.past == 0 && s.own == fx::kMax16) {
        std::copy_n(r, kSubframe, dst.begin());
        return;
    }
    for (std::size_t n = 0; n < kSubframe; ++n)
        dst[n] = fx::add(fx::mult(s.own, *(r + n)), fx::mult(s.past, *(r + n - best)));
}

namespace {

constexpr std::size_t kResponseA = 22;

/// How much of the sample before is taken away.
Word tiltOfA(In<kTaps> zeros_Q12, In<kTaps> poles_Q12) noexcept
{
    std::array<Word, kResponseA> h{};
    std::array<Word, kOrder> memory{};
    std::ranges::copy(zeros_Q12, h.begin());
    celp::synthesis(poles_Q12, h, h.data(), memory);
    const Word own = fx::extract_h(celp::energy(h));
    const Word next = fx::extract_h(celp::dot(std::span(h).first<kResponseA - 1>(), &h[1]));
    if (next <= 0) return 0;
    const Word part = fx::mult(next, 26214);
    return part >= own ? fx::kMax16 : fx::div_s(part, own);
}

} // namespace

void tiltCompensationA(In<kTaps> zeros_Q12, In<kTaps> poles_Q12, Out<kSubframe> samples,
                       Word& last) noexcept
{
    const Word tilt = tiltOfA(zeros_Q12, poles_Q12);
    const Word newest = samples[kSubframe - 1];
    for (std::size_t n = kSubframe - 1; n > 0; --n)
        samples[n] = fx::sub(samples[n], fx::mult(tilt, samples[n - 1]));
    samples[0] = fx::sub(samples[0], fx::mult(tilt, last));
    last = newest;
}

namespace {

/// The root of the quotient of both energies, of which a sub-frame's last sample has about the
/// whole.
Word targetOfA(Long before, Long after) noexcept
{
    if (before == 0) return 0;
    const int shiftAfter = fx::norm_l(after) - 1, shiftBefore = fx::norm_l(before);
    const Word out = fx::round_fx(fx::l_shl(after, shiftAfter));
    const Word in = fx::round_fx(fx::l_shl(before, shiftBefore));
    const Long ratio = fx::l_shr(fx::l_shl(fx::div_s(out, in), 7), shiftAfter - shiftBefore);
    return fx::mult(fx::round_fx(fx::l_shl(common::invSqrt(ratio), 9)), 3276);
}

Long quarterEnergy(In<kSubframe> x) noexcept
{
    Long sum = 0;
    for (const Word v : x)
        sum = fx::l_mac(sum, static_cast<Word>(v >> 2), static_cast<Word>(v >> 2));
    return sum;
}

} // namespace

void gainControlAScalar(In<kSubframe> before, Out<kSubframe> samples, Word& gain_Q12) noexcept
{
    const Long out = quarterEnergy(samples);
    if (out == 0) {
        gain_Q12 = 0;
        return;
    }
    const Word target = targetOfA(quarterEnergy(before), out);
    for (Word& x : samples) {
        gain_Q12 = fx::add(fx::mult(gain_Q12, 29491), target);
        x = fx::extract_h(fx::l_shl(fx::l_mult(x, gain_Q12), 3));
    }
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsLongTermPostFilter_G729A_16s(std::int32_t lag, const std::int16_t* src,
                                           std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (lag < g729::kLowestLag || lag > g729::kHighestLag) return zspStsCodecRangeErr;

    g729::longTermPostFilterAScalar(static_cast<std::int16_t>(lag), spanOf<183>(src),
                                    spanOf<40>(dst));
    return zspStsNoErr;
}

ZspStatus zspsTiltCompensation_G729A_16s_I(const std::int16_t* zeros, const std::int16_t* poles,
                                           std::int16_t* srcDst, std::int16_t* last)
{
    if (!zeros || !poles || !srcDst || !last) return zspStsNullPtrErr;

    g729::tiltCompensationA(spanOf<11>(zeros), spanOf<11>(poles), spanOf<40>(srcDst), *last);
    return zspStsNoErr;
}

ZspStatus zspsShortTermPostFilter_G729A_16s(const std::int16_t* poles, const std::int16_t* src,
                                            std::int16_t* dst, std::int16_t* memory)
{
    if (!poles || !src || !dst || !memory) return zspStsNullPtrErr;

    celp::synthesis(spanOf<11>(poles), spanOf<40>(src), dst, spanOf<10>(memory));
    return zspStsNoErr;
}

ZspStatus zspsGainControl_G729A_16s_I(const std::int16_t* src, std::int16_t* srcDst,
                                      std::int16_t* gain)
{
    if (!src || !srcDst || !gain) return zspStsNullPtrErr;

    g729::gainControlAScalar(spanOf<40>(src), spanOf<40>(srcDst), *gain);
    return zspStsNoErr;
}

} // namespace zsp::entry
