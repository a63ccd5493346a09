// What stands before and behind the coder of GSM full rate: offset compensation with pre-emphasis,
// and de-emphasis.
#pragma once

#include "core/spans.hpp"
#include "zspsc/gsmfr/shortterm.h"

#include <cstdint>

namespace zsp::gsmfr {

using PreprocessState = ZspPreprocessState_GSMFR;

// Input and output have the same length and may be the same memory. Each *Scalar function is a
// definition; the *Fast function beside it equals it in every result.

/// GSM 06.10, clauses 5.2.1 to 5.2.3.
void preprocessScalar(In16 src, Out16 dst, PreprocessState& state) noexcept;
void preprocessFast(In16 src, Out16 dst, PreprocessState& state) noexcept;

/// GSM 06.10, clauses 5.3.5 to 5.3.7. `msr` is the last output before upscaling.
void deemphasisScalar(In16 src, Out16 dst, std::int16_t& msr) noexcept;
void deemphasisFast(In16 src, Out16 dst, std::int16_t& msr) noexcept;

} // namespace zsp::gsmfr
