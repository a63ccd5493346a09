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

TEST(G723Weighting, FastFormsEqualDefinitions)
{
    using namespace zsp::g723;
    Samples samples(15);
    const Words corr = {24174, 21694, 17334,  11786,  4823,  -1473,
                        -6583, -9392, -10755, -11411, -10465};
    for (int round = 0; round < 4000; ++round) {
        const std::string what = "round " + std::to_string(round);
        Words lpc = anyWords(samples, 10, round), coefs(20);
        std::int16_t error = 0, reflection = 0;
        if (round % 2 == 0)
            zspsLevinsonDurbin_G723_16s(corr.data(), lpc.data(), &error, &reflection);
        zspsWeightingCoefs_G723_16s(lpc.data(), coefs.data());
        if (round % 3 == 0) { // poles that saturate where nothing before them does
            const Words poles = anyWords(samples, 10, round / 3);
            std::copy(poles.begin(), poles.end(), coefs.begin() + 10);
        }
        const In<10> a(lpc.data(), 10);
        const In<20> w(coefs.data(), 20);
        const Harmonic h{static_cast<std::int16_t>(1 + samples.below(145)),
                         static_cast<std::int16_t>(samples.below(10241))};
        const Words x = anyWords(samples, 60, round / 3);
        const In<60> in(x.data(), 60);

        Words want = x, got = x, memory = anyWords(samples, 165, round / 2), memory2 = memory;
        perceptualWeightingScalar(w, in, zsp::spanOf<60>(want.data()),
                                  zsp::spanOf<20>(memory.data()));
        perceptualWeightingFast(w, in, zsp::spanOf<60>(got.data()),
                                zsp::spanOf<20>(memory2.data()));
        expectEqual(got, want, what);
        expectEqual(memory2, memory, what);
        impulseResponseScalar(a, w, h, zsp::spanOf<60>(want.data()));
        impulseResponseFast(a, w, h, zsp::spanOf<60>(got.data()));
        expectEqual(got, want, what);
        want = got = x;
        subtractRingingScalar(a, w, h, zsp::spanOf<165>(std::as_const(memory).data()),
                              zsp::spanOf<60>(want.data()));
        subtractRingingFast(a, w, h, zsp::spanOf<165>(std::as_const(memory).data()),
                            zsp::spanOf<60>(got.data()));
        expectEqual(got, want, what);
        updateRingingScalar(a, w, in, zsp::spanOf<165>(memory.data()));
        updateRingingFast(a, w, in, zsp::spanOf<165>(memory2.data()));
        expectEqual(memory2, memory, what);
    }
}

} // namespace
