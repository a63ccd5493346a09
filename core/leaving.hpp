// The way out of every export.
#pragma once

#include <immintrin.h>

namespace zsp {

/// Calls a function and cleans the upper halves of the vector registers: if they stay dirty, SSE
/// code of the caller runs several times slower. Compilers do this at the end of a function, but
/// GCC forgets it before some tail calls, after calls of its own functions that take vectors, and
/// without optimisation.
template <auto function>
struct Leaving;

template <typename Result, typename... Arguments, Result (*function)(Arguments...)>
struct Leaving<function> {
    static Result call(Arguments... arguments)
    {
        const Result result = function(arguments...);
        _mm256_zeroupper();
        return result;
    }
};

} // namespace zsp
