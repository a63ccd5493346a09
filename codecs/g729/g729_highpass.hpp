// The high-pass filter of ITU-T G.729, before the encoder (clause 3.1) and after the decoder
// (clause 4.2.5).
#pragma once

#include "core/spans.hpp"

#include <array>
#include <cstdint>
#include <type_traits>

namespace zsp::g729 {

struct HighPassState {
    std::int32_t y1 = 0; ///< previous outputs as Q16, the newest first
    std::int32_t y2 = 0;
    std::int16_t x1 = 0; ///< previous inputs, the newest first
    std::int16_t x2 = 0;
    std::array<std::int16_t, 6> coeffs{}; ///< a0 (unused), a1, a2, b0, b1, b2
};
static_assert(sizeof(HighPassState) == 24 && std::is_trivially_copyable_v<HighPassState>);

/// The definition. Filters in place; `scaleFactor` is 12 (coefficients in Q12) or 13 (Q13, output
/// doubled).
void highPassScalar(Out16 samples, int scaleFactor, HighPassState& state) noexcept;

/// Equal to highPassScalar in every sample and in the state.
void highPassAvx2(Out16 samples, int scaleFactor, HighPassState& state) noexcept;

} // namespace zsp::g729
