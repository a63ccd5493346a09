// Inverse square roots of a vector of longs.
#pragma once

#include "core/spans.hpp"

namespace zsp::common {

/// The definition: x[i] = 1 / sqrt(x[i]) with the arithmetic of ITU-T G.729, Inv_sqrt.
void invSqrtScalar(Out32 x) noexcept;

/// Equal to invSqrtScalar in every result.
void invSqrtAvx2(Out32 x) noexcept;

} // namespace zsp::common
