// G.169 level control: what it measures in a block, what it does to one, and whole signals.
#pragma once

#include "core/spans.hpp"
#include "zspsc/alc_g169.h"

namespace zsp::alc {

using State = ZspAlcState_G169;

inline constexpr std::size_t kBlock = 8;
using InBlock = std::span<const std::int16_t, kBlock>;
using OutBlock = std::span<std::int16_t, kBlock>;

/// What a block contributes to the state.
struct BlockLevels {
    float meanAbs; // mean magnitude
    float energy;  // mean square, summed from the first sample to the last
    float peak;    // largest magnitude
};

/// The definition.
BlockLevels measureScalar(InBlock x) noexcept;

/// Equal to measureScalar in every result.
BlockLevels measureAvx2(InBlock x) noexcept;

/// The definition: y[i] = x[i] * gain, truncated and limited to a word. May be in place.
void amplifyScalar(InBlock x, float gain, OutBlock y) noexcept;

/// Equal to amplifyScalar in every result.
void amplifyAvx2(InBlock x, float gain, OutBlock y) noexcept;

/// Whole blocks. May be in place.
void levelControl(In16 src, Out16 dst, State& s) noexcept;

} // namespace zsp::alc
