// Logarithm and power of the fixed-point codes against the functions of libm.

#include "common/math/log2_pow2.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>

namespace {

using namespace zsp;

// The chord of a 32nd of an octave lies at most 5.8 / 32768 below the logarithm, and the tables
// are good to one and a half of their units.
TEST(Log2Pow2, FollowTheLaw)
{
    for (std::int64_t x = 1; x <= fx::kMax32; x += 1 + x / 97) {
        const auto [exponent, fraction_Q15] = common::log2(static_cast<fx::Long>(x));
        ASSERT_NEAR(exponent + fraction_Q15 / 32768.0, std::log2(static_cast<double>(x)),
                    7.0 / 32768)
            << x;
    }
    for (fx::Word exponent = 0; exponent <= 30; ++exponent)
        for (int fraction_Q15 = 0; fraction_Q15 <= 32767; fraction_Q15 += 13) {
            const double want = std::exp2(exponent + fraction_Q15 / 32768.0);
            ASSERT_NEAR(common::pow2(exponent, static_cast<fx::Word>(fraction_Q15)), want,
                        0.5 + want * 1.5 / 16384)
                << exponent << " + " << fraction_Q15;
        }
}

// Every entry is the nearest word, but for the last, which would not fit.
TEST(Log2Pow2, TableOfPowers)
{
    for (std::size_t i = 0; i < 32; ++i)
        EXPECT_EQ(common::kPow2[i], std::lround(16384 * std::exp2(static_cast<double>(i) / 32)))
            << i;
    EXPECT_EQ(common::kPow2[32], 32767);
}

} // namespace
