// Conversions between immittance spectral frequencies and pairs, 3GPP TS 26.190 and 26.173.
//
//   isp = cos(pi isf / 16384)      Q15, interpolated in 128 steps
//   isf = the inverse              by the step that holds isp and its slope
//
// The last frequency is kept at half scale.

#include "codecs/amrwb/amrwb_isf.hpp"

#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <algorithm>
#include <cassert>
#include <numbers>

namespace zsp::amrwb {

namespace {

constexpr int kMaxIsf = 16383;
constexpr int kLastStep = 127;

fx::Word cosineAt(fx::Word isf) noexcept
{
    const int position = std::clamp<int>(isf, 0, kMaxIsf);
    const auto k = static_cast<std::size_t>(position >> 7);
    const int fraction = position & 127;
    const int rise = kCosine_Q15[k + 1] - kCosine_Q15[k];
    return static_cast<fx::Word>(kCosine_Q15[k] + ((rise * fraction) >> 7));
}

/// The frequency of `isp` in step `k`. Only where `isp` lies below the step, which a walk over
/// unordered pairs can bring about, anything saturates.
fx::Word frequencyInStep(fx::Word isp, int k) noexcept
{
    const auto at = static_cast<std::size_t>(k);
    const fx::Long offset_Q26 = fx::l_mult(fx::sub(isp, kCosine_Q15[at]), kSlope_Q11[at]);
    return fx::add(fx::round_fx(fx::l_shl(offset_Q26, 4)), static_cast<fx::Word>(k << 7));
}

} // namespace

void isfToIspScalar(In16 isf, Out16 isp) noexcept
{
    assert(!isf.empty() && isf.size() == isp.size());
    for (std::size_t i = 0; i + 1 < isf.size(); ++i)
        isp[i] = cosineAt(isf[i]);
    isp.back() = cosineAt(fx::shl(isf.back(), 1));
}

// Eight at a time, as if none were the last; then the tail and the last.
void isfToIspAvx2(In16 isf, Out16 isp) noexcept
{
    const fx::Word last = isf.back();
    std::size_t i = 0;
    for (; i + 8 <= isf.size(); i += 8) {
        __m256i position = _mm256_cvtepi16_epi32(avx2::load8(&isf[i]));
        position = _mm256_max_epi32(position, _mm256_setzero_si256());
        position = _mm256_min_epi32(position, _mm256_set1_epi32(kMaxIsf));
        const __m256i fraction = _mm256_and_si256(position, _mm256_set1_epi32(127));
        // [cosine[k] cosine[k+1]] x [128 - fraction, fraction]
        const __m256i ends =
            avx2::gatherPairs<2>(kCosine_Q15.data(), _mm256_srli_epi32(position, 7));
        const __m256i weights = _mm256_or_si256(_mm256_sub_epi32(_mm256_set1_epi32(128), fraction),
                                                _mm256_slli_epi32(fraction, 16));
        const __m256i values = _mm256_srai_epi32(_mm256_madd_epi16(ends, weights), 7);
        avx2::store8(&isp[i], _mm_packs_epi32(_mm256_castsi256_si128(values),
                                              _mm256_extracti128_si256(values, 1)));
    }
    for (; i + 1 < isf.size(); ++i)
        isp[i] = cosineAt(isf[i]);
    isp.back() = cosineAt(fx::shl(last, 1));
}

void ispToIsfScalar(In16 isp, Out16 isf) noexcept
{
    assert(!isp.empty() && isp.size() == isf.size());
    int k = kLastStep;
    for (std::size_t i = isp.size(); i-- > 0;) {
        if (i + 2 >= isp.size()) k = kLastStep;
        while (kCosine_Q15[static_cast<std::size_t>(k)] < isp[i]) // entry 0 is the largest word
            --k;
        isf[i] = frequencyInStep(isp[i], k);
    }
    isf.back() = static_cast<fx::Word>(isf.back() >> 1);
}

namespace {

/// For each of eight pairs the last step that starts at or above it.
///
/// The arc cosine sqrt(1 - |x|) * polynomial (Abramowitz and Stegun 4.4.45, off by at most 0.003
/// steps) finds the step to within one; comparison with the table then gives the exact one.
__m256i stepsOf(__m256i isp) noexcept
{
    const __m256 signedX = _mm256_mul_ps(_mm256_cvtepi32_ps(isp), _mm256_set1_ps(1.0F / 32768));
    const __m256 x = _mm256_andnot_ps(_mm256_set1_ps(-0.0F), signedX);
    constexpr float kPerRadian = 128 / std::numbers::pi_v<float>;
    __m256 arc = _mm256_set1_ps(-0.0187293F * kPerRadian);
    for (const float coefficient : {0.0742610F, -0.2121144F, 1.5707288F})
        arc = _mm256_add_ps(_mm256_mul_ps(arc, x), _mm256_set1_ps(coefficient * kPerRadian));
    arc = _mm256_mul_ps(arc, _mm256_sqrt_ps(_mm256_sub_ps(_mm256_set1_ps(1), x)));
    arc = _mm256_blendv_ps(arc, _mm256_sub_ps(_mm256_set1_ps(128), arc), signedX);

    const __m256i lastStep = _mm256_set1_epi32(kLastStep);
    const __m256i k = _mm256_max_epi32(_mm256_min_epi32(_mm256_cvttps_epi32(arc), lastStep),
                                       _mm256_setzero_si256());
    const __m256i ends = avx2::gatherPairs<2>(kCosine_Q15.data(), k);
    const __m256i start = _mm256_srai_epi32(_mm256_slli_epi32(ends, 16), 16);
    const __m256i end = _mm256_srai_epi32(ends, 16);
    // one back where start < isp, none where end < isp <= start, one on where isp <= end
    const __m256i next = _mm256_add_epi32(k, _mm256_set1_epi32(1));
    return _mm256_min_epi32(lastStep,
                            _mm256_add_epi32(_mm256_add_epi32(next, _mm256_cmpgt_epi32(isp, start)),
                                             _mm256_cmpgt_epi32(isp, end)));
}

/// Turns sixteen independently found steps into those of the walk: each of the first fifteen is
/// limited to the smallest of those after it; the last is not affected.
__m256i walked(__m256i steps) noexcept
{
    const __m256i all = _mm256_set1_epi16(kLastStep);
    const __m256i isLast = _mm256_set_epi16(-1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m256i walkedOver = _mm256_sub_epi16(all, steps); // a maximum of these: zeros shift in
    __m256i most = _mm256_andnot_si256(isLast, walkedOver);
    most = _mm256_max_epi16(most, _mm256_bsrli_epi128(most, 2));
    most = _mm256_max_epi16(most, _mm256_bsrli_epi128(most, 4));
    most = _mm256_max_epi16(most, _mm256_bsrli_epi128(most, 8));
    // word 8 holds the maximum of the upper half, which the lower half starts from
    const __m256i upper = _mm256_broadcastw_epi16(_mm256_extracti128_si256(most, 1));
    most = _mm256_max_epi16(
        most, _mm256_permute2x128_si256(upper, upper, 0x80)); // [upper 0]: lower half only
    most = _mm256_or_si256(most, _mm256_and_si256(isLast, walkedOver));
    return _mm256_sub_epi16(all, most);
}

/// frequencyInStep of eight pairs without the step's own start, the product still in 32 bits.
__m256i offsetsInStep(__m256i isp, __m256i k) noexcept
{
    const __m256i cosineAndSlope = avx2::gatherPairs<4>(kSteps.data(), k);
    const __m256i below = _mm256_subs_epi16(isp, cosineAndSlope); // the lower words count
    const __m256i product = _mm256_madd_epi16(below, _mm256_srli_epi32(cosineAndSlope, 16));
    return _mm256_srai_epi32(_mm256_add_epi32(product, _mm256_set1_epi32(1024)), 11);
}

} // namespace

// The codec's order of 16; other lengths take the definition.
void ispToIsfAvx2(In16 isp, Out16 isf) noexcept
{
    if (isp.size() != kIsfOrder) return ispToIsfScalar(isp, isf);

    const __m256i lower = _mm256_cvtepi16_epi32(avx2::load8(&isp[0]));
    const __m256i upper = _mm256_cvtepi16_epi32(avx2::load8(&isp[8]));
    const __m256i steps = walked(avx2::packInOrder(stepsOf(lower), stepsOf(upper)));
    const __m256i offsets = avx2::packInOrder(
        offsetsInStep(lower, _mm256_cvtepi16_epi32(_mm256_castsi256_si128(steps))),
        offsetsInStep(upper, _mm256_cvtepi16_epi32(_mm256_extracti128_si256(steps, 1))));
    avx2::store(&isf[0], _mm256_adds_epi16(offsets, _mm256_slli_epi16(steps, 7)));
    isf[15] = static_cast<fx::Word>(isf[15] >> 1);
}

} // namespace zsp::amrwb

namespace zsp::entry {

ZspStatus zspsISFToISP_AMRWB_16s(const std::int16_t* isf, std::int16_t* isp, std::int32_t len)
{
    if (!isf || !isp) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    amrwb::isfToIspAvx2({isf, n}, {isp, n});
    return zspStsNoErr;
}

ZspStatus zspsISPToISF_Norm_AMRWB_16s(const std::int16_t* isp, std::int16_t* isf, std::int32_t len)
{
    if (!isp || !isf) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    amrwb::ispToIsfAvx2({isp, n}, {isf, n});
    return zspStsNoErr;
}

} // namespace zsp::entry
