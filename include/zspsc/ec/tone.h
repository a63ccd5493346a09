/**
 * @file zspsc/ec/tone.h
 * @brief Echo cancellation: disabling-tone detector.
 */
#ifndef ZSPSC_EC_TONE_H
#define ZSPSC_EC_TONE_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_tone Echo cancellation: disabling-tone detector
 *
 * Detects the 2100 Hz answer tone with phase reversals by which modems disable echo cancellers.
 * There is no reset: initialising again restarts. The state starts at the first 16-byte boundary of
 * the buffer given, for which the reported size has room.
 * @{
 */

/**
 * Size of the detector's state.
 *
 * @param      sampleFreq  8000 or 16000
 * @param[out] size        one value, in bytes: 80
 * @retval zspStsNullPtrErr  size is null
 * @retval zspStsRangeErr    sampleFreq is neither 8000 nor 16000
 */
ZSPSC_API ZspStatus zspsToneDetectGetStateSize_EC_32f(int32_t sampleFreq, int32_t* size);

/**
 * Initialise a detector.
 *
 * @param[out] state       at least the size of zspsToneDetectGetStateSize_EC_32f()
 * @param      sampleFreq  8000 or 16000
 * @retval zspStsNullPtrErr  state is null
 * @retval zspStsRangeErr    sampleFreq is neither 8000 nor 16000
 */
ZSPSC_API ZspStatus zspsToneDetectInit_EC_32f(void* state, int32_t sampleFreq);

/**
 * Look for the tone in a block of any length; one call equals several on its parts.
 *
 * A reversal counts when 413 to 466 ms of tone precede it. The second and each further one is a
 * detection. The count is lost when the tone stays weakened for more than 20 ms; silence ends the
 * tone but keeps the count.
 *
 * @param[in]     src     len samples at any level, on any scale
 * @param         len     at least 1
 * @param[out]    result  one value: 1 when a detection falls in this block, else 0
 * @param[in,out] state   initialised
 * @retval zspStsNullPtrErr  src, result or state is null
 * @retval zspStsBadArgErr   len < 1
 * @see ITU-T G.165, ITU-T G.168
 */
ZSPSC_API ZspStatus zspsToneDetect_EC_32f(const float* src, int32_t len, int32_t* result,
                                          void* state);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
