// The post-filter of ITU-T G.729 Annex A, clause A.4.2: a whole number of samples of delay, tilt by
// the response's first two correlations, and gain control by energies.

#include "codecs/g729/decoder/g729_decoder.hpp"
#include "codecs/g729/decoder/g729_vectors.hpp"
#include "codecs/shared/words.hpp"
#include "common/math/inv_sqrt.hpp"
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

/// Up to here 40 squares of quarters are below 2^30.
constexpr Word kLargestSafe = 20724;
static_assert(std::int64_t{40} * (kLargestSafe / 4) * (kLargestSafe / 4) < 1 << 30);

void longTermPostFilterAAvx2(Word lag, PostResidualA residual, Out<kSubframe> dst) noexcept
{
    if (codecs::largest(residual) > kLargestSafe)
        return longTermPostFilterAScalar(lag, residual, dst);
    alignas(32) std::array<Word, 192> quarters; // with room behind the sub-frame
    for (std::size_t i = 0; i < residual.size(); ++i)
        quarters[i] = static_cast<Word>(residual[i] >> 2);
    const Word* q = &quarters[kResidualPastA];
    const auto [first, last] = rangeAround(lag);
    const __m256i now0 = avx2::load(q), now1 = avx2::load(q + 16);
    const __m256i now2 = _mm256_zextsi128_si256(avx2::load8(q + 32)); // then zeros
    __m256i sums[8]; // lags from the first on; the sub-frame itself
    for (std::size_t k = 0; k < 8; ++k) {
        const Word* x = k == 7 ? q : q - (first + static_cast<int>(k));
        sums[k] = sumOf3(now0, avx2::load(x), now1, avx2::load(x + 16), now2,
                         _mm256_zextsi128_si256(avx2::load8(x + 32)));
    }
    alignas(32) std::array<Long, 8> totals;
    avx2::store(totals.data(), sumEach(sums));
    const auto best = std::max_element(totals.begin(), totals.begin() + (last - first + 1));
    const int delay = first + static_cast<int>(best - totals.begin());
    const Word* past = q - delay;
    const Shares s =
        sharesOf(std::max<Long>(2 * *best, 0), 2 * dot40(past, past) + 1, 2 * totals[7] + 1);
    const Word* r = &residual[kResidualPastA];
    if (s.past == 0 && s.own == fx::kMax16) {
        std::copy_n(r, kSubframe, dst.begin());
        return;
    }
    const __m256i own = _mm256_set1_epi16(s.own), other = _mm256_set1_epi16(s.past);
    for (const std::size_t n :
         {std::size_t{0}, std::size_t{16}, std::size_t{24}}) // the last two overlap
        avx2::store(&dst[n], _mm256_adds_epi16(avx2::mult(avx2::load(r + n), own),
                                               avx2::mult(avx2::load(r + n - delay), other)));
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
    std::array<Word, kSubframe> before; // mult(tilt, x), which cannot saturate: tilt >= 0
    before[0] = static_cast<Word>((tilt * last) >> 15);
    for (std::size_t n = 1; n < kSubframe; ++n)
        before[n] = static_cast<Word>((tilt * samples[n - 1]) >> 15);
    last = samples[kSubframe - 1];
    for (std::size_t n = 0; n < kSubframe; ++n)
        samples[n] = static_cast<Word>(std::clamp(samples[n] - before[n], -32768, 32767));
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

namespace {

/// Squares of 14 bits: those of 40 words fit 32 bits without a sign, and only the whole saturates.
Long quarterEnergyAvx2(In<kSubframe> x) noexcept
{
    const __m256i a = _mm256_srai_epi16(avx2::load(&x[0]), 2);
    const __m256i b = _mm256_srai_epi16(avx2::load(&x[16]), 2);
    const __m256i c = _mm256_zextsi128_si256(_mm_srai_epi16(avx2::load8(&x[32]), 2));
    const auto sum = static_cast<std::uint32_t>(avx2::sum32(sumOf3(a, a, b, b, c, c)));
    return fx::sat32(2 * std::int64_t{sum});
}

} // namespace

/// The gain never saturates: 0.9 of 32767 and a target of 3275 at most are below it.
void gainControlAFast(In<kSubframe> before, Out<kSubframe> samples, Word& gain_Q12) noexcept
{
    const Long out = quarterEnergyAvx2(samples);
    if (out == 0) {
        gain_Q12 = 0;
        return;
    }
    const std::int32_t target = targetOfA(quarterEnergyAvx2(before), out);
    std::array<std::int32_t, kSubframe> gains;
    std::int32_t g = gain_Q12;
    for (std::int32_t& each : gains)
        each = g = ((29491 * g) >> 15) + target;
    gain_Q12 = static_cast<Word>(g);
    for (std::size_t n = 0; n < kSubframe; ++n)
        samples[n] = static_cast<Word>(std::clamp((gains[n] * samples[n]) >> 12, -32768, 32767));
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsLongTermPostFilter_G729A_16s(std::int32_t lag, const std::int16_t* src,
                                           std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (lag < g729::kLowestLag || lag > g729::kHighestLag) return zspStsCodecRangeErr;

    g729::longTermPostFilterAAvx2(static_cast<std::int16_t>(lag), spanOf<183>(src),
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

    g729::gainControlAFast(spanOf<40>(src), spanOf<40>(srcDst), *gain);
    return zspStsNoErr;
}

} // namespace zsp::entry
