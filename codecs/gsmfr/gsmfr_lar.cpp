// Log area ratios, GSM 06.10, clauses 5.2.6 to 5.2.9. The logarithm is approximated in three
// straight pieces; LAR is in Q14 (1.625 is the largest), decoded ratios and reflection
// coefficients as the clauses have them.

#include "codecs/gsmfr/gsmfr_lar.hpp"

#include "core/avx2.hpp"
#include "core/entries.hpp"
#include "core/fixed_point.hpp"

#include <algorithm>

namespace zsp::gsmfr {

namespace {

/// A magnitude with the sign of `x`.
fx::Word signedAs(fx::Word x, fx::Word magnitude) noexcept
{
    return x < 0 ? fx::negate(magnitude) : magnitude;
}

fx::Word ratio(fx::Word r) noexcept
{
    const fx::Word t = fx::abs_s(r);
    if (t < 22118) return signedAs(r, fx::shr(t, 1));
    if (t < 31130) return signedAs(r, fx::sub(t, 11059));
    return signedAs(r, fx::shl(fx::sub(t, 26112), 2));
}

fx::Word reflection(fx::Word larp) noexcept
{
    const fx::Word t = fx::abs_s(larp);
    if (t < 11059) return signedAs(larp, fx::shl(t, 1));
    if (t < 20070) return signedAs(larp, fx::add(t, 11059));
    return signedAs(larp, fx::add(fx::shr(t, 2), 26112));
}

} // namespace

void reflectToLarScalar(InCoefs r, Coefs lar) noexcept
{
    for (std::size_t i = 0; i < kOrder; ++i)
        lar[i] = ratio(r[i]);
}

void larQuantScalar(InCoefs lar, Coefs larc) noexcept
{
    for (std::size_t i = 0; i < kOrder; ++i) {
        fx::Word t = fx::mult(kLarA[i], lar[i]);
        t = fx::add(t, kLarB[i]);
        t = fx::shr(fx::add(t, 256), 9);
        larc[i] = fx::sub(std::clamp(t, kLarMic[i], kLarMac[i]), kLarMic[i]);
    }
}

bool larcInRange(InCoefs larc) noexcept
{
    const __m128i most =
        _mm_sub_epi16(avx2::load8(kLarMac.data()), avx2::load8(kLarMic.data())); // 2^n - 1
    return _mm_testc_si128(most, avx2::load8(larc.data())) != 0;
}

void larDequantScalar(InCoefs larc, Coefs larpp) noexcept
{
    for (std::size_t i = 0; i < kOrder; ++i) {
        fx::Word t = fx::shl(fx::add(larc[i], kLarMic[i]), 10);
        t = fx::sub(t, fx::shl(kLarB[i], 1));
        t = fx::mult_r(kLarInvA[i], t);
        larpp[i] = fx::add(t, t);
    }
}

void larInterpolateScalar(InCoefs last, InCoefs now, Reflect rp) noexcept
{
    for (std::size_t i = 0; i < kOrder; ++i) {
        const fx::Word quarters = fx::add(fx::shr(last[i], 2), fx::shr(now[i], 2));
        rp[i] = reflection(fx::add(quarters, fx::shr(last[i], 1)));
        rp[kOrder + i] = reflection(fx::add(fx::shr(last[i], 1), fx::shr(now[i], 1)));
        rp[2 * kOrder + i] = reflection(fx::add(quarters, fx::shr(now[i], 1)));
        rp[3 * kOrder + i] = reflection(now[i]);
    }
}

namespace {

__m128i words(int x) noexcept
{
    return _mm_set1_epi16(static_cast<fx::Word>(x));
}

/// abs_s: -32768 gives 32768 without a sign, then 32767.
__m128i magnitude(__m128i x) noexcept
{
    return _mm_min_epu16(_mm_abs_epi16(x), words(32767));
}

/// The first of three pieces whose upper end is above t.
__m128i piecewise(__m128i t, int end1, __m128i first, int end2, __m128i second,
                  __m128i third) noexcept
{
    const __m128i upper = _mm_blendv_epi8(third, second, _mm_cmpgt_epi16(words(end2), t));
    return _mm_blendv_epi8(upper, first, _mm_cmpgt_epi16(words(end1), t));
}

/// As signedAs(); where x is 0, so is what it is the sign of.
__m128i reflectionAvx2(__m128i larp) noexcept
{
    const __m128i t = magnitude(larp);
    const __m128i r =
        piecewise(t, 11059, _mm_slli_epi16(t, 1), 20070, _mm_adds_epi16(t, words(11059)),
                  _mm_adds_epi16(_mm_srai_epi16(t, 2), words(26112)));
    return _mm_sign_epi16(r, larp);
}

} // namespace

void reflectToLarAvx2(InCoefs r, Coefs lar) noexcept
{
    const __m128i x = avx2::load8(r.data());
    const __m128i t = magnitude(x);
    const __m128i l =
        piecewise(t, 22118, _mm_srai_epi16(t, 1), 31130, _mm_sub_epi16(t, words(11059)),
                  _mm_slli_epi16(_mm_sub_epi16(t, words(26112)), 2));
    avx2::store8(lar.data(), _mm_sign_epi16(l, x));
}

// mult(A, LAR) is the product's upper and lower half with a bit in common; A is never -32768.
void larQuantAvx2(InCoefs lar, Coefs larc) noexcept
{
    const __m128i a = avx2::load8(kLarA.data()), x = avx2::load8(lar.data());
    const __m128i mic = avx2::load8(kLarMic.data());
    __m128i t = _mm_or_si128(_mm_slli_epi16(_mm_mulhi_epi16(a, x), 1),
                             _mm_srli_epi16(_mm_mullo_epi16(a, x), 15));
    t = _mm_adds_epi16(t, avx2::load8(kLarB.data()));
    t = _mm_srai_epi16(_mm_adds_epi16(t, words(256)), 9);
    t = _mm_min_epi16(_mm_max_epi16(t, mic), avx2::load8(kLarMac.data()));
    avx2::store8(larc.data(), _mm_sub_epi16(t, mic));
}

void larDequantAvx2(InCoefs larc, Coefs larpp) noexcept
{
    __m128i t = _mm_add_epi16(avx2::load8(larc.data()), avx2::load8(kLarMic.data()));
    t = _mm_slli_epi16(t, 10); // -32 to 31 before
    t = _mm_subs_epi16(t, _mm_slli_epi16(avx2::load8(kLarB.data()), 1));
    t = _mm_mulhrs_epi16(avx2::load8(kLarInvA.data()), t);
    avx2::store8(larpp.data(), _mm_adds_epi16(t, t));
}

void larInterpolateAvx2(InCoefs last, InCoefs now, Reflect rp) noexcept
{
    const __m128i a = avx2::load8(last.data()), b = avx2::load8(now.data());
    const __m128i halfA = _mm_srai_epi16(a, 1), halfB = _mm_srai_epi16(b, 1);
    const __m128i quarters = _mm_adds_epi16(_mm_srai_epi16(a, 2), _mm_srai_epi16(b, 2));
    avx2::store8(&rp[0], reflectionAvx2(_mm_adds_epi16(quarters, halfA)));
    avx2::store8(&rp[kOrder], reflectionAvx2(_mm_adds_epi16(halfA, halfB)));
    avx2::store8(&rp[2 * kOrder], reflectionAvx2(_mm_adds_epi16(quarters, halfB)));
    avx2::store8(&rp[3 * kOrder], reflectionAvx2(b));
}

} // namespace zsp::gsmfr

