/**
 * @file zspvoice.h
 * @brief Whole voice functions for telephony and conferencing: codecs with concealment, RTP
 * payloads, comfort noise, echo cancellation, voice activity with discontinuous transmission.
 *
 * The life of an object is the same for all of them:
 *
 *     size     zspvXGetSize() says how many bytes an object with these settings needs
 *     start    zspvXInit() builds it in memory of the caller's, at any address
 *     work     any number of calls; each takes what it needs and returns a status
 *     restart  zspvXReset() forgets the signal and keeps the settings; Init again changes both
 *     end      the caller takes its memory back; there is nothing to release
 *
 * zspvXCreate() does size, malloc() and start in one call, and zspvXDestroy() frees what it made.
 * Nothing else here allocates, locks or keeps anything outside of the object: every other function
 * is safe in a real-time thread. Different objects may be used on any threads at once; calls on one
 * object are the caller's to serialise (zspvEchoRender() and zspvEchoCapture() excepted).
 *
 *     #include <zspvoice.h>
 *
 *     // One direction of a call: 20 ms of speech to an RTP payload of 160 octets, and back.
 *     int16_t speech[160], heard[160];
 *     uint8_t payload[160];
 *     int32_t octets, samples;
 *     ZspvEncoder* encoder;
 *     ZspvDecoder* decoder;
 *     const ZspvCodec* codec = zspvCodecByName("PCMU", 8000);
 *     zspvEncoderCreate(codec, NULL, &encoder);
 *     zspvDecoderCreate(codec, NULL, &decoder);
 *     zspvEncode(encoder, speech, 160, payload, sizeof payload, &octets, NULL);
 *     zspvDecode(decoder, zspvFrameSpeech, payload, octets, heard, 160, &samples);
 *
 * What holds for every function:
 *
 *  - The status is the return value: ::zspStsNoErr is success. A failed check writes nothing but
 *    the count that an output would need, where a function says so.
 *  - Checks run in the order null pointers, sizes, values. Every output has a capacity, which is
 *    checked before anything is written.
 *  - Records that settings travel in begin with structSize, which the caller sets to the size of
 *    the record as it was compiled. Zero in any other field means the default, so that
 *    `ZspvParams params = {.structSize = sizeof params};` is complete. Later versions append
 *    fields.
 *  - Samples are 16-bit linear PCM, mono, in the machine's byte order, counted at the codec's
 *    sample rate. Float samples, where they are taken, are -1..1 for full scale.
 *  - An object may be copied bytewise to another address with the same remainder modulo 16, as all
 *    blocks of malloc() have, unless its section says otherwise; the copy goes on by itself.
 */
#ifndef ZSPVOICE_H
#define ZSPVOICE_H

#include "zspsc.h"

#include <stdint.h>

/** Marks what the library exports. */
#if defined(__GNUC__) && !defined(_WIN32)
#define ZSPV_API __attribute__((visibility("default")))
#else
#define ZSPV_API
#endif

/** The version that this header belongs to; zspvGetVersion() tells that of the library. */
#define ZSPVOICE_VERSION_MAJOR 1
#define ZSPVOICE_VERSION_MINOR 0 /**< as above */
#define ZSPVOICE_VERSION_PATCH 0 /**< as above */

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------- */
/* Version                                                                                        */

/**
 * @defgroup zspv_version Version and statuses
 * @{
 */

/**
 * Version of the library.
 *
 * @return major * 10000 + minor * 100 + patch
 */
ZSPV_API int32_t zspvGetVersion(void);

/**
 * What a status means.
 *
 * @param status  any value
 * @return one English sentence, never null
 */
ZSPV_API const char* zspvStatusText(ZspStatus status);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* Codecs                                                                                         */

/**
 * @defgroup zspv_codecs Codecs
 *
 * One constant record per codec and rate that has an RTP name of its own.
 * @{
 */

/** What a codec can do. */
typedef enum ZspvCodecFlags {
    zspvCodecDtx = 1,         /**< has discontinuous transmission of its own */
    zspvCodecSid = 2,         /**< has silence descriptors of its own */
    zspvCodecConceals = 4,    /**< its standard defines the concealment of lost frames */
    zspvCodecFrameHasKind = 8 /**< the coded frame itself tells its kind and rate */
} ZspvCodecFlags;

