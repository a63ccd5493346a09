/**
 * @file zspsc/g729/decoder.h
 * @brief G.729 frames, parameters, excitation and synthesis.
 */
#ifndef ZSPSC_G729_DECODER_H
#define ZSPSC_G729_DECODER_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_g729_decoder G.729 decoder
 *
 * What a decoder of ITU-T G.729 computes before its post-filter, the same in the main body and in
 * Annex A: frames of 80 samples at 8 kHz in two sub-frames of 40. It goes through a frame so:
 *
 *     zspsUnpackFrame                the fields of a frame
 *     zspsLSFDecode                  line spectral frequencies
 *     zspsLSFToLSP, zspsLSPInterpolate, zspsLSPToLPC
 *     per sub-frame:
 *       zspsDecodePitchLag, zspsDecodeAdaptiveVector
 *       zspsFixedCodebookDecode, zspsHarmonicSharpening
 *       zspsGainDecode
 *       zspsExcitation
 *       zspsSynthesis
 *
 * In lost frames zspsLSFDecodeErased() and zspsGainDecodeErased() take the places of their
 * namesakes. What a decoder keeps from frame to frame is in plain arrays of the caller's; each
 * function says how they begin.
 * @{
 */

/**
 * The octets of a frame.
 *
 * Fields of a speech frame, with their bits: L0 and L1 (8), L2 and L3 (10), P1 (8), P0 (1), C1
 * (13), S1 (4), GA1 and GB1 (7), P2 (5), C2 (13), S2 (4), GA2 and GB2 (7). Fields of a silence
 * descriptor: predictor (1), first stage (5), second stage (4), gain (5); a bit 0 follows.
 *
 * @param[in]  src  11 fields of a speech frame, 4 of a silence descriptor
 * @param[out] dst  len octets
 * @param      len  10: a speech frame; 2: a silence descriptor
 * @retval zspStsNullPtrErr     src or dst is null
 * @retval zspStsSizeErr        len is neither 10 nor 2
 * @retval zspStsCodecRangeErr  a field does not fit its bits
 * @see ITU-T G.729, Table 8; Annex B, Table B.2; RFC 3551, clause 4.5.6
 */
ZSPSC_API ZspStatus zspsPackFrame_G729_16s8u(const int16_t* src, uint8_t* dst, int32_t len);

/**
 * The fields of a frame, as zspsPackFrame_G729_16s8u() takes them.
 *
 * @param[in]  src  len octets
 * @param      len  10: a speech frame; 2: a silence descriptor
 * @param[out] dst  11 fields; those that the frame does not have are 0
 * @retval zspStsNullPtrErr  src or dst is null
 * @retval zspStsSizeErr     len is neither 10 nor 2
 * @see ITU-T G.729, Table 8; Annex B, Table B.2; RFC 3551, clause 4.5.6
 */
ZSPSC_API ZspStatus zspsUnpackFrame_G729_8u16s(const uint8_t* src, int32_t len, int16_t* dst);

/**
 * Decode line spectral frequencies.
 *
 * @param         predictor  L0, 0 or 1
 * @param         first      L1, 0 to 127
 * @param         low, high  L2 and L3, 0 to 31
 * @param[in,out] memory     the last four vectors of ten words, the newest first; they begin as pi
 *                           j / 11, j = 1..10: 2339, 4679, 7018, 9358, 11698, 14037, 16377, 18717,
 *                           21056, 23396, four times
 * @param[out]    dst        ten frequencies in radians, Q13, ordered, 40 to 25681
 * @retval zspStsNullPtrErr     memory or dst is null
 * @retval zspStsCodecRangeErr  an index is outside its range
 * @see ITU-T G.729, clauses 3.2.4 and 4.1.1
 */
ZSPSC_API ZspStatus zspsLSFDecode_G729_16s(int32_t predictor, int32_t first, int32_t low,
                                           int32_t high, int16_t* memory, int16_t* dst);

/**
 * Let the memory of the frequencies go on over a lost frame, in which those of the last good speech
 * frame are used again.
 *
 * @param         predictor  of the last good speech frame, 0 or 1
 * @param[in]     lsf        its ten frequencies, Q13
 * @param[in,out] memory     as in zspsLSFDecode_G729_16s()
 * @retval zspStsNullPtrErr     lsf or memory is null
 * @retval zspStsCodecRangeErr  predictor is neither 0 nor 1
 * @see ITU-T G.729, clause 4.4.1
 */
ZSPSC_API ZspStatus zspsLSFDecodeErased_G729_16s(int32_t predictor, const int16_t* lsf,
                                                 int16_t* memory);

/**
 * Decode the lag of a sub-frame.
 *
 * @param      index     P1, 0 to 255, or P2, 0 to 31
 * @param      subframe  0 or 1
 * @param      firstLag  the lag of sub-frame 0, 18 to 144; not looked at for sub-frame 0
 * @param[out] lag       whole samples, 19 to 144
 * @param[out] fraction  thirds of a sample that come on top, -1 to 1
 * @retval zspStsNullPtrErr     lag or fraction is null
 * @retval zspStsRangeErr       subframe is neither 0 nor 1
 * @retval zspStsCodecRangeErr  index or firstLag is outside its range
 * @see ITU-T G.729, clause 4.1.3
 */
ZSPSC_API ZspStatus zspsDecodePitchLag_G729_16s(int32_t index, int32_t subframe, int32_t firstLag,
                                                int16_t* lag, int16_t* fraction);

/**
 * The adaptive vector: the excitation a lag ago, interpolated with 20 taps in steps of a third of a
 * sample. Lags below 50 read what has just been written.
 *
 * @param         lag       18 to 144
 * @param         fraction  thirds, -1 to 1
 * @param[in,out] srcDst    154 words of the past, and 40 that are written
 * @retval zspStsNullPtrErr     srcDst is null
 * @retval zspStsCodecRangeErr  lag or fraction is outside its range
 * @see ITU-T G.729, clause 3.7.1
 */
ZSPSC_API ZspStatus zspsDecodeAdaptiveVector_G729_16s_I(int32_t lag, int32_t fraction,
                                                        int16_t* srcDst);

/**
 * The fixed vector: four pulses of 8191 or -8192, nothing else.
 *
 * @param      positions  C, 13 bits: three each for pulses 0 to 2, four for pulse 3
 * @param      signs      S, a bit per pulse: 1 for a positive one
 * @param[out] dst        40 words, Q13
 * @retval zspStsNullPtrErr     dst is null
 * @retval zspStsCodecRangeErr  positions is not 0 to 8191, or signs not 0 to 15
 * @see ITU-T G.729, clauses 3.8 and 4.1.4
 */
ZSPSC_API ZspStatus zspsFixedCodebookDecode_G729_16s(int32_t positions, int32_t signs,
                                                     int16_t* dst);

/**
 * Add to a vector what lies a lag before in it. Vectors stay as they are for lags from 40 on.
 *
 *   x[n] += (2 gain x[n-lag]) >> 15, from n = lag upwards, saturated
 *
 * @param         lag     18 to 144
 * @param         gain    of the last sub-frame, limited to 3277..13017, Q14
 * @param[in,out] srcDst  40 words
 * @retval zspStsNullPtrErr     srcDst is null
 * @retval zspStsCodecRangeErr  lag is outside its range
 * @see ITU-T G.729, clause 3.8
 */
ZSPSC_API ZspStatus zspsHarmonicSharpening_G729_16s_I(int32_t lag, int16_t gain, int16_t* srcDst);

/**
 * Decode the gains of a sub-frame. The code gain is predicted from the code vector's energy and the
 * last four gains.
 *
 * @param         index      GA and GB, 0 to 127
 * @param[in]     code       40 words, Q13
 * @param[in,out] past       the last four gains' energies, Q10, the newest first; they begin as
 *                           -14336
 * @param[out]    pitchGain  Q14
 * @param[out]    codeGain   Q1
 * @retval zspStsNullPtrErr     code, past, pitchGain or codeGain is null
 * @retval zspStsCodecRangeErr  index is outside its range
 * @see ITU-T G.729, clauses 3.9 and 4.1.5
 */
ZSPSC_API ZspStatus zspsGainDecode_G729_16s(int32_t index, const int16_t* code, int16_t* past,
                                            int16_t* pitchGain, int16_t* codeGain);

/**
 * Let the gains fade in a lost frame: by 0.9, at most 0.9, and by 0.98.
 *
 * @param[in,out] past       as in zspsGainDecode_G729_16s()
 * @param[in,out] pitchGain  Q14
 * @param[in,out] codeGain   Q1
 * @retval zspStsNullPtrErr  past, pitchGain or codeGain is null
 * @see ITU-T G.729, clauses 4.4.2 and 4.4.3
 */
ZSPSC_API ZspStatus zspsGainDecodeErased_G729_16s_I(int16_t* past, int16_t* pitchGain,
                                                    int16_t* codeGain);

/**
 * The excitation: both vectors with their gains.
 *
 *   srcDst[n] = sat16((srcDst[n] pitchGain + code[n] codeGain + 2^13) >> 14)
 *
 * @param         pitchGain  Q14, not negative
 * @param         codeGain   Q1, not negative
 * @param[in]     code       40 words, Q13
 * @param[in,out] srcDst     40 words: the adaptive vector becomes the excitation
 * @retval zspStsNullPtrErr  code or srcDst is null
 * @retval zspStsRangeErr    a gain is negative
 * @see ITU-T G.729, clause 4.1.6
 */
ZSPSC_API ZspStatus zspsExcitation_G729_16s_I(int16_t pitchGain, int16_t codeGain,
                                              const int16_t* code, int16_t* srcDst);

/**
 * Synthesis of a sub-frame. When the filter overflows anywhere, all of the excitation is divided by
 * four, that of other sub-frames too, and the filter runs once more from its memory.
 *
 * @param[in]     lpc         11 words, Q12
 * @param         subframe    0 or 1: which of the last two parts of excitation
 * @param[in,out] excitation  154 words of the past and 80 of the frame
 * @param[out]    dst         40 samples
 * @param[in,out] memory      the last ten samples, the newest last; they begin as 0
 * @retval zspStsNullPtrErr  lpc, excitation, dst or memory is null
 * @retval zspStsRangeErr    subframe is neither 0 nor 1
 * @see ITU-T G.729, clause 4.1.6
 */
ZSPSC_API ZspStatus zspsSynthesis_G729_16s(const int16_t* lpc, int32_t subframe,
                                           int16_t* excitation, int16_t* dst, int16_t* memory);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
