// The short-term filters of GSM full rate: lattices of eight stages whose reflection coefficients
// change three times at the beginning of a frame.
#pragma once

#include "codecs/gsmfr/gsmfr_lar.hpp"
#include "codecs/gsmfr/gsmfr_lpc.hpp"

namespace zsp::gsmfr {

// Input and output may be the same memory; `memory` is u[0..7] or v[0..7] of the clauses. Each
// *Scalar function is a definition; the *Avx2 function beside it equals it in every result.

/// Clause 5.2.10.
void analyseScalar(InFrame s, InReflect rp, Frame d, Coefs memory) noexcept;
void analyseAvx2(InFrame s, InReflect rp, Frame d, Coefs memory) noexcept;

/// Clause 5.3.4.
void synthesiseScalar(InFrame wr, InReflect rrp, Frame sr, Coefs memory) noexcept;
void synthesiseAvx2(InFrame wr, InReflect rrp, Frame sr, Coefs memory) noexcept;

} // namespace zsp::gsmfr
