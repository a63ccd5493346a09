/**
 * @file zspsc/g729/postfilter.h
 * @brief G.729 post-filters.
 */
#ifndef ZSPSC_G729_POSTFILTER_H
#define ZSPSC_G729_POSTFILTER_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_g729_postfilter G.729 post-filters
 *
 * Two post-filters over sub-frames of 40 samples, that of the main body of ITU-T G.729 and the
 * cheaper one of Annex A. Both begin with
 *
 *     zspsWeightLPC            zeros, with 18022, and poles, with 22938
 *     zspsResidualFilter       of the synthesis, by the zeros
 *
 * and end with the high-pass filter of clause 4.2.5 over the frame. In between the main body has
 *
 *     zspsLongTermPostFilter_G729, zspsShortTermPostFilter_G729
 *     zspsTiltCompensation_G729, zspsGainControl_G729
 *
 * and Annex A
 *
 *     zspsLongTermPostFilter_G729A, zspsTiltCompensation_G729A
 *     zspsShortTermPostFilter_G729A, zspsGainControl_G729A
 *
 * Outside of speech, the long-term filters are left out.
 * @{
 */

/**
 * Long-term post-filter: find the residual's delay near a lag in steps of 1/8 sample, and add what
 * lies there, where it is like what is here.
 *
 * @param      lag    of the frame's first sub-frame, 18 to 144
 * @param[in]  src    152 words of the residual's past, and 40 of the sub-frame; the word before
 *                    these, which a delay of 146 reads, counts as 0
 * @param[out] dst    40 words
 * @param[out] delay  whole samples, rounded up; 0 when dst is the sub-frame as it was
 * @retval zspStsNullPtrErr     src, dst or delay is null
 * @retval zspStsCodecRangeErr  lag is outside its range
 * @see ITU-T G.729, clause 4.2.1
 */
ZSPSC_API ZspStatus zspsLongTermPostFilter_G729_16s(int32_t lag, const int16_t* src, int16_t* dst,
                                                    int16_t* delay);

/**
 * Short-term post-filter: the poles, with a gain that is 1 at most. What it keeps of the last
 * sub-frame is handed out in front, for zspsTiltCompensation_G729_16s().
 *
 * @param[in]     zeros       11 words, Q12
 * @param[in]     poles       11 words, Q12
 * @param[in]     src         40 words
 * @param[out]    dst         41 words, of which the first is memory's last
 * @param[in,out] memory      the last ten outputs, the newest last; they begin as 0
 * @param[out]    reflection  first reflection coefficient of zeros and poles, Q15
 * @retval zspStsNullPtrErr  zeros, poles, src, dst, memory or reflection is null
 * @see ITU-T G.729, clauses 4.2.2 and 4.2.3
 */
ZSPSC_API ZspStatus zspsShortTermPostFilter_G729_16s(const int16_t* zeros, const int16_t* poles,
                                                     const int16_t* src, int16_t* dst,
                                                     int16_t* memory, int16_t* reflection);

/**
 * Take the tilt off that the short-term post-filter has made.
 *
 *   t[n] = src[n+1] + mu src[n], mu = 0.2 reflection above 0, else 0.9 reflection
 *   dst[n] = t[n] / (1 - |mu|)
 *
 * @param         reflection  Q15
 * @param[in]     src         41 words
 * @param[out]    dst         40 words
 * @retval zspStsNullPtrErr  src or dst is null
 * @see ITU-T G.729, clause 4.2.3
 */
ZSPSC_API ZspStatus zspsTiltCompensation_G729_16s(int16_t reflection, const int16_t* src,
                                                  int16_t* dst);

/**
 * Bring samples to the sum of magnitudes that they had before the post-filter, with a gain that
 * follows slowly.
 *
 *   gain = mult_r(32358, gain) + 410/32768 of the quotient of both sums, per sample
 *
 * @param[in]     src     40 samples before the post-filter
 * @param[in,out] srcDst  40 samples after it
 * @param[in,out] gain    Q14, begins as 16384
 * @retval zspStsNullPtrErr  src, srcDst or gain is null
 * @see ITU-T G.729, clause 4.2.4
 */
ZSPSC_API ZspStatus zspsGainControl_G729_16s_I(const int16_t* src, int16_t* srcDst, int16_t* gain);

/**
 * Long-term post-filter of Annex A: find the residual's delay within three samples of a lag, and
 * add what lies there, where it is like what is here.
 *
 * @param      lag  of the sub-frame, 18 to 144
 * @param[in]  src  143 words of the residual's past, and 40 of the sub-frame
 * @param[out] dst  40 words
 * @retval zspStsNullPtrErr     src or dst is null
 * @retval zspStsCodecRangeErr  lag is outside its range
 * @see ITU-T G.729, clause A.4.2.1
 */
ZSPSC_API ZspStatus zspsLongTermPostFilter_G729A_16s(int32_t lag, const int16_t* src, int16_t* dst);

/**
 * Take the tilt off that the short-term post-filter of Annex A is going to make.
 *
 * @param[in]     zeros   11 words, Q12
 * @param[in]     poles   11 words, Q12
 * @param[in,out] srcDst  40 words
 * @param[in,out] last    the last word of the sub-frame before, as it came in; begins as 0
 * @retval zspStsNullPtrErr  zeros, poles, srcDst or last is null
 * @see ITU-T G.729, clause A.4.2.3
 */
ZSPSC_API ZspStatus zspsTiltCompensation_G729A_16s_I(const int16_t* zeros, const int16_t* poles,
                                                     int16_t* srcDst, int16_t* last);

/**
 * Short-term post-filter of Annex A: the poles.
 *
 * @param[in]     poles   11 words, Q12
 * @param[in]     src     40 words
 * @param[out]    dst     40 words; may be src
 * @param[in,out] memory  the last ten outputs, the newest last; they begin as 0
 * @retval zspStsNullPtrErr  poles, src, dst or memory is null
 * @see ITU-T G.729, clause A.4.2.2
 */
ZSPSC_API ZspStatus zspsShortTermPostFilter_G729A_16s(const int16_t* poles, const int16_t* src,
                                                      int16_t* dst, int16_t* memory);

/**
 * Bring samples to the energy that they had before the post-filter, with a gain that follows
 * slowly.
 *
 *   gain = 0.9 gain + 0.1 root of the quotient of both energies, per sample
 *
 * @param[in]     src     40 samples before the post-filter
 * @param[in,out] srcDst  40 samples after it
 * @param[in,out] gain    Q12, begins as 4096
 * @retval zspStsNullPtrErr  src, srcDst or gain is null
 * @see ITU-T G.729, clause A.4.2.4
 */
ZSPSC_API ZspStatus zspsGainControl_G729A_16s_I(const int16_t* src, int16_t* srcDst, int16_t* gain);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
