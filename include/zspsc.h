/**
 * @file zspsc.h
 * @brief Speech-coding and voice-processing primitives for x86-64 with AVX2.
 *
 * Families that remember something between calls keep it in a state. Its life is always the same:
 *
 *     size    zspsXGetStateSize(&size) says how many bytes the state takes
 *     memory  the caller provides them, at any address and from wherever it likes
 *     start   zspsXInit(..., state) writes the whole state; calling it again restarts
 *     work    zspsX(..., state), any number of times, block after block
 *     end     the caller takes its memory back; there is nothing to release
 *
 * | family | what it offers | state |
 * | --- | --- | --- |
 * | products, correlation, scaling | kernels that codecs share | none |
 * | G.711 | encoding and decoding in both laws | none |
 * | G.722 | band split and join, encoder, decoder | 144 bytes and a delay line |
 * | G.726 | encoder and decoder at four rates | 88 and 92 bytes |
 * | G.729 | high-pass filter; LSP to LSF | 24 bytes; none |
 * | GSM-AMR | two activity detectors, DTX bookkeeping | public records, set up by the caller |
 * | AMR-WB | activity detector; spectral frequencies | a public record; none |
 * | echo cancellation | filter bank, controller, filters, tone detector | see the size queries |
 * | level control | G.169 | a public record, 124 bytes |
 *
 * A whole program, which codes raw 16-bit samples with G.726 at 32 kbit/s:
 *
 * @code
 * #include <stdio.h>
 * #include <stdlib.h>
 * #include <zspsc.h>
 *
 * int main(void)
 * {
 *     int16_t speech[160];
 *     uint8_t codes[160];
 *     int32_t size;
 *     size_t i, n;
 *     void* encoder;
 *
 *     zspsEncodeGetStateSize_G726_16s8u(&size);
 *     encoder = malloc((size_t)size);
 *     if (zspsEncodeInit_G726_16s8u(encoder, zspG726Rate32) != zspStsNoErr) return 1;
 *     while ((n = fread(speech, sizeof speech[0], 160, stdin)) > 0) {
 *         for (i = 0; i < n; ++i) speech[i] = (int16_t)(speech[i] / 4); // 14 bits are coded
 *         if (zspsEncode_G726_16s8u(encoder, speech, codes, (int32_t)n) != zspStsNoErr) return 1;
 *         fwrite(codes, 1, n, stdout); // each byte a code word of four bits
 *     }
 *     free(encoder);
 *     return 0;
 * }
 * @endcode
 *
 * What holds for every function:
 *
 *  - The status is the return value; 0 (::zspStsNoErr) is success, negative values are errors,
 *    positive values warnings.
 *  - Arguments are checked in the order in which a function lists its results. A failed check
 *    writes nothing, neither to outputs nor to a state, unless a function says otherwise.
 *  - Arrays hold their elements contiguously in the byte order of the machine and are aligned as
 *    their element type is. Output arrays must not overlap other arguments unless a function says
 *    that they may.
 *  - A state is a buffer of the caller's. Functions on different states may run at the same time on
 *    any threads; calls on one state are the caller's to serialise. Nothing is allocated.
 *  - Functions on float samples run in the caller's floating-point modes and leave them alone; what
 *    is said of their results holds for rounding to nearest. Flush-to-zero and denormals-are-zero
 *    may be set, and keep fading signals fast on processors that handle denormal numbers slowly;
 *    they change nothing but values below 1.2e-38.
 *  - Qn is a signed integer that holds a value times 2^n. "sat16" and "sat32" limit to a signed 16-
 *    or 32-bit integer, ">>" is an arithmetic shift.
 *
 * Suffixes of the names give the element types: 8u, 16s, 32s, 32f, 64f; 32sc and 32fc for complex
 * values; _I for in-place operation, _Sfs for a scale factor.
 */
#ifndef ZSPSC_H
#define ZSPSC_H

#include <stdint.h>

#if defined(__GNUC__) && !defined(_WIN32)
#define ZSPSC_API __attribute__((visibility("default")))
#else
#define ZSPSC_API /**< marks an exported function */
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------- */
/* Types                                                                                          */

/**
 * @defgroup zspsc_types Types
 *
 * Statuses, complex numbers and the version record.
 * @{
 */

/** Result of every function but zspscGetLibVersion(). */
typedef enum ZspStatus {
    zspStsOverflow = 12,          /**< warning: the result could not be represented normally */
    zspStsNoErr = 0,              /**< success */
    zspStsInternalErr = -2,       /**< an internal transform reported failure */
    zspStsBadArgErr = -5,         /**< an argument outside its domain that is not a length */
    zspStsSizeErr = -6,           /**< a length or count that is not accepted */
    zspStsRangeErr = -7,          /**< a numeric parameter outside its range */
    zspStsNullPtrErr = -8,        /**< a required pointer is null */
    zspStsMemAllocErr = -9,       /**< a temporary work array could not be had */
    zspStsCodecRangeErr = -11,    /**< a codec index, lag or mode outside the standard's range */
    zspStsNegativeValueErr = -12, /**< a value that indexes a table is negative */
    zspStsScaleRangeErr = -13,    /**< a scale factor or shift outside its range */
    zspStsLSPConvErr = -114,      /**< not all line spectral pairs were found */
    zspStsFIRLenErr = -119        /**< a sub-band filter length outside 1..4097 */
} ZspStatus;

/** A complex number of two floats. */
typedef struct Zsp32fc {
    float re; /**< real part */
    float im; /**< imaginary part */
} Zsp32fc;

/** A complex number of two signed 32-bit integers. */
typedef struct Zsp32sc {
    int32_t re; /**< real part */
    int32_t im; /**< imaginary part */
} Zsp32sc;

/** The version record. */
typedef struct ZspLibraryVersion {
    int32_t major;           /**< ::ZSPSC_VERSION_MAJOR as the library was built */
    int32_t minor;           /**< ::ZSPSC_VERSION_MINOR */
    int32_t update;          /**< ::ZSPSC_VERSION_PATCH */
    int32_t revision;        /**< source revision */
    char cpuTag[4];          /**< processor-specific build, "l9" for AVX2, zero-filled */
    const char* name;        /**< name of the library and the build */
    const char* versionText; /**< version and revision as text */
    const char* buildDate;   /**< date as text */
} ZspLibraryVersion;

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* Version                                                                                        */

/**
 * @defgroup zspsc_version Version
 *
 * Which library this is.
 * @{
 */

/** The version that this header belongs to; zspscGetLibVersion() tells that of the library. */
#define ZSPSC_VERSION_MAJOR 8
#define ZSPSC_VERSION_MINOR 1 /**< as above */
#define ZSPSC_VERSION_PATCH 1 /**< as above */

/**
 * The version record of this library.
 *
 * @return the one record, in read-only memory, never null; the same pointer on every call
 */
ZSPSC_API const ZspLibraryVersion* zspscGetLibVersion(void);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* Products                                                                                       */

/**
 * @defgroup zspsc_products Products
 *
 * Element-wise products of vectors.
 * @{
 */

