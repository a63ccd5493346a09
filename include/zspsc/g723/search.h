/**
 * @file zspsc/g723/search.h
 * @brief G.723.1 codebook searches.
 */
#ifndef ZSPSC_G723_SEARCH_H
#define ZSPSC_G723_SEARCH_H

#include "decoder.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_g723_search G.723.1 codebook searches
 *
 * How an encoder after ITU-T G.723.1 chooses the excitation of a sub-frame; the order of the calls
 * stands at the encoder's other blocks. "response" are 60 words of zspsImpulseResponse(), "target"
 * 60 words of weighted speech.
 * @{
 */

/**
 * Choose lag and gains of the adaptive codebook. The gains are bounded where the excitation of a
 * decoder that has lost a frame could run away.
 *
 * @param[in]     target    60 words
 * @param[in]     response  60 words
 * @param[in]     past      the last 145 words of excitation, the oldest first
 * @param[in]     errors    five longs of zspsTamingUpdate()
 * @param         sine      other than 0 while the input is a sine, which bounds the gains
 * @param         subframe  0 to 3
 * @param[in,out] frame     at 6.3 or 5.3 kbit/s. In sub-frames 0 and 2 lag has the open-loop lag,
 * 18 to 142, and gets the pair's, 18 to 141; 1 and 3 keep it. lagOffset and acbGain are written.
 * @retval zspStsNullPtrErr     target, response, past, errors or frame is null
 * @retval zspStsCodecRangeErr  subframe, type or lag is outside its range
 * @see ITU-T G.723.1, clauses 2.14 and 2.18
 */
ZSPSC_API ZspStatus zspsAdaptiveCodebookSearch_G723_16s(const int16_t* target,
                                                        const int16_t* response,
                                                        const int16_t* past, const int32_t* errors,
                                                        int32_t sine, int32_t subframe,
                                                        ZspG723Frame* frame);

/**
 * Take the filtered adaptive vector out of the target.
 *
 * @param[in]     vector    60 words of zspsDecodeAdaptiveVector()
 * @param[in]     response  60 words
 * @param[in,out] target    60 words
 * @retval zspStsNullPtrErr  vector, response or target is null
 * @see ITU-T G.723.1, clause 2.14
 */
ZSPSC_API ZspStatus zspsAdaptiveSubtract_G723_16s_I(const int16_t* vector, const int16_t* response,
                                                    int16_t* target);

/**
 * Bounds of the error that a decoder's excitation could carry on, after a sub-frame.
 *
 * @param[in]     frame     its type, lag (up to 143), lagOffset and acbGain are used
 * @param         subframe  0 to 3
 * @param[in,out] errors    five longs, 4 each at the start
 * @retval zspStsNullPtrErr     frame or errors is null
 * @retval zspStsCodecRangeErr  subframe or a field is outside its range
 * @see ITU-T G.723.1, clause 2.18
 */
ZSPSC_API ZspStatus zspsTamingUpdate_G723_32s_I(const ZspG723Frame* frame, int32_t subframe,
                                                int32_t* errors);

/**
 * Choose the pulses of a sub-frame at 6.3 kbit/s.
 *
 * @param[in]     target    60 words behind zspsAdaptiveSubtract()
 * @param[in]     response  60 words
 * @param         subframe  0 to 3: six pulses in 0 and 2, five in 1 and 3
 * @param[in,out] frame     its lag (up to 141) is used; position, signs, grid, train and fcbGain
 * are written
 * @retval zspStsNullPtrErr     target, response or frame is null
 * @retval zspStsCodecRangeErr  subframe or lag is outside its range
 * @see ITU-T G.723.1, clause 2.15
 */
ZSPSC_API ZspStatus zspsMPMLQSearch_G723_16s(const int16_t* target, const int16_t* response,
                                             int32_t subframe, ZspG723Frame* frame);

/**
 * The response with the pitch, and its correlations between the tracks of the pulses.
 *
 * @param[in]  frame      at 5.3 kbit/s; its lag, lagOffset and acbGain are used
 * @param      subframe   0 to 3
 * @param[in]  response   60 words
 * @param[out] sharpened  60 words, at half scale
 * @param[out] corr       416 words: for tracks 0 to 3 the energies at places 2 t, 2 t + 8, ..; then
 *                        for tracks 0 and 1, 0 and 2, 0 and 3, 1 and 2, 1 and 3, 2 and 3 the 64
 *                        between their places, those of the second track one after the other
 * @retval zspStsNullPtrErr     frame, response, sharpened or corr is null
 * @retval zspStsCodecRangeErr  subframe or a field is outside its range
 * @see ITU-T G.723.1, clause 2.16
 */
ZSPSC_API ZspStatus zspsACELPCorrelations_G723_16s(const ZspG723Frame* frame, int32_t subframe,
                                                   const int16_t* response, int16_t* sharpened,
                                                   int16_t* corr);

/**
 * Choose the four pulses of a sub-frame at 5.3 kbit/s.
 *
 * @param[in]     target     60 words behind zspsAdaptiveSubtract()
 * @param[in]     sharpened  60 words of zspsACELPCorrelations()
 * @param[in]     corr       416 words of zspsACELPCorrelations()
 * @param         subframe   0 to 3
 * @param[in,out] budget     at least 0: runs of the inner loop left over from the last sub-frame,
 *                           120 at the start of a frame
 * @param[in,out] frame      position, signs and grid are written
 * @param[out]    filtered   60 words: the pulses, at a gain of 1, through the sharpened response
 * @retval zspStsNullPtrErr     target, sharpened, corr, budget, frame or filtered is null
 * @retval zspStsCodecRangeErr  subframe is outside its range
 * @retval zspStsRangeErr       budget < 0
 * @see ITU-T G.723.1, clause 2.16
 */
ZSPSC_API ZspStatus zspsACELPSearch_G723_16s(const int16_t* target, const int16_t* sharpened,
                                             const int16_t* corr, int32_t subframe, int16_t* budget,
                                             ZspG723Frame* frame, int16_t* filtered);

/**
 * The gain of the pulses at 5.3 kbit/s.
 *
 * @param[in]  target    60 words behind zspsAdaptiveSubtract()
 * @param[in]  filtered  60 words of zspsACELPSearch()
 * @param[out] index     0 to 23
 * @retval zspStsNullPtrErr  target, filtered or index is null
 * @see ITU-T G.723.1, clause 2.16
 */
ZSPSC_API ZspStatus zspsACELPGainQuant_G723_16s(const int16_t* target, const int16_t* filtered,
                                                int16_t* index);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
