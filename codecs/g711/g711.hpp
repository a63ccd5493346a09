// The two laws of ITU-T G.711 between code words and 16-bit linear values. Everything is computed
// from the rules of the Recommendation; there are no tables here.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>

namespace zsp::g711 {

/// Position of the top bit; 0 for 0 and 1.
constexpr int topBit(unsigned m) noexcept
{
    return 31 - std::countl_zero(m | 1);
}

/// mu-law: a sign bit (set for positive), a 3-bit segment and a 4-bit step, all magnitude bits
/// inverted. Values are multiples of 4 up to 32124.
constexpr int expandMulaw(int code) noexcept
{
    const int magnitude = ~code & 127;
    const int segment = magnitude >> 4;
    const int value = ((((magnitude & 15) * 2 + 33) << segment) - 33) * 4;
    return (code & 128) ? value : -value;
}
static_assert(expandMulaw(0x00) == -32124 && expandMulaw(0x80) == 32124);
static_assert(expandMulaw(0x7f) == 0 && expandMulaw(0xff) == 0 && expandMulaw(0xf0) == 120);

/// A negative value is complemented, so that -1 is the negative zero.
constexpr int compressMulaw(int x) noexcept
{
    const auto biased = static_cast<unsigned>(std::min(((x < 0 ? ~x : x) >> 2) + 33, 8191));
    const int segment = topBit(biased) - 5;
    const int step = static_cast<int>(biased >> (segment + 1)) & 15;
    return (~((segment << 4) | step) & 127) | (x < 0 ? 0 : 128);
}
static_assert(compressMulaw(0) == 0xff && compressMulaw(-1) == 0x7f);
static_assert(compressMulaw(32767) == 0x80 && compressMulaw(-32768) == 0x00);

/// A-law: a sign bit (set for positive), a 3-bit segment and a 4-bit step, the even bits inverted.
/// Values are odd multiples of 8 up to 32256 in magnitude.
constexpr int expandAlaw(int code) noexcept
{
    const int magnitude = (code ^ 0x55) & 127;
    const int segment = magnitude >> 4;
    const int step = (magnitude & 15) * 2 + 1;
    const int value = segment == 0 ? step * 8 : (step + 32) << (segment + 2);
    return (code & 128) ? value : -value;
}
static_assert(expandAlaw(0xd5) == 8 && expandAlaw(0x55) == -8 && expandAlaw(0xaa) == 32256);

/// A negative value is complemented: a magnitude on a decision level falls to the inner step.
constexpr int compressAlaw(int x) noexcept
{
    const auto m = static_cast<unsigned>((x < 0 ? ~x : x) >> 4);
    const int segment = m < 32 ? 1 : topBit(m) - 3;
    const auto v =
        static_cast<int>(m < 32 ? m : (m >> (segment - 1)) & 15) | (m < 32 ? 0 : segment << 4);
    return (v | (x < 0 ? 0 : 128)) ^ 0x55;
}
static_assert(compressAlaw(0) == 0xd5 && compressAlaw(-1) == 0x55);
static_assert(compressAlaw(32767) == 0xaa && compressAlaw(-32768) == 0x2a);

/// The neighbours of a code word in the order of the values, the block SYNC of ITU-T G.726: one
/// step towards more positive and towards more negative. At the ends the code word stays.
constexpr int nextLargerMulaw(int code) noexcept
{
    if (code & 128) return code == 0x80 ? code : code - 1;
    return code == 0x7f ? 0xff : code + 1;
}
static_assert(nextLargerMulaw(0x7e) == 0x7f && nextLargerMulaw(0x7f) == 0xff);

/// Goes past the negative zero, which nextLargerMulaw() visits.
constexpr int nextSmallerMulaw(int code) noexcept
{
    if (code & 128) return code == 0xff ? 0x7e : code + 1;
    return code == 0x00 ? code : code - 1;
}

constexpr int nextLargerAlaw(int code) noexcept
{
    const int plain = code ^ 0x55;
    if (plain & 128) return code == 0xaa ? code : (plain + 1) ^ 0x55;
    return plain == 0 ? 0xd5 : (plain - 1) ^ 0x55;
}
static_assert(nextLargerAlaw(0x55) == 0xd5 && nextLargerAlaw(0xaa) == 0xaa);

constexpr int nextSmallerAlaw(int code) noexcept
{
    return nextLargerAlaw(code ^ 128) ^ 128;
}

} // namespace zsp::g711