/**
 * Multiply two vectors with a rounding right shift and saturation.
 *
 *   dst[i] = sat16((src1[i] * src2[i] + 2^(scaleFactor-1)) >> scaleFactor)
 *
 * The sum is exact; there is no rounding term when scaleFactor is 0. Ties round towards plus
 * infinity. A scaleFactor of 32 or more gives 0.
 *
 * @param[in]  src1, src2   len samples each
 * @param[out] dst          len samples; may be src1 or src2, otherwise must not overlap them
 * @param      len          at least 1
 * @param      scaleFactor  at least 0; 15 for Q15 x Q15 -> Q15
 * @retval zspStsNullPtrErr     src1, src2 or dst is null
 * @retval zspStsSizeErr        len < 1
 * @retval zspStsScaleRangeErr  scaleFactor < 0
 * @see ITU-T G.191, basic operator mult_r (scaleFactor 15)
 */
ZSPSC_API ZspStatus zspsMul_NR_16s_Sfs(const int16_t* src1, const int16_t* src2, int16_t* dst,
                                       int32_t len, int32_t scaleFactor);

/**
 * As zspsMul_NR_16s_Sfs(), in place: srcDst is the second source and the destination.
 *
 * @param[in]     src          len samples; may be srcDst, otherwise must not overlap it
 * @param[in,out] srcDst       len samples
 * @param         len          at least 1
 * @param         scaleFactor  at least 0
 * @retval zspStsNullPtrErr     src or srcDst is null
 * @retval zspStsSizeErr        len < 1
 * @retval zspStsScaleRangeErr  scaleFactor < 0
 */
ZSPSC_API ZspStatus zspsMul_NR_16s_ISfs(const int16_t* src, int16_t* srcDst, int32_t len,
                                        int32_t scaleFactor);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* Correlation and scaling                                                                        */

/**
 * @defgroup zspsc_correlation Correlation and scaling
 *
 * Building blocks that codecs share: correlations and lag searches, block scaling, inverse square
 * root, pre-emphasis.
 * @{
 */

/**
 * Autocorrelation, normalised so that lag 0 uses all 31 bits.
 *
 *   r0 = 2 * energy + 1, dst[0] = r0 << norm,
 *   dst[k] = (2 * sum of src[i] * src[i-k]) << norm for k = 1..lagCount-1
 *
 * energy is the exact sum of the squares, norm the number of left shifts that normalise r0. Sums
 * run over k <= i < len; lags from len on give 0. No lag overflows.
 *
 * @param[in]  src       len samples
 * @param      len       at least 1
 * @param[out] dst       lagCount correlations
 * @param      lagCount  at least 1
 * @param[out] norm      shift count, 0 to 30; 30 for silence, where dst[0] is 2^30
 * @retval zspStsNullPtrErr  src, dst or norm is null
 * @retval zspStsSizeErr     len < 1 or lagCount < 1
 * @retval zspStsOverflow    energy > 2^30 - 1; nothing is written
 * @see ITU-T G.729, Autocorr
 */
ZSPSC_API ZspStatus zspsAutoCorr_NormE_16s32s(const int16_t* src, int32_t len, int32_t* dst,
                                              int32_t lagCount, int32_t* norm);

/**
 * Cross-correlation of two vectors with a rounding right shift and saturation.
 *
 *   dst[k] = sat32((sum over i = 0..len-1-k of src1[i+k] * src2[i] + half) >> scaleFactor)
 *
 * The sum is exact; half is 2^(scaleFactor-1), or 0 when scaleFactor is 0. Lags from len on give 0,
 * and so does a scaleFactor of 62 or more.
 *
 * @param[in]  src1, src2   len samples each
 * @param      len          at least 1
 * @param[out] dst          lagCount correlations
 * @param      lagCount     at least 1
 * @param      scaleFactor  at least 0
 * @retval zspStsNullPtrErr     src1, src2 or dst is null
 * @retval zspStsSizeErr        len < 1 or lagCount < 1
 * @retval zspStsScaleRangeErr  scaleFactor < 0
 */
ZSPSC_API ZspStatus zspsCrossCorr_16s32s_Sfs(const int16_t* src1, const int16_t* src2, int32_t len,
                                             int32_t* dst, int32_t lagCount, int32_t scaleFactor);

/**
 * Cross-correlation at all lags with a scaling that follows its largest value, as between target
 * and impulse response before an algebraic codebook search.
 *
 *   c[k] = 2 * sum over i = 0..len-1-k of src1[i+k] * src2[i], saturated to 32 bits at every step
 *   dst[k] = c[k] >> (18 - min(16, norm of the largest |c|))
 *
 * The norm is the number of left shifts that normalise a 32-bit value. |dst[k]| <= 8192.
 *
 * @param[in]  src1, src2  len samples each
 * @param      len         at least 1
 * @param[out] dst         len correlations
 * @retval zspStsNullPtrErr  src1, src2 or dst is null
 * @retval zspStsSizeErr     len < 1
 * @see ITU-T G.729, Cor_h_X
 */
ZSPSC_API ZspStatus zspsCrossCorr_NormM_16s(const int16_t* src1, const int16_t* src2, int32_t len,
                                            int16_t* dst);

/**
 * The first len samples of the convolution of two vectors, with a rounding right shift and
 * saturation.
 *
 *   dst[n] = sat16((sum over i = 0..n of src1[i] * src2[n-i] + half) >> scaleFactor)
 *
 * The sum is exact; half is 2^(scaleFactor-1), or 0 when scaleFactor is 0.
 *
 * @param[in]  src1, src2   len samples each
 * @param[out] dst          len samples
 * @param      len          at least 1
 * @param      scaleFactor  at least 0; 12 for an impulse response in Q12
 * @retval zspStsNullPtrErr  src1, src2 or dst is null
 * @retval zspStsBadArgErr   scaleFactor < 0
 * @retval zspStsSizeErr     len < 1
 */
ZSPSC_API ZspStatus zspsConvPartial_16s_Sfs(const int16_t* src1, const int16_t* src2, int16_t* dst,
                                            int32_t len, int32_t scaleFactor);

/**
 * Search for the lag of the largest cross-correlation.
 *
 *   c(lag) = sum over i = 0..len-1 of src1[i] * src2[i+lag] for lag = lagMax..0
 *
 * The sums wrap at 32 bits. Of equal maxima the largest lag is taken. When no correlation is
 * positive, maxCorr is 0 and bestLag is lagMax.
 *
 * @param[in]  src1     len samples
 * @param[in]  src2     len + lagMax samples
 * @param      len      at least 1
 * @param      lagMax   at least 0
 * @param[out] maxCorr  the largest correlation
 * @param[out] bestLag  its lag
 * @retval zspStsNullPtrErr  src1, src2, maxCorr or bestLag is null
 * @retval zspStsSizeErr     len < 1
 * @retval zspStsRangeErr    lagMax < 0
 */
ZSPSC_API ZspStatus zspsCrossCorrLagMax_16s(const int16_t* src1, const int16_t* src2, int32_t len,
                                            int32_t lagMax, int32_t* maxCorr, int32_t* bestLag);

