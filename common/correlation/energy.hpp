// Energies of words, saturated and exact.
#pragma once

#include "core/fixed_point.hpp"
#include "core/spans.hpp"

namespace zsp::common {

/// The definition: L_mac of every element with itself, from 0; twice the sum of squares, saturated.
fx::Long energyScalar(In16 x) noexcept;

/// Equal to energyScalar in every result.
fx::Long energyAvx2(In16 x) noexcept;

/// The sum of squares itself, exact.
std::int64_t squareSumAvx2(In16 x) noexcept;

} // namespace zsp::common