/** A codec. The records are constant, and live as long as the library is loaded. */
typedef struct ZspvCodec {
    int32_t structSize;        /**< bytes of this record */
    const char* rtpName;       /**< RTP encoding name, "G726-32" */
    const char* family;        /**< short name for people and files, "g726", several may share it */
    const char* standard;      /**< "ITU-T G.726" */
    const char* fileExtension; /**< of raw coded files, without dot */
    const char* defaultFmtp;   /**< format parameters to offer, "" for none */
    int32_t payloadType;       /**< static RTP payload type, -1 if it is dynamic */
    int32_t sampleRate;        /**< in Hz */
    int32_t rtpClock;        /**< RTP timestamp ticks per second; G.722 has half its sample rate */
    int32_t channels;        /**< 1 */
    int32_t frameSamples;    /**< samples of a nominal frame, which zspvConceal() gives */
    int32_t stepSamples;     /**< a block is a multiple of it; equal to frameSamples for codecs
                                  that take exactly one frame per call */
    int32_t maxFrameBytes;   /**< octets of the largest coded frame of frameSamples */
    int32_t lookAhead;       /**< samples that the encoder waits for beyond its frame */
    int32_t filterDelay;     /**< samples by which encoder and decoder shift the signal besides */
    int32_t defaultPacketMs; /**< packet time when nothing is negotiated */
    int32_t flags;           /**< of ::ZspvCodecFlags */
    int32_t bitRateCount;    /**< entries of bitRates */
    const int32_t* bitRates; /**< bit/s, the default first */
} ZspvCodec;

/**
 * Number of codecs.
 *
 * @return rows of the table
 */
ZSPV_API int32_t zspvCodecCount(void);

/**
 * A codec by its place in the table.
 *
 * @param index  0 to zspvCodecCount() - 1
 * @return null for any other index
 */
ZSPV_API const ZspvCodec* zspvCodecByIndex(int32_t index);

/**
 * A codec by its RTP encoding name, as in an SDP rtpmap attribute.
 *
 * @param[in] rtpName   zero-terminated; letter case does not matter
 * @param     rtpClock  ticks per second; 0 for any
 * @return null if there is none, or rtpName is null
 */
ZSPV_API const ZspvCodec* zspvCodecByName(const char* rtpName, int32_t rtpClock);

/**
 * A codec by its static RTP payload type, RFC 3551.
 *
 * @param payloadType  0 to 127
 * @return null if there is none
 */
ZSPV_API const ZspvCodec* zspvCodecByPayloadType(int32_t payloadType);

/**
 * RTP timestamp ticks of a number of samples: samples * rtpClock / sampleRate.
 *
 * @param[in] codec    a record of this library
 * @param     samples  at least 0
 * @return -1 if codec is null or samples is negative
 */
ZSPV_API int64_t zspvCodecTicks(const ZspvCodec* codec, int64_t samples);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* Parameters                                                                                     */

/**
 * @defgroup zspv_params Parameters
 *
 * What both ends of a call agree about: the settings of a coder and of its RTP payload.
 * @{
 */

/** Parameters of a codec and its payload format. All zero but structSize: the defaults. */
typedef struct ZspvParams {
    int32_t structSize;           /**< sizeof(ZspvParams) */
    int32_t bitRate;              /**< bit/s, one of the codec's; 0 for its default */
    int32_t dtx;                  /**< nonzero: the encoder may stop sending in silence */
    int32_t noSilenceFrames;      /**< nonzero: G.723.1 annexa=no or G.729 annexb=no */
    int32_t octetAlign;           /**< AMR, AMR-WB: nonzero for the octet-aligned payload */
    int32_t modeSet;              /**< AMR, AMR-WB: bit m is mode m; 0 for all modes */
    int32_t modeChangePeriod;     /**< AMR, AMR-WB: 1 or 2 frames; 0 means 1 */
    int32_t modeChangeCapability; /**< AMR, AMR-WB: 1 or 2; 0 means 1 */
    int32_t modeChangeNeighbor;   /**< AMR, AMR-WB: nonzero: only to a neighbour in the mode set */
    int32_t crc;                  /**< AMR, AMR-WB: frame checksums (implies octetAlign) */
    int32_t robustSorting;        /**< AMR, AMR-WB (implies octetAlign) */
    int32_t interleaving;         /**< AMR, AMR-WB: frames of a group, 0 for none (octetAlign) */
    int32_t maxRed;               /**< AMR, AMR-WB: ms of redundancy; 0 no limit, -1 none */
    int32_t channels;             /**< AMR, AMR-WB: 0 means 1 */
} ZspvParams;

