// The weighted domain of the G.723.1 encoder against the reference's traces.

#include "tests/codecs/g723/g723_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g723;

Argument words(std::size_t count)
{
    return in<std::int16_t>(count);
}
Argument results(std::size_t count)
{
    return out<std::int16_t>(count);
}

const Words kWeighted(205); // a sub-frame and what lies before it

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsWeightingCoefs_G723_16s), {words(10), results(20)}),
    Contract(ZSP_NAMED(zspsPerceptualWeighting_G723_16s),
             {words(20), words(60), results(60), results(20)}),
    Contract(ZSP_NAMED(zspsHarmonicSearch_G723_16s),
             {pointer(&kWeighted[145]), number(18), results(1), results(1)})
        .row({{1, number(17)}}, zspStsCodecRangeErr)
        .row({{1, number(143)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsHarmonicFilter_G723_16s),
             {pointer(&kWeighted[145]), number(18), number(0), results(60)})
        .row({{1, number(0)}}, zspStsCodecRangeErr)
        .row({{1, number(146)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsImpulseResponse_G723_16s),
             {words(10), words(20), number(18), number(0), results(60)})
        .row({{2, number(0)}}, zspStsCodecRangeErr)
        .row({{2, number(146)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsRingingSubtract_G723_16s_I),
             {words(10), words(20), number(18), number(0), words(165), results(60)})
        .row({{2, number(0)}}, zspStsCodecRangeErr)
        .row({{2, number(146)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsRingingUpdate_G723_16s),
             {words(10), words(20), words(60), results(165)}),
});

TEST(G723Weighting, Traces)
{
    for (const std::string& mode : kModes) {
        Words memory(20), weighted(145), ringing(165);
        for (const TracedFrame& t : traced(mode, "encode")) {
            Words coefs(80);
            weighted.resize(385);
            for (std::size_t k = 0; k < 4; ++k) {
                zspsWeightingCoefs_G723_16s(t.words("lpc", k).data(), &coefs[20 * k]);
                zspsPerceptualWeighting_G723_16s(&coefs[20 * k], &t.words("shifted")[60 * k],
                                                 &weighted[145 + 60 * k], memory.data());
            }
            expectEqual(coefs, t.words("perceptual_lpc"), mode);
            expectEqual(part(weighted, 145, 240), t.words("weighted"), mode);

            Words normalised(385), lags(2), shaped(240);
            zspsOpenLoopPitchSearch_G723_16s(weighted.data(), normalised.data(), lags.data());
            const Words lpc = t.words("quantised_lpc");
            for (std::size_t k = 0; k < 4; ++k) {
                const std::int16_t* a = &lpc[10 * k];
                if (!isActive(t)) {
                    zspsRingingUpdate_G723_16s(a, &coefs[20 * k],
                                               &t.words("cng_excitation")[60 * k], ringing.data());
                    continue;
                }
                std::int16_t lag = 0, gain = 0;
                zspsHarmonicSearch_G723_16s(&normalised[145 + 60 * k], lags[k / 2], &lag, &gain);
                EXPECT_EQ(lag, t.word("harmonic_lag", k));
                EXPECT_EQ(gain, t.word("harmonic_gain", k));
                zspsHarmonicFilter_G723_16s(&weighted[145 + 60 * k], lag, gain, &shaped[60 * k]);
                Words response(60);
                zspsImpulseResponse_G723_16s(a, &coefs[20 * k], lag, gain, response.data());
                expectEqual(response, t.words("impulse_response", k), mode);
                zspsRingingSubtract_G723_16s_I(a, &coefs[20 * k], lag, gain, ringing.data(),
                                               &shaped[60 * k]);
                expectEqual(part(shaped, 60 * k, 60), t.words("target", k), mode);
                zspsRingingUpdate_G723_16s(a, &coefs[20 * k], t.words("excitation", k).data(),
                                           ringing.data());
                expectEqual(part(ringing, 0, 10), t.words("ringing_fir", k), mode);
                expectEqual(part(ringing, 10, 10), t.words("ringing_iir", k), mode);
            }
            weighted.erase(weighted.begin(), weighted.begin() + 240);
        }
    }
}

TEST(G723Weighting, HarmonicFilterOfTheTrace)
{
    for (const std::string& mode : kModes) {
        Words weighted(145);
        for (const TracedFrame& t : traced(mode, "encode")) {
            const Words fresh = t.words("weighted");
            weighted.insert(weighted.end(), fresh.begin(), fresh.end());
            for (std::size_t k = 0; k < 4 && isActive(t); ++k) {
                Words shaped(60);
                zspsHarmonicFilter_G723_16s(&weighted[145 + 60 * k], t.word("harmonic_lag", k),
                                            t.word("harmonic_gain", k), shaped.data());
                expectEqual(shaped, part(t.words("harmonic_weighted"), 60 * k, 60), mode);
            }
            weighted.erase(weighted.begin(), weighted.begin() + 240);
        }
    }
}

} // namespace