/**
 * Search for the lag of the largest autocorrelation, lags ascending, as in an open-loop pitch
 * search.
 *
 *   c(lag) = sum over i = 0..len-1 of src[i] * src[i-lag] for lag = lagMin..lagMax
 *
 * The sums wrap at 32 bits. Of equal maxima the smallest lag is taken. When no correlation is
 * positive, maxCorr is 0 and bestLag is lagMin.
 *
 * @param[in]  src      the current len samples, preceded by lagMax samples of the past
 * @param      len      at least 1
 * @param      lagMin   at least 0
 * @param      lagMax   at least lagMin
 * @param[out] maxCorr  the largest correlation
 * @param[out] bestLag  its lag
 * @retval zspStsNullPtrErr  src, maxCorr or bestLag is null
 * @retval zspStsSizeErr     len < 1
 * @retval zspStsRangeErr    lagMin < 0 or lagMax < lagMin
 */
ZSPSC_API ZspStatus zspsAutoCorrLagMax_Fwd_16s(const int16_t* src, int32_t len, int32_t lagMin,
                                               int32_t lagMax, int32_t* maxCorr, int32_t* bestLag);

/**
 * As zspsAutoCorrLagMax_Fwd_16s(), lags descending: of equal maxima the largest lag is taken, and
 * when no correlation is positive, bestLag is lagMax.
 *
 * @param[in]  src      the current len samples, preceded by lagMax samples of the past
 * @param      len      at least 1
 * @param      lagMin   at least 0
 * @param      lagMax   at least lagMin
 * @param[out] maxCorr  the largest correlation
 * @param[out] bestLag  its lag
 * @retval zspStsNullPtrErr  src, maxCorr or bestLag is null
 * @retval zspStsSizeErr     len < 1
 * @retval zspStsRangeErr    lagMin < 0 or lagMax < lagMin
 */
ZSPSC_API ZspStatus zspsAutoCorrLagMax_Inv_16s(const int16_t* src, int32_t len, int32_t lagMin,
                                               int32_t lagMax, int32_t* maxCorr, int32_t* bestLag);

/**
 * As zspsAutoCorrLagMax_Fwd_16s(), in single precision. Every sum starts at 0 and adds the rounded
 * products in the order of the samples. A correlation that is not a number is never the maximum.
 *
 * @param[in]  src      the current len samples, preceded by lagMax samples of the past
 * @param      len      at least 1
 * @param      lagMin   at least 0
 * @param      lagMax   at least lagMin
 * @param[out] maxCorr  the largest correlation
 * @param[out] bestLag  its lag
 * @retval zspStsNullPtrErr  src, maxCorr or bestLag is null
 * @retval zspStsSizeErr     len < 1
 * @retval zspStsRangeErr    lagMin < 0 or lagMax < lagMin
 */
ZSPSC_API ZspStatus zspsAutoCorrLagMax_32f(const float* src, int32_t len, int32_t lagMin,
                                           int32_t lagMax, float* maxCorr, int32_t* bestLag);

/**
 * Shift a block so that its largest magnitude has `scale` bits of headroom.
 *
 *   shift = norm - scale, dst[i] = src[i] << shift, or src[i] >> -shift when shift < 0
 *
 * norm is the number of left shifts that normalise the largest magnitude (32767 for -32768), 0 for
 * a block of zeros. No left shift overflows.
 *
 * @param[in]     src    len samples
 * @param[out]    dst    len samples; may be src, otherwise must not overlap it
 * @param         len    at least 1
 * @param[in,out] scale  headroom in bits, at least 0; receives shift, -scale to 14 - scale
 * @retval zspStsNullPtrErr     src, dst or scale is null
 * @retval zspStsSizeErr        len < 1
 * @retval zspStsScaleRangeErr  the integer at scale is negative
 */
ZSPSC_API ZspStatus zspsAutoScale_16s(const int16_t* src, int16_t* dst, int32_t len,
                                      int32_t* scale);

/**
 * As zspsAutoScale_16s(), in place.
 *
 * @param[in,out] srcDst  len samples
 * @param         len     at least 1
 * @param[in,out] scale   headroom in bits, at least 0; receives the shift
 * @retval zspStsNullPtrErr     srcDst or scale is null
 * @retval zspStsSizeErr        len < 1
 * @retval zspStsScaleRangeErr  the integer at scale is negative
 */
ZSPSC_API ZspStatus zspsAutoScale_16s_I(int16_t* srcDst, int32_t len, int32_t* scale);

/**
 * Inverse square roots in place, by linear interpolation in a table of 49 entries.
 *
 * The result is 2^30 / sqrt(x), that is 1 / sqrt(x) in Q30, for an integer x > 0, and 0x3fffffff
 * for x <= 0.
 *
 * @param[in,out] srcDst  len values
 * @param         len     at least 1
 * @retval zspStsNullPtrErr  srcDst is null
 * @retval zspStsSizeErr     len < 1
 * @see ITU-T G.729, Inv_sqrt; the same arithmetic, bit for bit
 */
ZSPSC_API ZspStatus zspsInvSqrt_32s_I(int32_t* srcDst, int32_t len);

/**
 * First-order pre-emphasis in place.
 *
 *   y[n] = x[n] - factor * x[n-1], the product rounded before the difference
 *
 * @param         factor  coefficient
 * @param[in,out] srcDst  len samples, x before the call and y after it
 * @param         len     at least 1
 * @param[in,out] memory  x[-1]; receives the last x for the next call. 0 at the start of a signal
 * @retval zspStsNullPtrErr  srcDst or memory is null
 * @retval zspStsSizeErr     len < 1
 */
ZSPSC_API ZspStatus zspsPreemphasize_32f_I(float factor, float* srcDst, int32_t len, float* memory);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* G.711 companding                                                                               */

/**
 * @defgroup zspsc_g711 G.711 companding
 *
 * ITU-T G.711 between 16-bit linear samples and code words of eight bits, in both laws, without a
 * state. The top bit of a code word is its sign, set for positive values; mu-law code words are
 * inverted, of A-law code words the even bits, as they travel on the line.
 * @{
 */

/** The two laws. */
typedef enum ZspG711Law {
    zspG711LawMu = 0, /**< mu-law, PCMU */
    zspG711LawA = 1   /**< A-law, PCMA */
} ZspG711Law;

/**
 * Compress samples to code words.
 *
 * Full scale is 16 bits: mu-law uses the upper 14 of them, A-law the upper 13. What is below is cut
 * off from the magnitude; a negative sample is complemented for that, so that -1 has the magnitude
 * 0 and becomes the negative zero. What is beyond the last interval takes the code word of that.
 *
 * @param[in]  src  len samples
 * @param[out] dst  len code words
 * @param      len  at least 1
 * @param      law  one of ::ZspG711Law
 * @retval zspStsNullPtrErr  src or dst is null
 * @retval zspStsSizeErr     len < 1
 * @retval zspStsRangeErr    law is none of the two
 * @see ITU-T G.711, tables 1 and 2; ITU-T G.191, ulaw_compress and alaw_compress
 */
ZSPSC_API ZspStatus zspsEncode_G711_16s8u(const int16_t* src, uint8_t* dst, int32_t len,
                                          int32_t law);

