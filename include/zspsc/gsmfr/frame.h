/**
 * @file zspsc/gsmfr/frame.h
 * @brief GSM full-rate speech coder: what it consists of, and its frames.
 */
#ifndef ZSPSC_GSMFR_FRAME_H
#define ZSPSC_GSMFR_FRAME_H

#include "../types.h"

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
