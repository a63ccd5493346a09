// Block scaling of words: the shift that a block allows, and the shift.
#pragma once

#include "core/spans.hpp"

namespace zsp::common {

/// Left shifts that normalise the largest magnitude of a block; 0 for a block of zeros.
int blockNorm(In16 src) noexcept;

/// dst[i] = shl(src[i], shift) where no left shift overflows; any right shift. May be in place.
void shiftBlock(In16 src, Out16 dst, int shift) noexcept;

} // namespace zsp::common
