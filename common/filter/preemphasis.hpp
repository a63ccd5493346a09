// Pre-emphasis of a vector of floats, in place.
#pragma once

#include "core/spans.hpp"

namespace zsp::common {

/// The definition: x[i] -= factor * (x[i-1] before the call), with `before` as x[-1].
void preemphasizeScalar(float factor, OutF x, float before) noexcept;

/// Equal to preemphasizeScalar in every result.
void preemphasizeAvx2(float factor, OutF x, float before) noexcept;

} // namespace zsp::common
