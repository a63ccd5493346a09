// The GSM-AMR voice activity detector, option 2: a frame of 20 ms in two halves.
#pragma once

#include "codecs/gsmamr/gsmamr_vad2_channels.hpp"
#include "zspsc/gsmamr_vad.h"

#include <cstdint>
#include <span>

namespace zsp::gsmamr {

using Vad2Frame = std::span<const std::int16_t, 2 * kVad2Half>;

/// The definition: is there speech in the frame?
bool vad2Scalar(Vad2Frame frame, Vad2State& state, bool ltpFlag) noexcept;

/// Equal to vad2Scalar in every result.
bool vad2Avx2(Vad2Frame frame, Vad2State& state, bool ltpFlag) noexcept;

} // namespace zsp::gsmamr
