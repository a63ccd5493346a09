// Inverse square roots of a vector of longs.
#pragma once

#include "core/spans.hpp"

#include <cstdint>

namespace zsp::common {

/// 1 / sqrt(x) in Q30 with the arithmetic of ITU-T G.729, Inv_sqrt; 2^30 - 1 for x <= 0.
std::int32_t invSqrt(std::int32_t x) noexcept;

/// The definition: invSqrt() of each.
void invSqrtScalar(Out32 x) noexcept;

/// Equal to invSqrtScalar in every result.
void invSqrtAvx2(Out32 x) noexcept;

} // namespace zsp::common
