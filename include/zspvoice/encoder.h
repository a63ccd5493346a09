/**
 * @file zspvoice/encoder.h
 * @brief Encoder.
 */
#ifndef ZSPVOICE_ENCODER_H
#define ZSPVOICE_ENCODER_H

#include "params.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspv_encoder Encoder
 * @{
 */

/** What a coded frame is, or what a receiver knows about one. */
typedef enum ZspvFrameKind {
    zspvFrameNoData = 0,        /**< nothing was sent, and nothing needs to be */
    zspvFrameSpeech = 1,        /**< a coded frame */
    zspvFrameSidFirst = 2,      /**< the first silence descriptor of a pause */
    zspvFrameSidUpdate = 3,     /**< a later one */
    zspvFrameSpeechDamaged = 4, /**< a speech frame with bit errors */
    zspvFrameSidDamaged = 5,    /**< a silence descriptor with bit errors */
    zspvFrameLost = 6           /**< nothing came although something was sent */
} ZspvFrameKind;

/** An encoder. Its address is that of the memory it was built in. */
typedef struct ZspvEncoder ZspvEncoder;

/**
 * Bytes that an encoder needs.
 *
 * @param[in]  codec   a record of this library
 * @param[in]  params  may be null for the defaults
 * @param[out] size    bytes
 * @retval zspStsNullPtrErr  codec or size is null
 * @retval zspStsSizeErr     params->structSize is not plausible
 * @retval zspStsBadArgErr   codec is not one of this library's records, but a copy, say
 * @retval zspStsRangeErr    bitRate is none of the codec's, or dtx is set and the codec has none
 */
ZSPV_API ZspStatus zspvEncoderGetSize(const ZspvCodec* codec, const ZspvParams* params,
                                      int32_t* size);

/**
 * Build an encoder.
 *
 * @param[out] memory    at any address
 * @param      capacity  its bytes, at least what zspvEncoderGetSize() reports
 * @param[in]  codec     a record of this library
 * @param[in]  params    may be null for the defaults
 * @param[out] encoder   the encoder, at memory
 * @retval zspStsNullPtrErr  memory, codec or encoder is null
 * @retval zspStsSizeErr     capacity is too small, or params->structSize is not plausible
 * @retval zspStsBadArgErr   as for zspvEncoderGetSize()
 * @retval zspStsRangeErr    as for zspvEncoderGetSize()
 */
ZSPV_API ZspStatus zspvEncoderInit(void* memory, int32_t capacity, const ZspvCodec* codec,
                                   const ZspvParams* params, ZspvEncoder** encoder);

/**
 * Build an encoder in memory of malloc().
 *
 * @param[in]  codec    a record of this library
 * @param[in]  params   may be null for the defaults
 * @param[out] encoder  to be given to zspvEncoderDestroy()
 * @retval zspStsNullPtrErr   codec or encoder is null
 * @retval zspStsSizeErr      params->structSize is not plausible
 * @retval zspStsBadArgErr    as for zspvEncoderGetSize()
 * @retval zspStsRangeErr     as for zspvEncoderGetSize()
 * @retval zspStsMemAllocErr  there is no memory
 */
ZSPV_API ZspStatus zspvEncoderCreate(const ZspvCodec* codec, const ZspvParams* params,
                                     ZspvEncoder** encoder);

/**
 * Free what zspvEncoderCreate() made.
 *
 * @param[in] encoder  an encoder; may be null
 */
ZSPV_API void zspvEncoderDestroy(ZspvEncoder* encoder);

/**
 * Start again with the settings in force.
 *
 * @param[in,out] encoder  an encoder
 * @retval zspStsNullPtrErr  encoder is null
 */
ZSPV_API ZspStatus zspvEncoderReset(ZspvEncoder* encoder);

/**
 * Encode one frame, or a block of a codec without frames.
 *
 * 0 bytes with success mean that nothing is to be sent for this frame.
 *
 * @param[in,out] encoder   an encoder
 * @param[in]     samples   count samples
 * @param         count     frameSamples; for a codec whose stepSamples is smaller, any multiple of
 *                          that
 * @param[out]    bytes     the coded frame
 * @param         capacity  of bytes; maxFrameBytes suffice for frameSamples, and in proportion
 * @param[out]    length    bytes written; with zspStsSizeErr for the capacity, what it takes
 * @param[out]    kind      kind of the frame; may be null
 * @retval zspStsNullPtrErr  encoder, samples, bytes or length is null
 * @retval zspStsSizeErr     count is not allowed, or capacity too small
 */
ZSPV_API ZspStatus zspvEncode(ZspvEncoder* encoder, const int16_t* samples, int32_t count,
                              uint8_t* bytes, int32_t capacity, int32_t* length,
                              ZspvFrameKind* kind);

/**
 * Change the bit rate from the next frame on.
 *
 * @param[in,out] encoder  an encoder
 * @param         bitRate  bit/s
 * @retval zspStsNullPtrErr  encoder is null
 * @retval zspStsRangeErr    bitRate is none of the codec's
 */
ZSPV_API ZspStatus zspvEncoderSetBitRate(ZspvEncoder* encoder, int32_t bitRate);

/**
 * The bit rate of the next frame.
 *
 * @param[in]  encoder  an encoder
 * @param[out] bitRate  bit/s
 * @retval zspStsNullPtrErr  an argument is null
 */
ZSPV_API ZspStatus zspvEncoderGetBitRate(const ZspvEncoder* encoder, int32_t* bitRate);

/**
 * Switch discontinuous transmission from the next frame on.
 *
 * @param[in,out] encoder  an encoder
 * @param         dtx      nonzero for on
 * @retval zspStsNullPtrErr  encoder is null
 * @retval zspStsRangeErr    dtx is nonzero and the codec has none
 */
ZSPV_API ZspStatus zspvEncoderSetDtx(ZspvEncoder* encoder, int32_t dtx);

/**
 * Whether discontinuous transmission is on.
 *
 * @param[in]  encoder  an encoder
 * @param[out] dtx      1 or 0
 * @retval zspStsNullPtrErr  an argument is null
 */
ZSPV_API ZspStatus zspvEncoderGetDtx(const ZspvEncoder* encoder, int32_t* dtx);

/**
 * Whether the last frame was active speech.
 *
 * @param[in]  encoder  an encoder
 * @param[out] active   1 or 0; 1 without a detector
 * @retval zspStsNullPtrErr  an argument is null
 */
ZSPV_API ZspStatus zspvEncoderGetActivity(const ZspvEncoder* encoder, int32_t* active);

/**
 * The codec of an encoder.
 *
 * @param[in] encoder  an encoder
 * @return the record that it was built with; null for null
 */
ZSPV_API const ZspvCodec* zspvEncoderGetCodec(const ZspvEncoder* encoder);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
