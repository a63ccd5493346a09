// The way into and out of every export.
#pragma once

#include "core/denormals.hpp"
#include "zspsc/types.h"

#include <immintrin.h>
#include <type_traits>

namespace zsp {

/// Whether an argument is a floating-point number or leads to some.
template <typename T>
inline constexpr bool hasFloats =
    std::is_floating_point_v<T> || std::is_same_v<std::remove_cv_t<T>, Zsp32fc>;

template <typename T>
inline constexpr bool hasFloats<T*> = hasFloats<std::remove_cv_t<T>>;

/// Calls a function, on floats without denormal numbers, and cleans the upper halves of the vector
/// registers: if they stay dirty, SSE code of the caller runs several times slower. Compilers do
/// this at the end of a function, but GCC forgets it before some tail calls, after calls of its own
/// functions that take vectors, and without optimisation.
template <auto function>
struct Leaving;

template <typename Result, typename... Arguments, Result (*function)(Arguments...)>
struct Leaving<function> {
    static Result call(Arguments... arguments)
    {
        Result result;
        if constexpr ((hasFloats<Arguments> || ...)) {
            const DenormalsAreZero scope;
            result = function(arguments...);
        } else {
            result = function(arguments...);
        }
        _mm256_zeroupper();
        return result;
    }
};

} // namespace zsp
