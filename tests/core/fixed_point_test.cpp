// The basic operations against exact 64-bit arithmetic: words exhaustively, longs densely.

#include "core/fixed_point.hpp"

#include "tests/support/samples.hpp"

#include <gtest/gtest.h>

#include <cmath>

namespace {

namespace fx = zsp::fx;
using Wide = std::int64_t;

Wide clamp(Wide x, int bits)
{
    const Wide top = (Wide{1} << (bits - 1)) - 1;
    return std::min(std::max(x, -top - 1), top);
}

/// floor(x / 2^n)
Wide floorShift(Wide x, int n)
{
    return x >> n;
}

#ifdef __SANITIZE_ADDRESS__
constexpr int kFirstWordStep = 61; // the instrumented loop would take minutes
#else
constexpr int kFirstWordStep = 1;
#endif

TEST(FixedPoint, WordPairsExhaustively)
{
    Wide wrong = 0;
    for (int i = -32768; i <= 32767; i += kFirstWordStep)
        for (int j = -32768; j <= 32767; ++j) {
            const auto a = static_cast<fx::Word>(i), b = static_cast<fx::Word>(j);
            const Wide product = Wide{i} * j;
            wrong += fx::add(a, b) != clamp(Wide{i} + j, 16);
            wrong += fx::sub(a, b) != clamp(Wide{i} - j, 16);
            wrong += fx::mult(a, b) != clamp(floorShift(product, 15), 16);
            wrong += fx::mult_r(a, b) != clamp(floorShift(product + 16384, 15), 16);
            wrong += fx::l_mult(a, b) != clamp(2 * product, 32);
        }
    EXPECT_EQ(wrong, 0);
}

TEST(FixedPoint, EveryWordWithEveryShift)
{
    for (int i = -32768; i <= 32767; ++i) {
        const auto a = static_cast<fx::Word>(i);
        ASSERT_EQ(fx::negate(a), clamp(-Wide{i}, 16));
        ASSERT_EQ(fx::abs_s(a), clamp(std::abs(Wide{i}), 16));
        for (int n = 0; n <= 40; ++n) {
            const Wide left = clamp(Wide{i} * (Wide{1} << n), 16);
            const Wide right = floorShift(i, n);
            ASSERT_EQ(fx::shl(a, n), left) << i << " << " << n;
            ASSERT_EQ(fx::shr(a, -n), left);
            ASSERT_EQ(fx::shr(a, n), right) << i << " >> " << n;
            ASSERT_EQ(fx::shl(a, -n), right);
            const Wide rounded = n == 0 ? i : floorShift(i + (Wide{1} << (n - 1)), n);
            ASSERT_EQ(fx::shr_r(a, n), n > 15 ? 0 : rounded) << i << " >> " << n;
        }
        const int norm = fx::norm_s(a);
        if (i == 0) {
            ASSERT_EQ(norm, 0);
            continue;
        }
        const Wide shifted = Wide{i} * (Wide{1} << norm);
        ASSERT_TRUE(shifted >= 16384 ? shifted <= 32767 : shifted >= -32768 && shifted < -16384)
            << i;
    }
}

TEST(FixedPoint, Division)
{
    for (int b = 1; b <= 32767; b += 7)
        for (int a = 0; a <= b; a += 1 + b / 61)
            ASSERT_EQ(fx::div_s(static_cast<fx::Word>(a), static_cast<fx::Word>(b)),
                      clamp(Wide{a} * 32768 / b, 16));
}

TEST(FixedPoint, LongsAgainstWideArithmetic)
{
    zsp::test::Samples samples(2);
    for (int round = 0; round < 2'000'000; ++round) {
        const auto x = samples.integer<fx::Long>(), y = samples.integer<fx::Long>();
        const auto a = samples.integer<fx::Word>(), b = samples.integer<fx::Word>();
        const int n = samples.below(41);
        const Wide doubled = clamp(Wide{a} * b * 2, 32);
        ASSERT_EQ(fx::l_add(x, y), clamp(Wide{x} + y, 32));
        ASSERT_EQ(fx::l_sub(x, y), clamp(Wide{x} - y, 32));
        ASSERT_EQ(fx::l_negate(x), clamp(-Wide{x}, 32));
        ASSERT_EQ(fx::l_abs(x), clamp(std::abs(Wide{x}), 32));
        ASSERT_EQ(fx::l_mac(x, a, b), clamp(x + doubled, 32));
        ASSERT_EQ(fx::l_msu(x, a, b), clamp(x - doubled, 32));
        const Wide left = n > 31 && x != 0 ? clamp(x > 0 ? Wide{1} << 40 : -(Wide{1} << 40), 32)
                                           : clamp(x * (Wide{1} << std::min(n, 31)), 32);
        const Wide right = floorShift(x, n);
        ASSERT_EQ(fx::l_shl(x, n), left) << x << " << " << n;
        ASSERT_EQ(fx::l_shr(x, -n), left);
        ASSERT_EQ(fx::l_shr(x, n), right) << x << " >> " << n;
        ASSERT_EQ(fx::l_shl(x, -n), right);
        const Wide rounded = n == 0 ? x : floorShift(x + (Wide{1} << (n - 1)), n);
        ASSERT_EQ(fx::l_shr_r(x, n), n > 31 ? 0 : rounded) << x << " >> " << n;
        ASSERT_EQ(fx::round_fx(x), floorShift(clamp(Wide{x} + 32768, 32), 16));
        const auto split = fx::l_extract(x);
        ASSERT_EQ(Wide{split.hi} * 65536 + Wide{split.lo} * 2, Wide{x} - (x & 1));
        ASSERT_EQ(
            fx::mpy_32_16(x, a),
            clamp(clamp(Wide{split.hi} * a * 2, 32) + 2 * floorShift(Wide{split.lo} * a, 15), 32));
        const int norm = fx::norm_l(x);
        const Wide shifted = Wide{x} * (Wide{1} << norm);
        ASSERT_TRUE(x == 0  ? norm == 0
                    : x > 0 ? shifted >= (Wide{1} << 30) && shifted < (Wide{1} << 31)
                            : shifted >= -(Wide{1} << 31) && shifted < -(Wide{1} << 30))
            << x;
    }
}

} // namespace
