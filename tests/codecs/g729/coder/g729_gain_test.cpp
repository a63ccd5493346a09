// The gain quantiser of G.729: the reference's traces and its limits.

#include "tests/codecs/g729/g729_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsGainCorrelation_G729_16s),
             {in<std::int16_t>(4), in<std::int16_t>(40), in<std::int16_t>(40), in<std::int16_t>(40),
              out<std::int16_t>(5), out<std::int16_t>(5)}),
    Contract(ZSP_NAMED(zspsGainQuant_G729_16s),
             {in<std::int16_t>(5), in<std::int16_t>(5), number(0), in<std::int16_t>(40),
              out<std::int16_t>(4), out<std::int16_t>(1), out<std::int16_t>(1),
              out<std::int16_t>(1)})
        .row({{1, buffer(Argument::Kind::input, Words{0, 0, 0, 0, 101})}}, zspStsRangeErr)
        .row({{1, buffer(Argument::Kind::input, Words{-101, 0, 0, 0, 0})}}, zspStsRangeErr),
});

TEST(G729Gain, Traces)
{
    forEachEncoded([](const TracedFrame& t, bool, const std::string& what) {
        for (std::size_t k = 0; k < 2; ++k) {
            Words sums(5), exponents(5), past = t.words("past_gain_energies", k);
            ASSERT_EQ(zspsGainCorrelation_G729_16s(
                          t.words("pitch_correlations", k).data(), t.words("target", k).data(),
                          t.words("filtered_adaptive", k).data(),
                          t.words("filtered_fixed", k).data(), sums.data(), exponents.data()),
                      zspStsNoErr);
            expectEqual(sums, t.words("gain_correlations", k), what);
            expectEqual(exponents, t.words("gain_correlations_q", k), what);
            std::int16_t pitch = 0, code = 0, index = 0;
            ASSERT_EQ(zspsGainQuant_G729_16s(sums.data(), exponents.data(), t.value("taming", k),
                                             t.words("fixed_vector", k).data(), past.data(), &pitch,
                                             &code, &index),
                      zspStsNoErr);
            EXPECT_EQ(pitch, t.word("pitch_gain", k)) << what;
            EXPECT_EQ(code, t.word("code_gain", k)) << what;
            EXPECT_EQ(index, t.word("gain_index", k)) << what;
            if (k == 0) expectEqual(past, t.words("past_gain_energies", 1), what);
        }
    });
}

TEST(G729Gain, TamedGainsStayBelowOne)
{
    // The target is twice the adaptive vector.
    const Words adaptive(40, 1000), target(40, 2000);
    Words fixed(40), code(40), pitchSums(4), sums(5), exponents(5);
    code[3] = 8191;
    fixed[3] = 4096;
    std::int16_t gain = 0;
    zspsAdaptiveCodebookGain_G729_16s(target.data(), adaptive.data(), pitchSums.data(), &gain);
    EXPECT_EQ(gain, 19661);
    zspsGainCorrelation_G729_16s(pitchSums.data(), target.data(), adaptive.data(), fixed.data(),
                                 sums.data(), exponents.data());
    for (const bool isTamed : {false, true}) {
        Words past(4, -14336);
        std::int16_t pitch = 0, codeGain = 0, index = 0;
        zspsGainQuant_G729_16s(sums.data(), exponents.data(), isTamed, code.data(), past.data(),
                               &pitch, &codeGain, &index);
        EXPECT_EQ(pitch < 16383, isTamed) << pitch;
    }
}

} // namespace
