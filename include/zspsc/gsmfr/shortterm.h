/**
 * @file zspsc/gsmfr/shortterm.h
 * @brief GSM full-rate speech coder: samples, log area ratios and short-term filters.
 */
#ifndef ZSPSC_GSMFR_SHORTTERM_H
#define ZSPSC_GSMFR_SHORTTERM_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_gsmfr_shortterm GSM full rate, short-term prediction
 *
 * From samples to log area ratios and the residual, and from these to samples. What
 * zspsc/gsmfr/frame.h says of the coder holds here as well.
 * @{
 */

/** What zspsPreprocess_GSMFR_16s() keeps; all zero at the start. */
typedef struct ZspPreprocessState_GSMFR {
    int32_t lz2; /**< L_z2, the last offset-compensated sample, Q15 */
    int16_t z1;  /**< z1, the last input sample, scaled */
    int16_t mp;  /**< mp, the last offset-compensated sample, rounded */
} ZspPreprocessState_GSMFR;

/**
 * Prepare samples for the encoder: three low bits dropped, offset removed, high frequencies raised.
 *
 * One call gives the same as several that divide its samples between them.
 *
 * @param[in]     src    len samples
 * @param[out]    dst    len words s[k]; may be src
 * @param         len    at least 1; 160 in an encoder
 * @param[in,out] state  at any address; any content is accepted, and sof saturates to 16 bits
 * @retval zspStsNullPtrErr  src, dst or state is null
 * @retval zspStsSizeErr     len < 1
 * @see GSM 06.10, clauses 5.2.1 to 5.2.3
 */
ZSPSC_API ZspStatus zspsPreprocess_GSMFR_16s(const int16_t* src, int16_t* dst, int32_t len,
                                             ZspPreprocessState_GSMFR* state);

/**
 * Autocorrelation of a frame, scaled so that it fits, and the frame as the scaling leaves it.
 *
 *   dst[k] = 2 * sum over i of s[i] s[i-k],   s = mult_r(srcDst, 2^(15 - scale)) if scale > 0
 *
 * @param[in,out] srcDst  160 words s[k]; afterwards scaled down and up again where scale > 0, for
 *                        the short-term filter. A word of 2048 << 4 wraps to -32768.
 * @param[out]    dst     9 longs L_ACF[0..8]
 * @param[out]    scale   scalauto: 4 - norm of the largest magnitude, 0 for silence
 * @retval zspStsNullPtrErr  srcDst, dst or scale is null
 * @see GSM 06.10, clause 5.2.4
 */
ZSPSC_API ZspStatus zspsAutoCorr_GSMFR_16s32s_I(int16_t* srcDst, int32_t* dst, int32_t* scale);

/**
 * Reflection coefficients from an autocorrelation, by the recursion of Schur.
 *
 * The lags are shifted left by the norm of src[0], saturated, and their upper words taken. Where
 * the recursion finds abs(P[1]) > P[0], this coefficient and all further ones are 0.
 *
 * @param[in]  src  9 longs L_ACF[0..8]
 * @param[out] dst  8 words r[1..8], -32767..32767, Q15
 * @retval zspStsNullPtrErr  src or dst is null
 * @see GSM 06.10, clause 5.2.5
 */
ZSPSC_API ZspStatus zspsSchur_GSMFR_32s16s(const int32_t* src, int16_t* dst);

/**
 * Log area ratios from reflection coefficients.
 *
 * @param[in]  src  8 words r[1..8], Q15; -32768 is taken as -32767
 * @param[out] dst  8 words LAR[1..8], Q14; may be src
 * @retval zspStsNullPtrErr  src or dst is null
 * @see GSM 06.10, clause 5.2.6
 */
ZSPSC_API ZspStatus zspsReflectToLAR_GSMFR_16s(const int16_t* src, int16_t* dst);

/**
 * Code log area ratios.
 *
 * @param[in]  src  8 words LAR[1..8], Q14
 * @param[out] dst  8 codes LARc[1..8]: 0 to 63, 63, 31, 31, 15, 15, 7, 7; may be src
 * @retval zspStsNullPtrErr  src or dst is null
 * @see GSM 06.10, clause 5.2.7
 */
ZSPSC_API ZspStatus zspsLARQuant_GSMFR_16s(const int16_t* src, int16_t* dst);

/**
 * Decode log area ratios.
 *
 * @param[in]  src  8 codes LARc[1..8]
 * @param[out] dst  8 words LARpp[1..8], Q14; may be src
 * @retval zspStsNullPtrErr     src or dst is null
 * @retval zspStsCodecRangeErr  a code is outside the range that zspsLARQuant_GSMFR_16s() names
 * @see GSM 06.10, clause 5.2.8
 */
ZSPSC_API ZspStatus zspsLARDequant_GSMFR_16s(const int16_t* src, int16_t* dst);

/**
 * Reflection coefficients of a frame, whose first quarter lies between the last frame's and its
 * own.
 *
 * @param[in]  prev  8 words LARpp[1..8] of the last frame, Q14; at the start 0
 * @param[in]  cur   8 words LARpp[1..8] of this frame
 * @param[out] dst   32 words rp[1..8], Q15: eight for samples 0 to 12, eight for 13 to 26, for 27
 * to 39 and for 40 to 159
 * @retval zspStsNullPtrErr  prev, cur or dst is null
 * @see GSM 06.10, clause 5.2.9
 */
ZSPSC_API ZspStatus zspsLARInterpolateToReflect_GSMFR_16s(const int16_t* prev, const int16_t* cur,
                                                          int16_t* dst);

/**
 * The short-term residual of a frame.
 *
 * @param[in]     src      160 words s[k], as zspsAutoCorr_GSMFR_16s32s_I() leaves them
 * @param[in]     reflect  32 words rp[1..8] in four sets
 * @param[out]    dst      160 words d[k]; may be src
 * @param[in,out] memory   8 words u[0..7]
 * @retval zspStsNullPtrErr  src, reflect, dst or memory is null
 * @see GSM 06.10, clause 5.2.10
 */
ZSPSC_API ZspStatus zspsShortTermAnalysisFilter_GSMFR_16s(const int16_t* src,
                                                          const int16_t* reflect, int16_t* dst,
                                                          int16_t* memory);

/**
 * A frame from its short-term residual.
 *
 * @param[in]     src      160 words wr[k]
 * @param[in]     reflect  32 words rrp[1..8] in four sets
 * @param[out]    dst      160 words sr[k]; may be src
 * @param[in,out] memory   8 words v[0..7]
 * @retval zspStsNullPtrErr  src, reflect, dst or memory is null
 * @see GSM 06.10, clause 5.3.4
 */
ZSPSC_API ZspStatus zspsShortTermSynthesisFilter_GSMFR_16s(const int16_t* src,
                                                           const int16_t* reflect, int16_t* dst,
                                                           int16_t* memory);

/**
 * Samples from what the short-term filter gives: high frequencies lowered, doubled, the three low
 * bits cleared.
 *
 * One call gives the same as several that divide its samples between them.
 *
 * @param[in]     src     len words sr[k]
 * @param[out]    dst     len samples; may be src
 * @param         len     at least 1; 160 in a decoder
 * @param[in,out] memory  one word msr
 * @retval zspStsNullPtrErr  src, dst or memory is null
 * @retval zspStsSizeErr     len < 1
 * @see GSM 06.10, clauses 5.3.5 to 5.3.7
 */
ZSPSC_API ZspStatus zspsDeemphasis_GSMFR_16s(const int16_t* src, int16_t* dst, int32_t len,
                                             int16_t* memory);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
