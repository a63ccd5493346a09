// The synthesis filter of G.728.

#include "codecs/g728/g728_blocks.hpp"

#include "tests/codecs/g728/g728_arguments.hpp"
#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/g728/coder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsSyntesisFilterZeroInput_G728_16s),
             {in<std::int16_t>(50), in<std::int16_t>(50), in(Words(10, 64)), out<std::int16_t>(6)})
        .row({{2, in(Words{0, 0, 0, 0, 0, 0, 0, 0, 0, 65})}}, zspStsScaleRangeErr)
        .row({{2, in(Words{-65, 0, 0, 0, 0, 0, 0, 0, 0, 0})}}, zspStsScaleRangeErr),
    Contract(ZSP_NAMED(zspsSynthesisFilterZeroState_G728_16s),
             {in<std::int16_t>(4), out(vectorWithQ(-64)), out<std::int16_t>(5)})
        .row({{1, out(vectorWithQ(-65))}}, zspStsScaleRangeErr)
        .row({{1, out(vectorWithQ(65))}}, zspStsScaleRangeErr),
    Contract(ZSP_NAMED(zspsSynthesisFilterUpdate_G728_16s),
             {in<std::int16_t>(5), number(64), out(vectorWithQ(-64))})
        .row({{1, number(65)}}, zspStsScaleRangeErr)
        .row({{1, number(-65)}}, zspStsScaleRangeErr)
        .row({{2, out(vectorWithQ(65))}}, zspStsScaleRangeErr),
});

/// One vector gives a sum of -1 and all shifts between it and the others; the newest sample.
std::int16_t smallSum(std::size_t vector, int shift)
{
    using namespace zsp::g728;
    Words a(50), history(50), q(10), dst(6);
    a[5 * vector] = 1; // of the oldest sample
    history[5 * vector] = 1;
    q[vector] = static_cast<std::int16_t>(shift);
    zspsSyntesisFilterZeroInput_G728_16s(a.data(), history.data(), q.data(), dst.data());
    const Vector want = zeroInputScalar(
        In<kLong>(a.data(), kLong), In<kLong>(history.data(), kLong), In<kShort>(q.data(), kShort));
    EXPECT_EQ(dst[4], want.m[4]) << "definition";
    return dst[4];
}

// Shifted sums are rounded down, so that a small negative one stays -1 however small it is. Of the
// oldest vector alone nothing is left from a shift of 30 on.
TEST(G728Synthesis, LeavesTheOldestVectorOutWhereItIsSmall)
{
    for (const int shift : {0, 1, 29, 30, 31, 62, 64}) {
        EXPECT_EQ(smallSum(8, shift), -16384) << shift;
        EXPECT_EQ(smallSum(9, shift), shift < 30 ? -16384 : 0) << shift;
    }
}

// Histories of 14 bits, as coders have them, one more at either end, and any words.
TEST(G728Synthesis, ZeroInputByAvx2EqualsDefinition)
{
    using namespace zsp::g728;
    Samples samples(9);
    for (int round = 0; round < 20000; ++round) {
        const Words a = wordsOf(samples, 50, samples.below(10));
        Words history = round % 3 ? samples.words(50) : samples.extremeWords(50), q(10);
        if (round % 8)
            for (auto& h : history)
                h = static_cast<std::int16_t>(h >> 2);
        if (round % 8 == 3) // 15 bits of one sign
            for (auto& h : history)
                h = static_cast<std::int16_t>(0x2000 + (h & 0x3fff));
        if (round % 8 == 1) history[static_cast<std::size_t>(samples.below(50))] = 8192;
        if (round % 8 == 2) history[static_cast<std::size_t>(samples.below(50))] = -8193;
        const int spread = round % 4 == 0 ? 129 : round % 4 == 1 ? 1 : 36;
        for (auto& x : q)
            x = static_cast<std::int16_t>(64 - samples.below(spread));
        const In<kLong> filter(a.data(), kLong), past(history.data(), kLong);
        const In<kShort> exponents(q.data(), kShort);
        const Vector want = zeroInputScalar(filter, past, exponents);
        const Vector got = zeroInputAvx2(filter, past, exponents);
        expectEqual(got.m, want.m, "round " + std::to_string(round));
        ASSERT_EQ(got.q, want.q) << round;
    }
}

TEST(G728Synthesis, WholeCodersConform)
{
    expectConforms("G.728", 14, "encoder, ");
    expectConforms("G.728", 28, "decoder, ");
    expectConforms("G.728", 5, "every block");
}

} // namespace
