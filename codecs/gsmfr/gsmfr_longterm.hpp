// The long-term predictor of GSM full rate: a sub-segment of the short-term residual from what has
// been reconstructed 40 to 120 samples before.
#pragma once

#include "codecs/gsmfr/gsmfr_tables.hpp"
#include "core/spans.hpp"

#include <cstdint>
#include <span>

namespace zsp::gsmfr {

using Segment = std::span<std::int16_t, kSegment>;
using InSegment = std::span<const std::int16_t, kSegment>;
using Pulses = std::span<std::int16_t, kPulses>;
using InPulses = std::span<const std::int16_t, kPulses>;
/// The 120 samples before a sub-segment, the oldest first.
using InPast = std::span<const std::int16_t, kPast>;

struct LongTerm {
    int lag;  ///< Nc, 40 to 120
    int gain; ///< bc, 0 to 3
};

// Each *Scalar function is a definition; the *Avx2 function beside it equals it in every result.

/// Clause 5.2.11.
LongTerm ltpSearchScalar(InSegment d, InPast dp) noexcept;
LongTerm ltpSearchAvx2(InSegment d, InPast dp) noexcept;

/// Clause 5.2.12: e, which may be where d is.
void longTermPredictScalar(InSegment d, InPast dp, LongTerm how, Segment e) noexcept;
void longTermPredictAvx2(InSegment d, InPast dp, LongTerm how, Segment e) noexcept;

/// Clauses 5.2.17 and 5.2.18, or 5.3.1 and 5.3.2: pulses on a grid, and the prediction again.
void longTermSynthesisScalar(InPulses xmp, int grid, LongTerm how, InPast dp, Segment out) noexcept;
void longTermSynthesisAvx2(InPulses xmp, int grid, LongTerm how, InPast dp, Segment out) noexcept;

} // namespace zsp::gsmfr
