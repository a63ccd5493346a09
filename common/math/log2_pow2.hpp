// Base-2 logarithm and power of the 3GPP and ITU-T fixed-point codes, Log2() and Pow2(): a table of
// 32 steps an octave and linear interpolation between them.
#pragma once

#include "core/fixed_point.hpp"

#include <array>
#include <cassert>
#include <cstddef>

namespace zsp::common {

/// log2(1 + i / 32), Q15. 3GPP TS 26.073, Log2.
inline constexpr std::array<fx::Word, 33> kLog2 = {
    0,     1455,  2866,  4236,  5568,  6863,  8124,  9352,  10549, 11716, 12855,
    13967, 15054, 16117, 17156, 18172, 19167, 20142, 21097, 22033, 22951, 23852,
    24735, 25603, 26455, 27291, 28113, 28922, 29716, 30497, 31266, 32023, 32767};

/// A sum in which every entry and its place count: some are 1 below the nearest word.
static_assert([] {
    fx::Long sum = 0;
    for (std::size_t i = 0; i < kLog2.size(); ++i)
        sum += static_cast<fx::Long>(i + 1) * kLog2[i];
    return sum == 13'231'461;
}());

/// 2^(i / 32), Q14. 3GPP TS 26.073, Pow2.
inline constexpr std::array<fx::Word, 33> kPow2 = {
    16384, 16743, 17109, 17484, 17867, 18258, 18658, 19066, 19484, 19911, 20347,
    20792, 21247, 21713, 22188, 22674, 23170, 23678, 24196, 24726, 25268, 25821,
    26386, 26964, 27554, 28158, 28774, 29405, 30048, 30706, 31379, 32066, 32767};

/// Between entries `i` and `i + 1` of a table, `fraction_Q15` of the way, with 16 bits more than an
/// entry. Entries are not negative and differ by less than 2^11, so nothing saturates.
constexpr fx::Long interpolate(const std::array<fx::Word, 33>& table, int i,
                               fx::Word fraction_Q15) noexcept
{
    assert(i >= 0 && i < 32 && fraction_Q15 >= 0);
    const auto at = static_cast<std::size_t>(i);
    return table[at] * 65536 + 2 * (table[at + 1] - table[at]) * fraction_Q15;
}

/// A logarithm in two parts: exponent + fraction.
struct Log2Parts {
    fx::Word exponent;
    fx::Word fraction_Q15;
};

/// log2(x); 0 for x <= 0.
constexpr Log2Parts log2(fx::Long x) noexcept
{
    if (x <= 0) return {0, 0};
    const int shift = fx::norm_l(x);
    const fx::Long y = x << shift; // the leading bit is bit 30, the table index the five below it
    const auto rest_Q15 = static_cast<fx::Word>((y >> 10) & 0x7fff);
    return {static_cast<fx::Word>(30 - shift),
            fx::extract_h(interpolate(kLog2, (y >> 25) - 32, rest_Q15))};
}
static_assert(log2(-1).exponent == 0 && log2(0).exponent == 0 && log2(1).exponent == 0);
static_assert(log2(1 << 30).exponent == 30 && log2(1 << 30).fraction_Q15 == 0);
static_assert(log2(fx::kMax32).exponent == 30 && log2(fx::kMax32).fraction_Q15 == 32766);

/// 2^(exponent + fraction), rounded; any exponent, the fraction is not negative.
constexpr fx::Long pow2(fx::Word exponent, fx::Word fraction_Q15) noexcept
{
    const auto rest_Q15 = static_cast<fx::Word>((fraction_Q15 << 5) & 0x7fff);
    const fx::Long mantissa_Q30 = interpolate(kPow2, fraction_Q15 >> 10, rest_Q15);
    return fx::l_shr_r(mantissa_Q30, fx::sub(30, exponent));
}
static_assert(pow2(0, 0) == 1 && pow2(30, 0) == 1 << 30 && pow2(31, 0) == fx::kMax32);
static_assert(pow2(-1, 0) == 1 && pow2(-2, 0) == 0 && pow2(-32768, 0) == 0);
static_assert(pow2(32767, 0) == fx::kMax32 && pow2(1, 16384) == 3);

} // namespace zsp::common
