/**
 * @file zspsc/g711.h
 * @brief G.711 companding.
 */
#ifndef ZSPSC_G711_H
#define ZSPSC_G711_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

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

#ifdef __cplusplus
}
#endif

#endif
