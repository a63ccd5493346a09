// The operations of ITU-T G.728 Annex G, which has its own: block floating point, where a number or
// five of them carry a Q of their own, and a rounding that gives way only at the positive end.
#pragma once

#include "codecs/shared/words.hpp"
#include "core/fixed_point.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zsp::g728 {

using codecs::push;
using fx::sat16;
using fx::sat32;
using zsp::In;
using zsp::Out;

using Word = std::int16_t;
using Long = std::int32_t;
using Wide = std::int64_t;

/// Samples of a vector.
inline constexpr std::size_t kVector = 5;
/// Coefficients of the synthesis filter and of all other predictors.
inline constexpr std::size_t kLong = 50, kShort = 10;

/// Vectors and mantissas with their Q: the value of m[i] is m[i] / 2^q. The newest sample is first.
struct Vector {
    std::array<Word, kVector> m{};
    int q = 0;
};
struct Scalar {
    Word m = 0;
    int q = 0;
};

/// The upper word after adding half of the lower, saturated.
constexpr Word rh(Wide x) noexcept
{
    return sat16((x + 0x8000) >> 16);
}
static_assert(rh(0x7fff'8000) == 32767 && rh(-0x8000) == 0 && rh(-0x8001) == -1);

/// x * 2^-n, rounded down. A negative n shifts left; what then leaves 32 bits only stays outside of
/// them.
constexpr Wide shifted(Wide x, int n) noexcept
{
    if (n >= 0) return x >> std::min(n, 63);
    constexpr Wide kEnough = 0xffff'ffff;
    return std::clamp(x, -kEnough, kEnough) * (Wide{1} << std::min(-n, 31));
}
static_assert(shifted(-3, 1) == -2 && shifted(-1, 99) == -1 && shifted(3, -2) == 12);
static_assert(shifted(-1, -31) == fx::kMin32 && shifted(1, -99) > fx::kMax32);

/// The left shifts that make a number fill so many bits, sign included; 0 fills none.
constexpr int nrm(Wide x, int bits) noexcept
{
    return bits - 1 - static_cast<int>(std::bit_width(static_cast<std::uint64_t>(x < 0 ? ~x : x)));
}
static_assert(nrm(8192, 15) == 0 && nrm(-8192, 15) == 1 && nrm(0, 15) == 14 && nrm(-1, 32) == 31);

/// The left shifts after which the largest magnitude fills so many bits. VSCALE without the shift.
template <std::size_t n>
constexpr int vectorNrm(std::span<const Word, n> m, int bits) noexcept
{
    int filled = 0;
    for (const Word x : m)
        filled |= x < 0 ? ~x : x;
    return nrm(filled, bits);
}

/// Shifts a vector so that it fills so many bits, and returns the shifts. VSCALE.
template <typename Words>
constexpr int normalise(Words& m, int bits) noexcept
{
    const int n = vectorNrm(std::span<const Word>(m), bits);
    for (Word& x : m)
        x = sat16(shifted(x, -n));
    return n;
}

/// The quotient of two scalars, to nearest. y is not 0. DIVIDE. Words have no ties: y
/// would need a factor of 2^16, or be 2^15 below an odd x.
constexpr Scalar divide(Scalar x, Scalar y) noexcept
{
    assert(y.m != 0);
    Wide n = x.m < 0 ? -Wide{x.m} : x.m;
    const Wide d = y.m < 0 ? -Wide{y.m} : y.m;
    int q = x.q - y.q + 14;
    if (n < d) {
        ++q;
        n *= 2;
    }
    const Wide quotient = (n * 32768 + d) / (2 * d);
    return {sat16((x.m < 0) != (y.m < 0) ? -quotient : quotient), q};
}
static_assert(divide({16384, 14}, {16384, 14}).m == 16384 && divide({0, 0}, {7, 0}).m == 0);

/// x / y in Q16 for x, y >= 0, rounded down and at most 65535. SIMPDIV.
constexpr Long quotient(Long x, Long y) noexcept
{
    assert(x >= 0 && y > 0);
    return static_cast<Long>(std::min<Wide>((Wide{x} << 16) / y, 65535));
}

/// The public forms: five mantissas and then their Q; one and its Q.
inline Vector vectorAt(const Word* words) noexcept
{
    Vector v;
    std::copy_n(words, kVector, v.m.begin());
    v.q = words[kVector];
    return v;
}
inline void storeVector(const Vector& v, Word* words) noexcept
{
    std::copy(v.m.begin(), v.m.end(), words);
    words[kVector] = sat16(v.q);
}
inline Scalar scalarAt(const Word* words) noexcept
{
    return {words[0], words[1]};
}
inline void storeScalar(Scalar x, Word* words) noexcept
{
    words[0] = x.m;
    words[1] = sat16(x.q);
}

/// Whether an export takes a Q.
constexpr bool hasQ(Long q) noexcept
{
    return -64 <= q && q <= 64;
}

} // namespace zsp::g728
