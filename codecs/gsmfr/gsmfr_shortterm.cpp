// The short-term filters of GSM 06.10: analysis in clause 5.2.10,
//
//   d_i[k] = d_{i-1}[k] + r_i u_{i-1}[k-1],   u_i[k] = u_{i-1}[k-1] + r_i d_{i-1}[k],   i = 1..8
//
// from d_0 = u_0 = s to d = d_8, and synthesis in clause 5.3.4,
//
//   s_{i-1}[k] = s_i[k] - r_i v_{i-1}[k-1],   v_i[k] = v_{i-1}[k-1] + r_i s_{i-1}[k],   i = 8..1
//
// from s_8 = wr to sr = s_0 = v_0. Every product is rounded, every sum saturated.

#include "codecs/gsmfr/gsmfr_shortterm.hpp"

#include "core/avx2.hpp"
#include "core/entries.hpp"
#include "core/fixed_point.hpp"

#include <algorithm>
#include <array>

namespace zsp::gsmfr {

namespace {

/// The part of a frame for which a set of coefficients holds.
struct Part {
    std::size_t begin, end;
    InCoefs r;
};

Part partOf(InReflect rp, std::size_t set) noexcept
{
    return {kSetStart[set], kSetStart[set + 1], InCoefs{&rp[set * kOrder], kOrder}};
}

} // namespace

void analyseScalar(InFrame s, InReflect rp, Frame d, Coefs memory) noexcept
{
    for (std::size_t set = 0; set < kSets; ++set) {
        const Part part = partOf(rp, set);
        for (std::size_t k = part.begin; k < part.end; ++k) {
            fx::Word di = s[k], sav = s[k];
            for (std::size_t i = 0; i < kOrder; ++i) {
                const fx::Word u = memory[i];
                memory[i] = sav;
                sav = fx::add(u, fx::mult_r(part.r[i], di));
                di = fx::add(di, fx::mult_r(part.r[i], u));
            }
            d[k] = di;
        }
    }
}

void synthesiseScalar(InFrame wr, InReflect rrp, Frame sr, Coefs memory) noexcept
{
    for (std::size_t set = 0; set < kSets; ++set) {
        const Part part = partOf(rrp, set);
        for (std::size_t k = part.begin; k < part.end; ++k) {
            fx::Word sri = wr[k];
            for (std::size_t i = kOrder; i-- > 0;) {
                sri = fx::sub(sri, fx::mult_r(part.r[i], memory[i]));
                const fx::Word v = fx::add(memory[i], fx::mult_r(part.r[i], sri));
                if (i + 1 < kOrder) memory[i + 1] = v;
            }
            sr[k] = memory[0] = sri;
        }
    }
}

namespace {

/// vpmulhrsw is mult_r but for -32768 squared. Coefficients from log area ratios are never -32768;
/// others take the definition.
bool hasLowest(InReflect rp) noexcept
{
    const __m256i lowest = _mm256_set1_epi16(fx::kMin16);
    const __m256i found = _mm256_or_si256(_mm256_cmpeq_epi16(avx2::load(&rp[0]), lowest),
                                          _mm256_cmpeq_epi16(avx2::load(&rp[16]), lowest));
    return !_mm256_testz_si256(found, found);
}

/// Each of sixteen neighbouring samples' coefficient r_i, for the eight stages: a frame begins with
/// 13 samples of set 0 and 3 of set 1, then come 11 and 5, 8 and 8, and set 3.
struct Coefficients {
    __m256i r[kOrder];

