/* zspcore: processor features, aligned memory and cache size for the zspsc library.
 *
 * A stand-in with the four functions that libzspsc.so imports by name. All of them may be called at
 * any time, before this library's own constructors have run included, and from any thread. */
#ifndef ZSPCORE_H
#define ZSPCORE_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__) && !defined(_WIN32)
#define ZSPCORE_API __attribute__((visibility("default")))
#else
#define ZSPCORE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Bits of the feature mask. A bit is set when the processor has the feature and, for the AVX
 * family, the operating system saves its registers. */
#define ZSP_CPU_SSE2 0x1u
#define ZSP_CPU_SSSE3 0x2u
#define ZSP_CPU_SSE41 0x4u
#define ZSP_CPU_SSE42 0x8u
#define ZSP_CPU_AVX 0x10u
#define ZSP_CPU_AVX2 0x20u
#define ZSP_CPU_FMA 0x40u
#define ZSP_CPU_BMI2 0x80u

/* The features that this library has found, as a mask of the bits above. */
ZSPCORE_API uint64_t zspGetEnabledCpuFeatures(void);

/* `bytes` bytes on a 64-byte boundary, or NULL when `bytes` is 0 or memory is short. */
ZSPCORE_API void* zspMalloc(size_t bytes);

/* Frees what zspMalloc returned; NULL is allowed. */
ZSPCORE_API void zspFree(void* block);

/* Stores the size in bytes of the largest data cache. 0 on success; -8 when `size` is NULL;
 * -1, with nothing written, when the processor does not tell. */
ZSPCORE_API int32_t zspGetMaxCacheSizeB(int32_t* size);

#ifdef __cplusplus
}
#endif

#endif
