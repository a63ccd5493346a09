// Voice activity detector of GSM-AMR, option 1: nine bands, with pitch, tone and complex-signal
// detection. 3GPP TS 26.094, clause 3.3.
#pragma once

#include "codecs/shared/vad/half_band_bank.hpp"
#include "core/fixed_point.hpp"
#include "zspsc/gsmamr_vad.h"

namespace zsp::gsmamr {

inline constexpr std::size_t kVad1Source = 200;
inline constexpr std::size_t kVad1LookAhead = 40;
inline constexpr std::size_t kVad1Bands = 9;

using Vad1Source = std::span<const std::int16_t, kVad1Source>;

/// Nine bands of 250, 500 and 1000 Hz, the last fifth of a frame counted in the next one as well.
inline constexpr vad::Bank<4, kVad1Bands> kVad1Bank = {
    .inputShift = 2,
    .frame = 160,
    .kept = 128,
    .stages = {{{vad::Merge::word, 2, 1, {{{5, 0, 1, 0}}}},
                {vad::Merge::halfWord, 4, 2, {{{5, 0, 2, 1}, {5, 1, 3, 2}}}},
                {vad::Merge::halfWord, 8, 3, {{{3, 0, 4, 0}, {3, 2, 6, 1}, {3, 3, 7, 4}}}},
                {vad::Merge::halfWord, 16, 2, {{{3, 0, 8, 2}, {3, 4, 12, 3}}}}}},
    .bands = {{{16, 0, 16},  // 0 to 250 Hz
               {16, 8, 16},  // 250 to 500 Hz
               {16, 12, 16}, // 500 to 750 Hz
               {16, 4, 16},  // 750 to 1000 Hz
               {8, 6, 16},   // 1000 to 1500 Hz
               {8, 2, 16},   // 1500 to 2000 Hz
               {8, 3, 16},   // 2000 to 2500 Hz
               {8, 7, 16},   // 2500 to 3000 Hz
               {4, 1, 15}}}, // 3000 to 4000 Hz
};

/// The definition of the whole detector, one frame.
bool vad1Scalar(Vad1Source source, Vad1State& state, fx::Word tone,
                fx::Word bestCorrHp_Q15) noexcept;

/// Equal to vad1Scalar in every result.
bool vad1Avx2(Vad1Source source, Vad1State& state, fx::Word tone, fx::Word bestCorrHp_Q15) noexcept;

} // namespace zsp::gsmamr