/**
 * Read the value of an SDP fmtp attribute (what follows the payload type).
 *
 * Spaces around semicolons, letter case of names, unknown names and empty entries are tolerated; of
 * repeated names the last one counts. What the text does not name gets the default of the RFC.
 *
 * @param[in]  rtpName  encoding name: G723, G729, AMR and AMR-WB have parameters, others none
 * @param[in]  text     zero-terminated, may be null or empty; never changed
 * @param[out] params   structSize is set by the caller; of dtx and bitRate only what the text says
 *                      is written over 0
 * @retval zspStsNullPtrErr  rtpName or params is null
 * @retval zspStsSizeErr     params->structSize is not plausible
 * @retval zspStsRangeErr    a known parameter has a value that its RFC does not allow
 * @see RFC 4856, RFC 4867, RFC 7261
 */
ZSPV_API ZspStatus zspvFmtpParse(const char* rtpName, const char* text, ZspvParams* params);

/**
 * Write parameters as the value of an SDP fmtp attribute; defaults are left out.
 *
 * @param[in]  rtpName   encoding name
 * @param[in]  params    the parameters
 * @param[out] text      zero-terminated; "" if everything is the default
 * @param      capacity  of text in bytes
 * @param[out] length    bytes without the final zero; on zspStsSizeErr for the capacity, what it
 *                       takes
 * @retval zspStsNullPtrErr  rtpName, params, text or length is null
 * @retval zspStsSizeErr     structSize is not plausible, or capacity too small
 * @retval zspStsRangeErr    a parameter that the name has is outside its range; comes before the
 *                           capacity
 */
ZSPV_API ZspStatus zspvFmtpPrint(const char* rtpName, const ZspvParams* params, char* text,
                                 int32_t capacity, int32_t* length);

/**
 * Whether two parameter records mean the same payload format, so that a call can go on without new
 * objects.
 *
 * @param[in]  rtpName  encoding name
 * @param[in]  a, b     the parameters
 * @param[out] same     1 or 0
 * @retval zspStsNullPtrErr  an argument is null
 * @retval zspStsSizeErr     a structSize is not plausible
 */
ZSPV_API ZspStatus zspvFmtpCompare(const char* rtpName, const ZspvParams* a, const ZspvParams* b,
                                   int32_t* same);

/**
 * Make the answer to an offer: what must be repeated is repeated, silence frames are on only if
 * both want them.
 *
 * @param[in]  rtpName  encoding name
 * @param[in]  offer    the peer's parameters
 * @param[in]  own      what this side wants
 * @param[out] answer   structSize is set by the caller
 * @retval zspStsNullPtrErr     an argument is null
 * @retval zspStsSizeErr        a structSize is not plausible
 * @retval zspStsRangeErr       a parameter that the name has is outside its range
 * @retval zspStsCodecRangeErr  the offer asks for what is not built, shares no mode with own, or
 *                              cannot keep to own's period of mode changes: refuse this payload
 *                              type
 * @see RFC 4867, clause 8.3; RFC 7261
 */
ZSPV_API ZspStatus zspvFmtpAnswer(const char* rtpName, const ZspvParams* offer,
                                  const ZspvParams* own, ZspvParams* answer);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* Encoder                                                                                        */

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

/* ---------------------------------------------------------------------------------------------- */
/* Decoder                                                                                        */

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

/* ---------------------------------------------------------------------------------------------- */
/* RTP payloads                                                                                   */

/**
 * @defgroup zspv_rtp RTP payloads
 *
 * Payloads are taken apart and put together without a codec's state. Payload bytes may come from
 * anywhere: every length in them is checked.
 * @{
 */

/** No mode request, in zspvUnpack() and zspvPack(). */
#define ZSPV_NO_REQUEST 15

