/**
 * @file zspsc/ec/filters.h
 * @brief Echo cancellation: sub-band filters.
 */
#ifndef ZSPSC_EC_FILTERS_H
#define ZSPSC_EC_FILTERS_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_filters Echo cancellation: sub-band filters
 *
 * The inner loops of a canceller with the two filters that the sub-band controller steers: their
 * errors, and the update of the adaptive one. Next to its taps w the adaptive filter keeps the
 * variance p that the error of each tap is expected to have. It gives every tap a step of its own,
 * large after a start and small once converged, and tells how much echo is left.
 *
 * Per frame: zspsSubbandFilter_EC_32fc(), the step sizes of the controller,
 * zspsSubbandAdapt_EC_32fc(), zspsSubbandController_EC_32f(). Taps and far-end history are given as
 * there: numTaps pointers, pointer t to the numBands values of delay t, and pointer 0 of the
 * history to the newest frame. All arithmetic is in single precision, in the order written; fma(a,
 * b, c) is a b + c, rounded once.
 * @{
 */

/**
 * What the adaptive and the fixed filter of every bin leave of the microphone, with the power that
 * they have seen and the power of the echo that the adaptive one is expected to leave.
 *
 * With y = src[k], x = inputHistory[t][k], p = coefVariance[t][k], each tap w of either filter, and
 * all sums from 0 over t = 0 .. numTaps-1 in this order:
 *
 *   rr = fma(w.re, x.re, rr), ri = fma(w.re, x.im, ri), ir = fma(w.im, x.re, ir), ii likewise
 *   error = (y.re - (rr - ii), y.im - (ir + ri))
 *   a = a + x.re x.re, b = b + x.im x.im                      inputPower[k]    = a + b
 *   c = fma(p, x.re x.re, c), d = fma(p, x.im x.im, d)        residualPower[k] = c + d
 *
 * @param[in]  src            numBands values of the microphone's spectrum
 * @param[in]  inputHistory   numTaps pointers to numBands values
 * @param[in]  adaptCoefs, fixedCoefs  numTaps pointers to numBands taps each
 * @param[in]  coefVariance   numTaps pointers to numBands variances
 * @param[out] adaptErr, fixedErr      numBands values each
 * @param[out] inputPower, residualPower  numBands values each
 * @param      numBands       at least 1
 * @param      numTaps        1 to 4097
 * @retval zspStsNullPtrErr  any pointer is null
 * @retval zspStsSizeErr     numBands < 1
 * @retval zspStsFIRLenErr   numTaps is not in 1..4097
 */
ZSPSC_API ZspStatus zspsSubbandFilter_EC_32fc(
    const Zsp32fc* src, const Zsp32fc* const* inputHistory, const Zsp32fc* const* adaptCoefs,
    const Zsp32fc* const* fixedCoefs, const float* const* coefVariance, Zsp32fc* adaptErr,
    Zsp32fc* fixedErr, float* inputPower, float* residualPower, int32_t numBands, int32_t numTaps);

/**
 * Let the adaptive taps follow their error, and their variances what was learnt.
 *
 * With e = gain[k] adaptErr[k], q = forget[k], x = inputHistory[t][k], w = adaptCoefs[t][k] and
 * p = coefVariance[t][k], for each t:
 *
 *   w.re = fma(p, fma(e.re, x.re, e.im x.im), w.re)
 *   w.im = fma(p, fma(e.im, x.re, -(e.re x.im)), w.im)
 *   l    = ((learnt gain[k]) p) (x.re x.re + x.im x.im)
 *   p    = fma(q, (w.re w.re + w.im w.im) + coefFloor, (1 - q) fma(-l, p, p))
 *
 * with the new w in the last line. A gain of step P / (S + N) makes it a Kalman filter with a
 * diagonal covariance: step from the controller, P and S the powers of zspsSubbandFilter_EC_32fc(),
 * N that of the near end.
 *
 * @param[in]     adaptErr      numBands values
 * @param[in]     gain          numBands values, at least 0: the step for all taps of a bin together
 * @param[in]     forget        numBands values, 0 to 1: how far variances go back to the taps'
 * energy
 * @param[in]     inputHistory  numTaps pointers to numBands values
 * @param[in,out] adaptCoefs    numTaps pointers to numBands taps
 * @param[in,out] coefVariance  numTaps pointers to numBands variances
 * @param         numBands      at least 1
 * @param         numTaps       1 to 4097
 * @param         learnt        0 to 1: what an update takes off the variances, 1 if frames were
 *                              independent
 * @param         coefFloor     at least 0: energy that every tap is expected to change by
 * @retval zspStsNullPtrErr  any pointer is null
 * @retval zspStsSizeErr     numBands < 1
 * @retval zspStsFIRLenErr   numTaps is not in 1..4097
 * @retval zspStsRangeErr    learnt is not in 0..1, coefFloor is negative, or one is not a number
 */
ZSPSC_API ZspStatus zspsSubbandAdapt_EC_32fc(const Zsp32fc* adaptErr, const float* gain,
                                             const float* forget,
                                             const Zsp32fc* const* inputHistory,
                                             Zsp32fc* const* adaptCoefs, float* const* coefVariance,
                                             int32_t numBands, int32_t numTaps, float learnt,
                                             float coefFloor);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
