// The search at 5.3 kbit/s of G.723.1 against the reference's traces.

#include "tests/codecs/g723/g723_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g723;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsACELPCorrelations_G723_16s),
             {frameArgument(zspG723Rate53), number(0), words(60), out<std::int16_t>(60),
              out<std::int16_t>(416)})
        .row({{1, number(-1)}}, zspStsCodecRangeErr)
        .row({{1, number(4)}}, zspStsCodecRangeErr)
        .row({{0, frameArgument(zspG723Rate63)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(frameArgument(zspG723Rate53), &ZspG723Frame::acbGain, 170)}},
             zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsACELPSearch_G723_16s),
             {words(60), words(60), words(416), number(0), out(Words{120}),
              asOutput(frameArgument()), out<std::int16_t>(60)})
        .row({{3, number(-1)}}, zspStsCodecRangeErr)
        .row({{3, number(4)}}, zspStsCodecRangeErr)
        .row({{4, out(Words{-1})}}, zspStsRangeErr),
    Contract(ZSP_NAMED(zspsACELPGainQuant_G723_16s), {words(60), words(60), out<std::int16_t>(1)}),
});

TEST(G723Acelp, Traces)
{
    for (const TracedFrame& t : traced("53", "encode")) {
        const ZspG723Frame want = fieldsOf(t);
        std::int16_t budget = 120;
        for (std::int32_t i = 0; i < 4; ++i) {
            const auto k = static_cast<std::size_t>(i);
            ZspG723Frame f = want;
            f.position[k] = f.signs[k] = f.grid[k] = -1;
            Words sharpened(60), corr(416), filtered(60);
            zspsACELPCorrelations_G723_16s(&f, i, t.words("impulse_response", k).data(),
                                           sharpened.data(), corr.data());
            expectEqual(sharpened, t.words("impulse_response_acelp", k), "sharpened");
            expectEqual(corr, t.words("acelp_correlations", k), "correlations");
            const Words target = t.words("target_fixed", k);
            zspsACELPSearch_G723_16s(target.data(), sharpened.data(), corr.data(), i, &budget, &f,
                                     filtered.data());
            EXPECT_EQ(f.position[k], want.position[k]);
            EXPECT_EQ(f.signs[k], want.signs[k]);
            EXPECT_EQ(f.grid[k], want.grid[k]);
            std::int16_t gain = 0;
            zspsACELPGainQuant_G723_16s(target.data(), filtered.data(), &gain);
            EXPECT_EQ(gain, want.fcbGain[k]);
        }
    }
}

/// Each pulse of a response that is an impulse costs one run of the inner loop less, and none is
/// left when the target passes the threshold everywhere.
TEST(G723Acelp, TheBudgetEndsTheSearch)
{
    ZspG723Frame f{};
    f.type = zspG723Rate53;
    f.lag[0] = 100;
    f.lagOffset[0] = 1;
    Samples samples(5);
    Words response(60), target(60), sharpened(60), corr(416), filtered(60);
    response[0] = 8192;
    for (auto& x : target)
        x = static_cast<std::int16_t>(samples.below(2) ? 20000 : -20000);
    zspsACELPCorrelations_G723_16s(&f, 0, response.data(), sharpened.data(), corr.data());
    std::int16_t budget = 0;
    zspsACELPSearch_G723_16s(target.data(), sharpened.data(), corr.data(), 0, &budget, &f,
                             filtered.data());
    EXPECT_GE(budget, 0);
    EXPECT_LT(budget, 120);
}

} // namespace
