// The Levinson-Durbin recursion of G.728 and its bandwidth expansion.

#include "codecs/g728/g728_blocks.hpp"

#include "tests/codecs/g728/g728_arguments.hpp"
#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/g728/adapt.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsLevinsonDurbin_G728_16s),
             {in<std::int16_t>(51), number(10), number(50), out<std::int16_t>(50),
              out(Words{13, 1000, 0}), out<std::int32_t>(1)})
        .row({{1, number(-1)}}, zspStsSizeErr)
        .row({{2, number(51)}}, zspStsSizeErr)
        .row({{2, number(10)}}, zspStsSizeErr)
        .row({{4, out(Words{12, 1000, 0})}}, zspStsScaleRangeErr)
        .row({{4, out(Words{16, 1000, 0})}}, zspStsScaleRangeErr),
    Contract(ZSP_NAMED(zspsBandwidthExpand_G728_16s),
             {number(zspG728ExpandErasure), in<std::int16_t>(50), number(15), out<std::int16_t>(50),
              out<std::int32_t>(1)})
        .row({{2, number(12)}}, zspStsScaleRangeErr)
        .row({{2, number(16)}}, zspStsScaleRangeErr)
        .row({{0, number(7)}}, zspStsCodecRangeErr)
        .row({{0, number(-1)}}, zspStsCodecRangeErr),
});

// An autocorrelation that dies out like 0.5^l has one coefficient, and so has every longer filter.
TEST(G728Levinson, FindsOneCoefficient)
{
    Words r(51), a(50), state(3);
    for (std::size_t l = 0; l < r.size(); ++l)
        r[l] = static_cast<std::int16_t>(l < 15 ? 16384 >> l : 0);
    std::int32_t ok = 0;
    ASSERT_EQ(zspsLevinsonDurbin_G728_16s(r.data(), 0, 50, a.data(), state.data(), &ok),
              zspStsNoErr);
    EXPECT_EQ(ok, 1);
    EXPECT_EQ(state[0], 15);
    EXPECT_NEAR(state[1], 12288, 8) << "1 - 0.25 of the energy is left";
    EXPECT_NEAR(a[0], -16384, 8);
    for (std::size_t i = 1; i < a.size(); ++i)
        EXPECT_NEAR(a[i], 0, 8) << i;
}

// Ten orders and then forty give the same as fifty; what fails leaves everything as it was.
TEST(G728Levinson, CanBeTakenUpAgain)
{
    Samples samples(50);
    int good = 0;
    for (int round = 0; round < 300; ++round) {
        Words r = samples.words(51);
        for (std::size_t l = 1; l < r.size(); ++l)
            r[l] = static_cast<std::int16_t>(r[l] / (round % 2 ? 40 : 8));
        r[0] = 32000;
        Words at_once(50, 7), parts(50, 7), state{1, 2, 3}, stateOfParts{1, 2, 3};
        std::int32_t ok = 0, first = 0, second = 0;
        zspsLevinsonDurbin_G728_16s(r.data(), 0, 50, at_once.data(), state.data(), &ok);
        zspsLevinsonDurbin_G728_16s(r.data(), 0, 10, parts.data(), stateOfParts.data(), &first);
        if (first)
            zspsLevinsonDurbin_G728_16s(r.data(), 10, 50, parts.data(), stateOfParts.data(),
                                        &second);
        ASSERT_EQ(ok, second);
        if (!ok) {
            expectEqual(at_once, Words(50, 7), "coefficients of a bad recursion");
            expectEqual(state, Words{1, 2, 3}, "state of a bad recursion");
            continue;
        }
        ++good;
        expectEqual(parts, at_once, "coefficients");
        expectEqual(stateOfParts, state, "state");
    }
    EXPECT_GT(good, 50);
    EXPECT_LT(good, 300);
}

/// Both versions from one state on; whether the recursion went to its end.
bool expectSame(std::span<const std::int16_t> r, int from, int to, zsp::g728::Predictor& p,
                int round)
{
    zsp::g728::Predictor got = p;
    const bool isGood = levinsonScalar(r, from, to, p);
    EXPECT_EQ(levinsonAvx2(r, from, to, got), isGood) << round;
    expectEqual(got.a, p.a, "round " + std::to_string(round));
    EXPECT_EQ(got.q, p.q) << round;
    EXPECT_EQ(got.alpha, p.alpha) << round;
    EXPECT_EQ(got.reflection, p.reflection) << round;
    return isGood;
}

