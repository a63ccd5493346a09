/**
 * @file zspsc/g722.h
 * @brief G.722 sub-band ADPCM.
 */
#ifndef ZSPSC_G722_H
#define ZSPSC_G722_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_g722 G.722 sub-band ADPCM
 *
 * The parts of the ITU-T G.722 coder for 7 kHz speech. A 64 kbit/s encoder is zspsQMFEncode and
 * then zspsSBADPCMEncode; a decoder is zspsSBADPCMDecode in one of three modes and then
 * zspsQMFDecode. Between them go pairs of words, one pair for two 16 kHz samples: element 2k is the
 * lower band's value or code, element 2k+1 the higher band's. A byte of the usual packed stream is
 * I_H * 64 + I_L.
 *
 * Encoder and decoder have the same kind of state, and each needs one of its own: a buffer of 144
 * bytes at any address, of which the record takes a part that begins at the first 16-byte boundary.
 * It may be copied to an address with the same remainder modulo 16. Each filter needs a delay line
 * of its own: 24 words, cleared by the caller before the first call.
 *
 * Blocks may be of any even length. One call gives the same as several calls that divide its
 * samples between them. dst may be src, otherwise they must not overlap. The two filters together
 * delay a signal by 22 samples of 16 kHz.
 * @{
 */

/**
 * The size of an encoder's state.
 *
 * @param[out] size  144
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsSBADPCMEncodeStateSize_G722_16s(int32_t* size);

/**
 * As zspsSBADPCMEncodeStateSize_G722_16s(), for a decoder.
 *
 * @param[out] size  144
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsSBADPCMDecodeStateSize_G722_16s(int32_t* size);

/**
 * Start an encoder: all memories 0, the scale factors 32 (lower band) and 8 (higher band).
 *
 * @param[out] state  144 bytes at any address
 * @retval zspStsNullPtrErr  state is null
 */
ZSPSC_API ZspStatus zspsSBADPCMEncodeInit_G722_16s(void* state);

/**
 * As zspsSBADPCMEncodeInit_G722_16s(), for a decoder.
 *
 * @param[out] state  144 bytes at any address
 * @retval zspStsNullPtrErr  state is null
 */
ZSPSC_API ZspStatus zspsSBADPCMDecodeInit_G722_16s(void* state);

/**
 * Encode sub-band samples.
 *
 * @param[in]     src    len words, pairs (xL, xH); all 16-bit values are accepted
 * @param[out]    dst    len words, pairs (I_L, I_H) of 0..63 and 0..3; may be src
 * @param         len    at least 2, even
 * @param[in,out] state  as initialised
 * @retval zspStsNullPtrErr  src, dst or state is null
 * @retval zspStsSizeErr     len < 1 or odd
 * @see ITU-T G.722, clause 6.2
 */
ZSPSC_API ZspStatus zspsSBADPCMEncode_G722_16s(const int16_t* src, int16_t* dst, int32_t len,
                                               void* state);

/**
 * Decode sub-band codes.
 *
 * The mode chooses how many bits of I_L form the output; what the state learns is the same in all.
 *
 * @param[in]     src    len words, pairs (I_L, I_H), of which the lowest 6 and 2 bits count
 * @param[out]    dst    len words, pairs (rL, rH) of 15 bits, -16384..16383; may be src
 * @param         len    at least 2, even
 * @param         mode   1: 64 kbit/s, all six bits of I_L; 2: 56 kbit/s, the upper five; any other
 *                       value: 48 kbit/s, the upper four
 * @param[in,out] state  as initialised
 * @retval zspStsNullPtrErr  src, dst or state is null
 * @retval zspStsSizeErr     len < 1 or odd
 * @see ITU-T G.722, clause 6.2
 */
ZSPSC_API ZspStatus zspsSBADPCMDecode_G722_16s(const int16_t* src, int16_t* dst, int32_t len,
                                               int16_t mode, void* state);

/**
 * Put a decoder back in step after lost blocks have been concealed.
 *
 * Lower band: the zero predictor's coefficients and differences become 0; low becomes its
 * reconstructed signal, and half of it the partially reconstructed one; x becomes its estimate, and
 * half of it the zero predictor's part; the pole predictor's coefficients stay. Higher band: the
 * logarithmic scale factor is halved, and the linear one follows it.
 *
 * @param[in]     low    the last two concealed values of the lower band, the older first
 * @param         x      estimate of the lower band's next value
 * @param         reset  not 0: the scale factors of both bands start anew instead
 * @param[in,out] state  as initialised
 * @retval zspStsNullPtrErr     low or state is null
 * @retval zspStsCodecRangeErr  the logarithmic scale factor is none that a decoder can reach. The
 *                              lower band has been set and the factor halved by then, but neither
 *                              has the linear scale factor followed nor the reset been done.
 */
ZSPSC_API ZspStatus zspsSBADPCMDecodeStateUpdate_G722_16s(const int16_t* low, int16_t x,
                                                          int32_t reset, void* state);

/**
 * Split 16 kHz samples into a lower and a higher band of 8 kHz: the transmit filter.
 *
 * @param[in]     src        len samples
 * @param[out]    dst        len words, pairs (xL, xH) of 15 bits, -16384..16383; may be src
 * @param         len        at least 2, even
 * @param[in,out] delayLine  24 words; holds the last 24 samples, the oldest first
 * @retval zspStsNullPtrErr  src, dst or delayLine is null
 * @retval zspStsSizeErr     len < 1 or odd
 * @see ITU-T G.722, clause 5
 */
ZSPSC_API ZspStatus zspsQMFEncode_G722_16s(const int16_t* src, int16_t* dst, int32_t len,
                                           int16_t* delayLine);

/**
 * Join a lower and a higher band of 8 kHz to 16 kHz samples: the receive filter.
 *
 * @param[in]     src        len words, pairs (rL, rH); all 16-bit values are accepted
 * @param[out]    dst        len samples, saturated; may be src
 * @param         len        at least 2, even
 * @param[in,out] delayLine  24 words; holds the last twelve sat16(rL + rH), sat16(rL - rH), the
 *                           oldest first
 * @retval zspStsNullPtrErr  src, dst or delayLine is null
 * @retval zspStsSizeErr     len < 1 or odd
 * @see ITU-T G.722, clause 5
 */
ZSPSC_API ZspStatus zspsQMFDecode_G722_16s(const int16_t* src, int16_t* dst, int32_t len,
                                           int16_t* delayLine);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
