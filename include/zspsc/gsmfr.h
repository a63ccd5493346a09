/**
 * @file zspsc/gsmfr.h
 * @brief GSM full-rate speech coder.
 */
#ifndef ZSPSC_GSMFR_H
#define ZSPSC_GSMFR_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_gsmfr GSM full rate
 *
 * The blocks of the RPE-LTP coder at 13 kbit/s of ETSI GSM 06.10 (EN 300 961, 3GPP TS 46.010), in
 * its fixed-point arithmetic. A frame is 160 samples of 8 kHz, in four sub-segments of 40. It
 * codes to 76 parameters, here in the order of transmission: LARc[1..8], then for each sub-segment
 * the lag Nc, the gain bc, the grid Mc, the block amplitude xmaxc and the pulses xMc[0..12].
 *
 * An encoder, once a frame:
 *
 *     Preprocess, AutoCorr, Schur, ReflectToLAR, LARQuant: the eight LARc
 *     LARDequant, LARInterpolateToReflect, ShortTermAnalysisFilter: the residual d
 *
 * and for each sub-segment of d:
 *
 *     LTPSearch: Nc and bc; LongTermPredict, WeightingFilter, RPEGridSelect: Mc; APCMQuant: xmaxc,
 *     xMc; APCMDequant, LongTermSynthesis: the residual as the decoder has it
 *
 * A decoder does APCMDequant and LongTermSynthesis for each sub-segment, with the last lag used, at
 * first 40, in place of one outside 40..120; then LARDequant, LARInterpolateToReflect,
 * ShortTermSynthesisFilter and Deemphasis.
 *
 * What is kept from frame to frame is the caller's, all zero at the start: the state of Preprocess,
 * the memory of Deemphasis, those of the short-term filters, the last frame's decoded log area
 * ratios, and the last 120 samples of the reconstructed residual. These stand before the
 * sub-segment in one array: a pointer `past` or `dst` is that of the sub-segment, and its elements
 * -120 to -1 are read.
 *
 * Where samples and parameters come and go in arrays of one length, dst may be src.
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

/**
 * A stored frame from its parameters: the bits 1101, then the parameters, the most significant bits
 * first.
 *
 * @param[in]  src  76 parameters
 * @param[out] dst  33 bytes
 * @retval zspStsNullPtrErr     src or dst is null
 * @retval zspStsCodecRangeErr  a parameter does not fit its bits
 * @see RFC 3551, section 4.5.8; GSM 06.10, table 1.1
 */
ZSPSC_API ZspStatus zspsPackFrame_GSMFR_16s8u(const int16_t* src, uint8_t* dst);

/**
 * The parameters of a stored frame.
 *
 * Every other 260 bits are accepted; lags may then be 0 to 127.
 *
 * @param[in]  src  33 bytes
 * @param[out] dst  76 parameters
 * @retval zspStsNullPtrErr     src or dst is null
 * @retval zspStsCodecRangeErr  the first four bits are not 1101
 * @see RFC 3551, section 4.5.8; GSM 06.10, table 1.1
 */
ZSPSC_API ZspStatus zspsUnpackFrame_GSMFR_8u16s(const uint8_t* src, int16_t* dst);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