namespace zsp::entry {

using gsmfr::kOrder;

ZspStatus zspsReflectToLAR_GSMFR_16s(const std::int16_t* src, std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;

    gsmfr::reflectToLarAvx2(spanOf<kOrder>(src), spanOf<kOrder>(dst));
    return zspStsNoErr;
}

ZspStatus zspsLARQuant_GSMFR_16s(const std::int16_t* src, std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;

    gsmfr::larQuantAvx2(spanOf<kOrder>(src), spanOf<kOrder>(dst));
    return zspStsNoErr;
}

ZspStatus zspsLARDequant_GSMFR_16s(const std::int16_t* src, std::int16_t* dst)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (!gsmfr::larcInRange(spanOf<kOrder>(src))) return zspStsCodecRangeErr;

    gsmfr::larDequantAvx2(spanOf<kOrder>(src), spanOf<kOrder>(dst));
    return zspStsNoErr;
}

ZspStatus zspsLARInterpolateToReflect_GSMFR_16s(const std::int16_t* prev, const std::int16_t* cur,
                                                std::int16_t* dst)
{
    if (!prev || !cur || !dst) return zspStsNullPtrErr;

    gsmfr::larInterpolateAvx2(spanOf<kOrder>(prev), spanOf<kOrder>(cur),
                              spanOf<gsmfr::kSets * kOrder>(dst));
    return zspStsNoErr;
}

} // namespace zsp::entry