/** What a payload holds. */
typedef struct ZspvPayloadInfo {
    int32_t structSize;  /**< set by the caller */
    int32_t frames;      /**< frames that zspvUnpack() gives */
    int32_t samples;     /**< their duration */
    int32_t bytes;       /**< of all frames, as zspvUnpack() writes them */
    int32_t hasSid;      /**< 1 if a frame is a silence descriptor */
    int32_t modeRequest; /**< of AMR and AMR-WB, else ZSPV_NO_REQUEST */
} ZspvPayloadInfo;

/** One frame of a payload. */
typedef struct ZspvFrame {
    ZspvFrameKind kind; /**< for zspvDecode() */
    int32_t offset;     /**< of its bytes in the buffer of zspvUnpack() or zspvPack() */
    int32_t length;     /**< its bytes, 0 for frames without */
    int32_t samples;    /**< its duration */
    int32_t ticks;      /**< RTP ticks after the packet's timestamp; not read by zspvPack() */
} ZspvFrame;

/**
 * What a payload holds, without taking it apart.
 *
 * @param[in]  codec    a record of this library
 * @param[in]  params   may be null for the defaults
 * @param[in]  payload  length octets
 * @param      length   0..65535; an empty payload holds no frames
 * @param[out] info     structSize is set by the caller
 * @retval zspStsNullPtrErr     codec, payload or info is null
 * @retval zspStsSizeErr        a structSize is not plausible, or length is outside or not that of
 *                              whole frames
 * @retval zspStsRangeErr       codec is not of this library, or params ask for what is not built
 * @retval zspStsCodecRangeErr  a frame is of a reserved type: drop the packet, conceal its time
 */
ZSPV_API ZspStatus zspvInspect(const ZspvCodec* codec, const ZspvParams* params,
                               const uint8_t* payload, int32_t length, ZspvPayloadInfo* info);

/**
 * Take a payload apart into coded frames, oldest first.
 *
 * Codecs without frames are cut into nominal frames; the last one may be shorter.
 *
 * @param[in]  codec          a record of this library
 * @param[in]  params         may be null for the defaults
 * @param[in]  payload        length octets
 * @param      length         as for zspvInspect()
 * @param[out] bytes          the coded frames; must not overlap payload
 * @param      byteCapacity   of bytes
 * @param[out] frames         kind and place of each frame
 * @param      frameCapacity  of frames
 * @param[out] frameCount     frames written; with zspStsSizeErr for a capacity, what it takes
 * @param[out] modeRequest    0..14, or ZSPV_NO_REQUEST; may be null
 * @retval zspStsNullPtrErr     codec, payload, bytes, frames or frameCount is null
 * @retval zspStsSizeErr        as for zspvInspect(), or a capacity is too small
 * @retval zspStsRangeErr       as for zspvInspect()
 * @retval zspStsCodecRangeErr  as for zspvInspect()
 */
ZSPV_API ZspStatus zspvUnpack(const ZspvCodec* codec, const ZspvParams* params,
                              const uint8_t* payload, int32_t length, uint8_t* bytes,
                              int32_t byteCapacity, ZspvFrame* frames, int32_t frameCapacity,
                              int32_t* frameCount, int32_t* modeRequest);

/** What a packet's RTP header needs. */
typedef struct ZspvPacketInfo {
    int32_t structSize; /**< set by the caller */
    int32_t length;     /**< octets of the payload */
    int32_t samples;    /**< duration */
    int32_t ticks;      /**< the same in RTP ticks: what the next timestamp is later by */
    int32_t marker;     /**< 1 for the first speech after silence */
} ZspvPacketInfo;

