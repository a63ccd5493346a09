// The basic operations of the speech-coding standards (ITU-T G.191 and the 3GPP fixed-point codes)
// under their own names in lower case. Words are int16_t, longs int32_t. Each operation computes in
// a wider type and saturates once; nothing wraps. Any shift count is legal.
#pragma once

#include <bit>
#include <cassert>
#include <cstdint>
#include <limits>

namespace zsp::fx {

using Word = std::int16_t;
using Long = std::int32_t;

inline constexpr Word kMax16 = std::numeric_limits<Word>::max();
inline constexpr Word kMin16 = std::numeric_limits<Word>::min();
inline constexpr Long kMax32 = std::numeric_limits<Long>::max();
inline constexpr Long kMin32 = std::numeric_limits<Long>::min();

constexpr Word sat16(std::int64_t x) noexcept
{
    return static_cast<Word>(x > kMax16 ? kMax16 : x < kMin16 ? kMin16 : x);
}

constexpr Long sat32(std::int64_t x) noexcept
{
    return static_cast<Long>(x > kMax32 ? kMax32 : x < kMin32 ? kMin32 : x);
}

// Words

constexpr Word add(Word a, Word b) noexcept
{
    return sat16(std::int32_t{a} + b);
}
static_assert(add(32767, 1) == 32767 && add(-32768, -1) == -32768);

constexpr Word sub(Word a, Word b) noexcept
{
    return sat16(std::int32_t{a} - b);
}
static_assert(sub(0, -32768) == 32767 && sub(-32768, 1) == -32768);

constexpr Word negate(Word a) noexcept
{
    return sub(0, a);
}
static_assert(negate(-32768) == 32767 && negate(32767) == -32767);

constexpr Word abs_s(Word a) noexcept
{
    return a < 0 ? negate(a) : a;
}
static_assert(abs_s(-32768) == 32767 && abs_s(-1) == 1);

constexpr Word shr(Word a, int n) noexcept;

/// Left shift with saturation; a negative count shifts right.
constexpr Word shl(Word a, int n) noexcept
{
    if (n < 0) return shr(a, n < -15 ? 15 : -n);
    return sat16(std::int64_t{a} * (std::int64_t{1} << (n > 16 ? 16 : n)));
}

/// Arithmetic right shift; a negative count shifts left with saturation.
constexpr Word shr(Word a, int n) noexcept
{
    if (n < 0) return shl(a, n < -16 ? 16 : -n);
    return static_cast<Word>(a >> (n > 15 ? 15 : n));
}
static_assert(shl(1, 15) == 32767 && shl(-1, 15) == -32768 && shl(-1, 99) == -32768);
static_assert(shl(0, 99) == 0 && shl(-5, -1) == -3 && shl(-5, -99) == -1);
static_assert(shr(-1, 99) == -1 && shr(1, -15) == 32767 && shr(-3, 1) == -2);

/// Right shift that adds the last bit shifted out; more than 15 places leave 0.
constexpr Word shr_r(Word a, int n) noexcept
{
    if (n <= 0) return shr(a, n);
    if (n > 15) return 0;
    return static_cast<Word>((a >> n) + ((a >> (n - 1)) & 1));
}
static_assert(shr_r(3, 1) == 2 && shr_r(-3, 1) == -1 && shr_r(-32768, 16) == 0);

constexpr Word mult(Word a, Word b) noexcept
{
    return sat16((std::int32_t{a} * b) >> 15);
}
static_assert(mult(-32768, -32768) == 32767 && mult(-1, 1) == -1);

constexpr Word mult_r(Word a, Word b) noexcept
{
    return sat16((std::int32_t{a} * b + 16384) >> 15);
}
static_assert(mult_r(-32768, -32768) == 32767 && mult_r(1, 16384) == 1 && mult_r(-1, 16384) == 0);

/// Left shifts that normalise a word; 0 for 0, 15 for -1.
constexpr int norm_s(Word a) noexcept
{
    if (a == 0) return 0;
    return std::countl_zero(static_cast<std::uint16_t>(a < 0 ? ~a : a)) - 1;
}
static_assert(norm_s(0) == 0 && norm_s(1) == 14 && norm_s(-1) == 15 && norm_s(-32768) == 0);

/// Q15 quotient, truncated; 0 <= a <= b and b > 0.
constexpr Word div_s(Word a, Word b) noexcept
{
    assert(0 <= a && a <= b && b > 0);
    return sat16((std::int32_t{a} * 32768) / b);
}
static_assert(div_s(1, 3) == 10922 && div_s(7, 7) == 32767 && div_s(0, 1) == 0);

// Longs

constexpr Long l_add(Long a, Long b) noexcept
{
    return sat32(std::int64_t{a} + b);
}
static_assert(l_add(kMax32, 1) == kMax32 && l_add(kMin32, -1) == kMin32);

constexpr Long l_sub(Long a, Long b) noexcept
{
    return sat32(std::int64_t{a} - b);
}
static_assert(l_sub(0, kMin32) == kMax32 && l_sub(kMin32, 1) == kMin32);

constexpr Long l_negate(Long a) noexcept
{
    return l_sub(0, a);
}
static_assert(l_negate(kMin32) == kMax32);

constexpr Long l_abs(Long a) noexcept
{
    return a < 0 ? l_negate(a) : a;
}
static_assert(l_abs(kMin32) == kMax32);

/// Twice the product; only -32768 squared saturates.
constexpr Long l_mult(Word a, Word b) noexcept
{
    return sat32(std::int64_t{a} * b * 2);
}
static_assert(l_mult(-32768, -32768) == kMax32 && l_mult(-32768, 32767) == -2147418112);

constexpr Long l_mac(Long acc, Word a, Word b) noexcept
{
    return l_add(acc, l_mult(a, b));
}
static_assert(l_mac(kMax32, 1, 1) == kMax32 && l_mac(-1, -32768, -32768) == kMax32 - 1);

constexpr Long l_msu(Long acc, Word a, Word b) noexcept
{
    return l_sub(acc, l_mult(a, b));
}
static_assert(l_msu(kMin32, 1, 1) == kMin32 && l_msu(0, -32768, -32768) == -kMax32);

constexpr Long l_shr(Long a, int n) noexcept;

/// Left shift with saturation; a negative count shifts right.
constexpr Long l_shl(Long a, int n) noexcept
{
    if (n < 0) return l_shr(a, n < -31 ? 31 : -n);
    return sat32(a * (std::int64_t{1} << (n > 32 ? 32 : n)));
}

/// Arithmetic right shift; a negative count shifts left with saturation.
constexpr Long l_shr(Long a, int n) noexcept
{
    if (n < 0) return l_shl(a, n < -32 ? 32 : -n);
    return a >> (n > 31 ? 31 : n);
}
static_assert(l_shl(1, 31) == kMax32 && l_shl(-1, 31) == kMin32 && l_shl(-1, 99) == kMin32);
static_assert(l_shl(0, 99) == 0 && l_shl(-5, -1) == -3 && l_shr(1, -31) == kMax32);
static_assert(l_shr(-1, 99) == -1 && l_shr(kMin32, 31) == -1);

/// Right shift that adds the last bit shifted out; more than 31 places leave 0.
constexpr Long l_shr_r(Long a, int n) noexcept
{
    if (n <= 0) return l_shr(a, n);
    if (n > 31) return 0;
    return (a >> n) + ((a >> (n - 1)) & 1);
}
static_assert(l_shr_r(3, 1) == 2 && l_shr_r(-3, 1) == -1 && l_shr_r(kMin32, 32) == 0);

constexpr Word extract_h(Long a) noexcept
{
    return static_cast<Word>(a >> 16);
}

constexpr Word extract_l(Long a) noexcept
{
    return static_cast<Word>(a & 0xffff);
}

constexpr Long l_deposit_h(Word a) noexcept
{
    return a * 65536;
}

/// The upper word after adding half of the lower.
constexpr Word round_fx(Long a) noexcept
{
    return extract_h(l_add(a, 0x8000));
}
static_assert(round_fx(0x7fff'8000) == 32767 && round_fx(0x8000) == 1 && round_fx(-0x8000) == 0);

/// Left shifts that normalise a long; 0 for 0, 31 for -1.
constexpr int norm_l(Long a) noexcept
{
    if (a == 0) return 0;
    return std::countl_zero(static_cast<std::uint32_t>(a < 0 ? ~a : a)) - 1;
}
static_assert(norm_l(0) == 0 && norm_l(1) == 30 && norm_l(-1) == 31 && norm_l(kMin32) == 0);

/// A long as an upper word and the 15 bits below it, the double-precision form of the ITU-T codes.
struct SplitLong {
    Word hi;
    Word lo;
};

constexpr SplitLong l_extract(Long a) noexcept
{
    return {extract_h(a), static_cast<Word>((a & 0xffff) >> 1)};
}
static_assert(l_extract(-1).hi == -1 && l_extract(-1).lo == 32767);

/// Q31 long times Q15 word.
constexpr Long mpy_32_16(SplitLong a, Word b) noexcept
{
    return l_mac(l_mult(a.hi, b), mult(a.lo, b), 1);
}

constexpr Long mpy_32_16(Long a, Word b) noexcept
{
    return mpy_32_16(l_extract(a), b);
}
static_assert(mpy_32_16(kMin32, -32768) == kMax32 && mpy_32_16(65536, 16384) == 32768);

} // namespace zsp::fx
