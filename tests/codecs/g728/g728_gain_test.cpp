// The log-gain predictor of G.728, and the quotient that divides by what it predicts.

#include "codecs/g728/g728_blocks.hpp"
#include "codecs/g728/g728_ops.hpp"

#include "tests/codecs/g728/g728_arguments.hpp"
#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "zspsc/g728/coder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsLogGainPredict_G728_16s),
             {in<std::int16_t>(10), in<std::int16_t>(10), number(14336), out<std::int16_t>(1),
              out<std::int16_t>(2)})
        .row({{2, number(14337)}}, zspStsRangeErr)
        .row({{2, number(-16385)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspsLogGainUpdate_G728_16s), {number(0), number(1023), out<std::int16_t>(1)})
        .row({{1, number(1024)}}, zspStsCodecRangeErr)
        .row({{1, number(-1)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsCodevectorScale_G728_16s),
             {number(0), in(scalarWithQ(64)), out<std::int16_t>(6)})
        .row({{1, in(scalarWithQ(65))}}, zspStsScaleRangeErr)
        .row({{1, in(scalarWithQ(-65))}}, zspStsScaleRangeErr)
        .row({{0, number(1024)}}, zspStsCodecRangeErr)
        .row({{0, number(-1)}}, zspStsCodecRangeErr),
});

// The division by restoring steps, as the Recommendation writes it; x / y below 2.
std::int16_t dividedByStep(int x, int y, int& q)
{
    int n = std::abs(x), d = std::abs(y), quotient = 0;
    q = 14;
    if (n < d) {
        ++q;
        n *= 2;
    }
    for (int i = 0; i < 15; ++i) {
        quotient *= 2;
        if (n > d) {
            ++quotient;
            n -= d;
        }
        n *= 2;
    }
    if (n > d) ++quotient;
    return static_cast<std::int16_t>(std::int64_t{x} * y < 0 ? -quotient : quotient);
}

TEST(G728Gain, DivideEqualsTheStandardsSteps)
{
    Samples samples(28);
    for (int round = 0; round < 200000; ++round) {
        const auto x = samples.integer<std::int16_t>(), y = samples.integer<std::int16_t>();
        if (y == 0 || std::abs(x) >= 2 * std::abs(y)) continue;
        int q = 0;
        const auto want = dividedByStep(x, y, q);
        const auto got = zsp::g728::divide({x, 0}, {y, 0});
        ASSERT_EQ(got.m, want) << x << " / " << y;
        ASSERT_EQ(got.q, q) << x << " / " << y;
    }
}

// 10^((G + 32 dB) / 20) within the polynomial's error, over all levels.
TEST(G728Gain, IsTheExponentialOfTheLevel)
{
    for (int level = -16384; level <= 14336; ++level) {
        const auto gain = zsp::g728::linearGain(static_cast<std::int16_t>(level));
        const double want = std::pow(10.0, (level / 512.0 + 32) / 20);
        ASSERT_NEAR(gain.m / std::pow(2.0, gain.q) / want, 1, 0.001) << level;
    }
}

} // namespace
