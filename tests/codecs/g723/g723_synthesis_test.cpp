// Synthesis, formant post-filter and gain control of G.723.1 against the reference's traces.

#include "tests/codecs/g723/g723_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g723;

Argument words(std::size_t count)
{
    return in<std::int16_t>(count);
}

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

} // namespace
