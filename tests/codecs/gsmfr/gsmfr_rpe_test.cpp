// The regular-pulse excitation of GSM full rate: equal grids, every block amplitude, and AVX2
// against the definitions.

#include "codecs/gsmfr/gsmfr_rpe.hpp"

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

Argument pulses(std::int16_t last)
{
    return in<std::int16_t>({7, 0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, last});
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsWeightingFilter_GSMFR_16s),
             {in<std::int16_t>(40), out<std::int16_t>(40)}),
    Contract(ZSP_NAMED(zspsRPEGridSelect_GSMFR_16s),
             {in<std::int16_t>(40), out<std::int16_t>(13), out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsAPCMQuant_GSMFR_16s),
             {in<std::int16_t>(13), out<std::int16_t>(13), out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsAPCMDequant_GSMFR_16s), {pulses(7), number(63), out<std::int16_t>(13)})
        .row({{1, number(64)}}, zspStsCodecRangeErr)
        .row({{1, number(-1)}}, zspStsCodecRangeErr)
        .row({{0, pulses(8)}}, zspStsCodecRangeErr)
        .row({{0, pulses(-1)}}, zspStsCodecRangeErr)
        .row({{0, in<std::int16_t>(std::vector<std::int16_t>(13, 8))}}, zspStsCodecRangeErr),
});

TEST(GsmfrRpe, OfEqualGridsTheFirst)
{
    struct Row {
        std::vector<std::size_t> at;
        std::int32_t grid;
    };
    const Row rows[] = {{{}, 0},     {{0}, 0},     {{3}, 0},     {{39}, 3},
                        {{1, 2}, 1}, {{2, 39}, 2}, {{0, 39}, 0}, {{0, 3, 39}, 0}};
    for (const Row& row : rows) {
        Words x(40, 0), xm(13);
        for (const std::size_t i : row.at)
            x[i] = -32768;
        std::int32_t grid = -1;
        ASSERT_EQ(zspsRPEGridSelect_GSMFR_16s(x.data(), xm.data(), &grid), zspStsNoErr);
        EXPECT_EQ(grid, row.grid) << ::testing::PrintToString(row.at);
    }
}

// What the decoder makes of the largest code, 7: the block's amplitude itself, over 7.5 eighths.
TEST(GsmfrRpe, EveryAmplitudeComesBack)
{
    for (int xmax = 0; xmax <= 32767; ++xmax) {
        Words xm(13, 0);
        xm[12] = static_cast<std::int16_t>(xmax);
        std::int32_t amplitude = -1;
        ASSERT_EQ(zspsAPCMQuant_GSMFR_16s(xm.data(), xm.data(), &amplitude), zspStsNoErr);
        ASSERT_EQ(zspsAPCMDequant_GSMFR_16s(xm.data(), amplitude, xm.data()), zspStsNoErr);
        ASSERT_NEAR(xm[12], xmax, 16 + xmax / 8) << amplitude;
    }
}

TEST(GsmfrRpe, Avx2EqualsDefinition)
{
    Samples samples(513);
    for (int round = 0; round < 4000; ++round) {
        SCOPED_TRACE(round);
        Words e = round % 5 ? samples.words(40) : samples.extremeWords(40), want(40), got(40);
        for (auto& x : e)
            x = static_cast<std::int16_t>(x >> (round % 16));
        weightScalar(spanOf<40>(std::as_const(e).data()), spanOf<40>(want.data()));
        weightAvx2(spanOf<40>(std::as_const(e).data()), spanOf<40>(got.data()));
        expectEqual(got, want, "x");

        Words wanted13(13), got13(13);
        ASSERT_EQ(
            gridSelectAvx2(spanOf<40>(std::as_const(e).data()), spanOf<13>(got13.data())),
            gridSelectScalar(spanOf<40>(std::as_const(e).data()), spanOf<13>(wanted13.data())));
        expectEqual(got13, wanted13, "xM");

        const Words xm = got13;
        const auto source = spanOf<13>(xm.data());
        ASSERT_EQ(apcmQuantAvx2(source, spanOf<13>(got13.data())),
                  apcmQuantScalar(source, spanOf<13>(wanted13.data())));
        expectEqual(got13, wanted13, "xMc");

        Words xmc = samples.words(13);
        for (auto& x : xmc)
            x = static_cast<std::int16_t>(x & 7);
        const auto codes = spanOf<13>(std::as_const(xmc).data());
        apcmDequantScalar(codes, round % 64, spanOf<13>(wanted13.data()));
        apcmDequantAvx2(codes, round % 64, spanOf<13>(got13.data()));
        expectEqual(got13, wanted13, "xMp");
    }
}

} // namespace
