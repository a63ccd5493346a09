/**
 * @file zspsc/alc_g169.h
 * @brief G.169 automatic level control.
 */
#ifndef ZSPSC_ALC_G169_H
#define ZSPSC_ALC_G169_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_alc G.169 automatic level control
 *
 * Brings active speech to a target level in the sense of ITU-T G.169: the gain rises slowly, falls
 * at once, and keeps every sample below a peak limit.
 *
 * The gain follows syllables. The averaging factor of the speech power starts at 0.1 and never
 * falls, so that the average reaches back about 11 blocks and no further: inside speech the gain
 * moves by about 8 dB within 20 ms. Talkers come out equally loud, but flatter than they spoke.
 *
 * It is meant for 8 kHz, where a block of 8 samples is 1 ms and a pause of 200 blocks, which closes
 * a talk spurt, 200 ms. Nothing tells it the sample rate: at 16 kHz every time is half of that, at
 * 48 kHz a sixth, and the gain moves as much faster.
 * @{
 */

/**
 * State of the automatic level control: 124 bytes, at any address.
 *
 * Levels are magnitudes of 16-bit samples, energies and powers their squares. A block is 8 samples.
 * A talk spurt opens when the level rises above the activity threshold and closes after a pause.
 * The first nine fields are settings; the caller may change them between calls, some of them with
 * zspsALCSetGain_G169_16s() and zspsALCSetLevel_G169_16s().
 */
typedef struct ZspAlcState_G169 {
    float targetLevel;       /**< speech level that the gain aims for, initially 26.1 dB down */
    float peakLimit;         /**< largest output magnitude, initially 32767 */
    float noiseFloorMin;     /**< lower limit of the noise estimate, 78 dB down */
    float noiseFloorMax;     /**< upper limit of the noise estimate, 54 dB down */
    float maxGain;           /**< largest gain, initially 11.6 dB */
    float alphaActiveMin;    /**< smallest averaging factor at the opening of a spurt, 0.02 */
    float alphaMin;          /**< smallest averaging factor, 1/300 */
    float hangoverBlocks;    /**< blocks of pause that close a spurt, 200 */
    float gainRate;          /**< fraction of the wanted gain added per block of a rise, 0.01 */
    int16_t hangCount;       /**< blocks of pause since the last activity, at most 16383 */
    int16_t speechState;     /**< spurts accepted so far, at most 16383 */
    int16_t activeCount;     /**< blocks above the threshold in this spurt, at most 16383 */
    int16_t spurtOpen;       /**< 1 while a spurt is open, else 0 */
    float blockMeanAbs;      /**< mean magnitude of the last block */
    float smoothLevel;       /**< smoothed mean magnitude */
    float peakLevel;         /**< slowly falling maximum of smoothLevel */
    float speechLevel;       /**< long-term speech level */
    float noiseLevel;        /**< estimate of the noise floor */
    float activityThreshold; /**< 4 * noiseLevel */
    float slowLevel;         /**< slow level, for information only */
    float blockEnergy;       /**< mean square of the last block */
    float power;             /**< averaged power of the speech */
    float alpha;             /**< averaging factor of power */
    float rmsLevel;          /**< square root of power, times rmsFactor */
    float rmsFactor;         /**< 0.7 to 0.89, rising in the course of a spurt */
    float targetGain;        /**< gain that the control heads for */
    float rate;              /**< gainRate or 0, as used for the last block */
    float gain;              /**< gain of the last block */
    float gainSmoothing;     /**< smoothing coefficient of gain, 0.001 to 1 */
    float blockPeak;         /**< largest magnitude of the last block */
    float savedPower;        /**< power before the current spurt */
    float savedTargetGain;   /**< targetGain before the current spurt */
    float savedAlpha;        /**< alpha before the current spurt */
} ZspAlcState_G169;

/**
 * Bytes of the level control's state.
 *
 * @param[out] size  receives 124
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsALCGetStateSize_G169_16s(int32_t* size);

/**
 * Start the level control afresh, with the initial settings.
 *
 * @param[out] state  record at any address; all of it is written
 * @retval zspStsNullPtrErr  state is null
 */
ZSPSC_API ZspStatus zspsALCInit_G169_16s(ZspAlcState_G169* state);

/**
 * Set the largest gain, at any time; no other field changes.
 *
 *   maxGain = 10^(gainDb / 20)
 *
 * @param         gainDb  decibels, at least 0
 * @param[in,out] state   initialised record at any address
 * @retval zspStsNullPtrErr  state is null
 * @retval zspStsRangeErr    gainDb is negative or not a number
 */
ZSPSC_API ZspStatus zspsALCSetGain_G169_16s(float gainDb, ZspAlcState_G169* state);

/**
 * Set the target level of the speech and the limit of the output, at any time; no other field
 * changes.
 *
 *   targetLevel = 32768 / 10^(targetDb / 20), peakLimit = 32768 / 10^(peakDb / 20)
 *
 * @param         targetDb, peakDb  decibels below full scale, at least 0
 * @param[in,out] state             initialised record at any address
 * @retval zspStsNullPtrErr  state is null
 * @retval zspStsRangeErr    targetDb or peakDb is negative or not a number
 */
ZSPSC_API ZspStatus zspsALCSetLevel_G169_16s(float targetDb, float peakDb, ZspAlcState_G169* state);

/**
 * Control the level of speech, in blocks of 8 samples, each with one gain.
 *
 *   dst[i] = sat16(src[i] * gain), truncated towards zero
 *
 * Active speech comes near the target level with at most the largest gain, and no output magnitude
 * exceeds the peak limit. The gain falls at once and rises slowly; before the first talk spurt the
 * output is attenuated by 30 dB. A signal may be split between calls anywhere between blocks.
 *
 * @param[in]     src    len samples
 * @param[out]    dst    len samples; may be src, otherwise must not overlap it
 * @param         len    at least 8, a multiple of 8
 * @param[in,out] state  initialised record at any address
 * @retval zspStsNullPtrErr  src, dst or state is null
 * @retval zspStsRangeErr    len < 8 or not a multiple of 8
 * @see ITU-T G.169, automatic level control devices
 */
ZSPSC_API ZspStatus zspsALC_G169_16s(const int16_t* src, int16_t* dst, int32_t len,
                                     ZspAlcState_G169* state);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
