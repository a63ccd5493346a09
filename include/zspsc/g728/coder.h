/**
 * @file zspsc/g728/coder.h
 * @brief G.728 low-delay CELP: gain, filters and search.
 */
#ifndef ZSPSC_G728_CODER_H
#define ZSPSC_G728_CODER_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_g728 G.728 low-delay CELP
 *
 * The blocks of ITU-T G.728 (16 kbit/s) in the fixed-point arithmetic of its Annex G. A vector of
 * five samples at 8 kHz becomes an index of ten bits, four vectors are a frame. All predictors are
 * made from past output, so encoder and decoder run the same blocks; those that renew predictors
 * stand in zspsc/g728/adapt.h, the post-filter and the concealment of Annex I in
 * zspsc/g728/postfilter.h.
 *
 * What holds for all of them:
 *
 *  - The newest sample stands first, in vectors, memories and histories alike. To push samples
 * means to put them in front; the oldest fall out. The caller keeps memories and histories.
 *  - Numbers are block floating point. A vector of six words is five mantissas and then their Q, a
 *    scalar of two words a mantissa and its Q; the value is mantissa / 2^Q. A Q that is taken must
 *    be in -64..64; the coder itself stays in -21..43.
 *  - Predictors are the a_i of A(z) = 1 + sum(a_i z^-i), in Q14 unless something else is said.
 *    Before there is anything to predict from they are 0.
 *  - Sums of products are exact, and saturated where they are stored. Where the Recommendation's
 *    arithmetic leaves 32 bits, on input that no coder produces, results are saturated.
 *  - rh(x) is (x + 2^15) >> 16, saturated to 16 bits.
 * @{
 */

/**
 * Predict the logarithm of a vector's excitation gain, and make it linear.
 *
 *   predicted = min(max(-sum(predictor[i] * logGain[i], i = 0..9) >> 14, -16384), most)
 *
 * @param[in]  predictor  10 coefficients; at the start -16384, then zeros
 * @param[in]  logGain    the last ten log gains, Q9, less 32 dB; at the start -16384 three times,
 *                        then zeros
 * @param      most       -16384..14336: 14336, or after losses what the gain may grow to
 * @param[out] predicted  one word, the log gain in Q9, less 32 dB
 * @param[out] gain       a scalar, the gain
 * @retval zspStsNullPtrErr  predictor, logGain, predicted or gain is null
 * @retval zspStsRangeErr    most is outside -16384..14336
 * @see ITU-T G.728, blocks 46 to 48
 */
ZSPSC_API ZspStatus zspsLogGainPredict_G728_16s(const int16_t* predictor, const int16_t* logGain,
                                                int16_t most, int16_t* predicted, int16_t* gain);

/**
 * The log gain of the excitation that an index has made.
 *
 *   dst = max(predicted + level of the gain + level of the shape, -16384)
 *
 * @param      predicted  as zspsLogGainPredict_G728_16s() gave it
 * @param      index      shape * 8 + gain, 0..1023
 * @param[out] dst        one word, Q9, less 32 dB; to be pushed to the log gains
 * @retval zspStsNullPtrErr     dst is null
 * @retval zspStsCodecRangeErr  index is outside 0..1023
 * @see ITU-T G.728, blocks 39 to 42
 */
ZSPSC_API ZspStatus zspsLogGainUpdate_G728_16s(int16_t predicted, int32_t index, int16_t* dst);

/**
 * The excitation: a vector of the codebook, times its gain, times the predicted gain.
 *
 * @param      index  shape * 8 + gain, 0..1023; gains 4 to 7 are the negative ones
 * @param[in]  gain   a scalar, as predicted
 * @param[out] dst    a vector
 * @retval zspStsNullPtrErr     gain or dst is null
 * @retval zspStsScaleRangeErr  the gain's Q is outside -64..64
 * @retval zspStsCodecRangeErr  index is outside 0..1023
 * @see ITU-T G.728, blocks 19 and 21
 */
ZSPSC_API ZspStatus zspsCodevectorScale_G728_16s(int32_t index, const int16_t* gain, int16_t* dst);

/**
 * What the synthesis filter gives by itself, from what it gave before.
 *
 * @param[in]  lpc   50 coefficients
 * @param[in]  src   50 mantissas, the last ten vectors; at the start zeros
 * @param[in]  srcQ  10 Qs, those of the ten vectors; at the start 16
 * @param[out] dst   a vector, its largest mantissa in 15 bits
 * @retval zspStsNullPtrErr     lpc, src, srcQ or dst is null
 * @retval zspStsScaleRangeErr  one of the Qs is outside -64..64
 * @see ITU-T G.728, block 9; its name keeps the spelling that compiled programs know
 */
ZSPSC_API ZspStatus zspsSyntesisFilterZeroInput_G728_16s(const int16_t* lpc, const int16_t* src,
                                                         const int16_t* srcQ, int16_t* dst);

/**
 * What the synthesis filter gives for an excitation alone. While a result needs more than 15 bits
 * the excitation is halved, and its Q lowered by one.
 *
 * @param[in]     lpc     the first 4 coefficients
 * @param[in,out] srcDst  a vector, the excitation
 * @param[out]    dst     5 mantissas in the Q of the excitation
 * @retval zspStsNullPtrErr     lpc, srcDst or dst is null
 * @retval zspStsScaleRangeErr  the excitation's Q is outside -64..64
 * @see ITU-T G.728, block 22
 */
ZSPSC_API ZspStatus zspsSynthesisFilterZeroState_G728_16s(const int16_t* lpc, int16_t* srcDst,
                                                          int16_t* dst);

/**
 * The quantised speech: both responses, in the lower of their two Qs and within -4095..4095.
 *
 * @param[in]     src     5 mantissas, the zero-state response
 * @param         q       their Q
 * @param[in,out] srcDst  a vector: the zero-input response, then the quantised speech with its
 *                        largest mantissa in 14 bits; to be pushed to the filter's history
 * @retval zspStsNullPtrErr     src or srcDst is null
 * @retval zspStsScaleRangeErr  q or the vector's Q is outside -64..64
 * @see ITU-T G.728, blocks 9 and 22
 */
ZSPSC_API ZspStatus zspsSynthesisFilterUpdate_G728_16s(const int16_t* src, int32_t q,
                                                       int16_t* srcDst);

/**
 * The perceptual weighting filter, for five samples.
 *
 *   W(z) = (1 + sum(zero[i] z^-i)) / (1 + sum(pole[i] z^-i)), i = 1..10
 *
 * @param[in]     zero, pole  10 coefficients each
 * @param[in]     src         15 samples: five to filter and the ten before them
 * @param[in,out] memory      10 results; the five new ones are pushed. At the start zeros
 * @retval zspStsNullPtrErr  zero, pole, src or memory is null
 * @see ITU-T G.728, blocks 4 and 10
 */
ZSPSC_API ZspStatus zspsWeightingFilter_G728_16s(const int16_t* zero, const int16_t* pole,
                                                 const int16_t* src, int16_t* memory);

/**
 * Add the weighted zero-state response to the memory of the filter that weights zero-input
 * responses, once the index is chosen.
 *
 * @param[in]     zero, pole  10 coefficients each, of which four count
 * @param[in]     src         5 mantissas, the zero-state response
 * @param         q           their Q
 * @param[in,out] memory      10 words in Q2, of which the first five change
 * @retval zspStsNullPtrErr     zero, pole, src or memory is null
 * @retval zspStsScaleRangeErr  q is outside -64..64
 * @see ITU-T G.728, block 10
 */
ZSPSC_API ZspStatus zspsWeightingFilterUpdate_G728_16s(const int16_t* zero, const int16_t* pole,
                                                       const int16_t* src, int32_t q,
                                                       int16_t* memory);

/**
 * The target of the search, divided by the predicted gain.
 *
 * @param[in]  weighted   5 words in Q2, the weighted speech
 * @param[in]  zeroInput  5 words in Q2, the weighted zero-input response
 * @param[in]  gain       a scalar, as predicted
 * @param[out] dst        a vector, its largest mantissa in 16 bits
 * @retval zspStsNullPtrErr     weighted, zeroInput, gain or dst is null
 * @retval zspStsScaleRangeErr  the gain's Q is outside -64..64
 * @retval zspStsRangeErr       the gain's mantissa is less than 1
 * @see ITU-T G.728, blocks 11 and 16
 */
ZSPSC_API ZspStatus zspsTargetNormalize_G728_16s(const int16_t* weighted, const int16_t* zeroInput,
                                                 const int16_t* gain, int16_t* dst);

/**
 * The response of synthesis and weighting filter to a pulse, and the energies that the shapes of
 * the codebook have behind them.
 *
 * @param[in]  lpc         the first 4 coefficients of the synthesis filter
 * @param[in]  zero, pole  the first 4 coefficients of the weighting filter
 * @param[out] impulse     5 words in Q13, in order of time
 * @param[out] energy      128 energies
 * @retval zspStsNullPtrErr  lpc, zero, pole, impulse or energy is null
 * @see ITU-T G.728, blocks 12, 14 and 15
 */
ZSPSC_API ZspStatus zspsImpulseResponseAndEnergy_G728_16s32s(const int16_t* lpc,
                                                             const int16_t* zero,
                                                             const int16_t* pole, int16_t* impulse,
                                                             int32_t* energy);

/**
 * Find the index whose filtered excitation comes closest to the target. Of equal ones the first
 * shape is taken, and the negative gain where shape and target have nothing in common.
 *
 * @param[in]  target   a vector, as zspsTargetNormalize_G728_16s() gives it
 * @param[in]  impulse  5 words, as zspsImpulseResponseAndEnergy_G728_16s32s() gives them
 * @param[in]  energy   128 energies, as above
 * @param[out] index    shape * 8 + gain, 0..1023
 * @retval zspStsNullPtrErr     target, impulse, energy or index is null
 * @retval zspStsScaleRangeErr  the target's Q is outside -64..64
 * @see ITU-T G.728, blocks 13, 17 and 18
 */
ZSPSC_API ZspStatus zspsCodebookSearch_G728_16s(const int16_t* target, const int16_t* impulse,
                                                const int32_t* energy, int32_t* index);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
