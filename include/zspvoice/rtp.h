/**
 * @file zspvoice/rtp.h
 * @brief RTP payloads.
 */
#ifndef ZSPVOICE_RTP_H
#define ZSPVOICE_RTP_H

#include "encoder.h"

#ifdef __cplusplus
extern "C" {
#endif

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
 * @param[in]  codec      its bit rates are the modes: eight of AMR, nine of AMR-WB
 * @param[in]  params     mode set, period and neighbour rule; may be null for the defaults; modes
 *                        that the codec does not have are left out of the set
 * @param      requested  the peer's last request, or ZSPV_NO_REQUEST; what is no mode of the codec
 *                        is reserved and counts as none
 * @param      current    mode in use, or -1 before the first frame
 * @param      frames     frames coded since the last change of mode; with a period of 2 a change
 *                        waits until they are an even number above 0
 * @param[out] mode       the mode to use
 * @retval zspStsNullPtrErr  codec or mode is null
 * @retval zspStsSizeErr     params->structSize is not plausible
 * @retval zspStsBadArgErr   the codec has no bit rate, or more than 15
 * @retval zspStsRangeErr    requested is not 0..15, current not -1..14, or frames negative
 * @see RFC 4867, clause 8.1
 */
ZSPV_API ZspStatus zspvSelectMode(const ZspvCodec* codec, const ZspvParams* params,
                                  int32_t requested, int32_t current, int32_t frames,
                                  int32_t* mode);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