/**
 * Expand code words to samples.
 *
 * mu-law gives multiples of 4, 0 to 32124 in magnitude; A-law odd multiples of 8, 8 to 32256.
 * Coding a sample again gives the same code word, but for the negative zero of mu-law, which
 * becomes the positive one.
 *
 * @param[in]  src  len code words
 * @param[out] dst  len samples
 * @param      len  at least 1
 * @param      law  one of ::ZspG711Law
 * @retval zspStsNullPtrErr  src or dst is null
 * @retval zspStsSizeErr     len < 1
 * @retval zspStsRangeErr    law is none of the two
 * @see ITU-T G.711, tables 1 and 2; ITU-T G.191, ulaw_expand and alaw_expand
 */
ZSPSC_API ZspStatus zspsDecode_G711_8u16s(const uint8_t* src, int16_t* dst, int32_t len,
                                          int32_t law);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* G.722 sub-band ADPCM                                                                           */

/**
 * @defgroup zspsc_g722 G.722 sub-band ADPCM
 *
 * The parts of the ITU-T G.722 coder for 7 kHz speech. A 64 kbit/s encoder is zspsQMFEncode and
 * then zspsSBADPCMEncode; a decoder is zspsSBADPCMDecode in one of three modes and then
 * zspsQMFDecode. Between them go pairs of words, one pair for two 16 kHz samples: element 2k is the
 * lower band's value or code, element 2k+1 the higher band's. A byte of the usual packed stream is
 * I_H * 64 + I_L.
 *
 * Encoder and decoder have the same kind of state, and each needs one of its own: a buffer of 144
 * bytes at any address, of which the record takes a part that begins at the first 16-byte boundary.
 * It may be copied to an address with the same remainder modulo 16. Each filter needs a delay line
 * of its own: 24 words, cleared by the caller before the first call.
 *
 * Blocks may be of any even length. One call gives the same as several calls that divide its
 * samples between them. dst may be src, otherwise they must not overlap. The two filters together
 * delay a signal by 22 samples of 16 kHz.
 * @{
 */

/**
 * The size of an encoder's state.
 *
 * @param[out] size  144
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsSBADPCMEncodeStateSize_G722_16s(int32_t* size);

/**
 * As zspsSBADPCMEncodeStateSize_G722_16s(), for a decoder.
 *
 * @param[out] size  144
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsSBADPCMDecodeStateSize_G722_16s(int32_t* size);

/**
 * Start an encoder: all memories 0, the scale factors 32 (lower band) and 8 (higher band).
 *
 * @param[out] state  144 bytes at any address
 * @retval zspStsNullPtrErr  state is null
 */
ZSPSC_API ZspStatus zspsSBADPCMEncodeInit_G722_16s(void* state);

/**
 * As zspsSBADPCMEncodeInit_G722_16s(), for a decoder.
 *
 * @param[out] state  144 bytes at any address
 * @retval zspStsNullPtrErr  state is null
 */
ZSPSC_API ZspStatus zspsSBADPCMDecodeInit_G722_16s(void* state);

/**
 * Encode sub-band samples.
 *
 * @param[in]     src    len words, pairs (xL, xH); all 16-bit values are accepted
 * @param[out]    dst    len words, pairs (I_L, I_H) of 0..63 and 0..3; may be src
 * @param         len    at least 2, even
 * @param[in,out] state  as initialised
 * @retval zspStsNullPtrErr  src, dst or state is null
 * @retval zspStsSizeErr     len < 1 or odd
 * @see ITU-T G.722, clause 6.2
 */
ZSPSC_API ZspStatus zspsSBADPCMEncode_G722_16s(const int16_t* src, int16_t* dst, int32_t len,
                                               void* state);

/**
 * Decode sub-band codes.
 *
 * The mode chooses how many bits of I_L form the output; what the state learns is the same in all.
 *
 * @param[in]     src    len words, pairs (I_L, I_H), of which the lowest 6 and 2 bits count
 * @param[out]    dst    len words, pairs (rL, rH) of 15 bits, -16384..16383; may be src
 * @param         len    at least 2, even
 * @param         mode   1: 64 kbit/s, all six bits of I_L; 2: 56 kbit/s, the upper five; any other
 *                       value: 48 kbit/s, the upper four
 * @param[in,out] state  as initialised
 * @retval zspStsNullPtrErr  src, dst or state is null
 * @retval zspStsSizeErr     len < 1 or odd
 * @see ITU-T G.722, clause 6.2
 */
ZSPSC_API ZspStatus zspsSBADPCMDecode_G722_16s(const int16_t* src, int16_t* dst, int32_t len,
                                               int16_t mode, void* state);

/**
 * Put a decoder back in step after lost blocks have been concealed.
 *
 * Lower band: the zero predictor's coefficients and differences become 0; low becomes its
 * reconstructed signal, and half of it the partially reconstructed one; x becomes its estimate, and
 * half of it the zero predictor's part; the pole predictor's coefficients stay. Higher band: the
 * logarithmic scale factor is halved, and the linear one follows it.
 *
 * @param[in]     low    the last two concealed values of the lower band, the older first
 * @param         x      estimate of the lower band's next value
 * @param         reset  not 0: the scale factors of both bands start anew instead
 * @param[in,out] state  as initialised
 * @retval zspStsNullPtrErr     low or state is null
 * @retval zspStsCodecRangeErr  the logarithmic scale factor is none that a decoder can reach. The
 *                              lower band has been set and the factor halved by then, but neither
 *                              has the linear scale factor followed nor the reset been done.
 */
ZSPSC_API ZspStatus zspsSBADPCMDecodeStateUpdate_G722_16s(const int16_t* low, int16_t x,
                                                          int32_t reset, void* state);

/**
 * Split 16 kHz samples into a lower and a higher band of 8 kHz: the transmit filter.
 *
 * @param[in]     src        len samples
 * @param[out]    dst        len words, pairs (xL, xH) of 15 bits, -16384..16383; may be src
 * @param         len        at least 2, even
 * @param[in,out] delayLine  24 words; holds the last 24 samples, the oldest first
 * @retval zspStsNullPtrErr  src, dst or delayLine is null
 * @retval zspStsSizeErr     len < 1 or odd
 * @see ITU-T G.722, clause 5
 */
ZSPSC_API ZspStatus zspsQMFEncode_G722_16s(const int16_t* src, int16_t* dst, int32_t len,
                                           int16_t* delayLine);

/**
 * Join a lower and a higher band of 8 kHz to 16 kHz samples: the receive filter.
 *
 * @param[in]     src        len words, pairs (rL, rH); all 16-bit values are accepted
 * @param[out]    dst        len samples, saturated; may be src
 * @param         len        at least 2, even
 * @param[in,out] delayLine  24 words; holds the last twelve sat16(rL + rH), sat16(rL - rH), the
 *                           oldest first
 * @retval zspStsNullPtrErr  src, dst or delayLine is null
 * @retval zspStsSizeErr     len < 1 or odd
 * @see ITU-T G.722, clause 5
 */
ZSPSC_API ZspStatus zspsQMFDecode_G722_16s(const int16_t* src, int16_t* dst, int32_t len,
                                           int16_t* delayLine);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* G.726 ADPCM                                                                                    */

