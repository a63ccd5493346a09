// Synthesis, formant post-filter and gain control of G.723.1 against the reference's traces.

#include "tests/codecs/g723/g723_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g723;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsSynthesisFilter_G723_16s),
             {words(10), words(60), out<std::int16_t>(60), out<std::int16_t>(10)}),
    Contract(
        ZSP_NAMED(zspsFormantPostFilter_G723_16s),
        {words(10), words(60), out<std::int16_t>(60), out<std::int32_t>(1), out<std::int16_t>(21)}),
    Contract(ZSP_NAMED(zspsGainControl_G723_16s_I),
             {out<std::int16_t>(60), number(0), out<std::int16_t>(1)})
        .row({{1, number(-1)}}, zspStsRangeErr),
});

TEST(G723Synthesis, Traces)
{
    for (const std::string& mode : kModes) {
        Words synthesis(10), postFilter(21);
        std::int16_t gain = 4096;
        for (const TracedFrame& t : traced(mode, "decode"))
            for (std::size_t k = 0; k < 4; ++k) {
                const Words lpc = part(t.words("quantised_lpc"), 10 * k, 10);
                Words x = part(t.words("postfiltered_excitation"), 60 * k, 60);
                zspsSynthesisFilter_G723_16s(lpc.data(), x.data(), x.data(), synthesis.data());
                expectEqual(x, t.words("synthesis", k), mode);
                std::int32_t energy = 0;
                zspsFormantPostFilter_G723_16s(lpc.data(), x.data(), x.data(), &energy,
                                               postFilter.data());
                expectEqual(x, t.words("formant_postfilter", k), mode);
                EXPECT_EQ(energy, t.value("synthesis_energy", k));
                EXPECT_EQ(postFilter[20], t.word("tilt_memory", k));
                zspsGainControl_G723_16s_I(x.data(), energy, &gain);
                EXPECT_EQ(gain, t.word("agc_gain", k));
                expectEqual(x, part(t.words("out"), 60 * k, 60), mode);
            }
    }
}

/// A stable filter half of the time, else any.
Words anyLpc(Samples& samples, int round)
{
    Words lpc = anyWords(samples, 10, round);
    if (round % 2 == 0) {
        const Words corr = {24174, 21694, 17334,  11786,  4823,  -1473,
                            -6583, -9392, -10755, -11411, -10465};
        std::int16_t error = 0, reflection = 0;
        zspsLevinsonDurbin_G723_16s(corr.data(), lpc.data(), &error, &reflection);
    }
    return lpc;
}

TEST(G723Synthesis, FastFormsEqualDefinitions)
{
    using namespace zsp::g723;
    Samples samples(14);
    for (int round = 0; round < 6000; ++round) {
        const std::string what = "round " + std::to_string(round);
        const Words lpc = anyLpc(samples, round), x = anyWords(samples, 60, round / 3);
        Words memory = anyWords(samples, 10, round), memory2 = memory, want(60), got = x;
        synthesisFilterScalar(zsp::spanOf<10>(lpc.data()), zsp::spanOf<60>(x.data()),
                              zsp::spanOf<60>(want.data()), zsp::spanOf<10>(memory.data()));
        synthesisFilterFast(zsp::spanOf<10>(lpc.data()), zsp::spanOf<60>(x.data()),
                            zsp::spanOf<60>(got.data()), zsp::spanOf<10>(memory2.data()));
        expectEqual(got, want, what);
        expectEqual(memory2, memory, what);

        Words post = anyWords(samples, 21, round), post2 = post, filtered = x, fast = x;
        const auto energy =
            formantPostFilterScalar(zsp::spanOf<10>(lpc.data()), zsp::spanOf<60>(x.data()),
                                    zsp::spanOf<60>(filtered.data()), zsp::spanOf<21>(post.data()));
        ASSERT_EQ(formantPostFilterFast(zsp::spanOf<10>(lpc.data()), zsp::spanOf<60>(x.data()),
                                        zsp::spanOf<60>(fast.data()),
                                        zsp::spanOf<21>(post2.data())),
                  energy);
        expectEqual(fast, filtered, what);
        expectEqual(post2, post, what);

        std::int16_t gain = round % 5 == 0 ? samples.integer<std::int16_t>() : std::int16_t{4096};
        std::int16_t gain2 = gain;
        gainControlScalar(zsp::spanOf<60>(filtered.data()), energy, gain);
        gainControlFast(zsp::spanOf<60>(fast.data()), energy, gain2);
        expectEqual(fast, filtered, what);
        ASSERT_EQ(gain2, gain);
    }
}

} // namespace
