// The open-loop lag of G.729: the reference's traces, known periods, and the fast forms.

#include "codecs/g729/coder/g729_searches.hpp"

#include "tests/codecs/g729/g729_trace.hpp"

#include <cmath>

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;

Argument speech()
{
    // The past stands before the pointer; the contract's buffers begin at it.
    static const Words kSilence(143 + 80);
    return pointer(&kSilence[143]);
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsOpenLoopPitchSearch_G729_16s), {speech(), out<std::int16_t>(1)}),
    Contract(ZSP_NAMED(zspsOpenLoopPitchSearch_G729A_16s), {speech(), out<std::int16_t>(1)}),
});

TEST(G729OpenLoop, Traces)
{
    Past past(143);
    int compared = 0;
    forEachEncoded([&](const TracedFrame& t, bool isMain, const std::string& what) {
        past.frame(t);
        const Words now = t.words("weighted_speech");
        const Words all = past.with(now);
        std::int16_t lag = 0;
        const auto search =
            isMain ? zspsOpenLoopPitchSearch_G729_16s : zspsOpenLoopPitchSearch_G729A_16s;
        if (past.isWhole()) {
            ASSERT_EQ(search(&all[143], &lag), zspStsNoErr);
            EXPECT_EQ(lag, t.word("open_loop_lag")) << what;
            ++compared;
        }
        past.push(now);
    });
    EXPECT_GE(compared, 8);
}

TEST(G729OpenLoop, FindsThePeriodAndNotItsMultiple)
{
    for (const int period : {20, 33, 40, 57, 79, 80, 101, 143})
        for (const auto search :
             {zspsOpenLoopPitchSearch_G729_16s, zspsOpenLoopPitchSearch_G729A_16s}) {
            Words x(143 + 80);
            for (std::size_t i = 0; i < x.size(); ++i)
                x[i] = static_cast<std::int16_t>(
                    3000 *
                    std::exp(-0.3 * static_cast<double>(i % static_cast<std::size_t>(period))));
            std::int16_t lag = 0;
            search(&x[143], &lag);
            EXPECT_NEAR(lag, period, 1);
        }
}

TEST(G729OpenLoop, FastEqualsDefinition)
{
    Samples samples(34);
    for (int round = 0; round < 4000; ++round) {
        Words x = anyWords(samples, zsp::g729::kOpenLoop, round);
        if (round % 3 == 1) // periodic, with ties
            for (std::size_t i = 30; i < x.size(); ++i)
                x[i] = x[i - 30];
        const auto speech = zsp::spanOf<zsp::g729::kOpenLoop>(x.data());
        ASSERT_EQ(zsp::g729::openLoopLagAvx2(speech), zsp::g729::openLoopLagScalar(speech))
            << round;
        ASSERT_EQ(zsp::g729::openLoopLagAAvx2(speech), zsp::g729::openLoopLagAScalar(speech))
            << round;
    }
}

} // namespace