/**
 * @defgroup zspsc_g726 G.726 ADPCM
 *
 * ITU-T G.726 adaptive differential PCM for one channel, at 16, 24, 32 and 40 kbit/s. Encoder and
 * decoder are independent: ask for the state's size, provide a buffer of that size at any address,
 * initialise it, then code blocks of any length. A stream gives the same result however it is
 * divided into blocks. The state holds no pointers: it may be moved and copied bytewise, and a copy
 * goes on by itself. Initialising it again restarts the coder.
 *
 * A code word takes one byte. It stands in the low 2, 3, 4 or 5 bits, the upper bits are zero; its
 * top bit is the sign of the coded difference.
 * @{
 */

/** The rates that the initialisers accept. */
typedef enum ZspG726Rate {
    zspG726Rate16 = 17, /**< 16 kbit/s, 2-bit code words */
    zspG726Rate24 = 22, /**< 24 kbit/s, 3-bit code words */
    zspG726Rate32 = 23, /**< 32 kbit/s, 4-bit code words */
    zspG726Rate40 = 24  /**< 40 kbit/s, 5-bit code words */
} ZspG726Rate;

/** What the decoder writes. */
typedef enum ZspG726Law {
    zspG726LawMu = 0,    /**< G.711 mu-law code words, 0..255 */
    zspG726LawA = 1,     /**< G.711 A-law code words with the even bits inverted, 0..255 */
    zspG726LawLinear = 2 /**< 14-bit uniform PCM, -8192..8191 */
} ZspG726Law;

/**
 * Size of an encoder's state.
 *
 * @param[out] size  88, in bytes
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsEncodeGetStateSize_G726_16s8u(int32_t* size);

/**
 * Start an encoder, or start it again.
 *
 * @param[out] state  a buffer of the size that zspsEncodeGetStateSize_G726_16s8u() reports, at any
 *                    address
 * @param      rate   one of ::ZspG726Rate
 * @retval zspStsNullPtrErr  state is null
 * @retval zspStsRangeErr    rate is none of the four
 */
ZSPSC_API ZspStatus zspsEncodeInit_G726_16s8u(void* state, int32_t rate);

/**
 * Encode a block of samples.
 *
 * @param[in,out] state  an initialised encoder
 * @param[in]     src    len samples of uniform PCM, 14 bits in -8192..8191; they are used as they
 *                       are: a 16-bit sample is to be shifted right by 2 before
 * @param[out]    dst    len code words, one per byte, right-aligned
 * @param         len    at least 1; a negative one does nothing and is no error
 * @retval zspStsNullPtrErr  state, src or dst is null
 * @retval zspStsSizeErr     len is 0
 * @see ITU-T G.726, clause 2
 */
ZSPSC_API ZspStatus zspsEncode_G726_16s8u(void* state, const int16_t* src, uint8_t* dst,
                                          int32_t len);

/**
 * Size of a decoder's state.
 *
 * @param[out] size  92, in bytes
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsDecodeGetStateSize_G726_8u16s(int32_t* size);

/**
 * Start a decoder, or start it again.
 *
 * @param[out] state  a buffer of the size that zspsDecodeGetStateSize_G726_8u16s() reports, at any
 *                    address
 * @param      rate   one of ::ZspG726Rate
 * @param      law    one of ::ZspG726Law
 * @retval zspStsNullPtrErr  state is null
 * @retval zspStsRangeErr    rate is none of the four, or law none of the three
 */
ZSPSC_API ZspStatus zspsDecodeInit_G726_8u16s(void* state, int32_t rate, int32_t law);

/**
 * Decode a block of code words.
 *
 * The uniform output is the reconstructed signal, limited to 14 bits. The G.711 output is adjusted
 * so that coding it again with the same rate gives the same code words, however often (synchronous
 * tandem coding): the code word moves by one step where that is needed. At the largest and the
 * smallest code word there is no further step, and it stays. mu-law has two zeros: on the way up
 * the step after the negative zero (0x7f) is the positive one (0xff), on the way down the positive
 * zero is followed by 0x7e, past the negative one.
 *
 * @param[in,out] state  an initialised decoder
 * @param[in]     src    len code words, one per byte, right-aligned; a byte with a bit set above
 *                       the code word is not checked for, and what it gives is undefined
 * @param[out]    dst    len samples or G.711 code words, as the law of the initialisation says
 * @param         len    at least 1; a negative one does nothing and is no error
 * @retval zspStsNullPtrErr  state, src or dst is null
 * @retval zspStsSizeErr     len is 0
 * @see ITU-T G.726, clause 3
 */
ZSPSC_API ZspStatus zspsDecode_G726_8u16s(void* state, const uint8_t* src, int16_t* dst,
                                          int32_t len);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* G.729 filters and conversions                                                                  */

/**
 * @defgroup zspsc_g729 G.729 filters and conversions
 *
 * The high-pass filter and the LSP-to-LSF conversion of ITU-T G.729, in the Recommendation's fixed-
 * point arithmetic. The filter's state lies where the caller put it, at any address, and may be
 * copied; encoder and decoder need one each.
 * @{
 */

/**
 * The size of a high-pass filter's state.
 *
 * @param[out] size  24
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsHighPassFilterSize_G729(int32_t* size);

/**
 * As zspsHighPassFilterSize_G729(): the high-pass filter of ITU-T G.729.1 has the same size.
 *
 * @param[out] size  24
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsFilterHighpassGetStateSize_G7291_16s(int32_t* size);

/**
 * As zspsHighPassFilterSize_G729(): AMR-WB's adaptive codebook decoding has the same size.
 *
 * @param[out] size  24
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsAdaptiveCodebookDecodeGetSize_AMRWB_16s(int32_t* size);

/**
 * Start a high-pass filter: its memory cleared, its coefficients kept.
 *
 *   y[n] = a1 y[n-1] + a2 y[n-2] + b0 x[n] + b1 x[n-1] + b2 x[n-2]
 *
 * The Recommendation has 4096, 7807, -3733, 1899, -3798, 1899 (Q12) before the encoder, which also
 * halves the signal, and 8192, 15836, -7667, 7699, -15398, 7699 (Q13) after the decoder.
 *
 * @param[in]  coeffs  six words a0, a1, a2, b0, b1, b2; a0 is not used
 * @param[out] state   24 bytes at any address
 * @retval zspStsNullPtrErr  coeffs or state is null
 * @see ITU-T G.729, clauses 3.1 and 4.2.5
 */
ZSPSC_API ZspStatus zspsHighPassFilterInit_G729(const int16_t* coeffs, void* state);

/**
 * Filter samples, in place. Blocks may be of any length; the filter goes on from call to call.
 *
 * The sum is a 32-bit word and wraps; the coefficients of the Recommendation never make it. The
 * output that is kept for the recursion is the sum shifted left by 16 - scaleFactor, saturated, one
 * step early at the top: the greatest sum that could be shifted, 2^27 - 1 or 2^28 - 1, gives
 * 2^31 - 1 already.
 *
 * @param[in,out] srcDst       len samples
 * @param         len          at least 1
 * @param         scaleFactor  12: coefficients in Q12; 13: coefficients in Q13, and the output is
 *                             doubled. Output is rounded and saturated.
 * @param[in,out] state        as initialised
 * @retval zspStsNullPtrErr     srcDst or state is null
 * @retval zspStsSizeErr        len < 1
 * @retval zspStsScaleRangeErr  scaleFactor is neither 12 nor 13
 * @see ITU-T G.729, clauses 3.1 and 4.2.5
 */
