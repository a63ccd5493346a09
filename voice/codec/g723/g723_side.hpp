// What encoder and decoder of ITU-T G.723.1 have in common: lengths, where they begin, and the
// noise of pauses.
#pragma once

#include "voice/codec/shared/probe.hpp"
#include "zspsc/g723/decoder.h"
#include "zspsc/g723/noise.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zsp::voice {

inline constexpr std::size_t kG723Frame = 240;
inline constexpr std::size_t kG723Subframe = 60;
inline constexpr std::size_t kG723Past = 145;
inline constexpr std::size_t kG723FrameBytes = 24; // at most

using G723Lsp = std::array<std::int16_t, 10>;
using G723Past = std::array<std::int16_t, kG723Past>;
using G723Filters = std::array<std::int16_t, 40>; // coefficients of four sub-frames
using G723Excitation = std::array<std::int16_t, kG723Frame>;

inline constexpr G723Lsp kG723LspMean = {3131,  4721,  7690,  10806, 13872,
                                         16495, 19752, 22260, 25484, 27718};
inline constexpr std::int16_t kG723NoiseSeed = 12345;

/// A pause, which encoder and decoder go through alike.
struct G723Noise {
    G723Lsp lsp;
    std::int16_t sidGain, gain, seed;

    void start() noexcept
    {
        lsp = kG723LspMean;
        sidGain = gain = 0;
        seed = kG723NoiseSeed;
    }
    /// The gain follows the descriptors'; the first frame of a pause has it at once.
    void follow(bool first) noexcept
    {
        gain = first ? sidGain : static_cast<std::int16_t>((7 * gain + sidGain) >> 3);
    }
};

} // namespace zsp::voice
