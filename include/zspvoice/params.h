/**
 * @file zspvoice/params.h
 * @brief Parameters of a codec and its format.
 */
#ifndef ZSPVOICE_PARAMS_H
#define ZSPVOICE_PARAMS_H

#include "codecs.h"

#ifdef __cplusplus
extern "C" {
#endif

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
    int32_t noHighPass;           /**< G.723.1: nonzero: the encoder leaves its input filter out */
    int32_t noPostFilter; /**< G.723.1, G.728, G.729: nonzero: no post-filters in the decoder */
    int32_t annexA;       /**< G.729: nonzero: as Annex A has it, which takes less time */
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

#ifdef __cplusplus
}
#endif

#endif
