/**
 * @file zspsc/g729/annexb.h
 * @brief G.729 Annex B: activity detection, silence descriptors, comfort noise.
 */
#ifndef ZSPSC_G729_ANNEXB_H
#define ZSPSC_G729_ANNEXB_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_g729_annexb G.729 silence compression
 *
 * Annex B of ITU-T G.729, which goes with the main body and with Annex A. With discontinuous
 * transmission, an encoder calls in every frame, after its LP analysis,
 *
 *     zspsVAD_G729B              whether the frame is speech
 *     zspsDTXUpdate_G729B
 *
 * and in frames that are not speech, in place of coding them,
 *
 *     zspsDTXEncode_G729B        whether a silence descriptor is sent, and which
 *     per sub-frame:
 *       zspsComfortNoise_G729B   the excitation that the decoder is going to draw
 *
 * A decoder has zspsSIDLSFDecode_G729B_16s(), zspsSIDGainDecode_G729B_16s(),
 * zspsComfortNoiseGain_G729B_16s() and zspsComfortNoise_G729B_16s_I().
 * @{
 */

/** What activity detection keeps. */
typedef struct ZspG729BVadState {
    int32_t frame;         /**< number of the frame; counts on from 256 after 32767 */
    int16_t quiet;         /**< quiet ones among the first 32 */
    int16_t meanEnergy;    /**< of the first 32 frames */
    int16_t meanFullBand;  /**< background's energy, log */
    int16_t meanLowBand;   /**< the same below 1 kHz */
    int16_t meanCrossings; /**< background's zero crossings */
    int16_t meanLsf[10];   /**< background's line spectral frequencies */
    int16_t minimum;       /**< least energy of some time */
    int16_t nextMinimum;   /**< of the last frames */
    int16_t lastMinimum;   /**< smallest of minima */
    int16_t minima[16];    /**< of eight frames each, the oldest first */
    int16_t lastEnergy;    /**< of the frame before */
    int16_t decisions[2];  /**< of the two frames before, the later first */
    int16_t extensions;    /**< frames that were held active */
    int16_t mayExtend;     /**< whether they may be */
    int16_t silent;        /**< frames in a row without activity */
    int16_t updates;       /**< of the means */
} ZspG729BVadState;

/** What discontinuous transmission keeps. */
typedef struct ZspG729BDtxState {
    int16_t corr[22];        /**< correlations of the last two frames, the later first */
    int16_t shifts[2];       /**< their exponents */
    int16_t sums[33];        /**< of pairs of frames, the latest first */
    int16_t sumShifts[3];    /**< their exponents */
    int16_t energies[2];     /**< of the residuals of the last two inactive frames */
    int16_t energyShifts[2]; /**< their exponents */
    int16_t filter[11];      /**< autocorrelation of the filter that was sent */
    int16_t filterShift;     /**< its exponent */
    int16_t sentLevel;       /**< level that was sent, dB */
    int16_t sidGain;         /**< gain that was sent */
    int16_t gain;            /**< of the comfort noise, for zspsComfortNoise_G729B_16s_I() */
    int16_t count;           /**< inactive frames since the last descriptor, 3 at most */
    int16_t energyCount;     /**< energies that are in use, 1 or 2 */
    int16_t frames;          /**< frames since the last pair, 0 or 1 */
    int16_t changed;         /**< the noise is not what was sent any more */
} ZspG729BDtxState;

/**
 * The size of the state of activity detection.
 *
 * @param[out] size  sizeof(ZspG729BVadState)
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsVADGetSize_G729B_16s(int32_t* size);

/**
 * Start activity detection.
 *
 * @param[out] state  at any address
 * @retval zspStsNullPtrErr  state is null
 */
ZSPSC_API ZspStatus zspsVADInit_G729B_16s(ZspG729BVadState* state);

/**
 * Decide whether a frame is active, from its energy, its energy below 1 kHz, its spectrum and zero
 * crossings, all against means in the background. The first 32 frames are active unless they are
 * quiet.
 *
 * @param[in]     src         240 samples of the analysis window, pre-processed
 * @param[in]     corr        13 lag-windowed sums, lags 0 to 12; the lowest bit of each does not
 *                            count
 * @param         exponent    of the sums, -32 to 31
 * @param[in]     lsf         ten normalised frequencies, Q15
 * @param         reflection  the second reflection coefficient, Q15
 * @param[in,out] state       as initialised
 * @param[out]    active      1 or 0
 * @retval zspStsNullPtrErr  src, corr, lsf, state or active is null
 * @retval zspStsRangeErr    exponent is outside its range
 * @see ITU-T G.729 Annex B, clause B.3
 */
ZSPSC_API ZspStatus zspsVAD_G729B_16s(const int16_t* src, const int32_t* corr, int32_t exponent,
                                      const int16_t* lsf, int16_t reflection,
                                      ZspG729BVadState* state, int16_t* active);

/**
 * Start discontinuous transmission.
 *
 * @param[out] state  at any address
 * @retval zspStsNullPtrErr  state is null
 */
ZSPSC_API ZspStatus zspsDTXInit_G729B_16s(ZspG729BDtxState* state);

/**
 * Take a frame's correlations in; called in every frame after the decision.
 *
 * @param[in]     corr      11 sums for lags 0 to 10, not lag-windowed
 * @param         exponent  of the sums, -32 to 31
 * @param         active    nonzero for speech
 * @param[in,out] state     as initialised
 * @retval zspStsNullPtrErr  corr or state is null
 * @retval zspStsRangeErr    exponent is outside its range
 * @see ITU-T G.729 Annex B, clause B.4.1
 */
ZSPSC_API ZspStatus zspsDTXUpdate_G729B_32s16s(const int32_t* corr, int32_t exponent,
                                               int32_t active, ZspG729BDtxState* state);

/**
 * Code an inactive frame: a silence descriptor after speech and when the noise has changed,
 * otherwise nothing. Afterwards state->gain is the comfort noise's.
 *
 * @param         annexA          nonzero: line spectral pairs are searched as in Annex A
 * @param         afterSpeech     nonzero: the last frame was active
 * @param[in]     previous        ten quantised line spectral pairs of the last frame, Q15
 * @param[in,out] lpc, reflection  11 and ten words: the last stable filter that the encoder has
 *                                found in any call of zspsLevinsonDurbin_G729_32s16s() or of this
 *                                function; the two filters that are found here are put there
 * @param[in,out] lsfMemory       40 words, as of zspsLSFDecode_G729_16s()
 * @param[in,out] sidLsp          ten pairs of the last descriptor, Q15; written when one is sent
 * @param[out]    fields          four fields of a descriptor, written when one is sent
 * @param[out]    sends           1 when a descriptor is to be sent, else 0
 * @param[in,out] state           as initialised
 * @retval zspStsNullPtrErr  previous, lpc, reflection, lsfMemory, sidLsp, fields, sends or state
 *                           is null
 * @see ITU-T G.729 Annex B, clauses B.4.1 and B.4.2
 */
ZSPSC_API ZspStatus zspsDTXEncode_G729B_16s(int32_t annexA, int32_t afterSpeech,
                                            const int16_t* previous, int16_t* lpc,
                                            int16_t* reflection, int16_t* lsfMemory,
                                            int16_t* sidLsp, int16_t* fields, int32_t* sends,
                                            ZspG729BDtxState* state);

/**
 * Quantise the line spectral frequencies of a silence descriptor.
 *
 * @param[in]     lsf     ten frequencies in radians, Q13
 * @param[in,out] memory  40 words, as of zspsLSFDecode_G729_16s(): speech has the same
 * @param[out]    dst     ten quantised frequencies; may be lsf
 * @param[out]    fields  predictor, first and second stage
 * @retval zspStsNullPtrErr  lsf, memory, dst or fields is null
 * @see ITU-T G.729 Annex B, clause B.4.2.2
 */
ZSPSC_API ZspStatus zspsSIDLSFQuant_G729B_16s(const int16_t* lsf, int16_t* memory, int16_t* dst,
                                              int16_t* fields);

/**
 * Decode the line spectral frequencies of a silence descriptor.
 *
 * @param         predictor  0 or 1
 * @param         first      0 to 31
 * @param         second     0 to 15
 * @param[in,out] memory     40 words, as of zspsLSFDecode_G729_16s(): speech has the same
 * @param[out]    dst        ten frequencies in radians, Q13
 * @retval zspStsNullPtrErr     memory or dst is null
 * @retval zspStsCodecRangeErr  an index is outside its range
 * @see ITU-T G.729 Annex B, clause B.4.2.2
 */
ZSPSC_API ZspStatus zspsSIDLSFDecode_G729B_16s(int32_t predictor, int32_t first, int32_t second,
                                               int16_t* memory, int16_t* dst);

/**
 * Quantise the gain of a silence descriptor.
 *
 * @param[in]  energies  of count frames; of one where count is 0
 * @param[in]  shifts    exponents of the energies
 * @param      count     1 or 2: of an encoder's last frames; 0: that of a decoder's last
 * excitation, where a descriptor is missing
 * @param[out] index     0 to 31
 * @retval zspStsNullPtrErr  energies, shifts or index is null
 * @retval zspStsSizeErr     count is outside its range
 * @see ITU-T G.729 Annex B, clause B.4.2.1
 */
ZSPSC_API ZspStatus zspsSIDGainQuant_G729B_16s(const int16_t* energies, const int16_t* shifts,
                                               int32_t count, int16_t* index);

/**
 * The gain of a silence descriptor, 2 to 15962: eight times the root mean square of the excitation.
 *
 * @param      index  0 to 31
 * @param[out] gain   the gain
 * @retval zspStsNullPtrErr     gain is null
 * @retval zspStsCodecRangeErr  index is outside its range
 * @see ITU-T G.729 Annex B, clause B.4.2.1
 */
ZSPSC_API ZspStatus zspsSIDGainDecode_G729B_16s(int32_t index, int16_t* gain);

/**
 * The gain of the next frame of comfort noise, which follows that of descriptors.
 *
 *   gain = mult_r(gain, 28672) + mult_r(sidGain, 4096)
 *
 * @param         sidGain  of the last descriptor, not negative
 * @param         first    nonzero in the first frame of a pause: gain becomes sidGain
 * @param[in,out] gain     the gain, begins as 0
 * @retval zspStsNullPtrErr  gain is null
 * @retval zspStsRangeErr    sidGain is negative
 * @see ITU-T G.729 Annex B, clause B.4.3
 */
ZSPSC_API ZspStatus zspsComfortNoiseGain_G729B_16s(int16_t sidGain, int32_t first, int16_t* gain);

/**
 * The excitation of a sub-frame of comfort noise: pulses and an adaptive vector as speech has them,
 * and a Gaussian vector, all drawn.
 *
 * @param         gain       not negative; at 0 the excitation is zeros and nothing is drawn
 * @param[in,out] seed       begins as 11111 and is that again after each speech frame
 * @param[in,out] srcDst     154 words of the past, and 40 that are written
 * @param[out]    lag        of the adaptive vector, 40 to 103, for zspsTamingUpdate_G729_32s_I()
 * @param[out]    pitchGain  likewise, Q14
 * @retval zspStsNullPtrErr  seed, srcDst, lag or pitchGain is null
 * @retval zspStsRangeErr    gain is negative
 * @see ITU-T G.729 Annex B, clause B.4.4
 */
ZSPSC_API ZspStatus zspsComfortNoise_G729B_16s_I(int16_t gain, int16_t* seed, int16_t* srcDst,
                                                 int16_t* lag, int16_t* pitchGain);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
