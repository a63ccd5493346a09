/**
 * @file zspsc/g729/lp.h
 * @brief G.729 linear prediction and line spectral pairs.
 */
#ifndef ZSPSC_G729_LP_H
#define ZSPSC_G729_LP_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_g729_lp G.729 linear prediction
 *
 * From 240 pre-processed samples to a prediction filter and its line spectral pairs, and back, in
 * the Recommendation's fixed-point arithmetic. A filter is eleven words in Q12, the first 4096;
 * line spectral pairs are ten cosines in Q15, the greatest first. An encoder's first pairs are
 * 30000, 26000, 21000, 15000, 8000, 0, -8000, -15000, -21000 and -26000.
 * @{
 */

/**
 * Window samples and correlate them.
 *
 * While the energy of the windowed samples plus 1 leaves 32 bits, they are shifted right by 2.
 * Sums are doubled as by the basic operators, 1 is added to the energy, and all are shifted left
 * until the energy is normalised.
 *
 * @param[in]  src       240 samples: 120 of the past, 80 of the frame, 40 of the next
 * @param[out] corr      13 sums for lags 0 to 12; the first is at least 2^30
 * @param[out] exponent  1 + 4 for each shift right - the shifts left
 * @retval zspStsNullPtrErr  src, corr or exponent is null
 * @see ITU-T G.729, clause 3.2.1
 */
ZSPSC_API ZspStatus zspsAutoCorr_G729_16s32s(const int16_t* src, int32_t* corr, int16_t* exponent);

/**
 * Widen the spectrum of correlations by 60 Hz and add a floor of 40 dB below.
 *
 * @param[in,out] corr  13 sums for lags 0 to 12; the first stays
 * @retval zspStsNullPtrErr  corr is null
 * @see ITU-T G.729, clause 3.2.1
 */
ZSPSC_API ZspStatus zspsLagWindow_G729_32s_I(int32_t* corr);

/**
 * The prediction filter of correlations.
 *
 * When a reflection coefficient's magnitude exceeds 32750, or the error's energy vanishes, which no
 * signal's correlations bring about, the filter is unstable and nothing is written: with the same
 * arrays in every call an encoder goes on with the last stable filter, as it has to. They begin as
 * 4096 and zeros.
 *
 * @param[in]  corr        11 sums for lags 0 to 10; the lowest bit of each does not count
 * @param[out] lpc         11 words, Q12
 * @param[out] reflection  ten coefficients, Q15
 * @param[out] error       energy of the prediction error, in the format of the upper words of corr
 * @retval zspStsNullPtrErr  corr, lpc, reflection or error is null
 * @retval zspStsRangeErr    corr[0] < 2^30
 * @retval zspStsOverflow    the filter is unstable; a warning
 * @see ITU-T G.729, clause 3.2.2
 */
ZSPSC_API ZspStatus zspsLevinsonDurbin_G729_32s16s(const int32_t* corr, int16_t* lpc,
                                                   int16_t* reflection, int16_t* error);

/**
 * Line spectral pairs of a filter, searched on a grid of 60 steps and halved four times.
 *
 * @param[in]  lpc       11 words, Q12
 * @param[in]  previous  ten pairs, taken where fewer than ten roots are found
 * @param[out] lsp       ten pairs, Q15; may be previous
 * @retval zspStsNullPtrErr  lpc, previous or lsp is null
 * @see ITU-T G.729, clause 3.2.3
 */
ZSPSC_API ZspStatus zspsLPCToLSP_G729_16s(const int16_t* lpc, const int16_t* previous,
                                          int16_t* lsp);

/**
 * As zspsLPCToLSP_G729_16s(), on a grid of 50 steps and halved twice.
 *
 * @param[in]  lpc       11 words, Q12
 * @param[in]  previous  ten pairs, taken where fewer than ten roots are found
 * @param[out] lsp       ten pairs, Q15; may be previous
 * @retval zspStsNullPtrErr  lpc, previous or lsp is null
 * @see ITU-T G.729, clause A.3.2.3
 */
ZSPSC_API ZspStatus zspsLPCToLSP_G729A_16s(const int16_t* lpc, const int16_t* previous,
                                           int16_t* lsp);

/**
 * The filter of line spectral pairs.
 *
 * @param[in]  lsp  ten pairs, Q15
 * @param[out] lpc  11 words, Q12
 * @retval zspStsNullPtrErr  lsp or lpc is null
 * @see ITU-T G.729, clause 3.2.6
 */
ZSPSC_API ZspStatus zspsLSPToLPC_G729_16s(const int16_t* lsp, int16_t* lpc);

/**
 * Line spectral pairs of the first subframe: half way between two frames.
 *
 *   dst[i] = (lsp[i] >> 1) + (previous[i] >> 1)
 *
 * @param[in]  previous, lsp  ten pairs each, Q15
 * @param[out] dst            ten pairs; may be previous or lsp
 * @retval zspStsNullPtrErr  previous, lsp or dst is null
 * @see ITU-T G.729, clause 3.2.5
 */
ZSPSC_API ZspStatus zspsLSPInterpolate_G729_16s(const int16_t* previous, const int16_t* lsp,
                                                int16_t* dst);

/**
 * Line spectral pairs of angular frequencies: cosines, interpolated on a grid of 64 points. From
 * 25736 on, half the sampling rate, the last step is gone through again.
 *
 * @param[in]  src  ten frequencies in radians, Q13
 * @param[out] dst  ten cosines, Q15; may be src
 * @retval zspStsNullPtrErr        src or dst is null
 * @retval zspStsNegativeValueErr  a frequency is negative
 * @see ITU-T G.729, clause 3.2.4
 */
ZSPSC_API ZspStatus zspsLSFToLSP_G729_16s(const int16_t* src, int16_t* dst);

/**
 * Widen a filter's resonances.
 *
 *   dst[i] = lpc[i] gamma^i, rounded; the power is rounded from step to step
 *
 * @param[in]  lpc    11 words, Q12
 * @param      gamma  Q15
 * @param[out] dst    11 words; may be lpc
 * @retval zspStsNullPtrErr  lpc or dst is null
 * @see ITU-T G.729, clause 3.3
 */
ZSPSC_API ZspStatus zspsWeightLPC_G729_16s(const int16_t* lpc, int16_t gamma, int16_t* dst);

/**
 * The weighting filters of Annex A.
 *
 *   weighted[i] = lpc[i] 0.75^i; lowPass[i] = weighted[i] - 0.7 weighted[i-1]
 *
 * @param[in]  lpc       11 words, Q12, quantised
 * @param[out] weighted  11 words; may be lpc
 * @param[out] lowPass   11 words, the first 4096
 * @retval zspStsNullPtrErr  lpc, weighted or lowPass is null
 * @see ITU-T G.729, clause A.3.3
 */
ZSPSC_API ZspStatus zspsWeightLPC_G729A_16s(const int16_t* lpc, int16_t* weighted,
                                            int16_t* lowPass);

/**
 * The residual of a prediction filter.
 *
 *   dst[n] = sum over j = 0..10 of lpc[j] src[n-j], saturated to 32 bits at every step; rounded
 *
 * @param[in]  lpc  11 words, Q12
 * @param[in]  src  len samples, preceded by ten of the past
 * @param[out] dst  len samples
 * @param      len  at least 1
 * @retval zspStsNullPtrErr  lpc, src or dst is null
 * @retval zspStsSizeErr     len < 1
 * @see ITU-T G.729, clause A.3.3
 */
ZSPSC_API ZspStatus zspsResidualFilter_G729_16s(const int16_t* lpc, const int16_t* src,
                                                int16_t* dst, int32_t len);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
