/* Loaded before zsp's libraries, this makes one of their functions give a wrong sample. */

#define _GNU_SOURCE
#include "zspsc.h"

#include <dlfcn.h>
#include <string.h>

ZspStatus zspsHighPassFilter_G729_16s_ISfs(int16_t* srcDst, int32_t len, int32_t scaleFactor,
                                           void* state)
{
    ZspStatus (*filter)(int16_t*, int32_t, int32_t, void*);
    void* const next = dlsym(RTLD_NEXT, "zspsHighPassFilter_G729_16s_ISfs");
    memcpy(&filter, &next, sizeof filter);
    const ZspStatus status = filter(srcDst, len, scaleFactor, state);
    if (len > 100) srcDst[100] = (int16_t)(srcDst[100] ^ 1);
    return status;
}
