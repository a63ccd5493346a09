/**
 * @file zspsc/celp.h
 * @brief Filters and sums that coders by code-excited linear prediction are made of.
 */
#ifndef ZSPSC_CELP_H
#define ZSPSC_CELP_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_celp Blocks of linear prediction coders
 *
 * What several speech coders have in common, in the arithmetic of the ITU-T basic operators: half
 * is added before a result is shifted right.
 * @{
 */

/**
 * Filter by the inverse of a prediction filter of order ten, as in speech synthesis.
 *
 *   dst[n] = (lpc[0] src[n] - sum over j = 1..10 of lpc[j] dst[n-j] + half) >> scaleFactor
 *
 * The doubled sum is saturated to 32 bits at every step in this order, and so are its shift left by
 * 15 - scaleFactor and the rounding of its upper word.
 *
 * @param[in]     lpc          11 words
 * @param[in]     src          len samples
 * @param[out]    dst          len samples; may be src, otherwise must not overlap it
 * @param         len          at least 1
 * @param[in,out] memory       the last ten samples of dst, the newest last; 0 at the beginning
 * @param         scaleFactor  0 to 15; 12 for coefficients in Q12
 * @retval zspStsNullPtrErr     lpc, src, dst or memory is null
 * @retval zspStsSizeErr        len < 1
 * @retval zspStsScaleRangeErr  scaleFactor < 0 or scaleFactor > 15
 * @see ITU-T G.729, clause 4.1.6
 */
ZSPSC_API ZspStatus zspsSynthesisFilter_NR_16s_Sfs(const int16_t* lpc, const int16_t* src,
                                                   int16_t* dst, int32_t len, int16_t* memory,
                                                   int32_t scaleFactor);

/**
 * Add two vectors with a factor each, as an excitation is made of an adaptive and a fixed vector.
 *
 *   dst[i] = sat16(src1[i] factor1 / 2^scaleFactor1 + src2[i] factor2 / 2^scaleFactor2)
 *
 * The sum is exact and rounded once, by adding half before its shift right.
 *
 * @param[in]  src1, src2                  len samples each
 * @param      factor1, factor2            any word
 * @param[out] dst                         len samples; may be src1 or src2
 * @param      len                         at least 1
 * @param      scaleFactor1, scaleFactor2  0 to 31
 * @retval zspStsNullPtrErr     src1, src2 or dst is null
 * @retval zspStsSizeErr        len < 1
 * @retval zspStsScaleRangeErr  a scale factor is negative or greater than 31
 */
ZSPSC_API ZspStatus zspsInterpolateC_NR_16s(const int16_t* src1, int16_t factor1,
                                            const int16_t* src2, int16_t factor2, int16_t* dst,
                                            int32_t len, int32_t scaleFactor1,
                                            int32_t scaleFactor2);

/**
 * Autocorrelation with the basic operators.
 *
 *   dst[k] = 2 sum over i = 0..len-1-k of src[i+k] src[i], saturated to 32 bits at every step
 *
 * Lags from len on give 0.
 *
 * @param[in]  src       len samples
 * @param      len       at least 1
 * @param[out] dst       lagCount sums
 * @param      lagCount  at least 1
 * @retval zspStsNullPtrErr  src or dst is null
 * @retval zspStsSizeErr     len < 1 or lagCount < 1
 */
ZSPSC_API ZspStatus zspsAutoCorr_16s32s(const int16_t* src, int32_t len, int32_t* dst,
                                        int32_t lagCount);

/**
 * As zspsAutoCorr_16s32s(), normalised: all sums are shifted left, saturating, by what normalises
 * the first, and their upper words rounded. Of silence all are 0.
 *
 * @param[in]  src       len samples
 * @param      len       at least 1
 * @param[out] dst       lagCount words
 * @param      lagCount  at least 1
 * @param[out] norm      the shift, 0 to 30
 * @retval zspStsNullPtrErr  src, dst or norm is null
 * @retval zspStsSizeErr     len < 1 or lagCount < 1
 */
ZSPSC_API ZspStatus zspsAutoCorr_NormE_NR_16s(const int16_t* src, int32_t len, int16_t* dst,
                                              int32_t lagCount, int32_t* norm);

/**
 * Cross-correlation with the basic operators.
 *
 *   dst[k] = 2 sum over i = 0..len-1-k of src1[i+k] src2[i], saturated to 32 bits at every step
 *
 * Lags from len on give 0.
 *
 * @param[in]  src1, src2  len samples each
 * @param      len         at least 1
 * @param[out] dst         lagCount sums
 * @param      lagCount    at least 1
 * @retval zspStsNullPtrErr  src1, src2 or dst is null
 * @retval zspStsSizeErr     len < 1 or lagCount < 1
 */
ZSPSC_API ZspStatus zspsCrossCorr_NR_16s32s(const int16_t* src1, const int16_t* src2, int32_t len,
                                            int32_t* dst, int32_t lagCount);

/**
 * As zspsCrossCorr_NR_16s32s(), of each sum the upper word, rounded.
 *
 * @param[in]  src1, src2  len samples each
 * @param      len         at least 1
 * @param[out] dst         lagCount words
 * @param      lagCount    at least 1
 * @retval zspStsNullPtrErr  src1, src2 or dst is null
 * @retval zspStsSizeErr     len < 1 or lagCount < 1
 */
ZSPSC_API ZspStatus zspsCrossCorr_NR_16s(const int16_t* src1, const int16_t* src2, int32_t len,
                                         int16_t* dst, int32_t lagCount);

/**
 * Cross-correlation with a rounding right shift and saturation.
 *
 *   dst[k] = sat16((sum over i = 0..len-1-k of src1[i+k] src2[i] + half) >> scaleFactor)
 *
 * The sum is exact and not doubled; half is 2^(scaleFactor-1), or 0 when scaleFactor is 0.
 *
 * @param[in]  src1, src2   len samples each
 * @param      len          at least 1
 * @param[out] dst          lagCount words
 * @param      lagCount     at least 1
 * @param      scaleFactor  at least 0
 * @retval zspStsNullPtrErr     src1, src2 or dst is null
 * @retval zspStsSizeErr        len < 1 or lagCount < 1
 * @retval zspStsScaleRangeErr  scaleFactor < 0
 */
ZSPSC_API ZspStatus zspsCrossCorr_NR_16s_Sfs(const int16_t* src1, const int16_t* src2, int32_t len,
                                             int16_t* dst, int32_t lagCount, int32_t scaleFactor);

/**
 * The first len samples of the response to a vector, the response in Q12.
 *
 *   dst[n] = (sum over i = 0..n of src1[i] src2[n-i] + 2^11) >> 12
 *
 * The doubled sum is saturated to 32 bits at every step, and so are its shift left by 3 and the
 * rounding of its upper word.
 *
 * @param[in]  src1, src2  len samples each
 * @param[out] dst         len samples
 * @param      len         at least 1
 * @retval zspStsNullPtrErr  src1, src2 or dst is null
 * @retval zspStsSizeErr     len < 1
 */
ZSPSC_API ZspStatus zspsConvPartial_NR_16s(const int16_t* src1, const int16_t* src2, int16_t* dst,
                                           int32_t len);

/**
 * A dot product with the smallest scaling that it needs.
 *
 *   dst = (sum over i = 0..len-1 of src1[i] src2[i] + half) >> scaleFactor
 *
 * The sum is exact and not doubled. scaleFactor is the smallest with which the result fits 32 bits;
 * half is 2^(scaleFactor-1), or 0 when scaleFactor is 0.
 *
 * @param[in]  src1, src2   len samples each
 * @param      len          at least 1
 * @param[out] dst          the product
 * @param[out] scaleFactor  0 to 30
 * @retval zspStsNullPtrErr  src1, src2, dst or scaleFactor is null
 * @retval zspStsSizeErr     len < 1
 */
ZSPSC_API ZspStatus zspsDotProdAutoScale_16s32s_Sfs(const int16_t* src1, const int16_t* src2,
                                                    int32_t len, int32_t* dst,
                                                    int32_t* scaleFactor);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
