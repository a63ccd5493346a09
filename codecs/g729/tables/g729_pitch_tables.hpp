// Interpolation filters of the adaptive codebook of ITU-T G.729, clause 3.7.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace zsp::g729 {

/// One half of the symmetric filter b30 in steps of 1/3 sample, Q15. Clause 3.7.1.
inline constexpr std::array<std::int16_t, 31> kInterpolateExcitation = {
    29443, 25207, 14701, 3143, -4402, -5850, -2783, 1211, 3130, 2259, 0,
    -1652, -1666, -464,  756,  1099,  550,   -245,  -634, -451, 0,    308,
    296,   78,    -120,  -165, -79,   34,    91,    70,   0};

/// The same of b12. Clause 3.7.
inline constexpr std::array<std::int16_t, 13> kInterpolateCorrelation = {
    29519, 24906, 13896, 2755, -3459, -3969, -1561, 534, 1023, 516, 0, -194, 0};

} // namespace zsp::g729