/**
 * Put coded frames together to a payload.
 *
 * Frames at the end for which nothing was sent (no data) add to the duration alone.
 *
 * @param[in]  codec        a record of this library
 * @param[in]  params       may be null for the defaults
 * @param[in]  bytes        the coded frames
 * @param[in]  frames       frameCount frames, oldest first; kind, offset and length are read, and
 *                          of frames without bytes of a codec without frames also samples, where 0
 *                          means a nominal frame
 * @param      frameCount   at least 1
 * @param      before       kind of the frame before the first one: zspvFrameNoData at the start
 * @param      modeRequest  0..14 to ask the peer for a mode, else ZSPV_NO_REQUEST
 * @param[out] payload      must not overlap bytes
 * @param      capacity     of payload
 * @param[out] info         structSize is set by the caller; with zspStsSizeErr for the capacity,
 *                          length is what it takes. A length of 0 with success: nothing to send
 * @retval zspStsNullPtrErr     codec, bytes, frames, payload or info is null
 * @retval zspStsSizeErr        a structSize is not plausible, frameCount < 1, a frame's length is
 *                              not that of a frame, the payload exceeds 65535 octets, or capacity
 *                              is too small
 * @retval zspStsRangeErr       modeRequest is not allowed, or as for zspvInspect()
 * @retval zspStsCodecRangeErr  the frames cannot stand in one payload: a kind the codec does not
 *                              have, a mode outside of the mode set, or speech after a silence
 *                              descriptor where that must be last
 */
ZSPV_API ZspStatus zspvPack(const ZspvCodec* codec, const ZspvParams* params, const uint8_t* bytes,
                            const ZspvFrame* frames, int32_t frameCount, ZspvFrameKind before,
                            int32_t modeRequest, uint8_t* payload, int32_t capacity,
                            ZspvPacketInfo* info);

/**
 * The mode that an AMR or AMR-WB encoder uses next, from what the peer asks for and what both have
 * agreed.
 *
 * A request is an upper limit: the highest mode of the set that is not above it is used, or the
 * lowest one. Without a request the mode stays. The first mode without a request is the middle one
 * of the set, the lower one of the middle two, and mode 3 where all modes are allowed.
 *
 * @param[in]  params     mode set, period and neighbour rule; may be null for the defaults
 * @param      requested  the peer's last request, or ZSPV_NO_REQUEST; 9..14 are reserved and count
 *                        as none
 * @param      current    mode in use, or -1 before the first frame
 * @param      frames     frames coded since the last change of mode; with a period of 2 a change
 *                        waits until they are an even number above 0
 * @param[out] mode       the mode to use
 * @retval zspStsNullPtrErr  mode is null
 * @retval zspStsSizeErr     params->structSize is not plausible
 * @retval zspStsRangeErr    requested is not 0..15, current not -1..14, or frames negative
 * @see RFC 4867, clause 8.1
 */
ZSPV_API ZspStatus zspvSelectMode(const ZspvParams* params, int32_t requested, int32_t current,
                                  int32_t frames, int32_t* mode);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* Comfort noise                                                                                  */

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

/* ---------------------------------------------------------------------------------------------- */
/* Re-blocker                                                                                     */

/**
 * @defgroup zspv_reblock Re-blocker
 *
 * Frames of one length from blocks of any length: push what there is, pull frames while there are.
 * @{
 */

/** A re-blocker for 16-bit samples. */
typedef struct ZspvReblock ZspvReblock;

/**
 * Bytes that a re-blocker needs.
 *
 * @param      frame  samples of a frame that is pulled, at least 1
 * @param      block  most samples pushed at once, at least 1
 * @param[out] size   bytes
 * @retval zspStsNullPtrErr  size is null
 * @retval zspStsSizeErr     frame or block is outside 1..1048576
 */
ZSPV_API ZspStatus zspvReblockGetSize(int32_t frame, int32_t block, int32_t* size);

/**
 * Build a re-blocker.
 *
 * @param[out] memory    at any address
 * @param      capacity  its bytes
 * @param      frame     as for zspvReblockGetSize()
 * @param      block     as for zspvReblockGetSize()
 * @param[out] reblock   the object, at memory
 * @retval zspStsNullPtrErr  memory or reblock is null
 * @retval zspStsSizeErr     frame, block or capacity
 */
ZSPV_API ZspStatus zspvReblockInit(void* memory, int32_t capacity, int32_t frame, int32_t block,
                                   ZspvReblock** reblock);

/**
 * Build a re-blocker in memory of malloc().
 *
 * @param      frame    as for zspvReblockGetSize()
 * @param      block    as for zspvReblockGetSize()
 * @param[out] reblock  to be given to zspvReblockDestroy()
 * @retval zspStsNullPtrErr   reblock is null
 * @retval zspStsSizeErr      frame or block is outside
 * @retval zspStsMemAllocErr  there is no memory
 */
