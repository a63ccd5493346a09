// Concealment of G.728 Annex I.

#include "tests/codecs/g728/g728_arguments.hpp"
#include "tests/support/contract.hpp"
#include "tests/support/vectors.hpp"
#include "zspsc/g728/postfilter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

namespace {

using namespace zsp::test;
using Words = std::vector<std::int16_t>;

void startRandom(void* state)
{
    zspsErasedExcitationInit_G728_16s(state);
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsErasureSetup_G728_16s),
             {number(1), number(0), number(20), in<std::int16_t>(140), out(Words{-1}),
              out(Words{0, 64}), out<std::int16_t>(2)})
        .row({{5, out(Words{0, 65})}}, zspStsScaleRangeErr)
        .row({{2, number(19)}}, zspStsCodecRangeErr)
        .row({{2, number(141)}}, zspStsCodecRangeErr)
        .row({{4, out(Words{136})}}, zspStsCodecRangeErr)
        .row({{0, number(-1)}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspsErasedExcitationGetStateSize_G728_16s), {out<std::int32_t>(1)}),
    Contract(ZSP_NAMED(zspsErasedExcitationInit_G728_16s), {state(76)}),
    Contract(ZSP_NAMED(zspsErasedExcitation_G728_16s),
             {number(135), in(scalarWithQ(-64)), in<std::int16_t>(140), state(76, startRandom),
              out<std::int16_t>(6), out<std::int16_t>(1)})
        .row({{1, in(scalarWithQ(65))}}, zspStsScaleRangeErr)
        .row({{1, in(scalarWithQ(-65))}}, zspStsScaleRangeErr)
        .row({{0, number(136)}}, zspStsCodecRangeErr)
        .row({{0, number(-2)}}, zspStsCodecRangeErr),
});

// Phase 0 decides; a later one fades what was decided, whatever tap and pitch have become.
TEST(G728Erasure, KeepsWhatTheLossBeganWith)
{
    const Words past(140, 100);
    Words delay{0}, mean{0, 0}, scale{0, 0};
    zspsErasureSetup_G728_16s(0, 7023, 45, past.data(), delay.data(), mean.data(), scale.data());
    expectEqual(delay, Words{40}, "voiced");
    expectEqual(scale, Words{26214, 15}, "voiced");
    zspsErasureSetup_G728_16s(4, 0, 90, past.data(), delay.data(), mean.data(), scale.data());
    expectEqual(delay, Words{40}, "voiced, later");
    expectEqual(scale, Words{6554, 15}, "voiced, later");
    zspsErasureSetup_G728_16s(5, 0, 90, past.data(), delay.data(), mean.data(), scale.data());
    EXPECT_EQ(scale[0], 0) << "voiced, faded";
    zspsErasureSetup_G728_16s(0, 7022, 45, past.data(), delay.data(), mean.data(), scale.data());
    expectEqual(delay, Words{-1}, "unvoiced");
    EXPECT_NEAR(std::ldexp(mean[0], -mean[1]), 5 * 100 / 4.0, 0.1) << "Q2";
    EXPECT_NEAR(std::ldexp(scale[0], -scale[1]), 5 * 100 / 4.0, 0.1) << "Q2";
}

} // namespace
