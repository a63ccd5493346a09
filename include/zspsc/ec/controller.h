/**
 * @file zspsc/ec/controller.h
 * @brief Echo cancellation: sub-band controller.
 */
#ifndef ZSPSC_EC_CONTROLLER_H
#define ZSPSC_EC_CONTROLLER_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_controller Echo cancellation: sub-band controller
 *
 * Steers a sub-band echo canceller that runs two echo-path filters in every bin of the filter bank:
 * one that adapts in every frame, and a fixed copy. Per bin the controller gives the adaptive
 * filter's step size, saves its taps into the fixed filter when it has become better, and restores
 * them when it has become worse, as in double talk.
 *
 * Per frame: zspsSubbandAPControllerUpdate_EC_32f() or zspsSubbandControllerUpdate_EC_32f(), the
 * caller's filters and their adaptation, zspsSubbandController_EC_32f(). Sub-band vectors are
 * arrays of numBands complex floats. Taps are given as numTaps pointers, pointer t to the taps of
 * delay t; far-end history likewise, pointer 0 to the newest frame.
 *
 * The state starts at the first 16-byte boundary of the buffer given, for which the reported size
 * has room, and holds pointers into itself: it must not be moved or copied. Smoothers have the form
 * v = a v + (1-a) new with a(T) = 1 + x + x^2/2, x = -frameSize / (sampleFreq T). All sums are in
 * single precision. The threshold of the far-end power, 100000 per bin and tap, presupposes the
 * 16-bit scale.
 * @{
 */

/**
 * Size of the controller's state.
 *
 * @param      numBands    bins of a sub-band vector, at least 1
 * @param      frameSize   samples a frame, at least 1
 * @param      numTaps     taps of each filter, at least 1
 * @param      sampleFreq  8000 or 16000
 * @param[out] size        one value, in bytes: 16 numBands + 112
 * @retval zspStsBadArgErr   numBands, frameSize or numTaps < 1, or the size does not fit 32 bits
 * @retval zspStsRangeErr    sampleFreq is neither 8000 nor 16000
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsSubbandControllerGetSize_EC_32f(int32_t numBands, int32_t frameSize,
                                                        int32_t numTaps, int32_t sampleFreq,
                                                        int32_t* size);

/**
 * Initialise a controller: all powers 0, adaptation factor and convergence 1, the threshold of the
 * far-end power 100000 numBands numTaps.
 *
 * @param[out] state       at least the size of zspsSubbandControllerGetSize_EC_32f()
 * @param      numBands, frameSize, numTaps, sampleFreq  as for the size
 * @retval zspStsBadArgErr   numBands, frameSize or numTaps < 1, or the size does not fit 32 bits
 * @retval zspStsRangeErr    sampleFreq is neither 8000 nor 16000
 * @retval zspStsNullPtrErr  state is null
 */
ZSPSC_API ZspStatus zspsSubbandControllerInit_EC_32f(void* state, int32_t numBands,
                                                     int32_t frameSize, int32_t numTaps,
                                                     int32_t sampleFreq);

/**
 * Forget the powers of errors and taps. The far-end power and the scalar smoothers stay.
 *
 * @param[in,out] state  initialised
 * @retval zspStsNullPtrErr  state is null
 */
ZSPSC_API ZspStatus zspsSubbandControllerReset_EC_32f(void* state);

/**
 * Step sizes of one frame, before the adaptive filters are updated.
 *
 *   P[k] += |inputHistory[0][k]|^2
 *   stepSize[k] = mu / P[k]  if P[k] is above the threshold, else 0.05 / threshold
 *   P[k] = max(0, P[k] - |inputHistory[numTaps-1][k]|^2)
 *
 * The energy of the reference vector, 0 without one, is smoothed over 15 ms; once given, it limits
 * the error in which zspsSubbandController_EC_32f() still takes adaptation to be helpful.
 *
 * @param[in]     inputHistory  numTaps pointers to far-end vectors; the first and last are read
 * @param[in]     refVector     numBands values, or null
 * @param[out]    stepSize      numBands values
 * @param         mu            0 to 1
 * @param[in,out] state         initialised
 * @retval zspStsNullPtrErr  inputHistory, stepSize or state is null
 * @retval zspStsRangeErr    mu is not in 0..1, or not a number
 */
ZSPSC_API ZspStatus zspsSubbandAPControllerUpdate_EC_32f(const Zsp32fc* const* inputHistory,
                                                         const Zsp32fc* refVector, double* stepSize,
                                                         float mu, void* state);

/**
 * As zspsSubbandAPControllerUpdate_EC_32f() with mu = 0.5.
 *
 * @param[in]     adaptErr, fixedErr  must not be null, but are not read
 * @param[in]     inputHistory        numTaps pointers to far-end vectors
 * @param[in]     refVector           numBands values, or null
 * @param[out]    stepSize            numBands values
 * @param[in,out] state               initialised
 * @retval zspStsNullPtrErr  adaptErr, fixedErr, inputHistory, stepSize or state is null
 */
ZSPSC_API ZspStatus zspsSubbandControllerUpdate_EC_32f(const Zsp32fc* adaptErr,
                                                       const Zsp32fc* fixedErr,
                                                       const Zsp32fc* const* inputHistory,
                                                       const Zsp32fc* refVector, double* stepSize,
                                                       void* state);

/**
 * Compare the two filters of every bin, after they have produced their errors.
 *
 * With the energy C of a bin's adaptive taps, smoothed over 9 ms, and the powers A and F of the
 * adaptive and the fixed filter's errors, smoothed over 15 ms:
 *
 *  - the new energy differs from the old C by less than a tenth of C, and A < 0.35 F: the adaptive
 *    taps are copied into the fixed filter, and F becomes A;
 *  - otherwise, A > 1.5 F: the fixed taps are copied into the adaptive filter, and A becomes F.
 *
 * A frame is helpful when the saved bins have more than a tenth of the error power of all bins and,
 * once a reference vector was given, a fifth of its smoothed power exceeds the error's; harmful
 * when the restored bins have more than a tenth. A measure smoothed over 20 ms goes towards 0 in
 * helpful and towards 1 in harmful frames; the factor follows, smoothed over 10 ms: towards 1 while
 * the measure is above 0.5, otherwise towards 0.
 *
 * @param[in]     adaptErr, fixedErr      numBands values each
 * @param[in,out] adaptCoefs, fixedCoefs  numTaps pointers each, to numBands taps
 * @param[out]    adaptFactor             one value, 0 to 1
 * @param[in,out] state                   initialised
 * @retval zspStsNullPtrErr  any pointer is null
 */
ZSPSC_API ZspStatus zspsSubbandController_EC_32f(const Zsp32fc* adaptErr, const Zsp32fc* fixedErr,
                                                 Zsp32fc** adaptCoefs, Zsp32fc** fixedCoefs,
                                                 float* adaptFactor, void* state);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