ZSPSC_API ZspStatus zspsHighPassFilter_G729_16s_ISfs(int16_t* srcDst, int32_t len,
                                                     int32_t scaleFactor, void* state);

/**
 * Convert ten line spectral pairs to angular frequencies: arc cosines, interpolated on a grid of 64
 * points and truncated.
 *
 * Input that is not ordered gives frequencies without meaning, and -32768 wraps to -25736.
 *
 * @param[in]  src  ten cosines in Q15, the greatest (lowest frequency) first
 * @param[out] dst  ten frequencies in radians, Q13, 0..25736; may be src, otherwise must not
 *                  overlap it
 * @retval zspStsNullPtrErr  src or dst is null
 * @see ITU-T G.729, clause 3.2.4
 */
ZSPSC_API ZspStatus zspsLSPToLSF_G729_16s(const int16_t* src, int16_t* dst);

/**
 * Convert ten line spectral pairs to frequencies in parts of the sampling rate, rounded instead of
 * truncated.
 *
 * @param[in]  src  ten cosines in Q15, the greatest (lowest frequency) first
 * @param[out] dst  ten frequencies in Q15, 0..16384 (half the sampling rate); may be src, otherwise
 *                  must not overlap it
 * @retval zspStsNullPtrErr  src or dst is null
 * @see ITU-T G.729, clause 3.2.4
 */
ZSPSC_API ZspStatus zspsLSPToLSF_Norm_G729_16s(const int16_t* src, int16_t* dst);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* GSM-AMR voice activity detection and DTX                                                       */

/**
 * @defgroup zspsc_gsmamr GSM-AMR voice activity detection and DTX
 *
 * In the encoder's order: the open-loop pitch search, the detector, the handler with the detector's
 * flag; every frame goes into the encoder's buffer. The records are the caller's: plain data that
 * may be copied, at any address. Frames are 160 samples of 8 kHz linear PCM, 20 ms.
 *
 * Both detectors expect what the encoder's input stage gives, not the microphone's signal: halved,
 * and high-passed at 80 Hz (3GPP TS 26.090, clause 5.1). With other levels the noise estimates
 * and the power thresholds do not fit.
 *
 * Words of flags hold those of the last 15 frames, the newest in 0x4000, the oldest in 1.
 * @{
 */

/** State of zspsVAD1_GSMAMR_16s(), 116 bytes. Before the first frame the caller sets old_level,
 *  ave_level and bckr_est to 150 in every band, corr_hp_fast to 13106 and all else to 0. Bands
 *  begin at 0, 250, 500, 750, 1000, 1500, 2000, 2500 and 3000 Hz. */
typedef struct ZspVad1State {
    int16_t sub_level[9];       /**< level of the last fifth of the previous frame */
    int16_t old_level[9];       /**< level of the previous frame */
    int16_t ave_level[9];       /**< averaged level, for the stationarity estimate */
    int16_t bckr_est[9];        /**< noise estimate */
    int16_t a_data5[3][2];      /**< memories of the 5th-order half-band splits */
    int16_t a_data3[5];         /**< memories of the 3rd-order half-band splits */
    int16_t burst_count;        /**< length of the speech burst, frames */
    int16_t hang_count;         /**< frames left of the hangover */
    int16_t stat_count;         /**< stationarity counter, 20 down to 0 */
    int16_t vadreg;             /**< flags: the bands stood out from the noise */
    int16_t complex_high;       /**< flags: corr_hp_fast above 0.6 */
    int16_t complex_low;        /**< flags: corr_hp_fast above 0.5 */
    int16_t complex_hang_timer; /**< frames in a row with corr_hp_fast at 0.7 and above */
    int16_t complex_hang_count; /**< frames left of the hangover of complex signals */
    int16_t complex_warning;    /**< 1 when the background may be a complex signal */
    int16_t corr_hp_fast;       /**< smoothed high-pass correlation, Q15 */
    int16_t pitch;              /**< flags: stable pitch; written by the caller */
} ZspVad1State;

/** The earlier name of ::ZspVad1State. */
typedef ZspVad1State Vad1State;

/**
 * Voice activity detector, option 1, one frame.
 *
 * Before the call the caller's pitch analysis shifts state->pitch and the tone flags right by one
 * and sets 0x4000 in them when it found a stable pitch and a tone.
 *
 * @param[in]     src         200 samples, of which those from src[40] on are new and go through
 *                            the filter bank; the first 40 are the last 40 of the call before, and
 *                            the power is that of src[0..159]. In the encoder the last 40 are the
 *                            look-ahead.
 * @param[in,out] state       the detector's record
 * @param[out]    vadFlag     1 for speech, otherwise 0
 * @param         tone        word of tone flags; only the lower 16 bits are used
 * @param         bestCorrHp  normalised high-pass correlation of the open-loop pitch search, Q15
 * @retval zspStsNullPtrErr  src, state or vadFlag is null
 * @see 3GPP TS 26.094, option 1
 */
ZSPSC_API ZspStatus zspsVAD1_GSMAMR_16s(const int16_t* src, ZspVad1State* state, int16_t* vadFlag,
                                        int32_t tone, int16_t bestCorrHp);

/**
 * One frame of the transmit side's DTX handler: may this frame be comfort noise?
 *
 * A speech frame sets the hangover count to 7. Later frames count it down and stay in speech mode,
 * unless elapsed + hangover, after counting, is below 30. With the count at 0 a frame becomes
 * comfort noise with new parameters. Before the first frame the counts are 7 and 32767.
 *
 * @param[in,out] hangover  speech frames left of the hangover
 * @param[in,out] elapsed   frames since new comfort-noise parameters were possible, stops at 32767
 * @param[in,out] mode      set to 25 when the frame becomes comfort noise, otherwise kept
 * @param[out]    newSid    1 when new comfort-noise parameters are possible, otherwise 0
 * @param         vadFlag   the detector's flag; not 0 for speech
 * @retval zspStsNullPtrErr  hangover, elapsed, mode or newSid is null
 * @see 3GPP TS 26.093, transmit DTX handler
 */
ZSPSC_API ZspStatus zspsEncDTXHandler_GSMAMR_16s(int16_t* hangover, int16_t* elapsed, int16_t* mode,
                                                 int16_t* newSid, int16_t vadFlag);

/**
 * Enters one frame into the encoder's history for the averaging of comfort-noise parameters.
 *
 *   index = (index + 1) mod 8, lspHistory[10 * index ..] = lsp,
 *   logEnergyHistory[index] = log2(sum of squares / 160) / 2 in Q10
 *
 * The energy saturates at (2^31 - 1) / 2; silence is stored as -4261.
 *
 * @param[in]     speech            160 samples
 * @param[in]     lsp               10 line spectral pairs, Q15
 * @param[in,out] index             place of the newest entry, 0..7; not checked
 * @param[in,out] lspHistory        8 x 10 line spectral pairs, Q15
 * @param[in,out] logEnergyHistory  8 log energies, Q10, halved
 * @retval zspStsNullPtrErr  speech, lsp, index, lspHistory or logEnergyHistory is null
 * @see 3GPP TS 26.093, dtx_buffer
 */
