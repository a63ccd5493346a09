// Autocorrelation of a frame, GSM 06.10, clause 5.2.4, and reflection coefficients from it by the
// recursion of Schur, clause 5.2.5.

#include "codecs/gsmfr/gsmfr_lpc.hpp"

#include "codecs/shared/words.hpp"
#include "common/correlation/correlation.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"
#include "core/fixed_point.hpp"

#include <algorithm>
#include <array>

namespace zsp::gsmfr {

namespace {

/// By how many bits a frame is scaled down so that its correlations fit: negative for quiet ones,
/// which are left alone. 0 for silence.
int scalingOf(fx::Word smax) noexcept
{
    return smax == 0 ? 0 : 4 - fx::norm_s(smax);
}

/// Reflection coefficient: the quotient of the magnitudes, with the sign against that of p1.
fx::Word reflection(fx::Word p1, fx::Word magnitude, fx::Word p0) noexcept
{
    const fx::Word quotient = magnitude == 0 ? fx::Word{0} : fx::div_s(magnitude, p0);
    return p1 > 0 ? fx::negate(quotient) : quotient;
}

} // namespace

int autoCorrScalar(Frame s, Lags acf) noexcept
{
    const int scalauto = scalingOf(codecs::largest(s));
    if (scalauto > 0)
        for (fx::Word& x : s)
            x = fx::mult_r(x, static_cast<fx::Word>(16384 >> (scalauto - 1)));

    for (std::size_t k = 0; k < acf.size(); ++k) {
        acf[k] = 0;
        for (std::size_t i = k; i < s.size(); ++i)
            acf[k] = fx::l_mac(acf[k], s[i], s[i - k]); // |s| <= 2048: nothing saturates
    }
    if (scalauto > 0)
        for (fx::Word& x : s)
            x = static_cast<fx::Word>(x << scalauto); // 2048 << 4 wraps, as it must
    return scalauto;
}

void schurScalar(InLags acf, Coefs r) noexcept
{
    std::fill(r.begin(), r.end(), fx::Word{0});
    if (acf[0] == 0) return;

    std::array<fx::Word, kOrder + 1> p, k;
    const int shift = fx::norm_l(acf[0]);
    for (std::size_t i = 0; i <= kOrder; ++i)
        p[i] = k[i] = fx::extract_h(fx::l_shl(acf[i], shift));

    for (std::size_t n = 0; n < kOrder; ++n) {
        const fx::Word magnitude = fx::abs_s(p[1]);
        if (p[0] < magnitude) return;
        r[n] = reflection(p[1], magnitude, p[0]);
        if (n == kOrder - 1) return;

        p[0] = fx::add(p[0], fx::mult_r(p[1], r[n]));
        for (std::size_t m = 1; m < kOrder - n; ++m) {
            const fx::Word pNext = p[m + 1];
            p[m] = fx::add(pNext, fx::mult_r(k[m], r[n]));
            k[m] = fx::add(k[m], fx::mult_r(pNext, r[n]));
        }
    }
}

int autoCorrAvx2(Frame s, Lags acf) noexcept
{
    static_assert(kFrame % 16 == 0);
    __m256i largest = _mm256_setzero_si256();
    for (std::size_t i = 0; i < kFrame; i += 16) // |-32768| is 32768 without a sign
        largest = _mm256_max_epu16(largest, _mm256_abs_epi16(avx2::load(&s[i])));
    const int scalauto = scalingOf(avx2::maxMagnitude(largest));
    if (scalauto > 0) {
        const __m256i factor = _mm256_set1_epi16(static_cast<fx::Word>(16384 >> (scalauto - 1)));
        for (std::size_t i = 0; i < kFrame; i += 16)
            avx2::store(&s[i], _mm256_mulhrs_epi16(avx2::load(&s[i]), factor));
    }
    std::int32_t norm = 0; // takes the shift of the normalised kernel back, and the 1 it adds
    common::autoCorrNormEAvx2(s, acf, norm);
    for (std::int32_t& sum : acf)
        sum >>= norm;
    acf[0] -= 1;
    if (scalauto > 0)
        for (std::size_t i = 0; i < kFrame; i += 16)
            avx2::store(&s[i], _mm256_slli_epi16(avx2::load(&s[i]), scalauto));
    return scalauto;
}

// P[1..8] and K[1..8] in the eight words of a vector each; those that the recursion has left behind
// hold anything. r is never -32768, for which vpmulhrsw differs from mult_r.
void schurAvx2(InLags acf, Coefs r) noexcept
{
    alignas(16) std::array<fx::Word, kOrder> start;
    std::fill(r.begin(), r.end(), fx::Word{0});
    if (acf[0] == 0) return;
    const int shift = fx::norm_l(acf[0]);
    fx::Word p0 = fx::extract_h(fx::l_shl(acf[0], shift));
    for (std::size_t i = 0; i < kOrder; ++i)
        start[i] = fx::extract_h(fx::l_shl(acf[i + 1], shift));
    __m128i p = avx2::load8(start.data()), k = p;

    for (std::size_t n = 0;; ++n) {
        const auto p1 = static_cast<fx::Word>(_mm_cvtsi128_si32(p));
        const fx::Word magnitude = fx::abs_s(p1);
        if (p0 < magnitude) return;
        r[n] = reflection(p1, magnitude, p0);
        if (n == kOrder - 1) return;

        p0 = fx::add(p0, fx::mult_r(p1, r[n]));
        const __m128i factor = _mm_set1_epi16(r[n]);
        const __m128i pNext = _mm_srli_si128(p, 2);
        p = _mm_adds_epi16(pNext, _mm_mulhrs_epi16(k, factor));
        k = _mm_adds_epi16(k, _mm_mulhrs_epi16(pNext, factor));
    }
}

} // namespace zsp::gsmfr

namespace zsp::entry {

ZspStatus zspsAutoCorr_GSMFR_16s32s_I(std::int16_t* srcDst, std::int32_t* dst, std::int32_t* scale)
{
    if (!srcDst || !dst || !scale) return zspStsNullPtrErr;

    *scale = gsmfr::autoCorrAvx2(spanOf<gsmfr::kFrame>(srcDst), spanOf<gsmfr::kOrder + 1>(dst));
    return zspStsNoErr;
}

ZspStatus zspsSchur_GSMFR_32s16s(const std::int32_t* src, std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;

    gsmfr::schurAvx2(spanOf<gsmfr::kOrder + 1>(src), spanOf<gsmfr::kOrder>(dst));
    return zspStsNoErr;
}

} // namespace zsp::entry