// Correlations that go all the way, that fail on the way, and that need their coefficients halved,
// in all of which the lanes give way to the definition at times.
TEST(G728Levinson, Avx2EqualsDefinition)
{
    using namespace zsp::g728;
    Samples samples(51);
    int good = 0, halved = 0;
    for (int round = 0; round < 20000; ++round) {
        Words r = samples.words(51);
        if (round % 8) { // a decaying wave with some noise
            const double fade = 3.0 + samples.below(60);
            const double turn = samples.below(1000) / 318.3;
            for (std::size_t l = 0; l < r.size(); ++l) {
                const auto t = static_cast<double>(l);
                r[l] = static_cast<std::int16_t>(32000 * std::exp(-t / fade) * std::cos(turn * t) +
                                                 r[l] / 4096.0);
            }
            r[0] = static_cast<std::int16_t>(32000 + samples.below(767));
        }
        Predictor p;
        p.a.fill(7);
        for (const auto& [from, to] : {std::pair{0, 10}, {10, 50}}) {
            const auto words = std::span(r).first(static_cast<std::size_t>(to) + 1);
            if (!expectSame(words, from, to, p, round)) break;
            good += to == 50;
            halved += to == 50 && p.q < 15;
        }
        if (HasFailure()) return;
    }
    EXPECT_GT(good, 2000);
    EXPECT_GT(halved, 500);
    EXPECT_LT(good, 19000);
}

// From any words on: coefficients at the ends, energies that are none, correlations that are.
TEST(G728Levinson, Avx2EqualsDefinitionFromAnyState)
{
    using namespace zsp::g728;
    Samples samples(52);
    int good = 0;
    for (int round = 0; round < 30000; ++round) {
        const bool isLoud = round % 8 == 4; // of sums that just leave 32 bits one order
        Words r = wordsOf(samples, 51, isLoud ? 0 : samples.below(10));
        const int quieter = !isLoud && samples.below(3) ? 3 + samples.below(10) : 0;
        for (auto& x : r)
            x = static_cast<std::int16_t>(x >> quieter);
        const int from = samples.below(50), to = from + 1 + (isLoud ? 0 : samples.below(50 - from));
        Predictor p;
        std::ranges::copy(wordsOf(samples, kLong, isLoud ? 0 : samples.below(10)), p.a.begin());
        const int smaller = isLoud ? 1 : samples.below(6);
        for (auto& x : p.a)
            x = static_cast<std::int16_t>(x >> smaller);
        if (round % 8 == 0 && from > 1) { // two products in a lane that wrap
            const auto m = static_cast<std::size_t>(samples.below(from / 2)) * 2;
            const auto n = static_cast<std::size_t>(from);
            p.a[m] = p.a[m + 1] = r[n - m] = r[n - m - 1] = -32768;
        }
        p.q = 13 + samples.below(3);
        p.alpha = static_cast<Word>(samples.below(8) ? 32767 - samples.below(300)
                                                     : samples.integer<std::int16_t>());
        good +=
            expectSame(std::span(r).first(static_cast<std::size_t>(to) + 1), from, to, p, round);
        if (HasFailure()) return;
    }
    EXPECT_GT(good, 3000);
    EXPECT_LT(good, 25000);
}

TEST(G728Levinson, ExpansionByAvx2EqualsDefinition)
{
    using namespace zsp::g728;
    Samples samples(53);
    int good = 0;
    for (int round = 0; round < 20000; ++round) {
        const auto weights = expansionWeights(round % 7);
        Words a = wordsOf(samples, weights.size(), round), want(weights.size(), 7), got = want;
        if (round % 2)
            for (auto& x : a)
                x = static_cast<std::int16_t>(x >> samples.below(3));
        const int q = 13 + samples.below(3);
        const bool isGood = expandBandwidthScalar(a, q, weights, want);
        ASSERT_EQ(expandBandwidthAvx2(a, q, weights, got), isGood) << round;
        expectEqual(got, want, "round " + std::to_string(round));
        ASSERT_EQ(expandBandwidthAvx2(a, q, weights, a), isGood) << round << ", in place";
        if (isGood) expectEqual(a, want, "in place, round " + std::to_string(round));
        good += isGood;
    }
    EXPECT_GT(good, 2000);
    EXPECT_LT(good, 18000);
}

} // namespace
