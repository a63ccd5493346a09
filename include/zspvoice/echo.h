/**
 * @file zspvoice/echo.h
 * @brief Echo canceller.
 */
#ifndef ZSPVOICE_ECHO_H
#define ZSPVOICE_ECHO_H

#include "version.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspv_echo Echo canceller
 *
 * Removes the far end's echo from a microphone's signal, acoustic or line echo. It learns the path
 * by itself, keeps what it learnt through double talk, starts again when the path has changed, and
 * steps aside for disabling tones (ITU-T G.168).
 *
 * One clock: zspvEchoProcess() with a far-end and a microphone block each time. Two clocks or
 * threads: zspvEchoRender() where samples go to the loudspeaker and zspvEchoCapture() where they
 * come from the microphone; these two may run on two threads at once, over a ring inside the object
 * and without a lock. All other calls belong to the capturing thread. What was rendered before the
 * first block is captured is passed over, and so is what has stayed in the ring for a second
 * without being needed, as after a gap or when the loudspeaker's clock is the faster one.
 *
 * Blocks are any multiple of 10 ms. The output lags behind the microphone by zspvEchoGetDelay().
 * The echo may begin together with its reference, and up to 2.5 ms before it; delayMs moves this to
 * where a device needs it. A block that cannot be processed is passed through, never silenced. An
 * echo canceller holds pointers into its memory: it must not be copied or moved.
 * @{
 */

/** Switches that are on or off, with a default of the library's. */
typedef enum ZspvSwitch {
    zspvDefault = 0, /**< as the field's comment says */
    zspvOn = 1,      /**< on */
    zspvOff = -1     /**< off */
} ZspvSwitch;

/** Settings of an echo canceller. */
typedef struct ZspvEchoConfig {
    int32_t structSize; /**< sizeof(ZspvEchoConfig) */
    int32_t sampleRate; /**< required: 8000 or 16000 */
    int32_t tailMs;     /**< longest echo, 8..512 ms; 0 for 128 */
    int32_t suppressor; /**< ::ZspvSwitch: attenuate what the filters leave; default off */
    int32_t toneBypass; /**< ::ZspvSwitch: step aside for disabling tones; default on */
    int32_t ringMs;     /**< far end held between render and capture, 10..1000 ms; 0 for 200 */
    int32_t delayMs;    /**< far end known to reach the loudspeaker so much later, up to 500 ms; the
                             tail starts there. Down to -50 ms for a reference that comes too late:
                             the microphone waits for it, which adds to the output's delay */
} ZspvEchoConfig;

/** What an echo canceller has achieved and met. */
typedef struct ZspvEchoMetrics {
    int32_t structSize;      /**< set by the caller */
    float echoLossDb;        /**< microphone over output while only the far end talks, smoothed
                                  over 0.5 s of that; noise counts as left; 0 before */
    float tailLossDb;        /**< far end over its estimated echo at the microphone, smoothed over
                                  1 s; 0 before anything was estimated */
    float pathDelayMs;       /**< centre of the estimated path's energy, after delayMs; 0 before */
    int32_t doubleTalk;      /**< 1 while both ends talk, and 0.2 s longer: the far end excites the
                                  path, and the output is louder than what echo and noise leave */
    int32_t converged;       /**< 1 once the filters surely remove 6 dB more than they leave, until
                                  that falls below 3 dB */
    int32_t bypassed;        /**< 1 while a disabling tone passes */
    float adaptFactor;       /**< the controller's verdict, 1 when adaptation does harm */
    int64_t framesProcessed; /**< blocks of 10 ms */
    int64_t farMissing;      /**< samples that capture wanted and render had not given (zeros) */
    int64_t farDropped;      /**< samples that render gave and the ring had no room for, or that
                                  were passed over */
    int64_t restarts;        /**< times that the filters were cleared */
} ZspvEchoMetrics;

/** An echo canceller. */
typedef struct ZspvEcho ZspvEcho;

/**
 * Bytes that an echo canceller needs.
 *
 * @param[in]  config  the settings
 * @param[out] size    bytes
 * @retval zspStsNullPtrErr  config or size is null
 * @retval zspStsSizeErr     config->structSize is not plausible
 * @retval zspStsRangeErr    a setting is outside its range
 */
ZSPV_API ZspStatus zspvEchoGetSize(const ZspvEchoConfig* config, int32_t* size);

/**
 * Build an echo canceller.
 *
 * @param[out] memory    at any address
 * @param      capacity  its bytes, at least what zspvEchoGetSize() reports
 * @param[in]  config    the settings
 * @param[out] echo      the object, at memory
 * @retval zspStsNullPtrErr  memory, config or echo is null
 * @retval zspStsSizeErr     capacity is too small, or config->structSize is not plausible
 * @retval zspStsRangeErr    a setting is outside its range
 */
ZSPV_API ZspStatus zspvEchoInit(void* memory, int32_t capacity, const ZspvEchoConfig* config,
                                ZspvEcho** echo);

/**
 * Build an echo canceller in memory of malloc().
 *
 * @param[in]  config  the settings
 * @param[out] echo    to be given to zspvEchoDestroy()
 * @retval zspStsNullPtrErr   config or echo is null
 * @retval zspStsSizeErr      config->structSize is not plausible
 * @retval zspStsRangeErr     a setting is outside its range
 * @retval zspStsMemAllocErr  there is no memory
 */
ZSPV_API ZspStatus zspvEchoCreate(const ZspvEchoConfig* config, ZspvEcho** echo);

/**
 * Free what zspvEchoCreate() made.
 *
 * @param[in] echo  an echo canceller; may be null
 */
ZSPV_API void zspvEchoDestroy(ZspvEcho* echo);

/**
 * Forget the echo path, signals and counters.
 *
 * @param[in,out] echo  an echo canceller
 * @retval zspStsNullPtrErr  echo is null
 */
ZSPV_API ZspStatus zspvEchoReset(ZspvEcho* echo);

/**
 * Cancel one block, far end and microphone on one clock.
 *
 * @param[in,out] echo   an echo canceller
 * @param[in]     far    count samples of what goes to the loudspeaker in the same time
 * @param[in]     mic    count samples of the microphone
 * @param[out]    out    count samples; may be far or mic
 * @param         count  a multiple of 10 ms
 * @retval zspStsNullPtrErr  echo, far, mic or out is null
 * @retval zspStsSizeErr     count is not a positive multiple of 10 ms
 * @return any other status: a step inside failed, and the microphone was passed through
 */
ZSPV_API ZspStatus zspvEchoProcess(ZspvEcho* echo, const int16_t* far, const int16_t* mic,
                                   int16_t* out, int32_t count);

/**
 * As zspvEchoProcess() with float samples.
 *
 * @param[in,out] echo   an echo canceller
 * @param[in]     far    count samples, -1..1 for full scale; no number counts as 0
 * @param[in]     mic    count samples
 * @param[out]    out    count samples; may be far or mic
 * @param         count  a multiple of 10 ms
 * @retval zspStsNullPtrErr  echo, far, mic or out is null
 * @retval zspStsSizeErr     count is not a positive multiple of 10 ms
 */
ZSPV_API ZspStatus zspvEchoProcessFloat(ZspvEcho* echo, const float* far, const float* mic,
                                        float* out, int32_t count);

/**
 * Give a block of the far end in, on any one thread.
 *
 * @param[in,out] echo   an echo canceller
 * @param[in]     far    count samples
 * @param         count  any number, at least 1
 * @retval zspStsNullPtrErr  echo or far is null
 * @retval zspStsSizeErr     count < 1
 * @retval zspStsOverflow    a warning: the ring was full and the newest samples were dropped
 */
ZSPV_API ZspStatus zspvEchoRender(ZspvEcho* echo, const int16_t* far, int32_t count);

/**
 * As zspvEchoRender() with float samples.
 *
 * @param[in,out] echo   an echo canceller
 * @param[in]     far    count samples, -1..1 for full scale
 * @param         count  any number, at least 1
 * @retval zspStsNullPtrErr  echo or far is null
 * @retval zspStsSizeErr     count < 1
 * @retval zspStsOverflow    a warning: the ring was full and the newest samples were dropped
 */
ZSPV_API ZspStatus zspvEchoRenderFloat(ZspvEcho* echo, const float* far, int32_t count);

/**
 * Cancel one block of the microphone against what zspvEchoRender() gave; where that lacks samples,
 * the far end counts as silent.
 *
 * @param[in,out] echo   an echo canceller
 * @param[in]     mic    count samples
 * @param[out]    out    count samples; may be mic
 * @param         count  a multiple of 10 ms
 * @retval zspStsNullPtrErr  echo, mic or out is null
 * @retval zspStsSizeErr     count is not a positive multiple of 10 ms
 * @return any other status: a step inside failed, and the microphone was passed through
 */
ZSPV_API ZspStatus zspvEchoCapture(ZspvEcho* echo, const int16_t* mic, int16_t* out, int32_t count);

/**
 * As zspvEchoCapture() with float samples.
 *
 * @param[in,out] echo   an echo canceller
 * @param[in]     mic    count samples, -1..1 for full scale
 * @param[out]    out    count samples; may be mic
 * @param         count  a multiple of 10 ms
 * @retval zspStsNullPtrErr  echo, mic or out is null
 * @retval zspStsSizeErr     count is not a positive multiple of 10 ms
 */
ZSPV_API ZspStatus zspvEchoCaptureFloat(ZspvEcho* echo, const float* mic, float* out,
                                        int32_t count);

/**
 * By how much the output lags behind the microphone: 20 ms, and what a negative delay hint adds.
 *
 * @param[in]  echo     an echo canceller
 * @param[out] samples  the lag
 * @retval zspStsNullPtrErr  an argument is null
 */
ZSPV_API ZspStatus zspvEchoGetDelay(const ZspvEcho* echo, int32_t* samples);

/**
 * Change the delay hint. What was learnt is kept for the path behind the new delay, and learning
 * waits until the tail has passed.
 *
 * @param[in,out] echo     an echo canceller
 * @param         delayMs  -50..500
 * @retval zspStsNullPtrErr  echo is null
 * @retval zspStsRangeErr    delayMs is outside
 */
ZSPV_API ZspStatus zspvEchoSetDelay(ZspvEcho* echo, int32_t delayMs);

/**
 * Switch the suppressor.
 *
 * @param[in,out] echo        an echo canceller
 * @param         suppressor  zspvOn or zspvOff
 * @retval zspStsNullPtrErr  echo is null
 * @retval zspStsRangeErr    suppressor is another value
 */
ZSPV_API ZspStatus zspvEchoSetSuppressor(ZspvEcho* echo, int32_t suppressor);

/**
 * What has been achieved so far.
 *
 * @param[in]  echo     an echo canceller
 * @param[out] metrics  structSize is set by the caller
 * @retval zspStsNullPtrErr  an argument is null
 * @retval zspStsSizeErr     metrics->structSize is not plausible
 */
ZSPV_API ZspStatus zspvEchoGetMetrics(const ZspvEcho* echo, ZspvEchoMetrics* metrics);

/**
 * Per frequency bin how uncertain the echo path still is: 1 before anything was learnt.
 *
 * @param[in]  echo      an echo canceller
 * @param[out] perBin    one value per bin, bin k centred at k * 250 Hz
 * @param      capacity  of perBin
 * @param[out] count     bins: 17 at 8 kHz, 33 at 16 kHz; with zspStsSizeErr, what it takes
 * @retval zspStsNullPtrErr  an argument is null
 * @retval zspStsSizeErr     capacity is too small
 */
ZSPV_API ZspStatus zspvEchoGetUncertainty(const ZspvEcho* echo, float* perBin, int32_t capacity,
                                          int32_t* count);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
