/**
 * @file zspsc/gsmfr/residual.h
 * @brief GSM full-rate speech coder: long-term prediction and pulses.
 */
#ifndef ZSPSC_GSMFR_RESIDUAL_H
#define ZSPSC_GSMFR_RESIDUAL_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_gsmfr_residual GSM full rate, long-term prediction and pulses
 *
 * A sub-segment of the residual to its lag, gain, grid, amplitude and pulses, and back. What
 * zspsc/gsmfr/frame.h says of the coder holds here as well.
 * @{
 */

/**
 * Lag and coded gain with which the reconstructed residual predicts a sub-segment best.
 *
 * Of lags with the same correlation the smallest; 40 if no correlation is positive.
 *
 * @param[in]  src   40 words d[0..39]
 * @param[in]  past  its elements -120 to -1: dp[-120..-1]
 * @param[out] lag   Nc, 40 to 120
 * @param[out] gain  bc, 0 to 3
 * @retval zspStsNullPtrErr  src, past, lag or gain is null
 * @see GSM 06.10, clause 5.2.11
 */
ZSPSC_API ZspStatus zspsLTPSearch_GSMFR_16s(const int16_t* src, const int16_t* past, int32_t* lag,
                                            int32_t* gain);

/**
 * The long-term residual of a sub-segment.
 *
 *   dst[k] = sub(src[k], mult_r(QLB[gain], past[k - lag]))
 *
 * @param[in]  src   40 words d[0..39]
 * @param[in]  past  its elements -120 to -1: dp[-120..-1]
 * @param      lag   Nc, 40 to 120
 * @param      gain  bc, 0 to 3
 * @param[out] dst   40 words e[0..39]; may be src
 * @retval zspStsNullPtrErr     src, past or dst is null
 * @retval zspStsCodecRangeErr  lag or gain is outside its range
 * @see GSM 06.10, clause 5.2.12
 */
ZSPSC_API ZspStatus zspsLongTermPredict_GSMFR_16s(const int16_t* src, const int16_t* past,
                                                  int32_t lag, int32_t gain, int16_t* dst);

/**
 * The weighting filter over a sub-segment, with zeros around it.
 *
 *   dst[k] = sat16((sum over i = 0..10 of H[i] src[k + 5 - i] + 4096) >> 13)
 *
 * @param[in]  src  40 words e[0..39]
 * @param[out] dst  40 words x[0..39]; may be src
 * @retval zspStsNullPtrErr  src or dst is null
 * @see GSM 06.10, clause 5.2.13
 */
ZSPSC_API ZspStatus zspsWeightingFilter_GSMFR_16s(const int16_t* src, int16_t* dst);

/**
 * Take every third sample, on that of four grids with the most energy; of equal ones the first.
 *
 *   dst[i] = src[grid + 3 i]
 *
 * @param[in]  src   40 words x[0..39]
 * @param[out] dst   13 words xM[0..12]
 * @param[out] grid  Mc, 0 to 3
 * @retval zspStsNullPtrErr  src, dst or grid is null
 * @see GSM 06.10, clause 5.2.14
 */
ZSPSC_API ZspStatus zspsRPEGridSelect_GSMFR_16s(const int16_t* src, int16_t* dst, int32_t* grid);

/**
 * Code the samples of a grid: the largest magnitude, and all of them in proportion to it.
 *
 * @param[in]  src        13 words xM[0..12]
 * @param[out] dst        13 codes xMc[0..12], 0 to 7; may be src
 * @param[out] amplitude  xmaxc, 0 to 63
 * @retval zspStsNullPtrErr  src, dst or amplitude is null
 * @see GSM 06.10, clause 5.2.15
 */
ZSPSC_API ZspStatus zspsAPCMQuant_GSMFR_16s(const int16_t* src, int16_t* dst, int32_t* amplitude);

/**
 * Decode the samples of a grid.
 *
 * @param[in]  src        13 codes xMc[0..12], 0 to 7
 * @param      amplitude  xmaxc, 0 to 63
 * @param[out] dst        13 words xMp[0..12]; may be src
 * @retval zspStsNullPtrErr     src or dst is null
 * @retval zspStsCodecRangeErr  amplitude or a code is outside its range
 * @see GSM 06.10, clause 5.2.16
 */
ZSPSC_API ZspStatus zspsAPCMDequant_GSMFR_16s(const int16_t* src, int32_t amplitude, int16_t* dst);

/**
 * Reconstruct the short-term residual of a sub-segment, in encoder and decoder.
 *
 *   dst[k] = add(ep[k], mult_r(QLB[gain], dst[k - lag])),   ep[grid + 3 i] = src[i], others 0
 *
 * @param[in]     src   13 words xMp[0..12]
 * @param         grid  Mc, 0 to 3
 * @param         lag   Nc, 40 to 120
 * @param         gain  bc, 0 to 3
 * @param[in,out] dst   40 words dp[0..39] or drp[0..39]; its elements -120 to -1 are read
 * @retval zspStsNullPtrErr     src or dst is null
 * @retval zspStsCodecRangeErr  grid, lag or gain is outside its range
 * @see GSM 06.10, clauses 5.2.17 and 5.2.18, 5.3.1 and 5.3.2
 */
ZSPSC_API ZspStatus zspsLongTermSynthesis_GSMFR_16s(const int16_t* src, int32_t grid, int32_t lag,
                                                    int32_t gain, int16_t* dst);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
