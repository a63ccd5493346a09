// The cosine in 128 steps to half a turn, from which the tables of several codecs are made.
#pragma once

#include <cstdint>
#include <numbers>

namespace zsp::common {

/// 32768 cos(pi i / 128), rounded, for 0 <= i <= 128.
constexpr std::int32_t cosine_Q15(int i) noexcept
{
    if (i > 64) return -cosine_Q15(128 - i);
    const double angle = std::numbers::pi * i / 128;
    double term = 1;
    double sum = 1;
    for (int n = 2; n <= 24; n += 2) { // at a quarter turn the next term is below 1e-20
        term *= -angle * angle / (n * (n - 1));
        sum += term;
    }
    return static_cast<std::int32_t>(65536 * sum + 1) / 2; // rounded: the sum is not negative
}
static_assert(cosine_Q15(0) == 32768 && cosine_Q15(1) == 32758 && cosine_Q15(32) == 23170);
static_assert(cosine_Q15(63) == 804 && cosine_Q15(64) == 0 && cosine_Q15(128) == -32768);

} // namespace zsp::common
