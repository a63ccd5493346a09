// Pre-emphasis of words with the basic operations, its memory kept by the caller.
#pragma once

#include "core/fixed_point.hpp"
#include "core/spans.hpp"

namespace zsp::gsmamr {

/// The definition: dst[i] = add(src[i], mult(factor, src[i - 1])), src[-1] being `memory`, which
/// becomes the last sample. `dst` may be `src`.
void preEmphasiseScalar(fx::Word factor, In16 src, Out16 dst, fx::Word& memory) noexcept;

/// Equal to preEmphasiseScalar in every result.
void preEmphasiseAvx2(fx::Word factor, In16 src, Out16 dst, fx::Word& memory) noexcept;

} // namespace zsp::gsmamr
