// What the kernels of ITU-T G.723.1 are written with beyond the basic operations.
#pragma once

#include "codecs/shared/celp/arithmetic.hpp"
#include "codecs/shared/words.hpp"
#include "core/fixed_point.hpp"
#include "core/spans.hpp"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <span>

namespace zsp::g723 {

using celp::dot;
using celp::energy;
using codecs::largest;
using codecs::push;
using fx::Long;
using fx::Word;
using zsp::In;
using zsp::Out;

inline constexpr std::size_t kFrame = 240;
inline constexpr std::size_t kSubframe = 60;
inline constexpr std::size_t kOrder = 10;
inline constexpr std::size_t kPast = 145; // words of excitation or weighted speech that are kept

/// Long times Q15 word, to the last bit of the long.
constexpr Long mls(Long a, Word b) noexcept
{
    return fx::l_mac(static_cast<Long>((std::int64_t{a & 0xffff} * b) >> 15), b, fx::extract_h(a));
}

/// Quotient of a long >= 0 and the upper word d > 0 of a divisor, Q15; at most 32767.
constexpr Word div_l(Long a, Word d) noexcept
{
    assert(d > 0);
    return a >= std::int64_t{d} * 65536 ? fx::kMax16 : static_cast<Word>((a >> 1) / d);
}
static_assert(div_l(65536, 2) == 16384 && div_l(131072, 2) == 32767);

/// Square root of half a long >= 0; its lowest bit is always 0.
constexpr Word sqrt_l(Long a) noexcept
{
    Word root = 0;
    for (Word bit = 16384; bit > 1; bit = static_cast<Word>(bit / 2)) {
        const Word with = fx::add(root, bit);
        if (a >= fx::l_mult(with, with)) root = with;
    }
    return root;
}
static_assert(sqrt_l(2 * 100 * 100) == 100 && sqrt_l(fx::kMax32) == 32766);

/// The next of a sequence of pseudo-random words, which is also the new seed.
constexpr Word random(Word& seed) noexcept
{
    const std::uint32_t next = (static_cast<std::uint32_t>(seed) & 0xffff) * 521 + 259;
    seed = static_cast<Word>(next & 0xffff);
    return seed;
}

/// The largest absolute value of longs, saturated.
constexpr Long largest(std::span<const Long> x) noexcept
{
    Long most = 0;
    for (const Long v : x)
        most = std::max(most, fx::l_abs(v));
    return most;
}

/// Brings a vector to three bits below full scale; the left shifts that this took.
constexpr int normalise(std::span<Word> x) noexcept
{
    const int shift = fx::norm_s(largest(x));
    for (Word& v : x)
        v = static_cast<Word>((v * (1 << shift)) >> 3);
    return shift - 3;
}

} // namespace zsp::g723
