/**
 * @file zspsc/g723/encoder.h
 * @brief G.723.1 encoder.
 */
#ifndef ZSPSC_G723_ENCODER_H
#define ZSPSC_G723_ENCODER_H

#include "decoder.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_g723_encoder G.723.1 encoder
 *
 * The blocks of an encoder after ITU-T G.723.1. It goes through a frame so:
 *
 *     zspsHighPassFilter
 *     per sub-frame: zspsAutoCorr, zspsLevinsonDurbin
 *     zspsLPCToLSP, zspsLSPQuant
 *     per sub-frame: zspsWeightingCoefs, zspsPerceptualWeighting
 *     zspsOpenLoopPitchSearch
 *     per sub-frame: zspsHarmonicSearch, zspsHarmonicFilter
 *     zspsLSPDequant, zspsLSPInterpolateToLPC
 *     per sub-frame:
 *       zspsImpulseResponse, zspsRingingSubtract
 *       zspsAdaptiveCodebookSearch, zspsDecodeAdaptiveVector, zspsAdaptiveSubtract
 *       zspsMPMLQSearch  or  zspsACELPCorrelations, zspsACELPSearch, zspsACELPGainQuant
 *       zspsDecodeFixedVector, zspsExcitation
 *       zspsTamingUpdate, zspsRingingUpdate
 *     zspsPackFrame
 *
 * The frame that is coded begins 60 samples before the newest 240. Prediction coefficients are ten
 * words in Q13; "coefs" are 20 of zspsWeightingCoefs().
 * @{
 */

/**
 * Take the mean out of the input and halve it.
 *
 * @param[in]     src     len samples
 * @param[out]    dst     len samples; may be src
 * @param         len     at least 1
 * @param[in,out] memory  the accumulator and the last input, 0 at the start
 * @retval zspStsNullPtrErr  src, dst or memory is null
 * @retval zspStsSizeErr     len < 1
 * @see ITU-T G.723.1, clause 2.3
 */
ZSPSC_API ZspStatus zspsHighPassFilter_G723_16s(const int16_t* src, int16_t* dst, int32_t len,
                                                int32_t* memory);

/**
 * Windowed autocorrelation.
 *
 * @param[in]  src    180 samples, a sub-frame in their middle
 * @param[out] corr   11 words, the first one normalised
 * @param[out] shift  the scale of corr; 40 where all are 0
 * @retval zspStsNullPtrErr  src, corr or shift is null
 * @see ITU-T G.723.1, clause 2.4
 */
ZSPSC_API ZspStatus zspsAutoCorr_G723_16s(const int16_t* src, int16_t* corr, int16_t* shift);

/**
 * Prediction coefficients from autocorrelations. The recursion ends early where it would not be
 * stable.
 *
 * @param[in]  corr        11 words
 * @param[out] lpc         ten words, Q13
 * @param[out] error       of the prediction, scaled as corr
 * @param[out] reflection  the second coefficient, Q15; 32767 where the recursion ended early. Above
 *                         31130 it tells a sine.
 * @retval zspStsNullPtrErr  corr, lpc, error or reflection is null
 * @see ITU-T G.723.1, clause 2.4
 */
ZSPSC_API ZspStatus zspsLevinsonDurbin_G723_16s(const int16_t* corr, int16_t* lpc, int16_t* error,
                                                int16_t* reflection);

/**
 * The coefficients of the perceptual weighting.
 *
 *   coefs[j] = lpc[j] 0.9^(j+1),  coefs[10+j] = lpc[j] 0.5^(j+1)
 *
 * @param[in]  lpc    ten words, Q13, not quantised
 * @param[out] coefs  twenty words, Q13
 * @retval zspStsNullPtrErr  lpc or coefs is null
 * @see ITU-T G.723.1, clause 2.8
 */
ZSPSC_API ZspStatus zspsWeightingCoefs_G723_16s(const int16_t* lpc, int16_t* coefs);

/**
 * Perceptual weighting of a sub-frame.
 *
 * @param[in]     coefs   twenty words
 * @param[in]     src     60 samples
 * @param[out]    dst     60 samples; may be src
 * @param[in,out] memory  ten inputs and ten outputs, the newest first; 0 at the start
 * @retval zspStsNullPtrErr  coefs, src, dst or memory is null
 * @see ITU-T G.723.1, clause 2.8
 */
ZSPSC_API ZspStatus zspsPerceptualWeighting_G723_16s(const int16_t* coefs, const int16_t* src,
                                                     int16_t* dst, int16_t* memory);

/**
 * The pitch of both halves of a frame.
 *
 * @param[in]  src         145 past weighted samples and the frame's 240
 * @param[out] normalised  the same, three bits below full scale; may be src
 * @param[out] lags        two lags, 18 to 142
 * @retval zspStsNullPtrErr  src, normalised or lags is null
 * @see ITU-T G.723.1, clause 2.9
 */
ZSPSC_API ZspStatus zspsOpenLoopPitchSearch_G723_16s(const int16_t* src, int16_t* normalised,
                                                     int16_t* lags);

/**
 * Lag and gain of the harmonic noise shaping of a sub-frame.
 *
 * @param[in]  src          60 normalised weighted samples, and 145 before the pointer
 * @param      lag          of the half, 18 to 142
 * @param[out] harmonicLag  lag - 3 to lag + 3
 * @param[out] gain         Q15, 0 to 10240
 * @retval zspStsNullPtrErr     src, harmonicLag or gain is null
 * @retval zspStsCodecRangeErr  lag is outside its range
 * @see ITU-T G.723.1, clause 2.11
 */
ZSPSC_API ZspStatus zspsHarmonicSearch_G723_16s(const int16_t* src, int16_t lag,
                                                int16_t* harmonicLag, int16_t* gain);

/**
 * Harmonic noise shaping of a sub-frame.
 *
 *   dst[i] = src[i] - gain src[i - lag], rounded
 *
 * @param[in]  src   60 weighted samples, and lag before the pointer
 * @param      lag   1 to 145
 * @param      gain  Q15
 * @param[out] dst   60 samples
 * @retval zspStsNullPtrErr     src or dst is null
 * @retval zspStsCodecRangeErr  lag is outside its range
 * @see ITU-T G.723.1, clause 2.11
 */
ZSPSC_API ZspStatus zspsHarmonicFilter_G723_16s(const int16_t* src, int16_t lag, int16_t gain,
                                                int16_t* dst);

/**
 * Impulse response of synthesis, weighting and harmonic shaping.
 *
 * @param[in]  lpc        ten quantised coefficients
 * @param[in]  coefs      twenty words
 * @param      lag, gain  of the harmonic shaping; lag 1 to 145
 * @param[out] dst        60 words
 * @retval zspStsNullPtrErr     lpc, coefs or dst is null
 * @retval zspStsCodecRangeErr  lag is outside its range
 * @see ITU-T G.723.1, clause 2.12
 */
ZSPSC_API ZspStatus zspsImpulseResponse_G723_16s(const int16_t* lpc, const int16_t* coefs,
                                                 int16_t lag, int16_t gain, int16_t* dst);

/**
 * Take out of the target what the filters still ring.
 *
 * @param[in]     lpc        ten quantised coefficients
 * @param[in]     coefs      twenty words
 * @param         lag, gain  of the harmonic shaping; lag 1 to 145
 * @param[in]     memory     165 words: ten of the synthesis and ten of the weighting, the newest
 *                           first, and 145 outputs, the oldest first; 0 at the start
 * @param[in,out] target     60 words
 * @retval zspStsNullPtrErr     lpc, coefs, memory or target is null
 * @retval zspStsCodecRangeErr  lag is outside its range
 * @see ITU-T G.723.1, clause 2.13
 */
ZSPSC_API ZspStatus zspsRingingSubtract_G723_16s_I(const int16_t* lpc, const int16_t* coefs,
                                                   int16_t lag, int16_t gain, const int16_t* memory,
                                                   int16_t* target);

/**
 * Let the filters' memory go on through a sub-frame's excitation.
 *
 * @param[in]     lpc         ten quantised coefficients
 * @param[in]     coefs       twenty words
 * @param[in]     excitation  60 words
 * @param[in,out] memory      165 words as zspsRingingSubtract() has them
 * @retval zspStsNullPtrErr  lpc, coefs, excitation or memory is null
 * @see ITU-T G.723.1, clause 2.19
 */
ZSPSC_API ZspStatus zspsRingingUpdate_G723_16s(const int16_t* lpc, const int16_t* coefs,
                                               const int16_t* excitation, int16_t* memory);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
