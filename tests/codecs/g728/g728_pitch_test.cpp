// The pitch search of the G.728 post-filter.

#include "codecs/g728/g728_blocks.hpp"

#include "tests/codecs/g728/g728_arguments.hpp"
#include "tests/support/contract.hpp"
#include "tests/support/samples.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/g728/postfilter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsPitchSearch_G728_16s),
             {in<std::int16_t>(240), out<std::int16_t>(60), out<std::int16_t>(3), out(Words{140})})
        .row({{3, out(Words{141})}}, zspStsCodecRangeErr)
        .row({{3, out(Words{19})}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsLongTermPostFilterCoefs_G728_16s),
             {in<std::int16_t>(240), number(20), out<std::int16_t>(3)})
        .row({{1, number(19)}}, zspStsCodecRangeErr)
        .row({{1, number(141)}}, zspStsCodecRangeErr),
});

/// Pulses at a distance, as a residual and as its decimated past would show them.
TEST(G728Pitch, FindsThePeriod)
{
    for (const int period : {20, 33, 64, 100, 140}) {
        Words pitch{50}, decimated(60), lowpass(3), past(240), coefs(3);
        for (int pushed = 0; pushed < 24; ++pushed) { // twenty samples at a time
            for (int i = 0; i < 240; ++i) {
                const int n = 20 * pushed + 19 - i;
                past[static_cast<std::size_t>(i)] =
                    static_cast<std::int16_t>(n >= 0 && n % period < 3 ? 2000 : 0);
            }
            ASSERT_EQ(zspsPitchSearch_G728_16s(past.data(), decimated.data(), lowpass.data(),
                                               pitch.data()),
                      zspStsNoErr);
        }
        EXPECT_EQ(pitch[0] % period, 0) << period << ": " << pitch[0];
        ASSERT_EQ(zspsLongTermPostFilterCoefs_G728_16s(past.data(), pitch[0], coefs.data()),
                  zspStsNoErr);
        EXPECT_GT(coefs[2], 16000) << "voiced";
        EXPECT_LT(coefs[0], 16384);
        EXPECT_GT(coefs[1], 0);
    }
}

// Waves of all periods with noise, any words, and all the same, so that lags tie.
TEST(G728Pitch, Avx2EqualsDefinition)
{
    using namespace zsp::g728;
    Samples samples(82);
    int kept = 0;
    for (int round = 0; round < 5000; ++round) {
        Words residual = wordsOf(samples, 240, round), decimated = wordsOf(samples, 60, round / 2);
        if (round % 3 == 0) {
            const double turn = 2 * 3.14159265 / (10 + samples.below(140));
            for (std::size_t i = 0; i < residual.size(); ++i)
                residual[i] = static_cast<std::int16_t>(
                    residual[i] / 8 + 28000 * std::cos(turn * static_cast<double>(i)));
            for (std::size_t i = 0; i < decimated.size(); ++i)
                decimated[i] = residual[4 * i];
        }
        if (round % 16 == 1) residual.assign(240, residual[0]);
        Words wantLow = samples.words(3);
        if (round % 16 == 2) {
            residual.assign(240, 0);
            decimated.assign(60, 0);
            wantLow.assign(3, 0);
        }
        const int old = 20 + samples.below(121);
        Words got = decimated, low = wantLow;
        const In<kPast> past(residual.data(), kPast);
        const int want = searchPitchScalar(past, Out<kDecimated>(decimated.data(), kDecimated),
                                           Out<3>(wantLow.data(), 3), old);
        ASSERT_EQ(searchPitchAvx2(past, Out<kDecimated>(got.data(), kDecimated),
                                  Out<3>(low.data(), 3), old),
                  want)
            << round;
        expectEqual(got, decimated, "decimated, round " + std::to_string(round));
        expectEqual(low, wantLow, "memory, round " + std::to_string(round));
        kept += want < old - 6;

        const LongTerm wanted = longTermCoefsScalar(past, old), c = longTermCoefsAvx2(past, old);
        ASSERT_EQ(c.gain, wanted.gain) << round;
        ASSERT_EQ(c.tap, wanted.tap) << round;
        ASSERT_EQ(c.measured_Q14, wanted.measured_Q14) << round;
    }
    EXPECT_GT(kept, 500);
}

} // namespace
