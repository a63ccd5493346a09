// The recursive filter of ten coefficients that speech decoders synthesise with, and the sum of two
// vectors with a factor each, of which their excitation is made.

#include "codecs/shared/celp/filters.hpp"
#include "codecs/shared/words.hpp"
#include "core/avx2.hpp"
#include "core/entries.hpp"

#include <algorithm>

namespace zsp::celp {

void residualAvx2(In<kTaps> a_Q12, const Word* x, std::span<Word> y) noexcept
{
    std::int32_t reach = 0;
    for (const Word c : a_Q12)
        reach += std::abs(std::int32_t{c});
    const Word most = codecs::largest({x - kOrder, kOrder + y.size()});
    if (std::int64_t{reach} * most >= (1 << 30) - 2048) return residual(a_Q12, x, y);

    const __m256i half = _mm256_set1_epi32(2048);
    std::size_t n = 0;
    for (; n + 8 <= y.size(); n += 8) {
        const Word* now = x + n;
        __m256i sum = half;
        for (std::size_t j = 0; j < kTaps; j += 2) {
            const __m128i newer = avx2::load8(now - j);
            const __m128i older = j < kOrder ? avx2::load8(now - j - 1) : _mm_setzero_si128();
            const std::int32_t next = j < kOrder ? a_Q12[j + 1] : 0;
            const __m256i pairs = _mm256_set_m128i(_mm_unpackhi_epi16(newer, older),
                                                   _mm_unpacklo_epi16(newer, older));
            sum = _mm256_add_epi32(
                sum,
                _mm256_madd_epi16(pairs, _mm256_set1_epi32(next * 65536 + (a_Q12[j] & 0xffff))));
        }
        sum = _mm256_srai_epi32(sum, 12);
        avx2::store8(
            &y[n], _mm_packs_epi32(_mm256_castsi256_si128(sum), _mm256_extracti128_si256(sum, 1)));
    }
    residual(a_Q12, x + n, y.subspan(n));
}

void interpolate(In16 src1, Word factor1, int scale1, In16 src2, Word factor2, int scale2,
                 Out16 dst) noexcept
{
    // Exact in 64 bits: products are below 2^31, and a scale of 31 and more differs by rounding
    // only, which the largest scale's half decides.
    const int scale = std::max(scale1, scale2);
    const std::int64_t half = scale > 0 ? std::int64_t{1} << (scale - 1) : 0;
    for (std::size_t i = 0; i < dst.size(); ++i) {
        const std::int64_t first =
            std::int64_t{src1[i]} * factor1 * (std::int64_t{1} << (scale - scale1));
        const std::int64_t second =
            std::int64_t{src2[i]} * factor2 * (std::int64_t{1} << (scale - scale2));
        dst[i] = fx::sat16((first + second + half) >> scale);
    }
}

} // namespace zsp::celp

namespace zsp::entry {

ZspStatus zspsSynthesisFilter_NR_16s_Sfs(const std::int16_t* lpc, const std::int16_t* src,
                                         std::int16_t* dst, std::int32_t len, std::int16_t* memory,
                                         std::int32_t scaleFactor)
{
    if (!lpc || !src || !dst || !memory) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;
    if (scaleFactor < 0 || scaleFactor > 15) return zspStsScaleRangeErr;

    const In16 x{src, static_cast<std::size_t>(len)};
    const auto past = spanOf<celp::kOrder>(memory);
    if (scaleFactor == 12)
        celp::synthesis(spanOf<celp::kTaps>(lpc), x, dst, past);
    else
        celp::synthesisScalar(spanOf<celp::kTaps>(lpc), x, dst, past, 15 - scaleFactor);
    return zspStsNoErr;
}

ZspStatus zspsInterpolateC_NR_16s(const std::int16_t* src1, std::int16_t factor1,
                                  const std::int16_t* src2, std::int16_t factor2, std::int16_t* dst,
                                  std::int32_t len, std::int32_t scaleFactor1,
                                  std::int32_t scaleFactor2)
{
    if (!src1 || !src2 || !dst) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;
    if (scaleFactor1 < 0 || scaleFactor2 < 0 || scaleFactor1 > 31 || scaleFactor2 > 31)
        return zspStsScaleRangeErr;

    const auto n = static_cast<std::size_t>(len);
    celp::interpolate({src1, n}, factor1, scaleFactor1, {src2, n}, factor2, scaleFactor2, {dst, n});
    return zspStsNoErr;
}

} // namespace zsp::entry