ZSPV_API ZspStatus zspvReblockCreate(int32_t frame, int32_t block, ZspvReblock** reblock);

/**
 * Free what zspvReblockCreate() made.
 *
 * @param[in] reblock  a re-blocker; may be null
 */
ZSPV_API void zspvReblockDestroy(ZspvReblock* reblock);

/**
 * Drop what is held.
 *
 * @param[in,out] reblock  a re-blocker
 * @retval zspStsNullPtrErr  reblock is null
 */
ZSPV_API ZspStatus zspvReblockReset(ZspvReblock* reblock);

/**
 * Take samples in. Room for one block is there whenever less than a frame is held.
 *
 * @param[in,out] reblock  a re-blocker
 * @param[in]     samples  count samples
 * @param         count    0 or more
 * @retval zspStsNullPtrErr  reblock or samples is null
 * @retval zspStsSizeErr     count is negative or more than there is room for: pull first
 */
ZSPV_API ZspStatus zspvReblockPush(ZspvReblock* reblock, const int16_t* samples, int32_t count);

/**
 * Give one frame out, if a whole one is there.
 *
 * @param[in,out] reblock   a re-blocker
 * @param[out]    samples   one frame
 * @param         capacity  of samples, at least a frame
 * @param[out]    count     samples written: a frame, or 0
 * @retval zspStsNullPtrErr  an argument is null
 * @retval zspStsSizeErr     capacity is less than a frame
 */
ZSPV_API ZspStatus zspvReblockPull(ZspvReblock* reblock, int16_t* samples, int32_t capacity,
                                   int32_t* count);

/**
 * Give the rest out at the end, as one frame filled up with zeros.
 *
 * @param[in,out] reblock   a re-blocker
 * @param[out]    samples   one frame, if there was a rest
 * @param         capacity  of samples, at least a frame
 * @param[out]    count     samples of the rest without the zeros; 0 if there was none
 * @retval zspStsNullPtrErr  an argument is null
 * @retval zspStsSizeErr     capacity is less than a frame, or a whole frame is still held
 */
ZSPV_API ZspStatus zspvReblockFlush(ZspvReblock* reblock, int16_t* samples, int32_t capacity,
                                    int32_t* count);

/**
 * How much is held.
 *
 * @param[in]  reblock  a re-blocker
 * @param[out] held     samples
 * @retval zspStsNullPtrErr  an argument is null
 */
ZSPV_API ZspStatus zspvReblockGetHeld(const ZspvReblock* reblock, int32_t* held);

/** @} */

/* ---------------------------------------------------------------------------------------------- */
/* Echo canceller                                                                                 */

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

/* ---------------------------------------------------------------------------------------------- */
/* Voice activity                                                                                 */

/**
 * @defgroup zspv_activity Voice activity
 *
 * The 3GPP voice activity detectors with all that their speech encoders do around them, so that a
 * sender needs no speech encoder: pre-processing, pitch search, decision, and the schedule of
 * discontinuous transmission. Frames are 20 ms.
 *
 * The detectors are bit-exact. What goes into them is not: the encoders search the pitch of
 * perceptually weighted speech with a fixed-point filter in front, this searches the signal itself.
 * On speech, clean and in white, pink and babble noise, 97 to 100 % of the decisions are the
 * encoders'; in a car's rumble option 1 hears speech where the encoder does not.
 *
 * At 16 kHz the signal goes down to 12.8 kHz through a filter that is flat to 5.6 kHz and delays
 * decisions by 1.5 ms.
 * @{
 */

/** Which detector. */
typedef enum ZspvDetector {
    zspvDetectorAmr1 = 1, /**< GSM-AMR option 1, 8 kHz, TS 26.094 */
    zspvDetectorAmr2 = 2, /**< GSM-AMR option 2, 8 kHz, TS 26.094 */
    zspvDetectorAmrWb = 3 /**< AMR-WB, 16 kHz, TS 26.194 */
} ZspvDetector;

