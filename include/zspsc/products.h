/**
 * @file zspsc/products.h
 * @brief Products of vectors.
 */
#ifndef ZSPSC_PRODUCTS_H
#define ZSPSC_PRODUCTS_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_products Products
 *
 * Element-wise products of vectors.
 * @{
 */

/**
 * Multiply two vectors with a rounding right shift and saturation.
 *
 *   dst[i] = sat16((src1[i] * src2[i] + 2^(scaleFactor-1)) >> scaleFactor)
 *
 * The sum is exact; there is no rounding term when scaleFactor is 0. Ties round towards plus
 * infinity. A scaleFactor of 32 or more gives 0.
 *
 * @param[in]  src1, src2   len samples each
 * @param[out] dst          len samples; may be src1 or src2, otherwise must not overlap them
 * @param      len          at least 1
 * @param      scaleFactor  at least 0; 15 for Q15 x Q15 -> Q15
 * @retval zspStsNullPtrErr     src1, src2 or dst is null
 * @retval zspStsSizeErr        len < 1
 * @retval zspStsScaleRangeErr  scaleFactor < 0
 * @see ITU-T G.191, basic operator mult_r (scaleFactor 15)
 */
ZSPSC_API ZspStatus zspsMul_NR_16s_Sfs(const int16_t* src1, const int16_t* src2, int16_t* dst,
                                       int32_t len, int32_t scaleFactor);

/**
 * As zspsMul_NR_16s_Sfs(), in place: srcDst is the second source and the destination.
 *
 * @param[in]     src          len samples; may be srcDst, otherwise must not overlap it
 * @param[in,out] srcDst       len samples
 * @param         len          at least 1
 * @param         scaleFactor  at least 0
 * @retval zspStsNullPtrErr     src or srcDst is null
 * @retval zspStsSizeErr        len < 1
 * @retval zspStsScaleRangeErr  scaleFactor < 0
 */
ZSPSC_API ZspStatus zspsMul_NR_16s_ISfs(const int16_t* src, int16_t* srcDst, int32_t len,
                                        int32_t scaleFactor);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
