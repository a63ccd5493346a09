// Sums of products in the arithmetic of the basic operators: doubled, each step saturating, and
// where the result is a word, half is added before the shift.
#pragma once

#include "core/fixed_point.hpp"
#include "core/spans.hpp"

namespace zsp::common {

/// out[k] = 2 sum of x[i+k] y[i]; as long as `y`, 0 behind it.
void crossCorrSteps(In16 x, In16 y, Out32 out) noexcept;

/// The upper words of sums shifted left until the first is normalised, rounded; the shift.
int autoCorrNormRounded(In16 x, Out16 out) noexcept;

/// out[k] = (sum of x[i+k] y[i]) / 2^shift, exact up to here, rounded and limited.
void crossCorrScaled(In16 x, In16 y, Out16 out, int shift) noexcept;

/// out[n] = (sum of x[i] h[n-i]) / 2^12, doubled sum and shift saturating, rounded.
void convolveRounded(In16 x, In16 h, Out16 out) noexcept;

/// A sum as 32 bits and the shift right that this took.
struct ScaledSum {
    fx::Long value;
    int shift;
};
ScaledSum dotScaled(In16 x, In16 y) noexcept;

} // namespace zsp::common
