// The long-term predictor of GSM full rate: equal lags, the limits of the gain, and AVX2 against
// the definitions.

#include "codecs/gsmfr/gsmfr_longterm.hpp"

#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/gsmfr/residual.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace zsp::test;
using namespace zsp::gsmfr;
using Words = std::vector<std::int16_t>;
using zsp::spanOf;

const bool registered = addContracts({
    // The guard before the buffer serves as the past.
    Contract(ZSP_NAMED(zspsLTPSearch_GSMFR_16s), {in<std::int16_t>(40), in<std::int16_t>(40),
                                                  out<std::int32_t>(1), out<std::int32_t>(1)}),
    Contract(
        ZSP_NAMED(zspsLongTermPredict_GSMFR_16s),
        {in<std::int16_t>(40), in<std::int16_t>(40), number(40), number(0), out<std::int16_t>(40)})
        .row({{2, number(39)}}, zspStsCodecRangeErr)
        .row({{2, number(121)}}, zspStsCodecRangeErr)
        .row({{3, number(-1)}}, zspStsCodecRangeErr)
        .row({{3, number(4)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsLongTermSynthesis_GSMFR_16s),
             {in<std::int16_t>(13), number(3), number(120), number(3), out<std::int16_t>(40)})
        .row({{1, number(-1)}}, zspStsCodecRangeErr)
        .row({{1, number(4)}}, zspStsCodecRangeErr)
        .row({{2, number(39)}}, zspStsCodecRangeErr)
        .row({{2, number(121)}}, zspStsCodecRangeErr)
        .row({{3, number(-1)}}, zspStsCodecRangeErr)
        .row({{3, number(4)}}, zspStsCodecRangeErr),
});

TEST(GsmfrLongTerm, EqualLagsAndGains)
{
    struct Row {
        std::vector<int> at; // pulses so many samples before the sub-segment's first one
        std::int16_t pulse, sample;
        std::int32_t lag, gain;
        const char* why;
    };
    const Row rows[] = {
        {{50, 90, 115}, 800, 800, 50, 3, "of equal lags the smallest"},
        {{120}, 800, 800, 120, 3, "the largest lag"},
        {{60}, 800, -800, 40, 0, "none is positive"},
        {{}, 0, 800, 40, 0, "nothing there"},
        {{60}, 1600, 319, 60, 0, "just at the first level, 0.2"},
        {{60}, 1600, 400, 60, 1, "behind it"},
        {{60}, 1600, 900, 60, 2, "behind the second, 0.5"},
        {{60}, 1600, 1300, 60, 3, "behind the third, 0.8"},
    };
    for (const Row& row : rows) {
        Words line(160, 0), d(40, 0);
        d[0] = row.sample;
        for (const int before : row.at)
            line[static_cast<std::size_t>(120 - before)] = row.pulse;
        std::int32_t lag = -1, gain = -1;
        ASSERT_EQ(zspsLTPSearch_GSMFR_16s(d.data(), &line[120], &lag, &gain), zspStsNoErr);
        EXPECT_EQ(lag, row.lag) << row.why;
        EXPECT_EQ(gain, row.gain) << row.why;
    }
}

TEST(GsmfrLongTerm, Avx2EqualsDefinition)
{
    Samples samples(511);
    for (int round = 0; round < 4000; ++round) {
        SCOPED_TRACE(round);
        Words d = samples.words(40), past = samples.words(120), want(40), got(40);
        for (auto& x : d)
            x = static_cast<std::int16_t>(x >> (round % 16));
        if (round % 3 == 1) // a past that predicts
            for (std::size_t i = 0; i < 40; ++i)
                past[static_cast<std::size_t>(round % 81) + i] =
                    static_cast<std::int16_t>(d[i] >> (round % 4));
        if (round % 7 == 6) d = past = Words(120, -32768); // the largest sums
        d.resize(40);
        const auto segment = spanOf<40>(std::as_const(d).data());
        const auto dp = spanOf<120>(std::as_const(past).data());
        const LongTerm how = ltpSearchScalar(segment, dp), found = ltpSearchAvx2(segment, dp);
        ASSERT_EQ(found.lag, how.lag);
        ASSERT_EQ(found.gain, how.gain);

        const LongTerm any{.lag = 40 + samples.below(81), .gain = samples.below(4)};
        longTermPredictScalar(segment, dp, any, spanOf<40>(want.data()));
        longTermPredictAvx2(segment, dp, any, spanOf<40>(got.data()));
        expectEqual(got, want, "e");
        const Words pulses = samples.words(13);
        const int grid = samples.below(4);
        const auto xmp = spanOf<13>(pulses.data());
        longTermSynthesisScalar(xmp, grid, any, dp, spanOf<40>(want.data()));
        longTermSynthesisAvx2(xmp, grid, any, dp, spanOf<40>(got.data()));
        expectEqual(got, want, "dp");
    }
}

} // namespace
