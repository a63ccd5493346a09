/**
 * @file zspsc/ec/bank.h
 * @brief Echo cancellation: sub-band filter bank.
 */
#ifndef ZSPSC_EC_BANK_H
#define ZSPSC_EC_BANK_H

#include "../types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_subband Echo cancellation: sub-band filter bank
 *
 * A weighted overlap-add filter bank with fftLen = 2^order equally spaced bands, of which the bins
 * 0 .. fftLen/2 are kept. A frame brings frameSize new samples (the hop). Analysis and synthesis
 * together delay a signal by windowLen - frameSize samples. Float samples of all echo-cancellation
 * functions are on the 16-bit scale: full scale is 32768, not 1.
 *
 * The caller asks for the sizes, provides a state per signal and direction, and initialises it. A
 * state holds pointers into itself: it must not be moved or copied. It starts at the first 16-byte
 * boundary of the buffer given, for which the reported size has room; so does the work buffer,
 * whose content need not be kept between calls and which many states may share. Initialising again
 * restarts; for the first windowLen / frameSize frames the output is settling. From frame to frame
 * the delay line moves on inside the state: its pointer is not the same before and after a call.
 * After a call the work buffer begins, at its first 16-byte boundary, with the fftLen values that
 * stood between window and transform: floats, or words in 32 bits each.
 * @{
 */

/**
 * Sizes of the buffers of the float filter bank, in bytes.
 *
 * @param      order        log2 of the transform length; up to 26 as far as the sizes fit 32 bits
 * @param      windowLen    taps of the prototype window, a multiple of 2^order
 * @param[out] stateSize    one value: the state
 * @param[out] initBufSize  one value: the buffer that the initialisation needs; 0 for no buffer
 * @param[out] workBufSize  one value: the buffer that analysis and synthesis need
 * @retval zspStsBadArgErr   order < 1 or windowLen < 1; after the pointers also: windowLen is not a
 *                           multiple of 2^order, or a size does not fit 32 bits
 * @retval zspStsNullPtrErr  stateSize, initBufSize or workBufSize is null
 */
ZSPSC_API ZspStatus zspsSubbandProcessGetSize_32f(int32_t order, int32_t windowLen,
                                                  int32_t* stateSize, int32_t* initBufSize,
                                                  int32_t* workBufSize);

/**
 * Initialise a state of the float filter bank for analysis or for synthesis.
 *
 * Built-in windows exist for two shapes of order, frameSize and windowLen: (5, 24, 128) and
 * (6, 44, 256). Both are symmetric low-pass prototypes, the equal-weight least-squares designs of
 * their length: -6 dB at 0.53 and 0.59 bins, the first zero at 0.75 and 0.81 bins, side lobes 30
 * and 28 dB down. Analysis and synthesis with them have a gain of 1 within 2 %; on white noise
 * aliasing is 15 and 23 dB below the signal.
 *
 * When a check behind that of the pointer fails, one thing has been written: the state's pointer to
 * its window.
 *
 * @param[out] state      at least stateSize bytes of zspsSubbandProcessGetSize_32f()
 * @param      order      log2 of the transform length, at least 1
 * @param      frameSize  samples a frame, 1 to 2^order
 * @param      windowLen  taps of the window, a multiple of 2^order
 * @param[in]  window     windowLen taps, which the state copies; null for a built-in window
 * @param      initBuf    at least initBufSize bytes; may be null when that is 0
 * @retval zspStsBadArgErr    order < 1, frameSize not in 1 .. 2^order or windowLen < 1; after the
 *                            pointer also: windowLen is not a multiple of 2^order, or window is
 *                            null and the shape has no built-in window, which is found when the
 *                            state has its pointer to the window already
 * @retval zspStsNullPtrErr   state is null
 * @retval zspStsInternalErr  order > 26: there is no transform of this length
 */
ZSPSC_API ZspStatus zspsSubbandProcessInit_32f(void* state, int32_t order, int32_t frameSize,
                                               int32_t windowLen, const float* window,
                                               void* initBuf);

/**
 * Split one frame into frequency bins.
 *
 *   fold[i] = sum over m of x[i + m fftLen] window[i + m fftLen]      i = 0 .. fftLen-1
 *   dst[k]  = sum over i of fold[i] e^(-2 pi j i k / fftLen)          k = 0 .. fftLen/2
 *
 * x are the newest windowLen samples, oldest first. Each fold is a product and then fused
 * multiply-adds with increasing m. Bins 0 and fftLen/2 have imaginary parts of exactly zero. The
 * transform computes in single precision: its errors are more than 125 dB below the bins, as a
 * whole. Results are the same on every processor.
 *
 * @param[in]     src      frameSize samples
 * @param[out]    dst      fftLen/2 + 1 bins
 * @param[in,out] state    initialised by zspsSubbandProcessInit_32f()
 * @param         workBuf  at least workBufSize bytes
 * @retval zspStsNullPtrErr  src, dst, state or workBuf is null
 */
ZSPSC_API ZspStatus zspsSubbandAnalysis_32f32fc(const float* src, Zsp32fc* dst, void* state,
                                                void* workBuf);

/**
 * Join the bins of one frame to samples.
 *
 *   acc[i] = acc[i + frameSize], 0 at the end; then acc[i] += t[i mod fftLen] window[windowLen-1-i]
 *
 * t is the inverse transform of the bins, divided by fftLen; the sums are fused multiply-adds. The
 * first frameSize values of acc are the output. The imaginary parts of bins 0 and fftLen/2 are
 * ignored.
 *
 * @param[in]     src      fftLen/2 + 1 bins
 * @param[out]    dst      frameSize samples
 * @param[in,out] state    initialised by zspsSubbandProcessInit_32f(), not used for analysis
 * @param         workBuf  at least workBufSize bytes
 * @retval zspStsNullPtrErr  src, dst, state or workBuf is null
 */
ZSPSC_API ZspStatus zspsSubbandSynthesis_32fc32f(const Zsp32fc* src, float* dst, void* state,
                                                 void* workBuf);

/**
 * As zspsSubbandProcessGetSize_32f(), for the 16-bit filter bank.
 *
 * @param      order        log2 of the transform length; up to 26 as far as the sizes fit 32 bits
 * @param      windowLen    taps of the prototype window, a multiple of 2^order
 * @param[out] stateSize    one value: the state
 * @param[out] initBufSize  one value: the buffer that the initialisation needs; 0 for no buffer
 * @param[out] workBufSize  one value: the buffer that analysis and synthesis need
 * @retval zspStsBadArgErr   order < 1 or windowLen < 1; after the pointers also: windowLen is not a
 *                           multiple of 2^order, or a size does not fit 32 bits
 * @retval zspStsNullPtrErr  stateSize, initBufSize or workBufSize is null
 */
ZSPSC_API ZspStatus zspsSubbandProcessGetSize_16s(int32_t order, int32_t windowLen,
                                                  int32_t* stateSize, int32_t* initBufSize,
                                                  int32_t* workBufSize);

/**
 * As zspsSubbandProcessInit_32f(), for the 16-bit filter bank. The built-in windows are the float
 * ones times 8192, truncated towards zero.
 *
 * @param[out] state      at least stateSize bytes of zspsSubbandProcessGetSize_16s()
 * @param      order      log2 of the transform length, at least 1
 * @param      frameSize  samples a frame, 1 to 2^order
 * @param      windowLen  taps of the window, a multiple of 2^order
 * @param[in]  window     windowLen taps in Q13, which the state copies; null for a built-in window
 * @param      initBuf    at least initBufSize bytes; may be null when that is 0
 * @retval zspStsBadArgErr    order < 1, frameSize not in 1 .. 2^order or windowLen < 1; after the
 *                            pointer also: windowLen is not a multiple of 2^order, or window is
 *                            null and the shape has no built-in window, which is found when the
 *                            state has its pointer to the window already
 * @retval zspStsNullPtrErr   state is null
 * @retval zspStsInternalErr  order > 26: there is no transform of this length
 */
ZSPSC_API ZspStatus zspsSubbandProcessInit_16s(void* state, int32_t order, int32_t frameSize,
                                               int32_t windowLen, const int16_t* window,
                                               void* initBuf);

/**
 * Split one frame of 16-bit samples into frequency bins.
 *
 *   p[i]    = (x[i] window[i] + 4096) >> 13                            i = 0 .. windowLen-1
 *   fold[i] = sat16(... sat16(sat16(p[i]) + p[i + fftLen]) + ...)      i = 0 .. fftLen-1
 *   dst[k]  = sat32(2^-scaleFactor sum over i of fold[i] e^(-2 pi j i k / fftLen))
 *
 * The fold is exact; a product p is a 32-bit value, and each sum saturates. The transform is off by
 * at most 0.5 + (0.5 + 2^-20 S) 2^-scaleFactor, S the sum of all |fold[i]|; halves round up. Bins 0
 * and fftLen/2 have imaginary parts of zero.
 *
 * @param[in]     src          frameSize samples
 * @param[out]    dst          fftLen/2 + 1 bins
 * @param[in,out] state        initialised by zspsSubbandProcessInit_16s()
 * @param         scaleFactor  any; negative values scale up
 * @param         workBuf      at least workBufSize bytes
 * @retval zspStsNullPtrErr  src, dst, state or workBuf is null
 */
ZSPSC_API ZspStatus zspsSubbandAnalysis_16s32sc_Sfs(const int16_t* src, Zsp32sc* dst, void* state,
                                                    int32_t scaleFactor, void* workBuf);

/**
 * Join the bins of one frame to 16-bit samples.
 *
 * The inverse transform, divided by fftLen and times 2^-scaleFactor, is rounded to t, where halves
 * round up and results saturate to 16 bits; then, with the shift of zspsSubbandSynthesis_32fc32f(),
 *
 *   acc[i] = sat16(acc[i] + ((t[i mod fftLen] window[windowLen-1-i] + 4096) >> 13))
 *
 * The first frameSize values of acc are the output. The imaginary parts of bins 0 and fftLen/2 are
 * ignored. The inverse transform has the error bound of the forward one, S the sum of all bins'
 * magnitudes over fftLen.
 *
 * @param[in]     src          fftLen/2 + 1 bins
 * @param[out]    dst          frameSize samples
 * @param[in,out] state        initialised by zspsSubbandProcessInit_16s(), not used for analysis
 * @param         scaleFactor  any; negative values scale up
 * @param         workBuf      at least workBufSize bytes
 * @retval zspStsNullPtrErr  src, dst, state or workBuf is null
 */
ZSPSC_API ZspStatus zspsSubbandSynthesis_32sc16s_Sfs(const Zsp32sc* src, int16_t* dst, void* state,
                                                     int32_t scaleFactor, void* workBuf);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
