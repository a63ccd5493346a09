/* Loaded before zsp's libraries, this makes the processor look like one without AVX2. */

#include "zspcore.h"

uint64_t zspGetEnabledCpuFeatures(void)
{
    return ZSP_CPU_SSE2 | ZSP_CPU_SSSE3;
}
