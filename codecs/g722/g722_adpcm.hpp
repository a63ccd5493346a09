// The sub-band ADPCM coder of ITU-T G.722, both bands of an 8 kHz instant at a time.
#pragma once

#include "core/spans.hpp"
#include "core/state.hpp"

#include <array>
#include <cstdint>
#include <type_traits>

namespace zsp::g722 {

/// What one sub-band keeps from sample to sample, encoder and decoder alike. The blocks' own names:
/// NBL or NBH, DETL or DETH and so on.
struct Band {
    std::int16_t nb = 0;  ///< logarithmic scale factor
    std::int16_t det = 0; ///< linear scale factor
    std::int16_t a1 = 0;  ///< pole predictor coefficients, Q14
    std::int16_t a2 = 0;
    std::int16_t r1 = 0; ///< reconstructed signal, the newest first
    std::int16_t r2 = 0;
    std::int16_t p1 = 0; ///< partially reconstructed signal, the newest first
    std::int16_t p2 = 0;
    std::int16_t sz = 0;             ///< the zero predictor's part of the estimate
    std::int16_t s = 0;              ///< the estimate of the next sample
    std::array<std::int16_t, 8> b{}; ///< six zero predictor coefficients, Q14; the rest stays 0
    std::array<std::int16_t, 8> d{}; ///< six quantised differences, newest first; the rest stays 0
};

inline constexpr std::int16_t kInitialDetl = 32;
inline constexpr std::int16_t kInitialDeth = 8;

struct State {
    Band low{.det = kInitialDetl};
    Band high{.det = kInitialDeth};
};
static_assert(sizeof(State) == 104 && std::is_trivially_copyable_v<State>);

/// What a caller provides: room for a record and the way to a 16-byte boundary.
inline constexpr std::int32_t kStateSize = 144;
static_assert(sizeof(State) + kStateSlack <= kStateSize);

// Pairs are (lower band, higher band). Input and output have the same length, a whole number of
// pairs, and may be the same memory.

/// The definition: pairs (xL, xH) to codes (I_L, I_H).
void encodeScalar(In16 pairs, Out16 codes, State& state) noexcept;

/// The definition: codes (I_L, I_H) to pairs (rL, rH). Mode 1 is 64 kbit/s, 2 is 56, any other 48.
void decodeScalar(In16 codes, Out16 pairs, int mode, State& state) noexcept;

/// Equal to the definitions in every result.
void encodeAvx2(In16 pairs, Out16 codes, State& state) noexcept;
void decodeAvx2(In16 codes, Out16 pairs, int mode, State& state) noexcept;

/// Sets a decoder's memories to what a concealment has put out: the lower band's last two values
/// (the older first) and its next estimate. False when the higher band's scale factor has no linear
/// value; all else has been done then.
bool updateState(State& state, std::span<const std::int16_t, 2> low, std::int16_t x,
                 bool reset) noexcept;

} // namespace zsp::g722
