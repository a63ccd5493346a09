/**
 * @file zspsc/g723/noise.h
 * @brief G.723.1 silence compression.
 */
#ifndef ZSPSC_G723_NOISE_H
#define ZSPSC_G723_NOISE_H

#include "decoder.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_g723_noise G.723.1 silence compression
 *
 * Annex A of ITU-T G.723.1. In every frame an encoder calls zspsVAD() and zspsSIDUpdate(); in an
 * inactive one zspsSIDEncode() says whether a descriptor is sent, and zspsComfortNoiseExcitation()
 * gives the excitation that encoder and decoder go on with alike. The records are the caller's:
 * plain data that may be copied, at any address.
 * @{
 */

/** State of zspsVAD_G723_16s(), 44 bytes. */
typedef struct ZspG723VadState {
    int32_t energy;       /**< of the last frame behind the filter of the noise */
    int32_t noise;        /**< noise level, 128 to 131071 */
    int16_t hangover;     /**< frames left of the hangover */
    int16_t count;        /**< length of the speech burst, frames, at most 3 */
    int16_t adaptation;   /**< 0 to 6; 0: the noise level follows upwards and its filter is kept */
    int16_t lags[4];      /**< open-loop lags of the last frame but one and of the last; the caller
                               puts those of zspsOpenLoopPitchSearch() into the last two places */
    int16_t noiseLpc[10]; /**< filter of the noise, Q13; zspsSIDEncode() writes it */
    int16_t reserved;     /**< 0 */
} ZspG723VadState;

/** State of zspsSIDEncode_G723_16s(), 136 bytes. */
typedef struct ZspG723SidState {
    int16_t corr[44];    /**< autocorrelations of this frame and the last three, 11 words each */
    int16_t shifts[4];   /**< their scales */
    int16_t energies[3]; /**< prediction errors of the last frames of the pause, the newest first */
    int16_t count;       /**< how many of them count */
    int16_t filter[11];  /**< autocorrelation of the filter that was sent last */
    int16_t filterShift; /**< its scale */
    int16_t index;       /**< the gain index that was sent last */
    int16_t reserved[3]; /**< 0 */
} ZspG723SidState;

/**
 * Make a detector ready for the first frame: energy and noise 1024, hangover 3, lags 1, 1, 60, 60,
 * all else 0.
 *
 * @param[out] state  the detector's record
 * @retval zspStsNullPtrErr  state is null
 */
ZSPSC_API ZspStatus zspsVADInit_G723(ZspG723VadState* state);

/**
 * Whether a frame is active.
 *
 * @param[in]     src     240 samples of zspsHighPassFilter()
 * @param         sine    other than 0 while the input is a sine
 * @param[in,out] state   the detector's record
 * @param[out]    active  1 or 0
 * @retval zspStsNullPtrErr  src, state or active is null
 * @see ITU-T G.723.1, clause A.2
 */
ZSPSC_API ZspStatus zspsVAD_G723_16s(const int16_t* src, int32_t sine, ZspG723VadState* state,
                                     int16_t* active);

/**
 * Make an encoder of silence descriptors ready for the first frame: shifts 40, all else 0.
 *
 * @param[out] state  the record
 * @retval zspStsNullPtrErr  state is null
 */
ZSPSC_API ZspStatus zspsSIDInit_G723(ZspG723SidState* state);

/**
 * Take the autocorrelations of a frame in; also of active ones.
 *
 * @param[in]     corr    four times eleven words of zspsAutoCorr()
 * @param[in]     shifts  their four scales
 * @param[in,out] state   the record
 * @retval zspStsNullPtrErr  corr, shifts or state is null
 * @see ITU-T G.723.1, clause A.4
 */
ZSPSC_API ZspStatus zspsSIDUpdate_G723_16s(const int16_t* corr, const int16_t* shifts,
                                           ZspG723SidState* state);

/**
 * An inactive frame: whether a descriptor is to be sent, and which.
 *
 * @param         afterSpeech  other than 0 when the last frame was active: one is sent
 * @param         noiseHolds   other than 0 while the detector's adaptation is 0: noiseLpc follows
 * @param[in]     previous     ten line spectral pairs of the last frame
 * @param[in,out] noiseLpc     ten words, Q13
 * @param[in,out] sidLsp       ten line spectral pairs of the descriptor; as they were without one
 * @param[in,out] frame        type ::zspG723Sid, lspIndex and sidGain, or type
 *                             ::zspG723Untransmitted; its other fields stay
 * @param[in,out] state        the record
 * @retval zspStsNullPtrErr  previous, noiseLpc, sidLsp, frame or state is null
 * @see ITU-T G.723.1, clause A.4
 */
ZSPSC_API ZspStatus zspsSIDEncode_G723_16s(int32_t afterSpeech, int32_t noiseHolds,
                                           const int16_t* previous, int16_t* noiseLpc,
                                           int16_t* sidLsp, ZspG723Frame* frame,
                                           ZspG723SidState* state);

/**
 * The gain index for the energy of a pause.
 *
 * @param[in]  energies  one word for each frame, the newest first
 * @param[in]  shifts    their scales
 * @param      count     1 to 3 frames of an encoder, or 0: what zspsConcealAnalysis() found, one
 *                       word each, for a decoder that has missed the descriptor
 * @param[out] index     0 to 63
 * @retval zspStsNullPtrErr  energies, shifts or index is null
 * @retval zspStsSizeErr     count is outside its range
 * @see ITU-T G.723.1, clause A.4
 */
ZSPSC_API ZspStatus zspsSIDGainQuant_G723_16s(const int16_t* energies, const int16_t* shifts,
                                              int32_t count, int16_t* index);

/**
 * The gain of an index.
 *
 * @param      index  0 to 63
 * @param[out] gain   0 to 11008
 * @retval zspStsNullPtrErr     gain is null
 * @retval zspStsCodecRangeErr  index is outside its range
 * @see ITU-T G.723.1, clause A.4
 */
ZSPSC_API ZspStatus zspsSIDGainDequant_G723_16s(int16_t index, int16_t* gain);

/**
 * The excitation of a frame of comfort noise: adaptive vectors and pulses drawn at random, at the
 * energy that the gain says.
 *
 * @param         gain   0 to 11008: after speech the descriptor's, then 7/8 of the last + 1/8 of it
 * @param[in,out] seed   12345 in the first frame after speech
 * @param[in,out] past   the last 145 words of excitation, which move on
 * @param[in,out] frame  the lag, lagOffset and acbGain drawn, for zspsTamingUpdate(); its type is
 *                       used by nothing here and stays, as its other fields do
 * @param[out]    dst    240 words
 * @retval zspStsNullPtrErr  seed, past, frame or dst is null
 * @see ITU-T G.723.1, clause A.4
 */
ZSPSC_API ZspStatus zspsComfortNoiseExcitation_G723_16s(int16_t gain, int16_t* seed, int16_t* past,
                                                        ZspG723Frame* frame, int16_t* dst);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
