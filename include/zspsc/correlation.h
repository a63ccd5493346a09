/**
 * @file zspsc/correlation.h
 * @brief Correlation and scaling.
 */
#ifndef ZSPSC_CORRELATION_H
#define ZSPSC_CORRELATION_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_correlation Correlation and scaling
 *
 * Building blocks that codecs share: correlations and lag searches, block scaling, inverse square
 * root, pre-emphasis.
 * @{
 */

/**
 * Autocorrelation, normalised so that lag 0 uses all 31 bits.
 *
 *   r0 = 2 * energy + 1, dst[0] = r0 << norm,
 *   dst[k] = (2 * sum of src[i] * src[i-k]) << norm for k = 1..lagCount-1
 *
 * energy is the exact sum of the squares, norm the number of left shifts that normalise r0. Sums
 * run over k <= i < len; lags from len on give 0. No lag overflows.
 *
 * @param[in]  src       len samples
 * @param      len       at least 1
 * @param[out] dst       lagCount correlations
 * @param      lagCount  at least 1
 * @param[out] norm      shift count, 0 to 30; 30 for silence, where dst[0] is 2^30
 * @retval zspStsNullPtrErr  src, dst or norm is null
 * @retval zspStsSizeErr     len < 1 or lagCount < 1
 * @retval zspStsOverflow    energy > 2^30 - 1; nothing is written
 * @see ITU-T G.729, Autocorr
 */
ZSPSC_API ZspStatus zspsAutoCorr_NormE_16s32s(const int16_t* src, int32_t len, int32_t* dst,
                                              int32_t lagCount, int32_t* norm);

/**
 * Cross-correlation of two vectors with a rounding right shift and saturation.
 *
 *   dst[k] = sat32((sum over i = 0..len-1-k of src1[i+k] * src2[i] + half) >> scaleFactor)
 *
 * The sum is exact; half is 2^(scaleFactor-1), or 0 when scaleFactor is 0. Lags from len on give 0,
 * and so does a scaleFactor of 62 or more.
 *
 * @param[in]  src1, src2   len samples each
 * @param      len          at least 1
 * @param[out] dst          lagCount correlations
 * @param      lagCount     at least 1
 * @param      scaleFactor  at least 0
 * @retval zspStsNullPtrErr     src1, src2 or dst is null
 * @retval zspStsSizeErr        len < 1 or lagCount < 1
 * @retval zspStsScaleRangeErr  scaleFactor < 0
 */
ZSPSC_API ZspStatus zspsCrossCorr_16s32s_Sfs(const int16_t* src1, const int16_t* src2, int32_t len,
                                             int32_t* dst, int32_t lagCount, int32_t scaleFactor);

/**
 * Cross-correlation at all lags with a scaling that follows its largest value, as between target
 * and impulse response before an algebraic codebook search.
 *
 *   c[k] = 2 * sum over i = 0..len-1-k of src1[i+k] * src2[i], saturated to 32 bits at every step
 *   dst[k] = c[k] >> (18 - min(16, norm of the largest |c|))
 *
 * The norm is the number of left shifts that normalise a 32-bit value. |dst[k]| <= 8192.
 *
 * @param[in]  src1, src2  len samples each
 * @param      len         at least 1
 * @param[out] dst         len correlations
 * @retval zspStsNullPtrErr  src1, src2 or dst is null
 * @retval zspStsSizeErr     len < 1
 * @see ITU-T G.729, Cor_h_X
 */
ZSPSC_API ZspStatus zspsCrossCorr_NormM_16s(const int16_t* src1, const int16_t* src2, int32_t len,
                                            int16_t* dst);

/**
 * The first len samples of the convolution of two vectors, with a rounding right shift and
 * saturation.
 *
 *   dst[n] = sat16((sum over i = 0..n of src1[i] * src2[n-i] + half) >> scaleFactor)
 *
 * The sum is exact; half is 2^(scaleFactor-1), or 0 when scaleFactor is 0.
 *
 * @param[in]  src1, src2   len samples each
 * @param[out] dst          len samples
 * @param      len          at least 1
 * @param      scaleFactor  at least 0; 12 for an impulse response in Q12
 * @retval zspStsNullPtrErr  src1, src2 or dst is null
 * @retval zspStsBadArgErr   scaleFactor < 0
 * @retval zspStsSizeErr     len < 1
 */
ZSPSC_API ZspStatus zspsConvPartial_16s_Sfs(const int16_t* src1, const int16_t* src2, int16_t* dst,
                                            int32_t len, int32_t scaleFactor);

/**
 * Search for the lag of the largest cross-correlation.
 *
 *   c(lag) = sum over i = 0..len-1 of src1[i] * src2[i+lag] for lag = lagMax..0
 *
 * The sums wrap at 32 bits. Of equal maxima the largest lag is taken. When no correlation is
 * positive, maxCorr is 0 and bestLag is lagMax.
 *
 * @param[in]  src1     len samples
 * @param[in]  src2     len + lagMax samples
 * @param      len      at least 1
 * @param      lagMax   at least 0
 * @param[out] maxCorr  the largest correlation
 * @param[out] bestLag  its lag
 * @retval zspStsNullPtrErr  src1, src2, maxCorr or bestLag is null
 * @retval zspStsSizeErr     len < 1
 * @retval zspStsRangeErr    lagMax < 0
 */
ZSPSC_API ZspStatus zspsCrossCorrLagMax_16s(const int16_t* src1, const int16_t* src2, int32_t len,
                                            int32_t lagMax, int32_t* maxCorr, int32_t* bestLag);

/**
 * Search for the lag of the largest autocorrelation, lags ascending, as in an open-loop pitch
 * search.
 *
 *   c(lag) = sum over i = 0..len-1 of src[i] * src[i-lag] for lag = lagMin..lagMax
 *
 * The sums wrap at 32 bits. Of equal maxima the smallest lag is taken. When no correlation is
 * positive, maxCorr is 0 and bestLag is lagMin.
 *
 * @param[in]  src      the current len samples, preceded by lagMax samples of the past
 * @param      len      at least 1
 * @param      lagMin   at least 0
 * @param      lagMax   at least lagMin
 * @param[out] maxCorr  the largest correlation
 * @param[out] bestLag  its lag
 * @retval zspStsNullPtrErr  src, maxCorr or bestLag is null
 * @retval zspStsSizeErr     len < 1
 * @retval zspStsRangeErr    lagMin < 0 or lagMax < lagMin
 */
ZSPSC_API ZspStatus zspsAutoCorrLagMax_Fwd_16s(const int16_t* src, int32_t len, int32_t lagMin,
                                               int32_t lagMax, int32_t* maxCorr, int32_t* bestLag);

/**
 * As zspsAutoCorrLagMax_Fwd_16s(), lags descending: of equal maxima the largest lag is taken, and
 * when no correlation is positive, bestLag is lagMax.
 *
 * @param[in]  src      the current len samples, preceded by lagMax samples of the past
 * @param      len      at least 1
 * @param      lagMin   at least 0
 * @param      lagMax   at least lagMin
 * @param[out] maxCorr  the largest correlation
 * @param[out] bestLag  its lag
 * @retval zspStsNullPtrErr  src, maxCorr or bestLag is null
 * @retval zspStsSizeErr     len < 1
 * @retval zspStsRangeErr    lagMin < 0 or lagMax < lagMin
 */
ZSPSC_API ZspStatus zspsAutoCorrLagMax_Inv_16s(const int16_t* src, int32_t len, int32_t lagMin,
                                               int32_t lagMax, int32_t* maxCorr, int32_t* bestLag);

/**
 * As zspsAutoCorrLagMax_Fwd_16s(), in single precision. Every sum starts at 0 and adds the rounded
 * products in the order of the samples. A correlation that is not a number is never the maximum.
 *
 * @param[in]  src      the current len samples, preceded by lagMax samples of the past
 * @param      len      at least 1
 * @param      lagMin   at least 0
 * @param      lagMax   at least lagMin
 * @param[out] maxCorr  the largest correlation
 * @param[out] bestLag  its lag
 * @retval zspStsNullPtrErr  src, maxCorr or bestLag is null
 * @retval zspStsSizeErr     len < 1
 * @retval zspStsRangeErr    lagMin < 0 or lagMax < lagMin
 */
ZSPSC_API ZspStatus zspsAutoCorrLagMax_32f(const float* src, int32_t len, int32_t lagMin,
                                           int32_t lagMax, float* maxCorr, int32_t* bestLag);

/**
 * Shift a block so that its largest magnitude has `scale` bits of headroom.
 *
 *   shift = norm - scale, dst[i] = src[i] << shift, or src[i] >> -shift when shift < 0
 *
 * norm is the number of left shifts that normalise the largest magnitude (32767 for -32768), 0 for
 * a block of zeros. No left shift overflows.
 *
 * @param[in]     src    len samples
 * @param[out]    dst    len samples; may be src, otherwise must not overlap it
 * @param         len    at least 1
 * @param[in,out] scale  headroom in bits, at least 0; receives shift, -scale to 14 - scale
 * @retval zspStsNullPtrErr     src, dst or scale is null
 * @retval zspStsSizeErr        len < 1
 * @retval zspStsScaleRangeErr  the integer at scale is negative
 */
ZSPSC_API ZspStatus zspsAutoScale_16s(const int16_t* src, int16_t* dst, int32_t len,
                                      int32_t* scale);

/**
 * As zspsAutoScale_16s(), in place.
 *
 * @param[in,out] srcDst  len samples
 * @param         len     at least 1
 * @param[in,out] scale   headroom in bits, at least 0; receives the shift
 * @retval zspStsNullPtrErr     srcDst or scale is null
 * @retval zspStsSizeErr        len < 1
 * @retval zspStsScaleRangeErr  the integer at scale is negative
 */
ZSPSC_API ZspStatus zspsAutoScale_16s_I(int16_t* srcDst, int32_t len, int32_t* scale);

/**
 * Inverse square roots in place, by linear interpolation in a table of 49 entries.
 *
 * The result is 2^30 / sqrt(x), that is 1 / sqrt(x) in Q30, for an integer x > 0, and 0x3fffffff
 * for x <= 0.
 *
 * @param[in,out] srcDst  len values
 * @param         len     at least 1
 * @retval zspStsNullPtrErr  srcDst is null
 * @retval zspStsSizeErr     len < 1
 * @see ITU-T G.729, Inv_sqrt; the same arithmetic, bit for bit
 */
ZSPSC_API ZspStatus zspsInvSqrt_32s_I(int32_t* srcDst, int32_t len);

/**
 * First-order pre-emphasis in place.
 *
 *   y[n] = x[n] - factor * x[n-1], the product rounded before the difference
 *
 * @param         factor  coefficient
 * @param[in,out] srcDst  len samples, x before the call and y after it
 * @param         len     at least 1
 * @param[in,out] memory  x[-1]; receives the last x for the next call. 0 at the start of a signal
 * @retval zspStsNullPtrErr  srcDst or memory is null
 * @retval zspStsSizeErr     len < 1
 */
ZSPSC_API ZspStatus zspsPreemphasize_32f_I(float factor, float* srcDst, int32_t len, float* memory);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
