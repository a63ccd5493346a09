// Comfort noise of G.729 Annex B: its energy, and what is drawn.

#include "codecs/g729/annexb/g729_annexb.hpp"

#include "tests/codecs/g729/g729_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsComfortNoise_G729B_16s_I),
             {number(100), out<std::int16_t>(1), out<std::int16_t>(194), out<std::int16_t>(1),
              out<std::int16_t>(1)})
        .row({{0, number(-1)}}, zspStsRangeErr),
});

/// Each sub-frame has the energy that the gain wants, as far as one pulse height can give it.
TEST(G729BNoise, HasTheGainsEnergy)
{
    for (const int gain : {101, 1007, 6355}) {
        Words e(194);
        std::int16_t seed = 11111, lag = 0, pitch = 0;
        double energy = 0;
        constexpr int kRounds = 400;
        for (int round = 0; round < kRounds; ++round) {
            ASSERT_EQ(zspsComfortNoise_G729B_16s_I(static_cast<std::int16_t>(gain), &seed, e.data(),
                                                   &lag, &pitch),
                      0);
            ASSERT_TRUE(lag >= 40 && lag <= 103 && pitch >= 0 && pitch < 8192);
            for (std::size_t i = 154; i < 194; ++i)
                energy += double{1} * e[i] * e[i];
            std::copy(e.begin() + 40, e.end(), e.begin());
        }
        EXPECT_NEAR(8 * std::sqrt(energy / (40 * kRounds)) / gain, 1.0, 0.04) << gain;
    }
}

TEST(G729BNoise, NoGainIsSilenceAndDrawsNothing)
{
    Words e(194, 500);
    std::int16_t seed = 77, lag = 0, pitch = 9;
    ASSERT_EQ(zspsComfortNoise_G729B_16s_I(0, &seed, e.data(), &lag, &pitch), 0);
    EXPECT_EQ(seed, 77);
    EXPECT_EQ(Words(e.begin() + 154, e.end()), Words(40));
    EXPECT_EQ(e[153], 500);
    EXPECT_EQ(lag, 41);
    EXPECT_EQ(pitch, 0);
}

} // namespace
