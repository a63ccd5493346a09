// Element-wise product of 16-bit vectors with a rounding right shift.
//
//   out[i] = sat16((a[i] * b[i] + 2^(shift-1)) >> shift)      no rounding term when shift is 0
//
// Ties round towards plus infinity. Shift 15 is mult_r of the basic operators, ITU-T G.191.

#include "common/scaling/mul_nr.hpp"

#include "core/avx2.hpp"
#include "core/entries.hpp"
#include "core/fixed_point.hpp"

#include <algorithm>

namespace zsp::common {

void mulNrScalar(In16 a, In16 b, Out16 out, int shift) noexcept
{
    shift = std::min(shift, 32); // |a * b| <= 2^30: every larger shift gives 0 as well
    const std::int64_t half = shift > 0 ? std::int64_t{1} << (shift - 1) : 0;
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = fx::sat16((std::int64_t{a[i]} * b[i] + half) >> shift);
}

// Shifts 0 to 15, where half still fits a signed word: vpmaddwd forms a * b + half * 1 in 32 bits.
// Larger shifts and the tail take the definition.
void mulNrAvx2(In16 a, In16 b, Out16 out, int shift) noexcept
{
    std::size_t i = 0;
    if (shift <= 15) {
        const auto half = static_cast<std::int16_t>(shift > 0 ? 1 << (shift - 1) : 0);
        const __m256i vHalf = _mm256_set1_epi16(half);
        const __m256i one = _mm256_set1_epi16(1);
        const __m128i count = _mm_cvtsi32_si128(shift);
        for (; i + 16 <= out.size(); i += 16) {
            const __m256i va = avx2::load(&a[i]);
            const __m256i vb = avx2::load(&b[i]);
            // [a half a half ...] x [b 1 b 1 ...], the lower and the upper four of each 128-bit
            // lane
            const __m256i low =
                _mm256_madd_epi16(_mm256_unpacklo_epi16(va, vHalf), _mm256_unpacklo_epi16(vb, one));
            const __m256i high =
                _mm256_madd_epi16(_mm256_unpackhi_epi16(va, vHalf), _mm256_unpackhi_epi16(vb, one));
            avx2::store(&out[i], _mm256_packs_epi32(_mm256_sra_epi32(low, count),
                                                    _mm256_sra_epi32(high, count)));
        }
    }
    mulNrScalar(a.subspan(i), b.subspan(i), out.subspan(i), shift);
}

} // namespace zsp::common

namespace zsp::entry {

ZspStatus zspsMul_NR_16s_Sfs(const std::int16_t* src1, const std::int16_t* src2, std::int16_t* dst,
                             std::int32_t len, std::int32_t scaleFactor)
{
    if (!src1 || !src2 || !dst) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;
    if (scaleFactor < 0) return zspStsScaleRangeErr;

    const auto n = static_cast<std::size_t>(len);
    common::mulNrAvx2({src1, n}, {src2, n}, {dst, n}, scaleFactor);
    return zspStsNoErr;
}

ZspStatus zspsMul_NR_16s_ISfs(const std::int16_t* src, std::int16_t* srcDst, std::int32_t len,
                              std::int32_t scaleFactor)
{
    return zspsMul_NR_16s_Sfs(src, srcDst, srcDst, len, scaleFactor);
}

} // namespace zsp::entry
