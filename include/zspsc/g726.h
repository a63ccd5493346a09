/**
 * @file zspsc/g726.h
 * @brief G.726 ADPCM.
 */
#ifndef ZSPSC_G726_H
#define ZSPSC_G726_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

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

#ifdef __cplusplus
}
#endif

#endif
