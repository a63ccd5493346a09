// Linear prediction of ITU-T G.729: window and autocorrelation (clause 3.2.1) and the recursion of
// Levinson and Durbin in split longs (clause 3.2.2).

#include "codecs/g729/coder/g729_coder.hpp"
#include "codecs/g729/tables/g729_lp_tables.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <algorithm>
#include <array>
#include <cstring>

namespace zsp::g729 {

namespace {

template <typename Words>
void window(In<240> x, Words& y) noexcept
{
    for (std::size_t n = 0; n < x.size(); ++n)
        y[n] = fx::mult_r(x[n], kWindow[n]);
}

} // namespace

void autoCorrScalar(In<240> x, std::span<Long, kLags> corr, Word& exponent) noexcept
{
    std::array<Word, 240> y;
    window(x, y);
    exponent = 1;
    celp::MarkedSum energy = celp::markedDot(y, y.data(), 1);
    for (; energy.overflowed; energy = celp::markedDot(y, y.data(), 1)) {
        for (Word& v : y)
            v = fx::shr(v, 2);
        exponent = fx::add(exponent, 4);
    }
    const int shift = fx::norm_l(energy.value);
    exponent = static_cast<Word>(exponent - shift);
    corr[0] = fx::l_shl(energy.value, shift);
    for (std::size_t i = 1; i < kLags; ++i)
        corr[i] = fx::l_shl(celp::dot(std::span(y).first(240 - i), &y[i]), shift);
}

void autoCorrAvx2(In<240> x, std::span<Long, kLags> corr, Word& exponent) noexcept
{
    alignas(32) std::array<Word, 240 + 16> y{}; // zeros behind it
    std::int64_t energy = 0;
    const auto mark = [&] {
        energy = 1;
        for (const Word v : std::span(y).first<240>())
            energy += 2 * std::int64_t{v} * v;
        return energy > fx::kMax32;
    };
    window(x, y);
    exponent = 1;
    while (mark()) {
        for (Word& v : y)
            v = static_cast<Word>(v >> 2);
        exponent = static_cast<Word>(exponent + 4);
    }
    const int shift = fx::norm_l(static_cast<Long>(energy));
    exponent = static_cast<Word>(exponent - shift);
    corr[0] = static_cast<Long>(energy) << shift;
    // No sum, nor a part of it, is larger than the energy.
    for (std::size_t i = 1; i < kLags; ++i) {
        __m256i sum = _mm256_setzero_si256();
        for (std::size_t n = 0; n < 240; n += 16)
            sum = _mm256_add_epi32(
                sum, _mm256_madd_epi16(avx2::load(y.data() + n), avx2::load(y.data() + n + i)));
        corr[i] = static_cast<Long>(static_cast<std::uint32_t>(avx2::sum32(sum)) << (shift + 1));
    }
}

void lagWindow(std::span<Long, kLags> corr) noexcept
{
    for (std::size_t i = 1; i < kLags; ++i)
        corr[i] =
            celp::mpy_32(fx::l_extract(corr[i]), {kLagWindowHigh[i - 1], kLagWindowLow[i - 1]});
}

namespace {

using celp::l_comp;
using celp::mpy_32;
using fx::l_extract;
using fx::SplitLong;

/// 1 - k^2
Long remaining(SplitLong k) noexcept
{
    return fx::l_sub(fx::kMax32, fx::l_abs(mpy_32(k, k)));
}

} // namespace

bool levinsonDurbin(std::span<const Long, kTaps> corr, Prediction& p) noexcept
{
    std::array<SplitLong, kTaps> r, a{}, next; // a is Q27
    std::ranges::transform(corr, r.begin(), [](Long x) { return l_extract(x); });
    const auto opposite = [](Long quotient, Long t) { return t > 0 ? -quotient : quotient; };

    const Long first = l_comp(r[1]);
    Long k_Q31 = opposite(celp::div_32(fx::l_abs(first), r[0]), first);
    SplitLong k = l_extract(k_Q31);
    p.reflection_Q15[0] = k.hi;
    a[1] = l_extract(k_Q31 >> 4);
    Long energy = mpy_32(r[0], l_extract(remaining(k)));
    int exponent = fx::norm_l(energy);
    SplitLong alpha = l_extract(fx::l_shl(energy, exponent));
    if (alpha.hi < 16384) return false; // of correlations that no signal has

    for (std::size_t i = 2; i < kTaps; ++i) {
        Long t = 0;
        for (std::size_t j = 1; j < i; ++j)
            t = fx::l_add(t, mpy_32(r[j], a[i - j]));
        t = fx::l_add(fx::l_shl(t, 4), l_comp(r[i]));
        k_Q31 = fx::l_shl(opposite(celp::div_32(fx::l_abs(t), alpha), t), exponent);
        k = l_extract(k_Q31);
        p.reflection_Q15[i - 1] = k.hi;
        if (fx::abs_s(k.hi) > 32750) return false;

        for (std::size_t j = 1; j < i; ++j)
            next[j] = l_extract(fx::l_add(mpy_32(k, a[i - j]), l_comp(a[j])));
        std::copy_n(&next[1], i - 1, &a[1]);
        a[i] = l_extract(k_Q31 >> 4);
        energy = mpy_32(alpha, l_extract(remaining(k)));
        const int shift = fx::norm_l(energy);
        alpha = l_extract(fx::l_shl(energy, shift));
        exponent += shift;
    }
    p.lpc_Q12[0] = 4096;
    for (std::size_t i = 1; i < kTaps; ++i)
        p.lpc_Q12[i] = fx::round_fx(fx::l_shl(l_comp(a[i]), 1));
    p.error = fx::shr(alpha.hi, exponent);
    return true;
}

} // namespace zsp::g729

namespace zsp::entry {

ZspStatus zspsAutoCorr_G729_16s32s(const std::int16_t* src, std::int32_t* corr,
                                   std::int16_t* exponent)
{
    if (!src || !corr || !exponent) return zspStsNullPtrErr;

    g729::autoCorrAvx2(spanOf<240>(src), spanOf<g729::kLags>(corr), *exponent);
    return zspStsNoErr;
}

ZspStatus zspsLagWindow_G729_32s_I(std::int32_t* corr)
{
    if (!corr) return zspStsNullPtrErr;

    g729::lagWindow(spanOf<g729::kLags>(corr));
    return zspStsNoErr;
}

ZspStatus zspsLevinsonDurbin_G729_32s16s(const std::int32_t* corr, std::int16_t* lpc,
                                         std::int16_t* reflection, std::int16_t* error)
{
    if (!corr || !lpc || !reflection || !error) return zspStsNullPtrErr;
    if (corr[0] < 1 << 30) return zspStsRangeErr;
    g729::Prediction p;
    if (!g729::levinsonDurbin(spanOf<g729::kTaps>(corr), p)) return zspStsOverflow;

    std::ranges::copy(p.lpc_Q12, lpc);
    std::ranges::copy(p.reflection_Q15, reflection);
    *error = p.error;
    return zspStsNoErr;
}

} // namespace zsp::entry
