// Comfort noise of G.723.1: the reference's traces, and every gain index.

#include "tests/codecs/g723/g723_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g723;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsSIDGainQuant_G723_16s),
             {in<std::int16_t>(3), in<std::int16_t>(3), number(3), out<std::int16_t>(1)})
        .row({{2, number(-1)}}, zspStsSizeErr)
        .row({{2, number(4)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspsSIDGainDequant_G723_16s), {number(0), out<std::int16_t>(1)})
        .row({{0, number(-1)}}, zspStsCodecRangeErr)
        .row({{0, number(64)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsComfortNoiseExcitation_G723_16s),
             {number(0), out<std::int16_t>(1), out<std::int16_t>(145), asOutput(frameArgument()),
              out<std::int16_t>(240)}),
});

TEST(G723Noise, Traces)
{
    Words past(145);
    std::int16_t seed = 12345;
    int pauses = 0;
    for (const TracedFrame& t : traced("63dtx", "encode")) {
        if (isActive(t)) {
            Words excitation;
            for (std::size_t k = 0; k < 4; ++k)
                for (const auto x : t.words("excitation", k))
                    excitation.push_back(x);
            past = part(excitation, 95, 145);
            seed = 12345;
            continue;
        }
        ++pauses;
        ZspG723Frame f{};
        Words dst(240);
        zspsComfortNoiseExcitation_G723_16s(t.word("cng_gain"), &seed, past.data(), &f, dst.data());
        expectEqual(dst, t.words("cng_excitation"), "excitation");
        EXPECT_EQ(seed, t.word("random_seed"));
        expectEqual(Words(f.lag, f.lag + 2), t.words("cng_lag"), "lags");
        expectEqual(Words(f.acbGain, f.acbGain + 4), t.words("cng_acb_gain"), "gains");
        expectEqual(past, part(dst, 95, 145), "the past");

        std::int16_t gain = 0;
        zspsSIDGainDequant_G723_16s(t.word("sid_gain_index"), &gain);
        EXPECT_EQ(gain, t.word("sid_gain"));
    }
    EXPECT_GE(pauses, 4);
}

/// A gain's own energy has its index, and energies rise with it.
TEST(G723Noise, GainsRiseThroughTheSegments)
{
    std::int16_t last = -1;
    for (int index = 0; index < 64; ++index) {
        std::int16_t gain = -1;
        ASSERT_EQ(zspsSIDGainDequant_G723_16s(static_cast<std::int16_t>(index), &gain),
                  zspStsNoErr);
        EXPECT_GT(gain, last) << index;
        last = gain;
        const int level = gain / 32;
        EXPECT_EQ(zsp::g723::sidGainIndex(2 * level * level), index);
    }
    EXPECT_EQ(last, 11008);
    EXPECT_EQ(zsp::g723::sidGainIndex(0x7fffffff), 63);
}

} // namespace
