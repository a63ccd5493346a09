// The pitch search of the G.728 post-filter.

#include "tests/support/contract.hpp"
#include "zspsc/g728/postfilter.h"

#include <gtest/gtest.h>

#include <cstdint>
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

} // namespace
