// Log area ratios of GSM full rate: from reflection coefficients, coded, decoded, and back.
#pragma once

#include "codecs/gsmfr/gsmfr_tables.hpp"
#include "core/spans.hpp"

#include <cstdint>
#include <span>

namespace zsp::gsmfr {

using Coefs = std::span<std::int16_t, kOrder>;
using InCoefs = std::span<const std::int16_t, kOrder>;

/// Reflection coefficients of a frame, one set behind the other: kSetStart says for which samples.
using Reflect = std::span<std::int16_t, kSets * kOrder>;
using InReflect = std::span<const std::int16_t, kSets * kOrder>;

// Eight words are one vector. Each *Scalar function is a definition; the *Avx2 function beside it
// equals it in every result. Input and output may be the same memory, but for the interpolation's.

/// Clause 5.2.6.
void reflectToLarScalar(InCoefs r, Coefs lar) noexcept;
void reflectToLarAvx2(InCoefs r, Coefs lar) noexcept;

/// Clause 5.2.7.
void larQuantScalar(InCoefs lar, Coefs larc) noexcept;
void larQuantAvx2(InCoefs lar, Coefs larc) noexcept;

/// Whether all codes are inside their range.
bool larcInRange(InCoefs larc) noexcept;

/// Clause 5.2.8.
void larDequantScalar(InCoefs larc, Coefs larpp) noexcept;
void larDequantAvx2(InCoefs larc, Coefs larpp) noexcept;

/// Clause 5.2.9: the last frame's decoded ratios and this one's.
void larInterpolateScalar(InCoefs last, InCoefs now, Reflect rp) noexcept;
void larInterpolateAvx2(InCoefs last, InCoefs now, Reflect rp) noexcept;

} // namespace zsp::gsmfr
