/**
 * @file zspvoice/activity.h
 * @brief Voice activity.
 */
#ifndef ZSPVOICE_ACTIVITY_H
#define ZSPVOICE_ACTIVITY_H

#include "encoder.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspv_activity Voice activity
 *
 * The 3GPP voice activity detectors with all that their speech encoders do around them, so that a
 * sender needs no speech encoder: pre-processing, pitch search, decision, and the schedule of
 * discontinuous transmission. Frames are 20 ms.
 *
 * The detectors are bit-exact. What goes into them is not: the encoders search the pitch of
 * perceptually weighted speech with a fixed-point filter in front, this searches the signal itself.
 * On speech, clean and in white, pink and babble noise, 97 to 100 % of the decisions are the
 * encoders'; in a car's rumble option 1 hears speech where the encoder does not.
 *
 * At 16 kHz the signal goes down to 12.8 kHz through a filter that is flat to 5.6 kHz and delays
 * decisions by 1.5 ms.
 * @{
 */

/** Which detector. */
typedef enum ZspvDetector {
    zspvDetectorAmr1 = 1, /**< GSM-AMR option 1, 8 kHz, TS 26.094 */
    zspvDetectorAmr2 = 2, /**< GSM-AMR option 2, 8 kHz, TS 26.094 */
    zspvDetectorAmrWb = 3 /**< AMR-WB, 16 kHz, TS 26.194 */
} ZspvDetector;

/** Settings of a detector. */
typedef struct ZspvActivityConfig {
    int32_t structSize; /**< sizeof(ZspvActivityConfig) */
    int32_t detector;   /**< required: one of ::ZspvDetector */
    int32_t sampleRate; /**< required: 8000, or 16000 or 12800 for AMR-WB */
    int32_t hangoverMs; /**< frames that stay active after speech, 0..2000 ms in steps of 20; this
                             is added to what the standard's decision holds by itself, and kind
                             follows it */
} ZspvActivityConfig;

/** What is known about one frame. */
typedef struct ZspvActivityInfo {
    int32_t structSize; /**< set by the caller */
    int32_t active;     /**< 1 for speech, 0 for noise */
    ZspvFrameKind kind; /**< what discontinuous transmission sends for it, TS 26.093 */
    float levelDbov;    /**< level of the frame, 0 for a full-scale square wave, -127 at least */
    float scoreDb;      /**< mean of level over noise estimate of the bands, in dB */
} ZspvActivityInfo;

/** A voice activity detector. */
typedef struct ZspvActivity ZspvActivity;

/**
 * Bytes that a detector needs.
 *
 * @param[in]  config  the settings
 * @param[out] size    bytes
 * @retval zspStsNullPtrErr  config or size is null
 * @retval zspStsSizeErr     config->structSize is not plausible
 * @retval zspStsRangeErr    a setting is outside its range
 */
ZSPV_API ZspStatus zspvActivityGetSize(const ZspvActivityConfig* config, int32_t* size);

/**
 * Build a detector.
 *
 * @param[out] memory    at any address
 * @param      capacity  its bytes
 * @param[in]  config    the settings
 * @param[out] activity  the object, at memory
 * @retval zspStsNullPtrErr  memory, config or activity is null
 * @retval zspStsSizeErr     capacity is too small, or config->structSize is not plausible
 * @retval zspStsRangeErr    a setting is outside its range
 */
ZSPV_API ZspStatus zspvActivityInit(void* memory, int32_t capacity,
                                    const ZspvActivityConfig* config, ZspvActivity** activity);

/**
 * Build a detector in memory of malloc().
 *
 * @param[in]  config    the settings
 * @param[out] activity  to be given to zspvActivityDestroy()
 * @retval zspStsNullPtrErr   config or activity is null
 * @retval zspStsSizeErr      config->structSize is not plausible
 * @retval zspStsRangeErr     a setting is outside its range
 * @retval zspStsMemAllocErr  there is no memory
 */
ZSPV_API ZspStatus zspvActivityCreate(const ZspvActivityConfig* config, ZspvActivity** activity);

/**
 * Free what zspvActivityCreate() made.
 *
 * @param[in] activity  a detector; may be null
 */
ZSPV_API void zspvActivityDestroy(ZspvActivity* activity);

/**
 * Start again.
 *
 * @param[in,out] activity  a detector
 * @retval zspStsNullPtrErr  activity is null
 */
ZSPV_API ZspStatus zspvActivityReset(ZspvActivity* activity);

/**
 * Look at one frame.
 *
 * @param[in,out] activity  a detector
 * @param[in]     samples   count samples
 * @param         count     20 ms: 160, 320, or 256 at 12.8 kHz
 * @param[out]    info      structSize is set by the caller
 * @retval zspStsNullPtrErr  an argument is null
 * @retval zspStsSizeErr     count is another, or info->structSize is not plausible
 * @return any other status: a step inside failed, and nothing is known about the frame
 */
ZSPV_API ZspStatus zspvActivityProcess(ZspvActivity* activity, const int16_t* samples,
                                       int32_t count, ZspvActivityInfo* info);

/**
 * Levels and noise estimates of the last frame's bands, in dB with a reference of the detector's.
 *
 * @param[in]  activity  a detector
 * @param[out] edgesHz   count + 1 band edges; may be null
 * @param[out] levels    count levels; may be null
 * @param[out] noise     count noise estimates; may be null
 * @param      capacity  of levels and noise; one less than that of edgesHz
 * @param[out] count     bands; with zspStsSizeErr, what it takes
 * @retval zspStsNullPtrErr  activity or count is null
 * @retval zspStsSizeErr     capacity is too small
 */
ZSPV_API ZspStatus zspvActivityGetBands(const ZspvActivity* activity, float* edgesHz, float* levels,
                                        float* noise, int32_t capacity, int32_t* count);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
