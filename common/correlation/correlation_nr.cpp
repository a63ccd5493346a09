// Correlations, a convolution and a dot product as the standards' coders compute them: with the
// basic operators, or exactly and then shifted, half added before.

#include "common/correlation/correlation_nr.hpp"

#include "core/entries.hpp"

#include <algorithm>
#include <bit>

namespace zsp::common {

namespace {

/// 2 sum of x[i+lag] y[i], each step saturating.
fx::Long sumSteps(In16 x, In16 y, std::size_t lag) noexcept
{
    fx::Long sum = 0;
    for (std::size_t i = 0; i + lag < x.size(); ++i)
        sum = fx::l_mac(sum, x[i + lag], y[i]);
    return sum;
}

/// sum of x[i+lag] y[i]. Lengths are below 2^31, so 62 bits hold it.
std::int64_t sumExactly(In16 x, In16 y, std::size_t lag) noexcept
{
    std::int64_t sum = 0;
    for (std::size_t i = 0; i + lag < x.size(); ++i)
        sum += std::int32_t{x[i + lag]} * y[i];
    return sum;
}

std::int64_t shifted(std::int64_t sum, int shift) noexcept
{
    shift = std::min(shift, 62); // |sum| < 2^61: every larger shift gives 0 as well
    return shift == 0 ? sum : (sum + (std::int64_t{1} << (shift - 1))) >> shift;
}

} // namespace

void crossCorrSteps(In16 x, In16 y, Out32 out) noexcept
{
    for (std::size_t k = 0; k < out.size(); ++k)
        out[k] = sumSteps(x, y, k);
}

int autoCorrNormRounded(In16 x, Out16 out) noexcept
{
    const int norm = fx::norm_l(sumSteps(x, x, 0));
    for (std::size_t k = 0; k < out.size(); ++k)
        out[k] = fx::round_fx(fx::l_shl(sumSteps(x, x, k), norm));
    return norm;
}

void crossCorrScaled(In16 x, In16 y, Out16 out, int shift) noexcept
{
    for (std::size_t k = 0; k < out.size(); ++k)
        out[k] = fx::sat16(shifted(sumExactly(x, y, k), shift));
}

void convolveRounded(In16 x, In16 h, Out16 out) noexcept
{
    for (std::size_t n = 0; n < out.size(); ++n) {
        fx::Long sum = 0;
        for (std::size_t i = 0; i <= n; ++i)
            sum = fx::l_mac(sum, x[i], h[n - i]);
        out[n] = fx::round_fx(fx::l_shl(sum, 3));
    }
}

ScaledSum dotScaled(In16 x, In16 y) noexcept
{
    const std::int64_t sum = sumExactly(x, y, 0);
    int shift = 0;
    while (shifted(sum, shift) != fx::sat32(shifted(sum, shift)))
        ++shift;
    return {static_cast<fx::Long>(shifted(sum, shift)), shift};
}

} // namespace zsp::common

namespace zsp::entry {

ZspStatus zspsAutoCorr_16s32s(const std::int16_t* src, std::int32_t len, std::int32_t* dst,
                              std::int32_t lagCount)
{
    if (!src || !dst) return zspStsNullPtrErr;
    if (len < 1 || lagCount < 1) return zspStsSizeErr;

    const In16 x{src, static_cast<std::size_t>(len)};
    common::crossCorrSteps(x, x, {dst, static_cast<std::size_t>(lagCount)});
    return zspStsNoErr;
}

ZspStatus zspsAutoCorr_NormE_NR_16s(const std::int16_t* src, std::int32_t len, std::int16_t* dst,
                                    std::int32_t lagCount, std::int32_t* norm)
{
    if (!src || !dst || !norm) return zspStsNullPtrErr;
    if (len < 1 || lagCount < 1) return zspStsSizeErr;

    *norm = common::autoCorrNormRounded({src, static_cast<std::size_t>(len)},
                                        {dst, static_cast<std::size_t>(lagCount)});
    return zspStsNoErr;
}

ZspStatus zspsCrossCorr_NR_16s32s(const std::int16_t* src1, const std::int16_t* src2,
                                  std::int32_t len, std::int32_t* dst, std::int32_t lagCount)
{
    if (!src1 || !src2 || !dst) return zspStsNullPtrErr;
    if (len < 1 || lagCount < 1) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    common::crossCorrSteps({src1, n}, {src2, n}, {dst, static_cast<std::size_t>(lagCount)});
    return zspStsNoErr;
}

ZspStatus zspsCrossCorr_NR_16s(const std::int16_t* src1, const std::int16_t* src2, std::int32_t len,
                               std::int16_t* dst, std::int32_t lagCount)
{
    if (!src1 || !src2 || !dst) return zspStsNullPtrErr;
    if (len < 1 || lagCount < 1) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    for (std::size_t k = 0; k < static_cast<std::size_t>(lagCount); ++k) {
        fx::Long sum = 0;
        common::crossCorrSteps(In16{src1, n}.subspan(std::min(k, n)), {src2, n}, {&sum, 1});
        dst[k] = fx::round_fx(sum);
    }
    return zspStsNoErr;
}

ZspStatus zspsCrossCorr_NR_16s_Sfs(const std::int16_t* src1, const std::int16_t* src2,
                                   std::int32_t len, std::int16_t* dst, std::int32_t lagCount,
                                   std::int32_t scaleFactor)
{
    if (!src1 || !src2 || !dst) return zspStsNullPtrErr;
    if (len < 1 || lagCount < 1) return zspStsSizeErr;
    if (scaleFactor < 0) return zspStsScaleRangeErr;

    const auto n = static_cast<std::size_t>(len);
    common::crossCorrScaled({src1, n}, {src2, n}, {dst, static_cast<std::size_t>(lagCount)},
                            scaleFactor);
    return zspStsNoErr;
}

ZspStatus zspsConvPartial_NR_16s(const std::int16_t* src1, const std::int16_t* src2,
                                 std::int16_t* dst, std::int32_t len)
{
    if (!src1 || !src2 || !dst) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    common::convolveRounded({src1, n}, {src2, n}, {dst, n});
    return zspStsNoErr;
}

ZspStatus zspsDotProdAutoScale_16s32s_Sfs(const std::int16_t* src1, const std::int16_t* src2,
                                          std::int32_t len, std::int32_t* dst,
                                          std::int32_t* scaleFactor)
{
    if (!src1 || !src2 || !dst || !scaleFactor) return zspStsNullPtrErr;
    if (len < 1) return zspStsSizeErr;

    const auto n = static_cast<std::size_t>(len);
    const common::ScaledSum sum = common::dotScaled({src1, n}, {src2, n});
    *dst = sum.value;
    *scaleFactor = sum.shift;
    return zspStsNoErr;
}

} // namespace zsp::entry
