/**
 * @file zspsc/g728/adapt.h
 * @brief G.728 low-delay CELP: backward adaptation.
 */
#ifndef ZSPSC_G728_ADAPT_H
#define ZSPSC_G728_ADAPT_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_g728_adapt G.728 backward adaptation
 *
 * How the predictors of zspsc/g728/coder.h are renewed once a frame, from the past alone. Where a
 * step fails (too little signal, an unstable filter, no room for a coefficient) the predictor in
 * use stays. In a frame of vectors 0 to 3:
 *
 *     after vector 3   window of the synthesis filter, recursion to order 10
 *     after vector 0   recursion from 10 to 50, expansion to the next predictor; log-gain predictor
 *     after vector 1   the next synthesis predictor is taken; weighting filter; impulse response
 * @{
 */

/** The hybrid windows: 105, 60 and 34 samples, 51, 11 and 11 lags. */
typedef enum ZspG728Window {
    zspG728WindowSynthesis = 0, /**< past output, for the synthesis filter */
    zspG728WindowWeighting = 1, /**< past input, for the weighting filter */
    zspG728WindowLogGain = 2    /**< past log gains */
} ZspG728Window;

/** The bandwidth expansions. */
typedef enum ZspG728Expansion {
    zspG728ExpandSynthesis = 0,     /**< (253/256)^i, 50 coefficients */
    zspG728ExpandLogGain = 1,       /**< (29/32)^i, 10 coefficients */
    zspG728ExpandWeightingPole = 2, /**< 0.6^i, 10 coefficients */
    zspG728ExpandWeightingZero = 3, /**< 0.9^i, 10 coefficients */
    zspG728ExpandPostPole = 4,      /**< 0.75^i, 10 coefficients */
    zspG728ExpandPostZero = 5,      /**< 0.65^i, 10 coefficients */
    zspG728ExpandErasure = 6        /**< 0.97^i, 50 coefficients */
} ZspG728Expansion;

/**
 * Window the past and form its autocorrelation, whose older part is a recursion.
 *
 *   R[l] = (1 - 2^-d) R[l] + sum(w[n] w[n+l], n = M..M+N-1)
 *   dst[l] = R[l] + sum(w[n] w[n+l], n = 0..M-1), and a 257th more at lag 0
 *
 * d, M and N are 2, 35, 20 for the synthesis filter, 1, 30, 20 for the weighting filter and 2, 20,
 * 4 for the log gain.
 *
 * @param         window      one of ::ZspG728Window
 * @param[in]     src         105 mantissas of 21 vectors, 60 samples or 34 log gains, newest first
 * @param[in]     srcQ        21 Qs of the vectors; other windows have no use for them
 * @param[in,out] recursion   R, 51 or 11 words; at the start zeros
 * @param[in,out] recursionQ  their Q, -256..256; at the start 31. The weighting filter's is lowered
 *                            to 41 where it is higher
 * @param[out]    dst         51 or 11 words in a Q of their own
 * @param[out]    ok          1, or 0 where the last lag is too small to go on with
 * @retval zspStsNullPtrErr     src, srcQ, recursion, recursionQ, dst or ok is null
 * @retval zspStsCodecRangeErr  window is none of the three
 * @retval zspStsScaleRangeErr  recursionQ is outside -256..256, or one of the 21 Qs outside
 *                              -64..64
 * @see ITU-T G.728, blocks 36, 43 and 49
 */
ZSPSC_API ZspStatus zspsHybridWindow_G728_16s(int32_t window, const int16_t* src,
                                              const int16_t* srcQ, int16_t* recursion,
                                              int16_t* recursionQ, int16_t* dst, int32_t* ok);

/**
 * Find a predictor from an autocorrelation, order by order; to be left at one order and taken up
 * again at another time.
 *
 * state is three words: the Q of the coefficients (15, 14 or 13), the energy that is left in the Q
 * of src, and the first reflection coefficient in Q15. Where ok becomes 0, lpc and state stay as
 * they were.
 *
 * @param[in]     src    to + 1 words of the autocorrelation
 * @param         from   0, or the order that has been reached with the same src, lpc and state
 * @param         to     the order wanted, from + 1..50
 * @param[in,out] lpc    `to` coefficients, of which the first `from` are there already
 * @param[in,out] state  3 words, not read if from is 0
 * @param[out]    ok     1, or 0 where the filter would be unstable or a coefficient has no room
 * @retval zspStsNullPtrErr     src, lpc, state or ok is null
 * @retval zspStsSizeErr        from < 0, to <= from or to > 50
 * @retval zspStsScaleRangeErr  from is not 0 and the Q is outside 13..15
 * @see ITU-T G.728, blocks 37, 44 and 50
 */
ZSPSC_API ZspStatus zspsLevinsonDurbin_G728_16s(const int16_t* src, int32_t from, int32_t to,
                                                int16_t* lpc, int16_t* state, int32_t* ok);

/**
 * Move the poles of a predictor inwards: dst[i] = src[i] * factor^(i+1), in Q14.
 *
 * @param      expansion  one of ::ZspG728Expansion, which also tells the number of coefficients
 * @param[in]  src        coefficients in Q q
 * @param      q          13, 14 or 15
 * @param[out] dst        coefficients in Q14, unchanged where ok becomes 0; may be src
 * @param[out] ok         1, or 0 where one of them has no room
 * @retval zspStsNullPtrErr     src, dst or ok is null
 * @retval zspStsScaleRangeErr  q is outside 13..15
 * @retval zspStsCodecRangeErr  expansion is none of the seven
 * @see ITU-T G.728, blocks 38, 45, 51 and 85; Annex I
 */
ZSPSC_API ZspStatus zspsBandwidthExpand_G728_16s(int32_t expansion, const int16_t* src, int32_t q,
                                                 int16_t* dst, int32_t* ok);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
