// The basic operations against plain arithmetic in 64 bits, for every input. Left out are div_s and
// mpy_32_16, which consists of the others: the tests try samples of their inputs.
//
// cbmc: --unwind 90 -DZSP_ANY_PRODUCT

#include "core/fixed_point.hpp"

#include "proofs/proofs.hpp"

using namespace zsp::fx;

namespace {

constexpr std::int64_t limited(std::int64_t x, std::int64_t low, std::int64_t high)
{
    if (x < low) return low;
    return x > high ? high : x;
}

constexpr std::int64_t word(std::int64_t x)
{
    return limited(x, -32768, 32767);
}

constexpr std::int64_t longWord(std::int64_t x)
{
    return limited(x, -2147483648LL, 2147483647LL);
}

constexpr std::int64_t floorShift(std::int64_t x, int n)
{
    return n > 62 ? (x < 0 ? -1 : 0) : x >> n;
}

/// x * 2^n where that fits, else a value beyond all longs of its sign.
constexpr std::int64_t shiftedUp(std::int64_t x, int n)
{
    if (n <= 31) return x * (std::int64_t{1} << n);
    return x == 0 ? 0 : x < 0 ? -(std::int64_t{1} << 62) : std::int64_t{1} << 62;
}

} // namespace

PROOF(words)
{
    const Word a = nondet_i16(), b = nondet_i16();
    prove(add(a, b) == word(std::int64_t{a} + b));
    prove(sub(a, b) == word(std::int64_t{a} - b));
    prove(negate(a) == word(-std::int64_t{a}));
    prove(abs_s(a) == word(a < 0 ? -std::int64_t{a} : a));
    prove(mult(a, b) == word(floorShift(std::int64_t{a} * b, 15)));
    prove(mult_r(a, b) == word(floorShift(std::int64_t{a} * b + 16384, 15)));
    prove(l_mult(a, b) == longWord(std::int64_t{a} * b * 2));
    prove(l_deposit_h(a) == std::int64_t{a} * 65536);
}

PROOF(longs)
{
    const Long a = nondet_i32(), b = nondet_i32();
    prove(l_add(a, b) == longWord(std::int64_t{a} + b));
    prove(l_sub(a, b) == longWord(std::int64_t{a} - b));
    prove(l_negate(a) == longWord(-std::int64_t{a}));
    prove(l_abs(a) == longWord(a < 0 ? -std::int64_t{a} : a));
    prove(round_fx(a) == longWord(std::int64_t{a} + 32768) >> 16);
    prove(std::int64_t{extract_h(a)} * 65536 + static_cast<std::uint16_t>(extract_l(a)) == a);
    const SplitLong split = l_extract(a);
    prove(split.lo >= 0 && std::int64_t{split.hi} * 65536 + 2 * split.lo == (a & ~1));
}

namespace {

void checkWordShift(Word a, int n)
{
    const std::int64_t up = n < 0 ? floorShift(a, n < -62 ? 63 : -n) : word(shiftedUp(a, n));
    prove(shl(a, n) == up);
    const std::int64_t down =
        n < 0 ? word(shiftedUp(a, n < -62 ? 63 : -n)) : floorShift(a, n > 62 ? 63 : n);
    prove(shr(a, n) == down);
    if (n <= 0)
        prove(shr_r(a, n) == down);
    else if (n > 15)
        prove(shr_r(a, n) == 0);
    else
        prove(shr_r(a, n) == floorShift(std::int64_t{a} + (std::int64_t{1} << (n - 1)), n));
}

void checkLongShift(Long a, int n)
{
    const std::int64_t up = n < 0 ? floorShift(a, n < -62 ? 63 : -n) : longWord(shiftedUp(a, n));
    prove(l_shl(a, n) == up);
    const std::int64_t down =
        n < 0 ? longWord(shiftedUp(a, n < -62 ? 63 : -n)) : floorShift(a, n > 62 ? 63 : n);
    prove(l_shr(a, n) == down);
    if (n <= 0)
        prove(l_shr_r(a, n) == down);
    else if (n > 31)
        prove(l_shr_r(a, n) == 0);
    else
        prove(l_shr_r(a, n) == floorShift(std::int64_t{a} + (std::int64_t{1} << (n - 1)), n));
}

} // namespace

// Each count by itself; all others are in far_shifts.cpp.
PROOF(word_shifts)
{
    const Word a = nondet_i16();
    for (int n = -40; n <= 40; ++n)
        checkWordShift(a, n);
}

PROOF(long_shifts)
{
    const Long a = nondet_i32();
    for (int n = -40; n <= 40; ++n)
        checkLongShift(a, n);
}

PROOF(multiply_and_add)
{
    const Long acc = nondet_i32();
    const Word a = nondet_i16(), b = nondet_i16();
    const std::int64_t twice = longWord(std::int64_t{a} * b * 2);
    prove(l_mac(acc, a, b) == longWord(acc + twice));
    prove(l_msu(acc, a, b) == longWord(acc - twice));
}

PROOF(norms)
{
    const Word a = nondet_i16();
    const int n = norm_s(a);
    prove(0 <= n && n <= 15 && (a != 0 || n == 0));
    // Not yet too far, but one more place would be.
    prove(shiftedUp(a, n) == word(shiftedUp(a, n)));
    prove(a == 0 || shiftedUp(a, n + 1) != word(shiftedUp(a, n + 1)) || a == -1);
    const Long b = nondet_i32();
    const int m = norm_l(b);
    prove(0 <= m && m <= 31 && (b != 0 || m == 0));
    prove(shiftedUp(b, m) == longWord(shiftedUp(b, m)));
    prove(b == 0 || shiftedUp(b, m + 1) != longWord(shiftedUp(b, m + 1)) || b == -1);
}
