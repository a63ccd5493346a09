// The decoder's way to G.711 and back, by law: COMPRESS and EXPAND of ITU-T G.726 between 14-bit
// uniform PCM and code words, and the steps that SYNC takes.
#pragma once

#include "codecs/g711/g711.hpp"
#include "codecs/g726/g726_adpcm.hpp"

#include <algorithm>

namespace zsp::g726 {

/// The code word of sr. A negative zero of 15-bit magnitude, -32768, is the negative zero of the
/// law.
constexpr int compress(Law law, int sr) noexcept
{
    if (sr == -32768) return law == Law::mulaw ? 0x7f : 0x55;
    if (law == Law::mulaw) return g711::compressMulaw(std::clamp(4 * sr - (sr < 0), -32768, 32767));
    return g711::compressAlaw(std::clamp(4 * sr, -32768, 32767));
}

constexpr int expand(Law law, int sp) noexcept
{
    return (law == Law::mulaw ? g711::expandMulaw(sp) : g711::expandAlaw(sp)) >> 2;
}

constexpr int nextLarger(Law law, int sp) noexcept
{
    return law == Law::mulaw ? g711::nextLargerMulaw(sp) : g711::nextLargerAlaw(sp);
}

constexpr int nextSmaller(Law law, int sp) noexcept
{
    return law == Law::mulaw ? g711::nextSmallerMulaw(sp) : g711::nextSmallerAlaw(sp);
}

} // namespace zsp::g726
