/**
 * @file zspsc/g723/decoder.h
 * @brief G.723.1 frames, spectral pairs, excitation vectors and decoder.
 */
#ifndef ZSPSC_G723_DECODER_H
#define ZSPSC_G723_DECODER_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_g723 G.723.1 decoder
 *
 * The blocks of ITU-T G.723.1 in the Recommendation's fixed-point arithmetic: frames of 240 samples
 * at 8 kHz in four sub-frames of 60, at 6.3 and 5.3 kbit/s. A decoder goes through a frame so:
 *
 *     zspsUnpackFrame                the fields of a frame
 *     zspsLSPDequant                 line spectral pairs
 *     zspsLSPInterpolateToLPC        four sets of prediction coefficients
 *     per sub-frame:
 *       zspsDecodeFixedVector, zspsDecodeAdaptiveVector, zspsExcitation
 *     zspsConcealAnalysis            what a lost frame after this one would need
 *     zspsPitchPostFilter
 *     per sub-frame:
 *       zspsSynthesisFilter, zspsFormantPostFilter, zspsGainControl
 *
 * For a lost frame zspsConcealExcitation() gives the excitation; for silence descriptors and frames
 * that were not sent zspsComfortNoiseExcitation() does. What a coder keeps from frame to frame is
 * in plain arrays of the caller's; each function says how they begin.
 *
 * Prediction coefficients are ten words in Q13, line spectral pairs ten words of which 32768 would
 * be half the sampling frequency.
 * @{
 */

/** What a frame is; the two lowest bits of its first octet. */
typedef enum ZspG723Type {
    zspG723Rate63 = 0,       /**< 6.3 kbit/s, 24 octets */
    zspG723Rate53 = 1,       /**< 5.3 kbit/s, 20 octets */
    zspG723Sid = 2,          /**< silence descriptor, 4 octets */
    zspG723Untransmitted = 3 /**< nothing was sent; an octet in files */
} ZspG723Type;

/**
 * The fields of a frame. Functions look only at those that they say they use.
 *
 * A sub-frame's lag is that of its pair + its offset - 1. There are two books of adaptive gains: 85
 * at 6.3 kbit/s for pairs with a lag below 58, otherwise 170.
 */
typedef struct ZspG723Frame {
    int32_t type;         /**< ::ZspG723Type */
    int32_t lspIndex;     /**< 24 bits, the first band's on top */
    int32_t position[4];  /**< pulse positions by sub-frame */
    int16_t lag[2];       /**< of sub-frames 0 and 1, and of 2 and 3: 18 to 141 */
    int16_t lagOffset[4]; /**< 0 to 3; of sub-frames 0 and 2 always 1 */
    int16_t acbGain[4];   /**< adaptive gain indices, 0 to 84 or 169 */
    int16_t fcbGain[4];   /**< fixed gain indices, 0 to 23 */
    int16_t train[4];     /**< 1: pulses repeat with the lag; at 6.3 kbit/s with lags below 58 */
    int16_t grid[4];      /**< 0: even places, 1: odd places */
    int16_t signs[4];     /**< a bit per pulse */
    int16_t sidGain;      /**< gain index of a silence descriptor, 0 to 63 */
    int16_t reserved;     /**< 0 */
} ZspG723Frame;

/**
 * The octets of a frame.
 *
 * At 6.3 kbit/s a position code says which of 30 places have pulses; the one after the last code,
 * 593775 for six and 142506 for five pulses, says that there are none.
 *
 * @param[in]  frame  all fields of its type
 * @param[out] dst    24, 20, 4 or 1 octets
 * @param[out] len    how many
 * @retval zspStsNullPtrErr     frame, dst or len is null
 * @retval zspStsCodecRangeErr  a field is outside its range
 * @see ITU-T G.723.1, clause 4, and Annex A, clause A.5
 */
ZSPSC_API ZspStatus zspsPackFrame_G723_8u(const ZspG723Frame* frame, uint8_t* dst, int32_t* len);

/**
 * The fields of a frame. Those that its type does not have are 0.
 *
 * @param[in]  src    len octets
 * @param      len    24, 20, 4 or 1, as the two lowest bits of src[0] say
 * @param[out] frame  all fields
 * @retval zspStsNullPtrErr     src or frame is null
 * @retval zspStsSizeErr        len is not the length of such a frame
 * @retval zspStsCodecRangeErr  a lag or gain that no encoder sends: the frame is damaged
 * @see ITU-T G.723.1, clause 4, and Annex A, clause A.5
 */
ZSPSC_API ZspStatus zspsUnpackFrame_G723_8u(const uint8_t* src, int32_t len, ZspG723Frame* frame);

/**
 * Line spectral pairs from prediction coefficients, which are widened by 0.994^i before.
 *
 * @param[in]  lpc       ten words, Q13
 * @param[in]  previous  ten pairs, taken where fewer than ten are found
 * @param[out] lsp       ten pairs; may be previous
 * @retval zspStsNullPtrErr  lpc, previous or lsp is null
 * @see ITU-T G.723.1, clause 2.5
 */
ZSPSC_API ZspStatus zspsLPCToLSP_G723_16s(const int16_t* lpc, const int16_t* previous,
                                          int16_t* lsp);

/**
 * Quantise line spectral pairs: predicted from the last ones, in three bands of 256 vectors.
 *
 * @param[in]  lsp       ten pairs
 * @param[in]  previous  ten pairs as the last frame decoded them
 * @param[out] index     0 to 2^24 - 1
 * @retval zspStsNullPtrErr  lsp, previous or index is null
 * @see ITU-T G.723.1, clause 2.5
 */
ZSPSC_API ZspStatus zspsLSPQuant_G723_16s32s(const int16_t* lsp, const int16_t* previous,
                                             int32_t* index);

/**
 * Decode line spectral pairs, kept apart so that the filter is stable.
 *
 * @param      index     0 to 2^24 - 1
 * @param      erased    1 for a lost frame, whose index is not used; else 0
 * @param[in]  previous  ten pairs of the last frame
 * @param[out] lsp       ten pairs; may be previous
 * @retval zspStsNullPtrErr     previous or lsp is null
 * @retval zspStsCodecRangeErr  index or erased is outside its range
 * @see ITU-T G.723.1, clauses 2.6 and 3.2
 */
ZSPSC_API ZspStatus zspsLSPDequant_G723_16s(int32_t index, int32_t erased, const int16_t* previous,
                                            int16_t* lsp);

/**
 * Prediction coefficients of the four sub-frames, from pairs a quarter, a half, three quarters and
 * all of the way from the last frame's to this one's.
 *
 * @param[in]  previous  ten pairs of the last frame
 * @param[in]  lsp       ten pairs of this frame
 * @param[out] lpc       four times ten words, Q13
 * @retval zspStsNullPtrErr  previous, lsp or lpc is null
 * @see ITU-T G.723.1, clauses 2.7 and 3.3
 */
ZSPSC_API ZspStatus zspsLSPInterpolateToLPC_G723_16s(const int16_t* previous, const int16_t* lsp,
                                                     int16_t* lpc);

/**
 * The fixed vector of a sub-frame. A position code beyond all at 6.3 kbit/s gives zeros.
 *
 * @param[in]  frame     at 6.3 or 5.3 kbit/s; its lag, lagOffset, acbGain, fcbGain, train, grid,
 *                       signs and position are used
 * @param      subframe  0 to 3
 * @param[out] dst       60 words
 * @retval zspStsNullPtrErr     frame or dst is null
 * @retval zspStsCodecRangeErr  subframe or a field is outside its range
 * @see ITU-T G.723.1, clause 3.5
 */
ZSPSC_API ZspStatus zspsDecodeFixedVector_G723_16s(const ZspG723Frame* frame, int32_t subframe,
                                                   int16_t* dst);

/**
 * The adaptive vector of a sub-frame: five taps over the last period of the excitation.
 *
 * @param[in]  frame     its type, lag (up to 143), lagOffset and acbGain are used; the sub-frame's
 *                       lag is 143 at most
 * @param      subframe  0 to 3
 * @param[in]  past      the 145 last words of excitation, the oldest first
 * @param[out] dst       60 words
 * @retval zspStsNullPtrErr     frame, past or dst is null
 * @retval zspStsCodecRangeErr  subframe or a field is outside its range
 * @see ITU-T G.723.1, clauses 2.14 and 3.4
 */
ZSPSC_API ZspStatus zspsDecodeAdaptiveVector_G723_16s(const ZspG723Frame* frame, int32_t subframe,
                                                      const int16_t* past, int16_t* dst);

/**
 * The excitation of a sub-frame.
 *
 *   dst[i] = sat16(sat16(2 fixed[i]) + adaptive[i])
 *
 * @param[in]  fixed, adaptive  60 words each
 * @param[out] dst              60 words; may be fixed or adaptive
 * @retval zspStsNullPtrErr  fixed, adaptive or dst is null
 * @see ITU-T G.723.1, clauses 2.19 and 3.5
 */
ZSPSC_API ZspStatus zspsExcitation_G723_16s(const int16_t* fixed, const int16_t* adaptive,
                                            int16_t* dst);

/**
 * Emphasise the pitch of a frame's excitation by adding, where it matches well enough, what lies
 * a lag before or behind.
 *
 * @param[in]  frame  at 6.3 or 5.3 kbit/s; its lag (up to 143) is used
 * @param[in]  src    145 past words of excitation and the frame's 240
 * @param[out] dst    240 words
 * @retval zspStsNullPtrErr     frame, src or dst is null
 * @retval zspStsCodecRangeErr  type or lag is outside its range
 * @see ITU-T G.723.1, clause 3.6
 */
ZSPSC_API ZspStatus zspsPitchPostFilter_G723_16s(const ZspG723Frame* frame, const int16_t* src,
                                                 int16_t* dst);

/**
 * What is to be known of a good frame in case that the next one is lost or begins a pause.
 *
 * @param[in]  frame          its lag (up to 143) and fcbGain are used
 * @param[in]  src            145 past words of excitation and the frame's 240, as they were before
 *                            the pitch post-filter
 * @param[out] lag            the lag to repeat, 15 to 145, or 0 where the frame is not voiced
 * @param[out] gain           amplitude of the noise that stands in for frames that are not voiced
 * @param[out] energy, shift  of the last 120 words, for zspsSIDGainQuant()
 * @retval zspStsNullPtrErr     frame, src, lag, gain, energy or shift is null
 * @retval zspStsCodecRangeErr  a field is outside its range
 * @see ITU-T G.723.1, clause 3.10
 */
ZSPSC_API ZspStatus zspsConcealAnalysis_G723_16s(const ZspG723Frame* frame, const int16_t* src,
                                                 int16_t* lag, int16_t* gain, int16_t* energy,
                                                 int16_t* shift);

/**
 * The excitation of a lost frame: the last period at three quarters of its size, noise where there
 * is none, and silence from the third lost frame on.
 *
 * @param         lag    of zspsConcealAnalysis(), 0 to 145
 * @param         gain   of zspsConcealAnalysis(), three quarters of it for each frame lost since
 * @param         count  1 for the first lost frame, 2, then 3 for all that follow
 * @param[in,out] seed   of the noise, 0 at the start
 * @param[in,out] past   the last 145 words of excitation: they move on, and are 0 after noise
 * @param[out]    dst    240 words
 * @retval zspStsNullPtrErr     seed, past or dst is null
 * @retval zspStsCodecRangeErr  lag or count is outside its range
 * @see ITU-T G.723.1, clause 3.10
 */
ZSPSC_API ZspStatus zspsConcealExcitation_G723_16s(int16_t lag, int16_t gain, int32_t count,
                                                   int16_t* seed, int16_t* past, int16_t* dst);

/**
 * The synthesis filter over a sub-frame. Its output is at half scale.
 *
 * @param[in]     lpc     ten words, Q13
 * @param[in]     src     60 words
 * @param[out]    dst     60 words; may be src
 * @param[in,out] memory  the last ten outputs, the newest first; 0 at the start
 * @retval zspStsNullPtrErr  lpc, src, dst or memory is null
 * @see ITU-T G.723.1, clause 3.7
 */
ZSPSC_API ZspStatus zspsSynthesisFilter_G723_16s(const int16_t* lpc, const int16_t* src,
                                                 int16_t* dst, int16_t* memory);

/**
 * The formant post-filter over a sub-frame, with the compensation of its tilt.
 *
 * @param[in]     lpc     ten words, Q13
 * @param[in]     src     60 words of zspsSynthesisFilter()
 * @param[out]    dst     60 words; may be src
 * @param[out]    energy  of src, for zspsGainControl()
 * @param[in,out] memory  21 words: ten inputs and ten outputs, the newest first, and the tilt; 0 at
 *                        the start
 * @retval zspStsNullPtrErr  lpc, src, dst, energy or memory is null
 * @see ITU-T G.723.1, clause 3.8
 */
ZSPSC_API ZspStatus zspsFormantPostFilter_G723_16s(const int16_t* lpc, const int16_t* src,
                                                   int16_t* dst, int32_t* energy, int16_t* memory);

/**
 * Bring a sub-frame behind the post-filter to the energy that it had before, and to full scale.
 *
 * @param[in,out] srcDst  60 words
 * @param         energy  of zspsFormantPostFilter(), at least 0
 * @param[in,out] gain    4096 at the start
 * @retval zspStsNullPtrErr  srcDst or gain is null
 * @retval zspStsRangeErr    energy < 0
 * @see ITU-T G.723.1, clause 3.9
 */
ZSPSC_API ZspStatus zspsGainControl_G723_16s_I(int16_t* srcDst, int32_t energy, int16_t* gain);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
