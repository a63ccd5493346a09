/**
 * @file zspsc/types.h
 * @brief Statuses, complex numbers, the version.
 */
#ifndef ZSPSC_TYPES_H
#define ZSPSC_TYPES_H

#include <stdint.h>

#if defined(__GNUC__) && !defined(_WIN32)
#define ZSPSC_API __attribute__((visibility("default")))
#else
#define ZSPSC_API /**< marks an exported function */
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup zspsc_types Types
 *
 * Statuses, complex numbers and the version record.
 * @{
 */

/** Result of every function but zspscGetLibVersion(). */
typedef enum ZspStatus {
    zspStsOverflow = 12,          /**< warning: the result could not be represented normally */
    zspStsNoErr = 0,              /**< success */
    zspStsInternalErr = -2,       /**< an internal transform reported failure */
    zspStsBadArgErr = -5,         /**< an argument outside its domain that is not a length */
    zspStsSizeErr = -6,           /**< a length or count that is not accepted */
    zspStsRangeErr = -7,          /**< a numeric parameter outside its range */
    zspStsNullPtrErr = -8,        /**< a required pointer is null */
    zspStsMemAllocErr = -9,       /**< a temporary work array could not be had */
    zspStsCodecRangeErr = -11,    /**< a codec index, lag or mode outside the standard's range */
    zspStsNegativeValueErr = -12, /**< a value that indexes a table is negative */
    zspStsScaleRangeErr = -13,    /**< a scale factor or shift outside its range */
    zspStsLSPConvErr = -114,      /**< not all line spectral pairs were found */
    zspStsFIRLenErr = -119        /**< a sub-band filter length outside 1..4097 */
} ZspStatus;

/** A complex number of two floats. */
typedef struct Zsp32fc {
    float re; /**< real part */
    float im; /**< imaginary part */
} Zsp32fc;

/** A complex number of two signed 32-bit integers. */
typedef struct Zsp32sc {
    int32_t re; /**< real part */
    int32_t im; /**< imaginary part */
} Zsp32sc;

/** The version record. */
typedef struct ZspLibraryVersion {
    int32_t major;           /**< ::ZSPSC_VERSION_MAJOR as the library was built */
    int32_t minor;           /**< ::ZSPSC_VERSION_MINOR */
    int32_t update;          /**< ::ZSPSC_VERSION_PATCH */
    int32_t revision;        /**< source revision */
    char cpuTag[4];          /**< processor-specific build, "l9" for AVX2, zero-filled */
    const char* name;        /**< name of the library and the build */
    const char* versionText; /**< version and revision as text */
    const char* buildDate;   /**< date as text */
} ZspLibraryVersion;

/** @} */

/**
 * @defgroup zspsc_version Version
 *
 * Which library this is.
 * @{
 */

/** The version that this header belongs to; zspscGetLibVersion() tells that of the library. */
#define ZSPSC_VERSION_MAJOR 8
#define ZSPSC_VERSION_MINOR 1 /**< as above */
#define ZSPSC_VERSION_PATCH 1 /**< as above */

/**
 * The version record of this library.
 *
 * @return the one record, in read-only memory, never null; the same pointer on every call
 */
ZSPSC_API const ZspLibraryVersion* zspscGetLibVersion(void);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
