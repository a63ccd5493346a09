/**
 * @file zspsc/amrwb/isf.h
 * @brief AMR-WB immittance spectral frequencies.
 */
#ifndef ZSPSC_AMRWB_ISF_H
#define ZSPSC_AMRWB_ISF_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_amrwb_isf AMR-WB immittance spectral frequencies
 *
 * Immittance spectral frequencies (ISF) of AMR-WB: 0..16383 stands for 0..6400 Hz, a vector has 16
 * elements in ascending order, and the last one is kept at half scale. Immittance spectral pairs
 * (ISP) are their cosines, Q15. No state.
 * @{
 */

/**
 * Immittance spectral frequencies to pairs, by interpolation in a cosine table of 128 steps.
 *
 *   isp[i] = cos(pi isf[i] / 16384), with 2 isf[len-1] in place of the last element
 *
 * Frequencies outside of 0..16383 are limited to it, the last one after its doubling.
 *
 * @param[in]  isf  len frequencies
 * @param[out] isp  len pairs, Q15; may be isf, otherwise must not overlap it
 * @param      len  at least 1, 16 in the codec
 * @retval zspStsNullPtrErr  isf or isp is null
 * @retval zspStsSizeErr     len < 1
 * @see 3GPP TS 26.190
 */
ZSPSC_API ZspStatus zspsISFToISP_AMRWB_16s(const int16_t* isf, int16_t* isp, int32_t len);

/**
 * Immittance spectral pairs to frequencies, the inverse of zspsISFToISP_AMRWB_16s().
 *
 *   isf[i] = acos(isp[i]) 16384 / pi, the last element halved
 *
 * The table's steps are walked through from the last but one element to the first, upwards in the
 * cosine, and for the last element by itself. The pairs before the last are meant to descend; one
 * that is smaller than a pair after it is converted in that pair's step, with saturation.
 *
 * @param[in]  isp  len pairs, Q15, any values
 * @param[out] isf  len frequencies, 0..16384, the last one 0..8192, where the pairs descend; may be
 *                  isp, otherwise must not overlap it
 * @param      len  at least 1, 16 in the codec
 * @retval zspStsNullPtrErr  isp or isf is null
 * @retval zspStsSizeErr     len < 1
 * @see 3GPP TS 26.190
 */
ZSPSC_API ZspStatus zspsISPToISF_Norm_AMRWB_16s(const int16_t* isp, int16_t* isf, int32_t len);

/**
 * Quantise the frequencies of a comfort-noise (SID) frame.
 *
 * The mean is taken off, and elements 0-1, 2-4, 5-7, 8-11 and 12-15 go each to the codevector of
 * least squared error: 64, 64, 64, 32 and 32 codevectors, 28 bits in all. Errors saturate at
 * 2^31 - 1; of equal ones the first wins.
 *
 * @param[in]  isf        16 frequencies, any values
 * @param[out] quantised  16 frequencies as zspsISFQuantDecodeDTX_AMRWB_16s() gives them; may be
 *                        isf, otherwise must not overlap it
 * @param[out] indices    5 indices: 0..63, 0..63, 0..63, 0..31, 0..31
 * @retval zspStsNullPtrErr  isf, quantised or indices is null
 * @see 3GPP TS 26.190 and TS 26.192, quantisation of the comfort-noise ISFs
 */
ZSPSC_API ZspStatus zspsISFQuantDTX_AMRWB_16s(const int16_t* isf, int16_t* quantised,
                                              int16_t* indices);

/**
 * Decode the frequencies of a comfort-noise (SID) frame.
 *
 * The mean is added to the five codevectors; then elements 0 to 14 are raised, from the first on,
 * to at least 128 and to at least 128 above the element before.
 *
 * @param[in]  indices  5 indices: 6, 6, 6, 5 and 5 bits count, higher ones are ignored
 * @param[out] isf      16 frequencies; must not overlap indices
 * @retval zspStsNullPtrErr  indices or isf is null
 * @see 3GPP TS 26.190 and TS 26.192, quantisation of the comfort-noise ISFs
 */
ZSPSC_API ZspStatus zspsISFQuantDecodeDTX_AMRWB_16s(const int16_t* indices, int16_t* isf);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