ZSPSC_API ZspStatus zspsEncDTXBuffer_GSMAMR_16s(const int16_t* speech, const int16_t* lsp,
                                                int16_t* index, int16_t* lspHistory,
                                                int16_t* logEnergyHistory);

/**
 * As zspsEncDTXBuffer_GSMAMR_16s() for the decoder's history, whose log energies are not halved:
 * silence is stored as -8521.
 *
 * @param[in]     speech            160 synthesised samples
 * @param[in]     lsp               10 line spectral pairs, Q15
 * @param[in,out] index             place of the newest entry, 0..7; not checked
 * @param[in,out] lspHistory        8 x 10 line spectral pairs, Q15
 * @param[in,out] logEnergyHistory  8 log energies, Q10 (Q11 of the halved ones)
 * @retval zspStsNullPtrErr  speech, lsp, index, lspHistory or logEnergyHistory is null
 * @see 3GPP TS 26.093, decoder activity update
 */
ZSPSC_API ZspStatus zspsDecDTXBuffer_GSMAMR_16s(const int16_t* speech, const int16_t* lsp,
                                                int16_t* index, int16_t* lspHistory,
                                                int16_t* logEnergyHistory);

/**
 * State of the voice activity detector, option 2. All zero before the first frame.
 *
 * Levels and SNRs in dB are Q8. Channel energies are Q9, or Q4 in scaling state 1. The channels
 * begin at 125 Hz and get wider, from 125 to 500 Hz.
 */
typedef struct ZspVad2State {
    int32_t ch_enrg[16];         /**< smoothed channel energies */
    int32_t ch_noise[16];        /**< channel noise estimates, Q9 */
    int16_t ch_enrg_long_db[16]; /**< long-term channel energies, dB */
    int16_t pre_emp_mem;         /**< last sample, normalised, for the pre-emphasis */
    int16_t update_cnt;          /**< half-frames that counted towards a forced noise update */
    int16_t last_update_cnt;     /**< update_cnt of the half-frame before */
    int16_t hyster_cnt;          /**< half-frames without change of update_cnt */
    int16_t last_normb_shift;    /**< block shift of the half-frame before */
    int16_t shift_state;         /**< energy-scaling state, 0 or 1 */
    int16_t fupdate_flag;        /**< 1 when the last noise update was forced */
    int16_t tsnr;                /**< long-term peak SNR, dB */
    int16_t hangover;            /**< half-frames left of the hangover */
    int16_t burstcount;          /**< length of the current burst in half-frames */
    int16_t negSNRvar;           /**< variance of negative SNRs, Q8 */
    int16_t negSNRbias;          /**< what it adds to the threshold of the voice metric */
    int32_t frame_cnt;           /**< half-frames since the reset, stops at 2^31 - 1 */
} ZspVad2State;

/** The earlier name of ::ZspVad2State. */
typedef ZspVad2State Vad2State;

/**
 * Voice activity detection, option 2: sixteen FFT channels, voice metric and noise update.
 *
 * The frame's two half-frames of 80 samples are both run; the flag is 1 when either is speech.
 *
 * @param[in]     src      160 samples, all new
 * @param[in,out] state    the detector's state
 * @param[out]    vadFlag  1 for speech, otherwise 0
 * @param         ltpFlag  not 0 when the frame's long-term prediction gain was high; keeps a steady
 *                         tone from being taken for noise
 * @retval zspStsNullPtrErr  src, state or vadFlag is null
 * @see 3GPP TS 26.094, option 2
 */
ZSPSC_API ZspStatus zspsVAD2_GSMAMR_16s(const int16_t* src, ZspVad2State* state, int16_t* vadFlag,
                                        int32_t ltpFlag);

/**
 * Pre-emphasis: adds a multiple of the sample before to each sample.
 *
 *   dst[i] = sat16(src[i] + sat16((factor * src[i-1]) >> 15)), src[-1] being memory
 *
 * @param         factor  Q15; -26214 in the detector
 * @param[in]     src     len samples
 * @param[out]    dst     len samples; may be src, otherwise must not overlap it
 * @param         len     at least 1
 * @param[in,out] memory  the sample before src, then the last one of src
 * @retval zspStsNullPtrErr  src, dst or memory is null
 * @retval zspStsSizeErr     len < 1
 * @see 3GPP TS 26.094, option 2
 */
ZSPSC_API ZspStatus zspsPreemphasize_GSMAMR_16s(int16_t factor, const int16_t* src, int16_t* dst,
                                                int32_t len, int16_t* memory);

/**
 * Real FFT of 128 points in the fixed-point arithmetic of the detector.
 *
 *   X[k] = 1/64 sum x[n] e^(-2 pi i n k / 128)
 *
 * Every stage halves, rounds and saturates.
 *
 * @param[in,out] srcDst  128 samples, then the spectrum: X[0], X[64], re X[1], im X[1] ... im X[63]
 * @retval zspStsNullPtrErr  srcDst is null
 * @see 3GPP TS 26.094, option 2
 */
ZSPSC_API ZspStatus zspsFFTFwd_RToPerm_GSMAMR_16s_I(int16_t* srcDst);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* AMR-WB voice activity detection                                                                */

/**
 * @defgroup zspsc_amrwb_vad AMR-WB voice activity detection
 *
 * The record is the caller's: plain data that may be copied, at any address. Init makes it ready
 * for the first frame; the word of tone flags is kept outside of it.
 * @{
 */

/** State of zspsVAD_AMRWB_16s(), 172 bytes. Bands begin at 0, 200, 400, 600, 800, 1200, 1600, 2000,
 *  2400, 3200, 4000 and 4800 Hz. */
typedef struct ZspVadWbState {
    int16_t bckr_est[12];  /**< noise estimate */
    int16_t ave_level[12]; /**< averaged level, for the stationarity estimate */
    int16_t old_level[12]; /**< level of the previous frame */
    int16_t sub_level[12]; /**< level of the last three quarters of the previous frame */
    int16_t a_data5[5][2]; /**< memories of the 5th-order half-band splits */
    int16_t a_data3[6];    /**< memories of the 3rd-order half-band splits */
    int16_t burst_count;   /**< length of the speech burst, frames */
    int16_t hang_count;    /**< frames left of the hangover */
    int16_t stat_count;    /**< stationarity counter, 20 down to 0 */
    int16_t vadreg;       /**< 15 flags, the newest in 0x4000: the bands stood out from the noise */
    int16_t sp_est_cnt;   /**< frames of the running estimate of the speech level */
    int16_t sp_max;       /**< loudest active frame of that estimate */
    int16_t sp_max_cnt;   /**< active frames of that estimate */
    int16_t speech_level; /**< estimated speech level */
    int32_t prev_pow_sum; /**< twice the sum of squares of the previous frame */
    int16_t energy_level[12]; /**< band levels of the last frame */
} ZspVadWbState;

/** The earlier name of ::ZspVadWbState. */
typedef ZspVadWbState VadWbState;

/**
 * Size of the detector's record.
 *
 * @param[out] size  172
 * @retval zspStsNullPtrErr  size is null
 */
