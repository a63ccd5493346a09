// The quadrature-mirror filters of ITU-T G.722, clause 5: 16 kHz samples to pairs and back.
#pragma once

#include "core/spans.hpp"

#include <cstdint>
#include <span>

namespace zsp::g722 {

/// What a filter keeps: its last 24 samples, the oldest first.
using DelayLine = std::span<std::int16_t, 24>;

// Input and output have the same even length and may be the same memory.

/// The definition of the transmit filter: samples to pairs (xL, xH).
void analyseScalar(In16 samples, Out16 pairs, DelayLine line) noexcept;

/// The definition of the receive filter: pairs (rL, rH) to samples.
void synthesiseScalar(In16 pairs, Out16 samples, DelayLine line) noexcept;

/// Equal to the definitions in every result.
void analyseAvx2(In16 samples, Out16 pairs, DelayLine line) noexcept;
void synthesiseAvx2(In16 pairs, Out16 samples, DelayLine line) noexcept;

} // namespace zsp::g722
