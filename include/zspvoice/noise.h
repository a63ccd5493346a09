/**
 * @file zspvoice/noise.h
 * @brief Comfort noise.
 */
#ifndef ZSPVOICE_NOISE_H
#define ZSPVOICE_NOISE_H

#include "encoder.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspv_noise Comfort noise
 *
 * RFC 3389, payload type 13: silence for codecs that have none of their own. One object serves
 * either side: a sender analyses pauses and writes payloads, a receiver reads payloads and makes
 * noise.
 * @{
 */

/** Most reflection coefficients of a payload that are used or written. */
#define ZSPV_NOISE_MAX_ORDER 12

/** A comfort-noise generator and analyser. */
typedef struct ZspvComfortNoise ZspvComfortNoise;

/**
 * Bytes that an object needs.
 *
 * @param      sampleRate  8000 or 16000
 * @param[out] size        bytes
 * @retval zspStsNullPtrErr  size is null
 * @retval zspStsRangeErr    sampleRate is another
 */
ZSPV_API ZspStatus zspvComfortNoiseGetSize(int32_t sampleRate, int32_t* size);

/**
 * Build an object.
 *
 * @param[out] memory      at any address
 * @param      capacity    its bytes
 * @param      sampleRate  8000 or 16000
 * @param[out] noise       the object, at memory
 * @retval zspStsNullPtrErr  memory or noise is null
 * @retval zspStsSizeErr     capacity is too small
 * @retval zspStsRangeErr    sampleRate is another
 */
ZSPV_API ZspStatus zspvComfortNoiseInit(void* memory, int32_t capacity, int32_t sampleRate,
                                        ZspvComfortNoise** noise);

/**
 * Build an object in memory of malloc().
 *
 * @param      sampleRate  8000 or 16000
 * @param[out] noise       to be given to zspvComfortNoiseDestroy()
 * @retval zspStsNullPtrErr   noise is null
 * @retval zspStsRangeErr     sampleRate is another
 * @retval zspStsMemAllocErr  there is no memory
 */
ZSPV_API ZspStatus zspvComfortNoiseCreate(int32_t sampleRate, ZspvComfortNoise** noise);

/**
 * Free what zspvComfortNoiseCreate() made.
 *
 * @param[in] noise  an object; may be null
 */
ZSPV_API void zspvComfortNoiseDestroy(ZspvComfortNoise* noise);

/**
 * Forget level and spectrum.
 *
 * @param[in,out] noise  an object
 * @retval zspStsNullPtrErr  noise is null
 */
ZSPV_API ZspStatus zspvComfortNoiseReset(ZspvComfortNoise* noise);

/**
 * Learn level and spectrum of a pause.
 *
 * Several calls one after another are averaged, the latest one with 30 %.
 *
 * @param[in,out] noise    an object
 * @param[in]     samples  count samples of background noise
 * @param         count    80 to 960
 * @retval zspStsNullPtrErr  noise or samples is null
 * @retval zspStsSizeErr     count is outside
 */
ZSPV_API ZspStatus zspvComfortNoiseAnalyse(ZspvComfortNoise* noise, const int16_t* samples,
                                           int32_t count);

/**
 * Write what was learnt as a payload: one octet of level, one per reflection coefficient.
 *
 * The level is -10 log10 of the mean square over that of a full-scale square wave. Reflection
 * coefficients have the sign of the ITU-T coders: noise of low frequencies has a negative first
 * one.
 *
 * @param[in]  noise     an object
 * @param      order     reflection coefficients, 0 to ZSPV_NOISE_MAX_ORDER
 * @param[out] payload   order + 1 octets
 * @param      capacity  of payload
 * @param[out] length    octets written; with zspStsSizeErr, what it takes
 * @retval zspStsNullPtrErr  noise, payload or length is null
 * @retval zspStsSizeErr     capacity is too small
 * @retval zspStsRangeErr    order is outside
 */
ZSPV_API ZspStatus zspvComfortNoiseWrite(const ZspvComfortNoise* noise, int32_t order,
                                         uint8_t* payload, int32_t capacity, int32_t* length);

/**
 * Take level and spectrum from a payload; coefficients beyond the largest order are left out.
 *
 * @param[in,out] noise    an object
 * @param[in]     payload  length octets
 * @param         length   at least 1
 * @retval zspStsNullPtrErr  noise or payload is null
 * @retval zspStsSizeErr     length < 1
 */
ZSPV_API ZspStatus zspvComfortNoiseRead(ZspvComfortNoise* noise, const uint8_t* payload,
                                        int32_t length);

/**
 * Make noise. Level and spectrum move to those of the last payload within some 20 ms.
 * Its level is the stated one within 1 dB from -20 to -80 dBov; louder noise may clip.
 * Silence before the first payload.
 *
 * @param[in,out] noise    an object
 * @param[out]    samples  count samples
 * @param         count    at least 1
 * @retval zspStsNullPtrErr  noise or samples is null
 * @retval zspStsSizeErr     count < 1
 */
ZSPV_API ZspStatus zspvComfortNoiseGenerate(ZspvComfortNoise* noise, int16_t* samples,
                                            int32_t count);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
