// The synthesis filter of ITU-T G.728 in two halves, blocks 9 and 22: what it gives by itself, from
// what it gave before, and what an excitation adds.

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_filter_avx2.hpp"
#include "core/entries.hpp"

namespace zsp::g728 {

Vector zeroInputScalar(In<kLong> a, In<kLong> history, In<kShort> q) noexcept
{
    const Word least = *std::min_element(q.begin(), q.end());
    Vector s;
    for (std::size_t i = 0; i < kVector; ++i) {
        const std::size_t p = kVector - 1 - i;
        Wide t = 0;
        for (std::size_t j = 0; j < i; ++j)
            t -= Wide{a[j]} * s.m[p + 1 + j];
        for (std::size_t k = 0; k < kShort; ++k) { // each vector's sum is rounded by itself
            const std::size_t taps = k + 1 < kShort ? kVector : kVector - i;
            Wide sum = 0;
            for (std::size_t c = 0; c < taps; ++c)
                sum -= Wide{a[i + 5 * k + c]} * history[5 * k + c];
            const int shift = q[k] - least;
            if (k + 1 < kShort)
                t += sum >> (shift > 30 ? 63 : shift);
            else if (shift < 30) // and the last vector is left out where it is small
                t += sum >> shift;
        }
        s.m[p] = sat16(t >> 14);
    }
    s.q = least + normalise(s.m, 15);
    return s;
}

namespace {

/// Whether the words have 14 bits, so that five products with any words fit a lane.
bool isNormalised(In<kLong> history) noexcept
{
    const __m256i half = _mm256_set1_epi16(8192);
    const auto moved = [&](std::size_t n) {
        return _mm256_add_epi16(avx2::load(&history[n]), half); // 0..16383
    };
    const __m256i bits = _mm256_or_si256(_mm256_or_si256(moved(0), moved(16)),
                                         _mm256_or_si256(moved(32), moved(34)));
    return _mm256_testz_si256(bits, _mm256_set1_epi16(-16384));
}

/// Shifts that lead to the same as larger ones: nothing but signs are left.
constexpr int kMostShift = 31;

} // namespace

Vector zeroInputAvx2(In<kLong> a, In<kLong> history, In<kShort> q) noexcept
{
    if (!isNormalised(history)) return zeroInputScalar(a, history, q);
    const Word least = *std::min_element(q.begin(), q.end());

    // Of the last vector there is less for each sample, as the coefficients end: zeros.
    static constexpr Pairing k01 = pairing(0, 1), k23 = pairing(2, 1), k4 = pairing(3, 1, true),
                             kEnd01 = pairing(3, 1), kEnd23 = pairing(5, 1),
                             kEnd4 = pairing(7, 1, true);
    Sums sums;
    for (std::size_t k = 0; k < kShort; ++k) {
        const Word* const h = &history[5 * k];
        const bool isLast = k + 1 == kShort;
        const int shift = q[k] - least;
        if (isLast && shift >= 30) break;
        const __m128i first = avx2::load8(&a[isLast ? kLong - 8 : 5 * k]);
        const __m128i behind = avx2::load8(&a[isLast ? kLong - 8 : 5 * k + 1]);
        const __m256i sum = _mm256_add_epi32(
            _mm256_add_epi32(
                _mm256_madd_epi16(pairAt(h), paired(first, isLast ? kEnd01 : k01)),
                _mm256_madd_epi16(pairAt(h + 2), paired(first, isLast ? kEnd23 : k23))),
            _mm256_madd_epi16(_mm256_set1_epi16(h[4]), paired(behind, isLast ? kEnd4 : k4)));
        sums.add(_mm256_sra_epi32(_mm256_sub_epi32(_mm256_setzero_si256(), sum),
                                  _mm_cvtsi32_si128(std::min(shift, kMostShift))));
    }
    auto t = sums.byLane();
    const auto y = closeLoop(a.first<kShort>(), t);
    Vector s;
    std::reverse_copy(y.begin(), y.end(), s.m.begin());
    s.q = least + normalise(s.m, 15);
    return s;
}

void zeroState(In<4> a, Vector& excitation, Out<kVector> response) noexcept
{
    for (std::size_t i = 0; i < kVector;) {
        const std::size_t p = kVector - 1 - i;
        Wide d = Wide{excitation.m[p]} * 16384;
        for (std::size_t k = 0; k < i; ++k)
            d -= Wide{a[k]} * response[p + 1 + k];
        if (d > 268435455 || d < -268435456) { // no 15 bits: once more with half of it
            for (Word& x : excitation.m)
                x = static_cast<Word>(x >> 1);
            --excitation.q;
            i = 0;
            continue;
        }
        response[p] = static_cast<Word>(d >> 14);
        ++i;
    }
}

void addResponses(In<kVector> zeroState, int q, Vector& s) noexcept
{
    const int above = s.q - q;
    const int sShift = std::max(above, 0), zShift = std::max(-above, 0);
    s.q -= sShift;
    // The signal has 12 bits and sign before the point.
    const Wide limit = s.q < 0 ? 4095 >> std::min(-s.q, 31) : Wide{4095} << std::min(s.q, 31);
    const Wide high = std::min<Wide>(limit, 32767), low = limit > 32767 ? -32768 : -limit;
    for (std::size_t i = 0; i < kVector; ++i)
        s.m[i] = static_cast<Word>(
            std::clamp(shifted(s.m[i], sShift) + shifted(zeroState[i], zShift), low, high));
    s.q += normalise(s.m, 14);
}

} // namespace zsp::g728

namespace zsp::entry {

using namespace g728;

ZspStatus zspsSyntesisFilterZeroInput_G728_16s(const std::int16_t* lpc, const std::int16_t* src,
                                               const std::int16_t* srcQ, std::int16_t* dst)
{
    if (!lpc || !src || !srcQ || !dst) return zspStsNullPtrErr;
    if (!std::all_of(srcQ, srcQ + kShort, hasQ)) return zspStsScaleRangeErr;

    storeVector(
        zeroInputAvx2(In<kLong>(lpc, kLong), In<kLong>(src, kLong), In<kShort>(srcQ, kShort)), dst);
    return zspStsNoErr;
}

ZspStatus zspsSynthesisFilterZeroState_G728_16s(const std::int16_t* lpc, std::int16_t* srcDst,
                                                std::int16_t* dst)
{
    if (!lpc || !srcDst || !dst) return zspStsNullPtrErr;
    if (!hasQ(srcDst[kVector])) return zspStsScaleRangeErr;

    Vector excitation = vectorAt(srcDst);
    zeroState(In<4>(lpc, 4), excitation, Out<kVector>(dst, kVector));
    storeVector(excitation, srcDst);
    return zspStsNoErr;
}

ZspStatus zspsSynthesisFilterUpdate_G728_16s(const std::int16_t* src, std::int32_t q,
                                             std::int16_t* srcDst)
{
    if (!src || !srcDst) return zspStsNullPtrErr;
    if (!hasQ(q) || !hasQ(srcDst[kVector])) return zspStsScaleRangeErr;

    Vector s = vectorAt(srcDst);
    addResponses(In<kVector>(src, kVector), q, s);
    storeVector(s, srcDst);
    return zspStsNoErr;
}

} // namespace zsp::entry
