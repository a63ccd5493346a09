// Linear prediction of GSM full rate: autocorrelation and the Schur recursion.
#pragma once

#include "codecs/gsmfr/gsmfr_tables.hpp"
#include "core/spans.hpp"

#include <cstdint>
#include <span>

namespace zsp::gsmfr {

using Lags = std::span<std::int32_t, kOrder + 1>;
using InLags = std::span<const std::int32_t, kOrder + 1>;
using Coefs = std::span<std::int16_t, kOrder>;
using InCoefs = std::span<const std::int16_t, kOrder>;
using Frame = std::span<std::int16_t, kFrame>;
using InFrame = std::span<const std::int16_t, kFrame>;

// Each *Scalar function is a definition; the *Avx2 function beside it equals it in every result.

/// Clause 5.2.4. The frame comes back as the short-term filter gets it: without the low bits that
/// the scaling has cost. Returns scalauto.
int autoCorrScalar(Frame s, Lags acf) noexcept;
int autoCorrAvx2(Frame s, Lags acf) noexcept;

/// Clause 5.2.5. Any input has a result; lags larger than the first saturate when normalised.
void schurScalar(InLags acf, Coefs r) noexcept;
void schurAvx2(InLags acf, Coefs r) noexcept;

} // namespace zsp::gsmfr
