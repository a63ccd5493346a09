/**
 * @file zspsc/g729/encoder.h
 * @brief G.729 weighting, searches and quantisers of an encoder.
 */
#ifndef ZSPSC_G729_ENCODER_H
#define ZSPSC_G729_ENCODER_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_g729_encoder G.729 encoder
 *
 * What an encoder of ITU-T G.729 computes after its linear prediction, in the main body (_G729)
 * and, where it is another, in Annex A (_G729A): frames of 80 samples at 8 kHz in two subframes
 * of 40. It goes through a frame so:
 *
 *     zspsHighPassFilter, zspsAutoCorr, zspsLagWindow, zspsLevinsonDurbin, zspsLPCToLSP
 *     zspsLSPQuant               pairs that are sent
 *     zspsPerceptualWeighting    factors of the weighting filter
 *     zspsOpenLoopPitchSearch    a lag for both subframes
 *     per subframe:
 *       zspsImpulseResponse
 *       zspsAdaptiveCodebookSearch, zspsAdaptiveCodebookGain, zspsTamingTest
 *       zspsHarmonicSharpening, zspsToeplizMatrix, zspsCrossCorr_NormM
 *       zspsFixedCodebookSearch
 *       zspsGainCorrelation, zspsGainQuant
 *       zspsExcitation, zspsTamingUpdate
 *     zspsPackFrame
 *
 * What an encoder keeps from frame to frame is in plain arrays of the caller's; each function says
 * how they begin.
 * @{
 */

/**
 * Quantise line spectral pairs: the difference of their frequencies from a moving average, by one
 * of two predictors, in two stages.
 *
 * @param[in]     lsp     ten pairs, Q15, ordered; others give pairs without meaning
 * @param[in,out] memory  40 words, as of zspsLSFDecode_G729_16s()
 * @param[out]    dst     ten quantised pairs, Q15; may be lsp
 * @param[out]    fields  two fields of a frame: L0 and L1, L2 and L3
 * @retval zspStsNullPtrErr  lsp, memory, dst or fields is null
 * @see ITU-T G.729, clause 3.2.4
 */
ZSPSC_API ZspStatus zspsLSPQuant_G729_16s(const int16_t* lsp, int16_t* memory, int16_t* dst,
                                          int16_t* fields);

/**
 * The factors by which the weighting filters of the main body are widened: wider where the spectrum
 * is flat than where it is tilted, and there after the closest frequencies.
 *
 * @param[in]     between     ten frequencies of the first subframe, in parts of the sampling rate,
 * Q15
 * @param[in]     lsf         ten of the second
 * @param[in]     reflection  the first two coefficients of the frame, Q15
 * @param[out]    gamma1      two factors of the numerators, Q15, for zspsWeightLPC_G729_16s()
 * @param[out]    gamma2      two of the denominators
 * @param[in,out] memory      three words: log area ratios of the last frame, 0 at the beginning,
 * and whether its spectrum was flat, 1 at the beginning
 * @retval zspStsNullPtrErr  between, lsf, reflection, gamma1, gamma2 or memory is null
 * @see ITU-T G.729, clause 3.3
 */
ZSPSC_API ZspStatus zspsPerceptualWeighting_G729_16s(const int16_t* between, const int16_t* lsf,
                                                     const int16_t* reflection, int16_t* gamma1,
                                                     int16_t* gamma2, int16_t* memory);

/**
 * The impulse response of numerator(z) / (lpc(z) denominator(z)).
 *
 * @param[in]  numerator, denominator  11 words each, Q12: the weighting filters
 * @param[in]  lpc                     11 words, Q12, quantised
 * @param[out] dst                     40 words, Q12
 * @retval zspStsNullPtrErr  numerator, denominator, lpc or dst is null
 * @see ITU-T G.729, clause 3.5
 */
ZSPSC_API ZspStatus zspsImpulseResponse_G729_16s(const int16_t* numerator,
                                                 const int16_t* denominator, const int16_t* lpc,
                                                 int16_t* dst);

/**
 * Search the open-loop lag of a frame.
 *
 * @param[in]  src  80 samples of weighted speech, preceded by 143 of the past
 * @param[out] lag  20 to 143
 * @retval zspStsNullPtrErr  src or lag is null
 * @see ITU-T G.729, clause 3.4
 */
ZSPSC_API ZspStatus zspsOpenLoopPitchSearch_G729_16s(const int16_t* src, int16_t* lag);

/**
 * As zspsOpenLoopPitchSearch_G729_16s(), of every second sample, and above 80 of every second lag.
 *
 * @param[in]  src  80 samples of weighted speech, preceded by 143 of the past
 * @param[out] lag  20 to 143
 * @retval zspStsNullPtrErr  src or lag is null
 * @see ITU-T G.729, clause A.3.4
 */
ZSPSC_API ZspStatus zspsOpenLoopPitchSearch_G729A_16s(const int16_t* src, int16_t* lag);

/**
 * Search the lag of a subframe in steps of a third of a sample, or of one above 84 in subframe 0.
 *
 * @param[in]     target           40 words
 * @param[in]     response         40 words, Q12
 * @param         lagMin, lagMax   range of at most ten lags within 20 to 143
 * @param         subframe         0 or 1
 * @param[in,out] srcDst           154 words of past excitation, then 40 of the residual, which
 * become the adaptive vector
 * @param[out]    lag              lagMin - 1 to lagMax + 1
 * @param[out]    fraction         thirds of a sample that come on top, -1 to 1
 * @retval zspStsNullPtrErr     target, response, srcDst, lag or fraction is null
 * @retval zspStsCodecRangeErr  lagMin < 20, lagMax > 143 or not in lagMin..lagMin + 9, or subframe
 * is neither 0 nor 1
 * @see ITU-T G.729, clause 3.7
 */
ZSPSC_API ZspStatus zspsAdaptiveCodebookSearch_G729_16s(const int16_t* target,
                                                        const int16_t* response, int32_t lagMin,
                                                        int32_t lagMax, int32_t subframe,
                                                        int16_t* srcDst, int16_t* lag,
                                                        int16_t* fraction);

/**
 * As zspsAdaptiveCodebookSearch_G729_16s(), without regard to the energy of vectors.
 *
 * @param[in]     corr            40 words: zspsCrossCorr_NormM_16s() of target and response
 * @param         lagMin, lagMax  range of at most ten lags within 20 to 143
 * @param         subframe        0 or 1
 * @param[in,out] srcDst          154 words of past excitation, then 40 of the residual, which
 * become the adaptive vector
 * @param[out]    lag             lagMin to lagMax
 * @param[out]    fraction        thirds of a sample that come on top, -1 to 1
 * @retval zspStsNullPtrErr     corr, srcDst, lag or fraction is null
 * @retval zspStsCodecRangeErr  lagMin < 20, lagMax > 143 or not in lagMin..lagMin + 9, or subframe
 * is neither 0 nor 1
 * @see ITU-T G.729, clause A.3.7
 */
ZSPSC_API ZspStatus zspsAdaptiveCodebookSearch_G729A_16s(const int16_t* corr, int32_t lagMin,
                                                         int32_t lagMax, int32_t subframe,
                                                         int16_t* srcDst, int16_t* lag,
                                                         int16_t* fraction);

/**
 * The first 40 samples of the response to a vector.
 *
 *   dst[n] = (sum over i = 0..n of src[i] response[n-i]) >> 12, not rounded
 *
 * The doubled sum is saturated to 32 bits at every step, and its shift left by 3 as well.
 *
 * @param[in]  src       40 words
 * @param[in]  response  40 words, Q12
 * @param[out] dst       40 words
 * @retval zspStsNullPtrErr  src, response or dst is null
 * @see ITU-T G.729, clause 3.7
 */
ZSPSC_API ZspStatus zspsConvPartial_G729_16s(const int16_t* src, const int16_t* response,
                                             int16_t* dst);

/**
 * The gain with which the filtered adaptive vector comes closest to the target.
 *
 * @param[in]  target    40 words
 * @param[in]  filtered  40 words
 * @param[out] sums      four words: energy of filtered plus 1, its exponent, correlation with
 * target, its exponent; for zspsGainCorrelation_G729_16s()
 * @param[out] gain      0 to 19661, Q14
 * @retval zspStsNullPtrErr  target, filtered, sums or gain is null
 * @see ITU-T G.729, clause 3.7.3
 */
ZSPSC_API ZspStatus zspsAdaptiveCodebookGain_G729_16s(const int16_t* target,
                                                      const int16_t* filtered, int16_t* sums,
                                                      int16_t* gain);

/**
 * Whether a decoder that has lost a frame could amplify its error without end: then the gain has to
 * be 15564 at most.
 *
 * @param[in]  errors    four bounds of errors of the past excitation, 16384 at the beginning
 * @param      lag       18 to 144
 * @param      fraction  -1 to 1
 * @param[out] tame      1 or 0
 * @retval zspStsNullPtrErr     errors or tame is null
 * @retval zspStsCodecRangeErr  lag or fraction is outside its range
 * @see ITU-T G.729, clause 3.9.2, taming
 */
ZSPSC_API ZspStatus zspsTamingTest_G729_32s(const int32_t* errors, int32_t lag, int32_t fraction,
                                            int32_t* tame);

/**
 * Follow the errors over a subframe.
 *
 * @param         gain    the quantised pitch gain, Q14
 * @param         lag     18 to 144
 * @param[in,out] errors  as in zspsTamingTest_G729_32s()
 * @retval zspStsNullPtrErr     errors is null
 * @retval zspStsCodecRangeErr  lag is outside its range
 * @see ITU-T G.729, clause 3.9.2, taming
 */
ZSPSC_API ZspStatus zspsTamingUpdate_G729_32s_I(int16_t gain, int32_t lag, int32_t* errors);

/**
 * The correlations of an impulse response with itself that the search of the fixed codebook needs.
 *
 *   phi(i, j) = sum over k = 0..39-max(i, j) of h[k] h[k + |i - j|], the upper word
 *
 * h is the response, normalised, or halved where its energy is close to 2^31.
 *
 * @param[in]  response  40 words, Q12, sharpened
 * @param[out] dst       616 words: phi(i, i) of tracks 0 to 4 with eight places each, track t
 * having t, t + 5 .. t + 35; then phi(i, j) of tracks 0 and 1, 0 2, 0 3, 0 4, 1 2, 1 3, 1 4, 2 3, 2
 * 4, i on the first, eight j on the second for each
 * @retval zspStsNullPtrErr  response or dst is null
 * @see ITU-T G.729, clause 3.8.1
 */
ZSPSC_API ZspStatus zspsToeplizMatrix_G729_16s(const int16_t* response, int16_t* dst);

/**
 * Search four pulses in nested loops.
 *
 * @param[in]     corr       40 words: zspsCrossCorr_NormM_16s() of the target, without the adaptive
 *                           vector, and the response
 * @param[in]     matrix     616 words
 * @param[in]     response   40 words, Q12, sharpened
 * @param         subframe   0 or 1
 * @param[in,out] extra      searches that subframe 0 leaves to subframe 1
 * @param[out]    positions  C, 13 bits
 * @param[out]    signs      S, a bit per pulse
 * @param[out]    filtered   40 words: the pulses with the response, a pulse is 1
 * @retval zspStsNullPtrErr     corr, matrix, response, extra, positions, signs or filtered is null
 * @retval zspStsCodecRangeErr  subframe is neither 0 nor 1
 * @retval zspStsRangeErr       subframe is 1 and extra is outside 0..105
 * @see ITU-T G.729, clause 3.8.1
 */
ZSPSC_API ZspStatus zspsFixedCodebookSearch_G729_16s(const int16_t* corr, const int16_t* matrix,
                                                     const int16_t* response, int32_t subframe,
                                                     int16_t* extra, int16_t* positions,
                                                     int16_t* signs, int16_t* filtered);

/**
 * Search four pulses, two by two.
 *
 * @param[in]  corr       40 words, as in zspsFixedCodebookSearch_G729_16s()
 * @param[in]  matrix     616 words
 * @param[in]  response   40 words, Q12, sharpened
 * @param[out] positions  C, 13 bits
 * @param[out] signs      S, a bit per pulse
 * @param[out] filtered   40 words: the pulses with the response, a pulse is 1
 * @retval zspStsNullPtrErr  corr, matrix, response, positions, signs or filtered is null
 * @see ITU-T G.729, clause A.3.8.1
 */
ZSPSC_API ZspStatus zspsFixedCodebookSearch_G729A_16s(const int16_t* corr, const int16_t* matrix,
                                                      const int16_t* response, int16_t* positions,
                                                      int16_t* signs, int16_t* filtered);

/**
 * The five correlations of target and filtered vectors that gains are judged by.
 *
 * @param[in]  pitchSums  four words of zspsAdaptiveCodebookGain_G729_16s()
 * @param[in]  target     40 words, with the adaptive vector
 * @param[in]  adaptive   40 words, filtered
 * @param[in]  fixed      40 words, filtered
 * @param[out] sums       five words: energy of adaptive, minus twice target and adaptive, energy of
 *                        fixed, minus twice target and fixed, twice adaptive and fixed
 * @param[out] exponents  five exponents
 * @retval zspStsNullPtrErr  pitchSums, target, adaptive, fixed, sums or exponents is null
 * @see ITU-T G.729, clause 3.9.2
 */
ZSPSC_API ZspStatus zspsGainCorrelation_G729_16s(const int16_t* pitchSums, const int16_t* target,
                                                 const int16_t* adaptive, const int16_t* fixed,
                                                 int16_t* sums, int16_t* exponents);

/**
 * Quantise the gains of a subframe.
 *
 * @param[in]     sums, exponents  five words each of zspsGainCorrelation_G729_16s(); exponents
 * within -100 to 100
 * @param         tame             nonzero: pitch gains of 16383 and more are left out
 * @param[in]     code             40 words, Q13: the fixed vector, sharpened
 * @param[in,out] past             four words, as of zspsGainDecode_G729_16s()
 * @param[out]    pitchGain        Q14
 * @param[out]    codeGain         Q1
 * @param[out]    index            GA and GB, 0 to 127
 * @retval zspStsNullPtrErr  sums, exponents, code, past, pitchGain, codeGain or index is null
 * @retval zspStsRangeErr    an exponent is outside its range
 * @see ITU-T G.729, clause 3.9.2
 */
ZSPSC_API ZspStatus zspsGainQuant_G729_16s(const int16_t* sums, const int16_t* exponents,
                                           int32_t tame, const int16_t* code, int16_t* past,
                                           int16_t* pitchGain, int16_t* codeGain, int16_t* index);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