    /// The first `fromFirst` samples of set `first`, the others of the next one.
    Coefficients(InReflect rp, std::size_t first, std::size_t fromFirst) noexcept
    {
        const std::size_t second = std::min(first + 1, kSets - 1);
        const __m256i index =
            _mm256_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
        const __m256i isFirst =
            _mm256_cmpgt_epi16(_mm256_set1_epi16(static_cast<fx::Word>(fromFirst)), index);
        for (std::size_t i = 0; i < kOrder; ++i)
            r[i] = _mm256_blendv_epi8(_mm256_set1_epi16(rp[second * kOrder + i]),
                                      _mm256_set1_epi16(rp[first * kOrder + i]), isFirst);
    }
};

/// The samples one before those of `now`; `past` holds the one before them all in its last word.
__m256i delayed(__m256i past, __m256i now) noexcept
{
    const __m256i between = _mm256_permute2x128_si256(past, now, 0x21); // past's upper, now's lower
    return _mm256_alignr_epi8(now, between, 14);
}

/// Sixteen samples through all stages; `u` holds what each stage has last seen.
__m256i analyse16(__m256i s, const Coefficients& coefs, __m256i (&u)[kOrder]) noexcept
{
    __m256i d = s, sav = s;
    for (std::size_t i = 0; i < kOrder; ++i) {
        const __m256i before = delayed(u[i], sav);
        u[i] = sav;
        sav = _mm256_adds_epi16(before, _mm256_mulhrs_epi16(coefs.r[i], d));
        d = _mm256_adds_epi16(d, _mm256_mulhrs_epi16(coefs.r[i], before));
    }
    return d;
}

} // namespace

// The analysis has no feedback: a stage can do many samples before the next one starts.
void analyseAvx2(InFrame s, InReflect rp, Frame d, Coefs memory) noexcept
{
    if (hasLowest(rp)) return analyseScalar(s, rp, d, memory);

    __m256i u[kOrder];
    for (std::size_t i = 0; i < kOrder; ++i)
        u[i] = _mm256_set1_epi16(memory[i]);
    constexpr std::array<std::size_t, kSets> kFromFirst = {13, 11, 8, 16};
    for (std::size_t set = 0; set < kSets; ++set) {
        const Coefficients coefs(rp, set, kFromFirst[set]);
        const std::size_t end = set + 1 < kSets ? 16 * (set + 1) : kFrame;
        for (std::size_t k = 16 * set; k < end; k += 16)
            avx2::store(&d[k], analyse16(avx2::load(&s[k]), coefs, u));
    }
    for (std::size_t i = 0; i < kOrder; ++i)
        memory[i] = static_cast<fx::Word>(_mm256_extract_epi16(u[i], 15));
}

// The synthesis goes from sample to sample, in the lowest words of vectors: they round, multiply
// and saturate in two instructions per sum, of which two stages' can be under way at once.
void synthesiseAvx2(InFrame wr, InReflect rrp, Frame sr, Coefs memory) noexcept
{
    if (hasLowest(rrp)) return synthesiseScalar(wr, rrp, sr, memory);

    __m128i v[kOrder], r[kOrder];
    for (std::size_t i = 0; i < kOrder; ++i)
        v[i] = _mm_cvtsi32_si128(memory[i]);
    for (std::size_t set = 0; set < kSets; ++set) {
        const Part part = partOf(rrp, set);
        for (std::size_t i = 0; i < kOrder; ++i)
            r[i] = _mm_cvtsi32_si128(part.r[i]);
        for (std::size_t k = part.begin; k < part.end; ++k) {
            __m128i sri = _mm_cvtsi32_si128(wr[k]);
            sri = _mm_subs_epi16(sri, _mm_mulhrs_epi16(r[7], v[7]));
#pragma GCC unroll 8
            for (std::size_t i = kOrder - 1; i-- > 0;) {
                sri = _mm_subs_epi16(sri, _mm_mulhrs_epi16(r[i], v[i]));
                v[i + 1] = _mm_adds_epi16(v[i], _mm_mulhrs_epi16(r[i], sri));
            }
            v[0] = sri;
            sr[k] = static_cast<fx::Word>(_mm_cvtsi128_si32(sri));
        }
    }
    for (std::size_t i = 0; i < kOrder; ++i)
        memory[i] = static_cast<fx::Word>(_mm_cvtsi128_si32(v[i]));
}

} // namespace zsp::gsmfr

namespace zsp::entry {

using gsmfr::kFrame;
using gsmfr::kOrder;

ZspStatus zspsShortTermAnalysisFilter_GSMFR_16s(const std::int16_t* src,
                                                const std::int16_t* reflect, std::int16_t* dst,
                                                std::int16_t* memory)
{
    if (!src || !reflect || !dst || !memory) return zspStsNullPtrErr;

    gsmfr::analyseAvx2(spanOf<kFrame>(src), spanOf<gsmfr::kSets * kOrder>(reflect),
                       spanOf<kFrame>(dst), spanOf<kOrder>(memory));
    return zspStsNoErr;
}

ZspStatus zspsShortTermSynthesisFilter_GSMFR_16s(const std::int16_t* src,
                                                 const std::int16_t* reflect, std::int16_t* dst,
                                                 std::int16_t* memory)
{
    if (!src || !reflect || !dst || !memory) return zspStsNullPtrErr;

    gsmfr::synthesiseAvx2(spanOf<kFrame>(src), spanOf<gsmfr::kSets * kOrder>(reflect),
                          spanOf<kFrame>(dst), spanOf<kOrder>(memory));
    return zspStsNoErr;
}

} // namespace zsp::entry
