/**
 * @file zspvoice/version.h
 * @brief Version and statuses.
 */
#ifndef ZSPVOICE_VERSION_H
#define ZSPVOICE_VERSION_H

#include "../zspsc/types.h"

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

#ifdef __cplusplus
}
#endif

#endif
