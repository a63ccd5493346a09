/**
 * @file zspsc/g728/postfilter.h
 * @brief G.728 low-delay CELP: post-filter and concealment.
 */
#ifndef ZSPSC_G728_POSTFILTER_H
#define ZSPSC_G728_POSTFILTER_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_g728_postfilter G.728 post-filter and concealment
 *
 * What a decoder adds to zspsc/g728/coder.h, whose conventions hold here as well. Each vector goes
 * through zspsInverseFilter_G728_16s() and zspsPostFilter_G728_16s(). After the inverse filter of
 * vector 2 the pitch is sought and the long-term coefficients follow; the short-term ones are made
 * after vector 3 from the synthesis filter's recursion at order 10. Samples are in Q2, twice too
 * small.
 *
 * Lost frames (Annex I): the excitation of the last 140 samples, in Q2, is repeated with the
 * post-filter's pitch or, where there is none, in random order. zspsErasureSetup_G728_16s() says at
 * lost frames 0, 4, 8, .. of a gap how; zspsErasedExcitation_G728_16s() then stands in for gain and
 * codebook.
 * @{
 */

/**
 * The residual in which the pitch is sought.
 *
 * @param[in]     lpc     10 coefficients in Q13, as zspsShortTermPostFilterCoefs_G728_16s() gives
 * @param[in]     src     5 samples, Q2
 * @param[in,out] memory  the 10 samples before, Q2; those of src are pushed. At the start zeros
 * @param[out]    dst     5 samples of the residual, Q1
 * @retval zspStsNullPtrErr  lpc, src, memory or dst is null
 * @see ITU-T G.728, block 81
 */
ZSPSC_API ZspStatus zspsInverseFilter_G728_16s(const int16_t* lpc, const int16_t* src,
                                               int16_t* memory, int16_t* dst);

/**
 * Find the pitch period, once for every 20 samples.
 *
 * @param[in]     src        240 samples of the residual, the last 20 of them new; at the start
 * zeros
 * @param[in,out] decimated  60 samples of the filtered residual at 2 kHz, five of which are pushed;
 *                           at the start zeros
 * @param[in,out] lowpass    3 words, the filter's memory; at the start zeros
 * @param[in,out] pitch      one word, 20..140; at the start 50
 * @retval zspStsNullPtrErr     src, decimated, lowpass or pitch is null
 * @retval zspStsCodecRangeErr  pitch is outside 20..140
 * @see ITU-T G.728, block 82
 */
ZSPSC_API ZspStatus zspsPitchSearch_G728_16s(const int16_t* src, int16_t* decimated,
                                             int16_t* lowpass, int16_t* pitch);

/**
 * The coefficients of the post-filter's long-term part.
 *
 * dst is three words: the gain of the sample itself in Q14, the gain of the sample a pitch period
 * before in Q16 (at the start 16384 and 0), and the measured tap in Q14, which concealment asks
 * for.
 *
 * @param[in]  src    240 samples of the past in Q0, as zspsPostFilter_G728_16s() keeps them
 * @param      pitch  20..140
 * @param[out] dst    3 words
 * @retval zspStsNullPtrErr     src or dst is null
 * @retval zspStsCodecRangeErr  pitch is outside 20..140
 * @see ITU-T G.728, blocks 83 and 84
 */
ZSPSC_API ZspStatus zspsLongTermPostFilterCoefs_G728_16s(const int16_t* src, int32_t pitch,
                                                         int16_t* dst);

/**
 * The coefficients of the inverse filter and of the post-filter's short-term part.
 *
 * dst is 21 words in Q14: ten of the recursive part, ten of the other, the tilt; at the start
 * zeros.
 *
 * @param[in]  lpc         10 coefficients in Q q
 * @param      q           13, 14 or 15
 * @param      reflection  the first reflection coefficient, Q15
 * @param[out] inverse     the 10 coefficients in Q13
 * @param[out] dst         21 words, unchanged where ok becomes 0
 * @param[out] ok          1, or 0 where a coefficient has no room
 * @retval zspStsNullPtrErr     lpc, inverse, dst or ok is null
 * @retval zspStsScaleRangeErr  q is outside 13..15
 * @see ITU-T G.728, block 85
 */
ZSPSC_API ZspStatus zspsShortTermPostFilterCoefs_G728_16s(const int16_t* lpc, int32_t q,
                                                          int16_t reflection, int16_t* inverse,
                                                          int16_t* dst, int32_t* ok);

/**
 * The post-filter: long-term part, short-term part with tilt, and the level that src had.
 *
 * @param[in]     src        5 samples, Q2
 * @param[in,out] past       240 samples in Q0; those of src are pushed. At the start zeros
 * @param         pitch      20..140
 * @param[in]     longTerm   3 words, as zspsLongTermPostFilterCoefs_G728_16s() gives them
 * @param[in]     shortTerm  21 words, as zspsShortTermPostFilterCoefs_G728_16s() gives them
 * @param[in,out] memory     21 words: ten of the long-term part's results, ten of the recursive
 *                           part's, and the level; at the start zeros and 16384
 * @param[out]    dst        5 samples, Q3: 16-bit PCM; may be src
 * @retval zspStsNullPtrErr     src, past, longTerm, shortTerm, memory or dst is null
 * @retval zspStsCodecRangeErr  pitch is outside 20..140
 * @see ITU-T G.728, blocks 71 to 77
 */
ZSPSC_API ZspStatus zspsPostFilter_G728_16s(const int16_t* src, int16_t* past, int32_t pitch,
                                            const int16_t* longTerm, const int16_t* shortTerm,
                                            int16_t* memory, int16_t* dst);

/**
 * How the next 10 ms of a loss are concealed. Phase 0 decides whether the excitation is voiced and
 * measures it; later phases only let it fade.
 *
 * @param         phase  whole times 10 ms that are lost already
 * @param         tap    as zspsLongTermPostFilterCoefs_G728_16s() has measured it, Q14
 * @param         pitch  20..140
 * @param[in]     past   140 samples of the excitation, Q2; at the start zeros
 * @param[in,out] delay  one word, -1..135. Phase 0: pitch - 5 where tap is above 7022 (voiced),
 * else -1. Other phases leave it
 * @param[in,out] mean   a scalar. Phase 0: the magnitude of five samples, in the mean over the last
 *                       40. Other phases leave it
 * @param[out]    scale  a scalar: what the repeated excitation is multiplied by (voiced), or what
 * the magnitudes of five samples are to add up to; 0 where it has faded
 * @retval zspStsNullPtrErr     past, delay, mean or scale is null
 * @retval zspStsScaleRangeErr  phase is not 0 and the mean's Q outside -64..64
 * @retval zspStsCodecRangeErr  pitch is outside 20..140, or phase is not 0 and delay outside
 * -1..135
 * @retval zspStsRangeErr       phase < 0
 * @see ITU-T G.728, Annex I
 */
ZSPSC_API ZspStatus zspsErasureSetup_G728_16s(int32_t phase, int16_t tap, int32_t pitch,
                                              const int16_t* past, int16_t* delay, int16_t* mean,
                                              int16_t* scale);

/**
 * The size of the random generator's state.
 *
 * @param[out] size  76
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsErasedExcitationGetStateSize_G728_16s(int32_t* size);

/**
 * Start the random generator, or start it again.
 *
 * @param[out] state  76 bytes at any address; may be moved and copied bytewise
 * @retval zspStsNullPtrErr  state is null
 */
ZSPSC_API ZspStatus zspsErasedExcitationInit_G728_16s(void* state);

/**
 * The excitation of a vector of a lost frame.
 *
 * @param         delay    -1..135, as zspsErasureSetup_G728_16s() gave it; -1: a random one
 * @param[in]     scale    a scalar, as above
 * @param[in]     past     140 samples of the excitation, Q2
 * @param[in,out] state    as initialised
 * @param[out]    dst      a vector
 * @param[out]    logGain  one word, its log gain in Q9 less 32 dB, which stands in for the
 * predicted one and is itself pushed to the log gains
 * @retval zspStsNullPtrErr     scale, past, state, dst or logGain is null
 * @retval zspStsScaleRangeErr  the scale's Q is outside -64..64
 * @retval zspStsCodecRangeErr  delay is outside -1..135
 * @see ITU-T G.728, Annex I
 */
ZSPSC_API ZspStatus zspsErasedExcitation_G728_16s(int32_t delay, const int16_t* scale,
                                                  const int16_t* past, void* state, int16_t* dst,
                                                  int16_t* logGain);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