/** Settings of a detector. */
typedef struct ZspvActivityConfig {
    int32_t structSize; /**< sizeof(ZspvActivityConfig) */
    int32_t detector;   /**< required: one of ::ZspvDetector */
    int32_t sampleRate; /**< required: 8000, or 16000 or 12800 for AMR-WB */
    int32_t hangoverMs; /**< frames that stay active after speech, 0..2000 ms in steps of 20; this
                             is added to what the standard's decision holds by itself, and kind
                             follows it */
} ZspvActivityConfig;

/** What is known about one frame. */
typedef struct ZspvActivityInfo {
    int32_t structSize; /**< set by the caller */
    int32_t active;     /**< 1 for speech, 0 for noise */
    ZspvFrameKind kind; /**< what discontinuous transmission sends for it, TS 26.093 */
    float levelDbov;    /**< level of the frame, 0 for a full-scale square wave, -127 at least */
    float scoreDb;      /**< mean of level over noise estimate of the bands, in dB */
} ZspvActivityInfo;

/** A voice activity detector. */
typedef struct ZspvActivity ZspvActivity;

/**
 * Bytes that a detector needs.
 *
 * @param[in]  config  the settings
 * @param[out] size    bytes
 * @retval zspStsNullPtrErr  config or size is null
 * @retval zspStsSizeErr     config->structSize is not plausible
 * @retval zspStsRangeErr    a setting is outside its range
 */
ZSPV_API ZspStatus zspvActivityGetSize(const ZspvActivityConfig* config, int32_t* size);

/**
 * Build a detector.
 *
 * @param[out] memory    at any address
 * @param      capacity  its bytes
 * @param[in]  config    the settings
 * @param[out] activity  the object, at memory
 * @retval zspStsNullPtrErr  memory, config or activity is null
 * @retval zspStsSizeErr     capacity is too small, or config->structSize is not plausible
 * @retval zspStsRangeErr    a setting is outside its range
 */
ZSPV_API ZspStatus zspvActivityInit(void* memory, int32_t capacity,
                                    const ZspvActivityConfig* config, ZspvActivity** activity);

/**
 * Build a detector in memory of malloc().
 *
 * @param[in]  config    the settings
 * @param[out] activity  to be given to zspvActivityDestroy()
 * @retval zspStsNullPtrErr   config or activity is null
 * @retval zspStsSizeErr      config->structSize is not plausible
 * @retval zspStsRangeErr     a setting is outside its range
 * @retval zspStsMemAllocErr  there is no memory
 */
ZSPV_API ZspStatus zspvActivityCreate(const ZspvActivityConfig* config, ZspvActivity** activity);

/**
 * Free what zspvActivityCreate() made.
 *
 * @param[in] activity  a detector; may be null
 */
ZSPV_API void zspvActivityDestroy(ZspvActivity* activity);

/**
 * Start again.
 *
 * @param[in,out] activity  a detector
 * @retval zspStsNullPtrErr  activity is null
 */
ZSPV_API ZspStatus zspvActivityReset(ZspvActivity* activity);

/**
 * Look at one frame.
 *
 * @param[in,out] activity  a detector
 * @param[in]     samples   count samples
 * @param         count     20 ms: 160, 320, or 256 at 12.8 kHz
 * @param[out]    info      structSize is set by the caller
 * @retval zspStsNullPtrErr  an argument is null
 * @retval zspStsSizeErr     count is another, or info->structSize is not plausible
 * @return any other status: a step inside failed, and nothing is known about the frame
 */
ZSPV_API ZspStatus zspvActivityProcess(ZspvActivity* activity, const int16_t* samples,
                                       int32_t count, ZspvActivityInfo* info);

/**
 * Levels and noise estimates of the last frame's bands, in dB with a reference of the detector's.
 *
 * @param[in]  activity  a detector
 * @param[out] edgesHz   count + 1 band edges; may be null
 * @param[out] levels    count levels; may be null
 * @param[out] noise     count noise estimates; may be null
 * @param      capacity  of levels and noise; one less than that of edgesHz
 * @param[out] count     bands; with zspStsSizeErr, what it takes
 * @retval zspStsNullPtrErr  activity or count is null
 * @retval zspStsSizeErr     capacity is too small
 */
ZSPV_API ZspStatus zspvActivityGetBands(const ZspvActivity* activity, float* edgesHz, float* levels,
                                        float* noise, int32_t capacity, int32_t* count);

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* ZSPVOICE_H */
