// Voice activity detector of AMR-WB: twelve bands of the 12.8 kHz core signal. 3GPP TS 26.194.
#pragma once

#include "codecs/shared/vad/half_band_bank.hpp"
#include "core/fixed_point.hpp"
#include "zspsc/amrwb/vad.h"

namespace zsp::amrwb {

inline constexpr std::size_t kVadFrame = 256;
inline constexpr std::size_t kVadBands = 12;

using VadFrame = std::span<const std::int16_t, kVadFrame>;

/// Twelve bands of 200 to 1600 Hz, the last three quarters of a frame counted in the next one as
/// well.
inline constexpr vad::Bank<5, kVadBands> kVadBank = {
    .inputShift = 1,
    .frame = kVadFrame,
    .kept = 64,
    .stages = {{{vad::Merge::half, 2, 1, {{{5, 0, 1, 0}}}},
                {vad::Merge::half, 4, 2, {{{5, 0, 2, 1}, {5, 1, 3, 2}}}},
                {vad::Merge::half, 8, 3, {{{5, 0, 4, 3}, {5, 2, 6, 4}, {3, 3, 7, 0}}}},
                {vad::Merge::half, 16, 3, {{{3, 0, 8, 1}, {3, 4, 12, 2}, {3, 6, 14, 3}}}},
                {vad::Merge::half, 32, 2, {{{3, 0, 16, 4}, {3, 8, 24, 5}}}}}},
    .bands = {{{32, 0, 17},  // 0 to 200 Hz
               {32, 16, 17}, // 200 to 400 Hz
               {32, 24, 17}, // 400 to 600 Hz
               {32, 8, 17},  // 600 to 800 Hz
               {16, 12, 16}, // 800 to 1200 Hz
               {16, 4, 16},  // 1200 to 1600 Hz
               {16, 6, 16},  // 1600 to 2000 Hz
               {16, 14, 16}, // 2000 to 2400 Hz
               {8, 2, 15},   // 2400 to 3200 Hz
               {8, 3, 15},   // 3200 to 4000 Hz
               {8, 7, 15},   // 4000 to 4800 Hz
               {4, 1, 14}}}, // 4800 to 6400 Hz
};

/// A fresh record but for stat_count, which stays as it is.
void vadInit(VadWbState& state) noexcept;

/// The definition of the whole detector, one frame. Masks the tone flags on low power.
bool vadScalar(VadFrame frame, VadWbState& state, fx::Word& tone) noexcept;

/// Equal to vadScalar in every result.
bool vadAvx2(VadFrame frame, VadWbState& state, fx::Word& tone) noexcept;

} // namespace zsp::amrwb
