// The hybrid windows of G.728.

#include "codecs/g728/g728_blocks.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/g728/adapt.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsHybridWindow_G728_16s),
             {number(zspG728WindowSynthesis), in<std::int16_t>(105), in(Words(21, -64)),
              out<std::int16_t>(51), out(Words{256}), out<std::int16_t>(51), out<std::int32_t>(1)})
        .row({{0, number(3)}}, zspStsCodecRangeErr)
        .row({{0, number(-1)}}, zspStsCodecRangeErr)
        .row({{4, out(Words{257})}}, zspStsScaleRangeErr)
        .row({{4, out(Words{-257})}}, zspStsScaleRangeErr)
        .row({{2, in(Words(21, 65))}}, zspStsScaleRangeErr),
});

TEST(G728Window, ApplyingByAvx2EqualsDefinition)
{
    using namespace zsp::g728;
    Samples samples(37);
    for (int round = 0; round < 6000; ++round) {
        const WindowShape& shape = windowShape(round % 3);
        Words src = round % 5 ? samples.words(shape.window.size())
                              : samples.extremeWords(shape.window.size());
        const int small = samples.below(16);
        for (auto& x : src)
            x = static_cast<std::int16_t>(x >> small);
        Words q(round % 3 == 0 ? 21 : 0), want(src.size()), got(src.size());
        for (auto& x : q)
            x = static_cast<std::int16_t>(64 - samples.below(round % 2 ? 129 : 6));
        const int wantQ = applyWindowScalar(shape, src, q, want);
        ASSERT_EQ(applyWindowAvx2(shape, src, q, got), wantQ) << round;
        expectEqual(got, want, "round " + std::to_string(round));
    }
}

// All three windows over signals of 14 bits, as coders have them, and over any words; full scale
// without a change of sign has the largest sums.
TEST(G728Window, Avx2EqualsDefinition)
{
    using namespace zsp::g728;
    Samples samples(36);
    for (int round = 0; round < 6000; ++round) {
        const WindowShape& shape = windowShape(round % 3);
        Words windowed = round % 4 ? samples.words(shape.window.size())
                                   : samples.extremeWords(shape.window.size());
        if (round % 5) // to the ends of 14 bits, and beyond by one
            for (auto& w : windowed)
                w = static_cast<std::int16_t>(w < 0 ? (w - 3) / 4 : (w + 3 - round % 2) / 4);
        if (round % 8 == 1)
            for (auto& w : windowed)
                w = static_cast<std::int16_t>(8192 - samples.below(round % 16 == 1 ? 1 : 1500));
        const int q = samples.below(80) - 30;
        int wantQ = samples.below(160) - 60, gotQ = wantQ;
        Words want = samples.words(shape.lags), got = want, wantR(shape.lags), gotR(shape.lags);
        const bool isGood = correlateScalar(shape, windowed, q, want, wantQ, wantR);
        ASSERT_EQ(correlateAvx2(shape, windowed, q, got, gotQ, gotR), isGood) << round;
        ASSERT_EQ(gotQ, wantQ) << round;
        expectEqual(got, want, "recursion, round " + std::to_string(round));
        expectEqual(gotR, wantR, "correlation, round " + std::to_string(round));
    }
}

} // namespace
