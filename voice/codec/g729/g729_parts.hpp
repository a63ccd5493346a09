// What encoder and decoder of ITU-T G.729 share.
#pragma once

#include "voice/codec/shared/probe.hpp"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace zsp::voice {

inline constexpr std::size_t kG729Frame = 80;
inline constexpr std::size_t kG729Subframe = 40;
inline constexpr std::size_t kG729Order = 10;
inline constexpr std::size_t kG729Past = 154;     // of the excitation
inline constexpr std::size_t kG729PostPast = 152; // of the post-filter's residual
inline constexpr std::size_t kG729Bytes = 10, kG729SidBytes = 2;

using G729Lsp = std::array<std::int16_t, kG729Order>;
using G729Lsf = std::array<std::int16_t, kG729Order>;

inline constexpr G729Lsp kG729LspReset = {30000, 26000, 21000,  15000,  8000,
                                          0,     -8000, -15000, -21000, -26000};
inline constexpr G729Lsp kG729SidLspReset = {31441, 27566,  21458,  13612,  4663,
                                             -4663, -13612, -21458, -27566, -31441};
inline constexpr G729Lsf kG729LsfReset = {2339,  4679,  7018,  9358,  11698,
                                          14037, 16377, 18717, 21056, 23396};
inline constexpr std::int16_t kG729NoiseSeed = 11111;

/// The bit that makes the six upper bits of a lag's index odd in number.
constexpr int g729Parity(std::int32_t index) noexcept
{
    return (std::popcount(static_cast<std::uint32_t>(index >> 2 & 63)) + 1) & 1;
}

/// The next of a sequence of pseudo-random words, which is also the new seed.
constexpr std::int16_t g729Random(std::int16_t& seed) noexcept
{
    seed = static_cast<std::int16_t>((seed * 31821 + 13849) & 0xffff);
    return seed;
}

} // namespace zsp::voice
