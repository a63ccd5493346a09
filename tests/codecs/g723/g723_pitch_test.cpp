// The open-loop pitch of G.723.1: the reference's traces, and a period that is known.

#include "tests/codecs/g723/g723_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g723;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsOpenLoopPitchSearch_G723_16s),
             {in<std::int16_t>(385), out<std::int16_t>(385), out<std::int16_t>(2)}),
});

TEST(G723Pitch, Traces)
{
    for (const std::string& mode : kModes) {
        Words weighted(145);
        for (const TracedFrame& t : traced(mode, "encode")) {
            const Words fresh = t.words("weighted");
            weighted.insert(weighted.end(), fresh.begin(), fresh.end());
            Words normalised(385), lags(2);
            zspsOpenLoopPitchSearch_G723_16s(weighted.data(), normalised.data(), lags.data());
            expectEqual(lags, t.words("open_loop_lag"), mode);
            weighted.erase(weighted.begin(), weighted.begin() + 240);
        }
    }
}

TEST(G723Pitch, AnImpulseTrainTellsItsPeriodAndNotTwice)
{
    for (const std::size_t period : {18u, 35u, 60u, 71u, 100u, 120u}) {
        Words x(385), lags(2);
        for (std::size_t i = 0; i < x.size(); i += period)
            x[i] = -12000;
        zspsOpenLoopPitchSearch_G723_16s(x.data(), x.data(), lags.data());
        EXPECT_EQ(lags, Words(2, static_cast<std::int16_t>(period)));
    }
}

TEST(G723Pitch, FastEqualsDefinition)
{
    Samples samples(12);
    for (int round = 0; round < 1500; ++round) {
        Words x = anyWords(samples, 145 + 120, round);
        if (round % 3 != 0) zsp::g723::normalise(x);
        ASSERT_EQ(zsp::g723::openLoopLagOf(&x[145], true), zsp::g723::openLoopLagOf(&x[145], false))
            << round;
    }
}

} // namespace
