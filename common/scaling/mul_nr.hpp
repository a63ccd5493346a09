// Rounded and shifted products of words.
#pragma once

#include "core/spans.hpp"

namespace zsp::common {

/// The definition: out[i] = sat16((a[i] * b[i] + 2^(shift-1)) >> shift).
void mulNrScalar(In16 a, In16 b, Out16 out, int shift) noexcept;

/// Equal to mulNrScalar in every result.
void mulNrAvx2(In16 a, In16 b, Out16 out, int shift) noexcept;

} // namespace zsp::common
