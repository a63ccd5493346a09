/**
 * @file zspvoice/codecs.h
 * @brief The codecs there are.
 */
#ifndef ZSPVOICE_CODECS_H
#define ZSPVOICE_CODECS_H

#include "version.h"

#ifdef __cplusplus
extern "C" {
#endif

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

#ifdef __cplusplus
}
#endif

#endif
