// State and kernels of the disabling-tone detector.
#pragma once

#include "core/spans.hpp"

#include <cstdint>
#include <type_traits>

namespace zsp::ec {

struct ToneDetectState {
    const float* coefs = nullptr; // c0 .. c3 of the sample rate's resonator
    float tonePower = 0;          // smoothed power of the resonator's output
    float inputPower = 0;         // smoothed power of the input
    float x1 = 0, x2 = 0;         // the last two inputs, newest first
    float y1 = 0, y2 = 0;         // the last two outputs of the resonator
    float smoothing = 0;
    std::int32_t toneCount = 0; // samples of tone since the last reversal
    std::int32_t minCount = 0;  // both bounds of an accepted interval, exclusive
    std::int32_t maxCount = 0;
    std::int32_t dipCount = 0;  // samples in the current dip
    std::int32_t dipLimit = 0;  // the longest dip before the tone counts as lost
    std::int32_t reversals = 0; // phase reversals so far
};
static_assert(sizeof(ToneDetectState) == 64 && std::is_trivially_copyable_v<ToneDetectState>);

/// Whether the second or a later reversal came in this block. The step from an output to the next
/// is longer than all that could be done beside it in vectors: there is no other version.
bool toneDetect(ToneDetectState& state, InF src) noexcept;

} // namespace zsp::ec
