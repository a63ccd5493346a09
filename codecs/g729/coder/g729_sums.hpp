// Sums of products over a subframe without the saturation of each step, where what the factors can
// reach tells that no step would have saturated.
#pragma once

#include "codecs/g729/g729.hpp"
#include "core/avx2.hpp"

#include <algorithm>
#include <cstdlib>

namespace zsp::g729 {

/// Sums below this stay in 31 bits when they are doubled.
inline constexpr std::int64_t kReach = 1 << 30;

/// sum of x[i] y[i] over a subframe, not doubled, wrapping.
inline Long plainDot(const Word* x, const Word* y) noexcept
{
    __m256i sum = _mm256_add_epi32(_mm256_madd_epi16(avx2::load(x), avx2::load(y)),
                                   _mm256_madd_epi16(avx2::load(x + 16), avx2::load(y + 16)));
    sum = _mm256_add_epi32(
        sum, _mm256_zextsi128_si256(_mm_madd_epi16(avx2::load8(x + 32), avx2::load8(y + 32))));
    return avx2::sum32(sum);
}

/// The sum of a subframe's magnitudes.
inline std::int64_t magnitudes(In<kSubframe> x) noexcept
{
    std::int32_t sum = 0;
    for (const Word v : x)
        sum += std::abs(std::int32_t{v});
    return sum;
}

/// The largest magnitude of a subframe.
inline std::int32_t largestOf(In<kSubframe> x) noexcept
{
    std::int32_t low = 0, high = 0;
    for (const Word v : x) {
        low = std::min<std::int32_t>(low, v);
        high = std::max<std::int32_t>(high, v);
    }
    return std::max(-low, high);
}

/// celp::markedDot() of a subframe; `first` is 0 or 1.
inline celp::MarkedSum fastDot(In<kSubframe> x, In<kSubframe> y, Long first) noexcept
{
    if (magnitudes(x) * largestOf(y) >= kReach) return celp::markedDot(x, y.data(), first);
    return {first + 2 * plainDot(x.data(), y.data())};
}

} // namespace zsp::g729
