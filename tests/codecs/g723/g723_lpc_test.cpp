// The front end of the G.723.1 encoder: the reference's traces, and input that drives it to its
// limits.

#include "tests/codecs/g723/g723_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g723;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsHighPassFilter_G723_16s),
             {in<std::int16_t>(240), out<std::int16_t>(240), number(240), out<std::int32_t>(2)})
        .row({{2, number(0)}}, zspStsSizeErr),
    Contract(ZSP_NAMED(zspsAutoCorr_G723_16s),
             {in<std::int16_t>(180), out<std::int16_t>(11), out<std::int16_t>(1)}),
    Contract(ZSP_NAMED(zspsLevinsonDurbin_G723_16s), {in<std::int16_t>(11), out<std::int16_t>(10),
                                                      out<std::int16_t>(1), out<std::int16_t>(1)}),
});

TEST(G723Lpc, Traces)
{
    for (const std::string& mode : kModes) {
        std::int32_t memory[2] = {};
        Words history(120);
        for (const TracedFrame& t : traced(mode, "encode")) {
            Words hp = t.words("in");
            ASSERT_EQ(zspsHighPassFilter_G723_16s(hp.data(), hp.data(), 240, memory), zspStsNoErr);
            expectEqual(hp, t.words("hp"), mode);
            history.insert(history.end(), hp.begin(), hp.end());
            for (std::size_t k = 0; k < 4; ++k) {
                Words corr(11), lpc(10);
                std::int16_t shift = 0, error = 0, reflection = 0;
                zspsAutoCorr_G723_16s(&history[60 * k], corr.data(), &shift);
                expectEqual(corr, t.words("acf", k), mode);
                EXPECT_EQ(shift, t.word("acf_shift", k));
                zspsLevinsonDurbin_G723_16s(corr.data(), lpc.data(), &error, &reflection);
                expectEqual(lpc, t.words("lpc", k), mode);
                EXPECT_EQ(reflection, t.word("second_reflection", k));
            }
            history.erase(history.begin(), history.begin() + 240);
        }
    }
}

TEST(G723Lpc, SilenceCountsAsASine)
{
    const Words silence(180);
    Words corr(11, 1), lpc(10, 1);
    std::int16_t shift = 0, error = 1, reflection = 0;
    zspsAutoCorr_G723_16s(silence.data(), corr.data(), &shift);
    EXPECT_EQ(corr, Words(11));
    EXPECT_EQ(shift, 40);
    zspsLevinsonDurbin_G723_16s(corr.data(), lpc.data(), &error, &reflection);
    EXPECT_EQ(lpc, Words(10));
    EXPECT_EQ(error, 0);
    EXPECT_EQ(reflection, 32767);
}

TEST(G723Lpc, FilterInPartsEqualsOneCall)
{
    const Words x = Samples(7).words(240);
    Words whole(240), parts(240);
    std::int32_t a[2] = {}, b[2] = {};
    zspsHighPassFilter_G723_16s(x.data(), whole.data(), 240, a);
    zspsHighPassFilter_G723_16s(x.data(), parts.data(), 77, b);
    zspsHighPassFilter_G723_16s(&x[77], &parts[77], 163, b);
    expectEqual(parts, whole, "parts");
    EXPECT_EQ(a[0], b[0]);
    EXPECT_EQ(a[1], b[1]);
}

TEST(G723Lpc, FastEqualsDefinition)
{
    Samples samples(11);
    for (int round = 0; round < 4000; ++round) {
        const Words x = anyWords(samples, 180, round);
        Words want(11), got(11);
        std::int16_t wantShift = 0, gotShift = 0;
        zsp::g723::autoCorrScalar(zsp::spanOf<180>(x.data()), zsp::spanOf<11>(want.data()),
                                  wantShift);
        zsp::g723::autoCorrAvx2(zsp::spanOf<180>(x.data()), zsp::spanOf<11>(got.data()), gotShift);
        expectEqual(got, want, "round " + std::to_string(round));
        ASSERT_EQ(gotShift, wantShift);
    }
}

} // namespace
