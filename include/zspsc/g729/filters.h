/**
 * @file zspsc/g729/filters.h
 * @brief G.729 filters and conversions.
 */
#ifndef ZSPSC_G729_FILTERS_H
#define ZSPSC_G729_FILTERS_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_g729 G.729 filters and conversions
 *
 * The high-pass filter and the LSP-to-LSF conversion of ITU-T G.729, in the Recommendation's fixed-
 * point arithmetic. The filter's state lies where the caller put it, at any address, and may be
 * copied; encoder and decoder need one each.
 * @{
 */

/**
 * The size of a high-pass filter's state.
 *
 * @param[out] size  24
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsHighPassFilterSize_G729(int32_t* size);

/**
 * As zspsHighPassFilterSize_G729(): the high-pass filter of ITU-T G.729.1 has the same size.
 *
 * @param[out] size  24
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsFilterHighpassGetStateSize_G7291_16s(int32_t* size);

/**
 * As zspsHighPassFilterSize_G729(): AMR-WB's adaptive codebook decoding has the same size.
 *
 * @param[out] size  24
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsAdaptiveCodebookDecodeGetSize_AMRWB_16s(int32_t* size);

/**
 * Start a high-pass filter: its memory cleared, its coefficients kept.
 *
 *   y[n] = a1 y[n-1] + a2 y[n-2] + b0 x[n] + b1 x[n-1] + b2 x[n-2]
 *
 * The Recommendation has 4096, 7807, -3733, 1899, -3798, 1899 (Q12) before the encoder, which also
 * halves the signal, and 8192, 15836, -7667, 7699, -15398, 7699 (Q13) after the decoder.
 *
 * @param[in]  coeffs  six words a0, a1, a2, b0, b1, b2; a0 is not used
 * @param[out] state   24 bytes at any address
 * @retval zspStsNullPtrErr  coeffs or state is null
 * @see ITU-T G.729, clauses 3.1 and 4.2.5
 */
ZSPSC_API ZspStatus zspsHighPassFilterInit_G729(const int16_t* coeffs, void* state);

/**
 * Filter samples, in place. Blocks may be of any length; the filter goes on from call to call.
 *
 * The sum is a 32-bit word and wraps; the coefficients of the Recommendation never make it. The
 * output that is kept for the recursion is the sum shifted left by 16 - scaleFactor, saturated, one
 * step early at the top: the greatest sum that could be shifted, 2^27 - 1 or 2^28 - 1, gives
 * 2^31 - 1 already.
 *
 * @param[in,out] srcDst       len samples
 * @param         len          at least 1
 * @param         scaleFactor  12: coefficients in Q12; 13: coefficients in Q13, and the output is
 *                             doubled. Output is rounded and saturated.
 * @param[in,out] state        as initialised
 * @retval zspStsNullPtrErr     srcDst or state is null
 * @retval zspStsSizeErr        len < 1
 * @retval zspStsScaleRangeErr  scaleFactor is neither 12 nor 13
 * @see ITU-T G.729, clauses 3.1 and 4.2.5
 */
ZSPSC_API ZspStatus zspsHighPassFilter_G729_16s_ISfs(int16_t* srcDst, int32_t len,
                                                     int32_t scaleFactor, void* state);

/**
 * Convert ten line spectral pairs to angular frequencies: arc cosines, interpolated on a grid of 64
 * points and truncated.
 *
 * Input that is not ordered gives frequencies without meaning, and -32768 wraps to -25736.
 *
 * @param[in]  src  ten cosines in Q15, the greatest (lowest frequency) first
 * @param[out] dst  ten frequencies in radians, Q13, 0..25736; may be src, otherwise must not
 *                  overlap it
 * @retval zspStsNullPtrErr  src or dst is null
 * @see ITU-T G.729, clause 3.2.4
 */
ZSPSC_API ZspStatus zspsLSPToLSF_G729_16s(const int16_t* src, int16_t* dst);

/**
 * Convert ten line spectral pairs to frequencies in parts of the sampling rate, rounded instead of
 * truncated.
 *
 * @param[in]  src  ten cosines in Q15, the greatest (lowest frequency) first
 * @param[out] dst  ten frequencies in Q15, 0..16384 (half the sampling rate); may be src, otherwise
 *                  must not overlap it
 * @retval zspStsNullPtrErr  src or dst is null
 * @see ITU-T G.729, clause 3.2.4
 */
ZSPSC_API ZspStatus zspsLSPToLSF_Norm_G729_16s(const int16_t* src, int16_t* dst);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
