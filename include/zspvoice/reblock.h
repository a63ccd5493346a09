/**
 * @file zspvoice/reblock.h
 * @brief Re-blocker.
 */
#ifndef ZSPVOICE_REBLOCK_H
#define ZSPVOICE_REBLOCK_H

#include "version.h"

#ifdef __cplusplus
extern "C" {
#endif

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

#ifdef __cplusplus
}
#endif

#endif