ZSPSC_API ZspStatus zspsVADGetSize_AMRWB_16s(int32_t* size);

/**
 * Makes the record ready for the first frame: bckr_est, ave_level and old_level 150 in every band,
 * speech_level 2050, all else 0. Only stat_count stays as it is: a caller who wants a defined start
 * zeroes the record first.
 *
 * @param[in,out] state  the detector's record
 * @retval zspStsNullPtrErr  state is null
 */
ZSPSC_API ZspStatus zspsVADInit_AMRWB_16s(ZspVadWbState* state);

/**
 * Voice activity detector, one frame.
 *
 * Before the call the caller's pitch analysis shifts the tone flags right by one and sets 0x4000
 * when it found a tone. When the power of this frame and the last one is low, the two newest flags
 * are cleared, and the sign.
 *
 * The threshold of the decision falls with the noise and rises when speech is hardly louder. With
 * ilog2(x) = -log2(x / 2^31) in Q10 (31744 for 1 and less), noise a sixteenth of the sum of
 * bckr_est[1..11], base the same as a multiple of 8, and all products truncated:
 *
 *   t = max(204, 768 + 1509 (ilog2(noise) - 31744) / 2^15
 *                + clamp(-96 - 1339 (ilog2(speech_level - base) - 22527) / 2^15, -96, 96))
 *
 * after speech_level has been raised to base. Burst and hangover lengths, in frames, follow from
 * the same threshold: 8 + 297 (t - 768) / 2^15 and max(2, 12 - 1110 (t - 217) / 2^15).
 *
 * @param[in]     frame    256 samples of the 12.8 kHz core signal, 20 ms: high-passed at 50 Hz and
 *                         pre-emphasised by 1 - 0.68 z^-1, as the encoder's input stage gives it
 * @param[in,out] state    the detector's record
 * @param[in,out] tone     word of 15 tone flags, the newest in 0x4000
 * @param[out]    vadFlag  1 for speech, otherwise 0
 * @retval zspStsNullPtrErr  frame, state, tone or vadFlag is null
 * @see 3GPP TS 26.194
 */
ZSPSC_API ZspStatus zspsVAD_AMRWB_16s(const int16_t* frame, ZspVadWbState* state, int16_t* tone,
                                      int16_t* vadFlag);

/**
 * The band levels of the last frame.
 *
 * @param[in]  state   the detector's record
 * @param[out] levels  12 levels, from the lowest band up
 * @retval zspStsNullPtrErr  state or levels is null
 */
ZSPSC_API ZspStatus zspsVADGetEnergyLevel_AMRWB_16s(const ZspVadWbState* state, int16_t* levels);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* AMR-WB immittance spectral frequencies                                                         */

/**
 * @defgroup zspsc_amrwb_isf AMR-WB immittance spectral frequencies
 *
 * Immittance spectral frequencies (ISF) of AMR-WB: 0..16383 stands for 0..6400 Hz, a vector has 16
 * elements in ascending order, and the last one is kept at half scale. Immittance spectral pairs
 * (ISP) are their cosines, Q15. No state.
 * @{
 */

/**
 * Immittance spectral frequencies to pairs, by interpolation in a cosine table of 128 steps.
 *
 *   isp[i] = cos(pi isf[i] / 16384), with 2 isf[len-1] in place of the last element
 *
 * Frequencies outside of 0..16383 are limited to it, the last one after its doubling.
 *
 * @param[in]  isf  len frequencies
 * @param[out] isp  len pairs, Q15; may be isf, otherwise must not overlap it
 * @param      len  at least 1, 16 in the codec
 * @retval zspStsNullPtrErr  isf or isp is null
 * @retval zspStsSizeErr     len < 1
 * @see 3GPP TS 26.190
 */
ZSPSC_API ZspStatus zspsISFToISP_AMRWB_16s(const int16_t* isf, int16_t* isp, int32_t len);

/**
 * Immittance spectral pairs to frequencies, the inverse of zspsISFToISP_AMRWB_16s().
 *
 *   isf[i] = acos(isp[i]) 16384 / pi, the last element halved
 *
 * The table's steps are walked through from the last but one element to the first, upwards in the
 * cosine, and for the last element by itself. The pairs before the last are meant to descend; one
 * that is smaller than a pair after it is converted in that pair's step, with saturation.
 *
 * @param[in]  isp  len pairs, Q15, any values
 * @param[out] isf  len frequencies, 0..16384, the last one 0..8192, where the pairs descend; may be
 *                  isp, otherwise must not overlap it
 * @param      len  at least 1, 16 in the codec
 * @retval zspStsNullPtrErr  isp or isf is null
 * @retval zspStsSizeErr     len < 1
 * @see 3GPP TS 26.190
 */
ZSPSC_API ZspStatus zspsISPToISF_Norm_AMRWB_16s(const int16_t* isp, int16_t* isf, int32_t len);

/**
 * Quantise the frequencies of a comfort-noise (SID) frame.
 *
 * The mean is taken off, and elements 0-1, 2-4, 5-7, 8-11 and 12-15 go each to the codevector of
 * least squared error: 64, 64, 64, 32 and 32 codevectors, 28 bits in all. Errors saturate at
 * 2^31 - 1; of equal ones the first wins.
 *
 * @param[in]  isf        16 frequencies, any values
 * @param[out] quantised  16 frequencies as zspsISFQuantDecodeDTX_AMRWB_16s() gives them; may be
 *                        isf, otherwise must not overlap it
 * @param[out] indices    5 indices: 0..63, 0..63, 0..63, 0..31, 0..31
 * @retval zspStsNullPtrErr  isf, quantised or indices is null
 * @see 3GPP TS 26.190 and TS 26.192, quantisation of the comfort-noise ISFs
 */
ZSPSC_API ZspStatus zspsISFQuantDTX_AMRWB_16s(const int16_t* isf, int16_t* quantised,
                                              int16_t* indices);

/**
 * Decode the frequencies of a comfort-noise (SID) frame.
 *
 * The mean is added to the five codevectors; then elements 0 to 14 are raised, from the first on,
 * to at least 128 and to at least 128 above the element before.
 *
 * @param[in]  indices  5 indices: 6, 6, 6, 5 and 5 bits count, higher ones are ignored
 * @param[out] isf      16 frequencies; must not overlap indices
 * @retval zspStsNullPtrErr  indices or isf is null
 * @see 3GPP TS 26.190 and TS 26.192, quantisation of the comfort-noise ISFs
 */
ZSPSC_API ZspStatus zspsISFQuantDecodeDTX_AMRWB_16s(const int16_t* indices, int16_t* isf);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* Echo cancellation: sub-band filter bank                                                        */

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

/* ---------------------------------------------------------------------------------------------- */
/* Echo cancellation: sub-band controller                                                         */

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

/* ---------------------------------------------------------------------------------------------- */
/* Echo cancellation: sub-band filters                                                            */

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

/* ---------------------------------------------------------------------------------------------- */
/* Echo cancellation: disabling-tone detector                                                     */

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
 * tone but keeps the count. Smoothed powers and resonator outputs below the smallest normal float
 * are taken as zero.
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

/* ---------------------------------------------------------------------------------------------- */
/* G.169 automatic level control                                                                  */

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
