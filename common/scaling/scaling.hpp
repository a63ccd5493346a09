#pragma once

#include "core/spans.hpp"

namespace zsp::common {

/// Left shifts that normalise the largest magnitude of a block; 0 for a block of zeros.
int blockNorm(In16 src) noexcept;

/// dst[i] = shl(src[i], shift) where no left shift overflows; any right shift. May be in place.
void shiftBlock(In16 src, Out16 dst, int shift) noexcept;

/// The definition: x[i] = 1 / sqrt(x[i]) with the arithmetic of ITU-T G.729, Inv_sqrt.
void invSqrtScalar(Out32 x) noexcept;

/// Equal to invSqrtScalar in every result.
void invSqrtAvx2(Out32 x) noexcept;

/// The definition: x[i] -= factor * (x[i-1] before the call), with `before` as x[-1].
void preemphasizeScalar(float factor, OutF x, float before) noexcept;

/// Equal to preemphasizeScalar in every result.
void preemphasizeAvx2(float factor, OutF x, float before) noexcept;

} // namespace zsp::common
