// What the ITU-T and 3GPP coders by code-excited linear prediction compute with beyond the basic
// operations: split longs and quotients of them, sums of products, and operations that tell whether
// they have saturated.
#pragma once

#include "core/fixed_point.hpp"
#include "core/spans.hpp"

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zsp::celp {

using fx::Long;
using fx::SplitLong;
using fx::Word;
using zsp::In;
using zsp::Out;

/// A split long as one, L_Comp; its lowest bit is 0.
constexpr Long l_comp(SplitLong x) noexcept
{
    return fx::l_mac(fx::l_deposit_h(x.hi), x.lo, 1);
}
static_assert(l_comp(fx::l_extract(-7)) == -8 && l_comp(fx::l_extract(fx::kMin32)) == fx::kMin32);

/// Q31 times Q31, Mpy_32.
constexpr Long mpy_32(SplitLong a, SplitLong b) noexcept
{
    const Long sum = fx::l_mac(fx::l_mult(a.hi, b.hi), fx::mult(a.hi, b.lo), 1);
    return fx::l_mac(sum, fx::mult(a.lo, b.hi), 1);
}
static_assert(mpy_32(fx::l_extract(1 << 30), fx::l_extract(1 << 30)) == 1 << 29);

/// Q31 quotient of 0 <= a < b, where the upper word of b is at least 16384; Div_32. A quotient of 1
/// and more saturates.
constexpr Long div_32(Long a, SplitLong b) noexcept
{
    assert(a >= 0 && b.hi >= 16384);
    const Word approx = fx::div_s(16383, b.hi);
    const Long error = fx::l_sub(fx::kMax32, fx::mpy_32_16(b, approx));
    const Long inverse = fx::mpy_32_16(error, approx);
    return fx::l_shl(mpy_32(fx::l_extract(a), fx::l_extract(inverse)), 2);
}

/// The next of a sequence of pseudo-random words, which is also the new seed.
constexpr Word random(Word& seed) noexcept
{
    seed = static_cast<Word>((std::int32_t{seed} * 31821 + 13849) & 0xffff);
    return seed;
}

/// sum of x[i] y[i], doubled, each step saturating.
constexpr Long dot(std::span<const Word> x, const Word* y, Long sum = 0) noexcept
{
    for (std::size_t i = 0; i < x.size(); ++i)
        sum = fx::l_mac(sum, x[i], y[i]);
    return sum;
}

constexpr Long energy(std::span<const Word> x, Long sum = 0) noexcept
{
    return dot(x, x.data(), sum);
}

/// The accumulator of a sum that has to know whether a step has saturated.
struct MarkedSum {
    Long value;
    bool overflowed = false;

    constexpr void add(std::int64_t exact) noexcept
    {
        overflowed |= exact != fx::sat32(exact);
        value = fx::sat32(exact);
    }
    constexpr void mac(Word a, Word b) noexcept
    {
        const Long product = fx::l_mult(a, b);
        overflowed |= a == fx::kMin16 && b == fx::kMin16;
        add(std::int64_t{value} + product);
    }
    constexpr void msu(Word a, Word b) noexcept
    {
        const Long product = fx::l_mult(a, b);
        overflowed |= a == fx::kMin16 && b == fx::kMin16;
        add(std::int64_t{value} - product);
    }
};

/// dot() and whether it saturated.
constexpr MarkedSum markedDot(std::span<const Word> x, const Word* y, Long first) noexcept
{
    MarkedSum sum{first};
    for (std::size_t i = 0; i < x.size(); ++i)
        sum.mac(x[i], y[i]);
    return sum;
}

} // namespace zsp::celp
