/**
 * @file zspvoice/decoder.h
 * @brief Decoder.
 */
#ifndef ZSPVOICE_DECODER_H
#define ZSPVOICE_DECODER_H

#include "encoder.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspv_decoder Decoder
 *
 * A receiver's clock asks for one frame per frame time: zspvDecode() with what came, or
 * zspvConceal(). The decoder is always told what came, it never guesses that from a length.
 * @{
 */

/** A decoder. Its address is that of the memory it was built in. */
typedef struct ZspvDecoder ZspvDecoder;

/**
 * Bytes that a decoder needs.
 *
 * @param[in]  codec   a record of this library
 * @param[in]  params  may be null for the defaults
 * @param[out] size    bytes
 * @retval zspStsNullPtrErr  codec or size is null
 * @retval zspStsSizeErr     params->structSize is not plausible
 * @retval zspStsRangeErr    as for zspvEncoderGetSize()
 */
ZSPV_API ZspStatus zspvDecoderGetSize(const ZspvCodec* codec, const ZspvParams* params,
                                      int32_t* size);

/**
 * Build a decoder.
 *
 * @param[out] memory    at any address
 * @param      capacity  its bytes, at least what zspvDecoderGetSize() reports
 * @param[in]  codec     a record of this library
 * @param[in]  params    may be null for the defaults
 * @param[out] decoder   the decoder, at memory
 * @retval zspStsNullPtrErr  memory, codec or decoder is null
 * @retval zspStsSizeErr     capacity is too small, or params->structSize is not plausible
 * @retval zspStsBadArgErr   as for zspvEncoderGetSize()
 * @retval zspStsRangeErr    as for zspvEncoderGetSize()
 */
ZSPV_API ZspStatus zspvDecoderInit(void* memory, int32_t capacity, const ZspvCodec* codec,
                                   const ZspvParams* params, ZspvDecoder** decoder);

/**
 * Build a decoder in memory of malloc().
 *
 * @param[in]  codec    a record of this library
 * @param[in]  params   may be null for the defaults
 * @param[out] decoder  to be given to zspvDecoderDestroy()
 * @retval zspStsNullPtrErr   codec or decoder is null
 * @retval zspStsSizeErr      params->structSize is not plausible
 * @retval zspStsBadArgErr    as for zspvEncoderGetSize()
 * @retval zspStsRangeErr     as for zspvEncoderGetSize()
 * @retval zspStsMemAllocErr  there is no memory
 */
ZSPV_API ZspStatus zspvDecoderCreate(const ZspvCodec* codec, const ZspvParams* params,
                                     ZspvDecoder** decoder);

/**
 * Free what zspvDecoderCreate() made.
 *
 * @param[in] decoder  a decoder; may be null
 */
ZSPV_API void zspvDecoderDestroy(ZspvDecoder* decoder);

/**
 * Start again with the settings in force.
 *
 * @param[in,out] decoder  a decoder
 * @retval zspStsNullPtrErr  decoder is null
 */
ZSPV_API ZspStatus zspvDecoderReset(ZspvDecoder* decoder);

/**
 * Decode one frame, or a block of a codec without frames.
 *
 * A frame without bytes (no data, lost), and a damaged one of a codec that cannot use it, are
 * success: the decoder gives comfort noise or concealment, as zspvConceal() does. Bytes that come
 * with these two kinds are not looked at. PCMU, PCMA, G722 and G726 use damaged frames as they are.
 *
 * Without loss the output is exactly that of the codec's standard. After a gap the first samples
 * of these four, 3.75 ms at most, are overlapped with the end of what was concealed.
 *
 * @param[in,out] decoder   a decoder
 * @param         kind      what came
 * @param[in]     bytes     length bytes; may be null if length is 0
 * @param         length    of the coded frame; for a codec without frames, any whole number of
 *                          steps. 0 only for kinds without bytes
 * @param[out]    samples   the decoded frame
 * @param         capacity  of samples
 * @param[out]    count     samples written; with zspStsSizeErr for the capacity, what it takes
 * @retval zspStsNullPtrErr     decoder, samples or count is null, or bytes with a length
 * @retval zspStsSizeErr        length is not that of a frame, or capacity too small
 * @retval zspStsCodecRangeErr  kind is none, or the frame is of a reserved type
 */
ZSPV_API ZspStatus zspvDecode(ZspvDecoder* decoder, ZspvFrameKind kind, const uint8_t* bytes,
                              int32_t length, int16_t* samples, int32_t capacity, int32_t* count);

/**
 * One nominal frame in place of one that did not come. With valid arguments it cannot fail, any
 * number of times in a row.
 *
 * PCMU, PCMA, G722 and G726 repeat the pitch waveform as ITU-T G.711 Appendix I does, but without
 * its delay: softer by 20 % per 10 ms after the first 10 ms, silent after 60 ms.
 *
 * @param[in,out] decoder   a decoder
 * @param[out]    samples   frameSamples of the codec
 * @param         capacity  of samples
 * @param[out]    count     samples written; with zspStsSizeErr, what it takes
 * @retval zspStsNullPtrErr  an argument is null
 * @retval zspStsSizeErr     capacity is too small
 */
ZSPV_API ZspStatus zspvConceal(ZspvDecoder* decoder, int16_t* samples, int32_t capacity,
                               int32_t* count);

/**
 * Tell the decoder of a codec whose frames do not (G.722) which rate they have, from the next
 * frame on.
 *
 * @param[in,out] decoder  a decoder
 * @param         bitRate  bit/s
 * @retval zspStsNullPtrErr  decoder is null
 * @retval zspStsRangeErr    bitRate is none of the codec's
 */
ZSPV_API ZspStatus zspvDecoderSetBitRate(ZspvDecoder* decoder, int32_t bitRate);

/**
 * The bit rate of the last frame.
 *
 * @param[in]  decoder  a decoder
 * @param[out] bitRate  bit/s
 * @retval zspStsNullPtrErr  an argument is null
 */
ZSPV_API ZspStatus zspvDecoderGetBitRate(const ZspvDecoder* decoder, int32_t* bitRate);

/**
 * The codec of a decoder.
 *
 * @param[in] decoder  a decoder
 * @return the record that it was built with; null for null
 */
ZSPV_API const ZspvCodec* zspvDecoderGetCodec(const ZspvDecoder* decoder);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
