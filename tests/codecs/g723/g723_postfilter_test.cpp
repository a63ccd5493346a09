// Pitch post-filter and concealment of G.723.1 against the reference's traces; the rules for lost
// frames in a row.

#include "tests/codecs/g723/g723_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g723;
using F = ZspG723Frame;

const Argument kHigh = frameArgument();

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsPitchPostFilter_G723_16s),
             {kHigh, in<std::int16_t>(385), out<std::int16_t>(240)})
        .row({{0, spoilt(kHigh, &F::type, 2)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::lag, 17)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::lag, 144, 1)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsConcealAnalysis_G723_16s),
             {kHigh, in<std::int16_t>(385), out<std::int16_t>(1), out<std::int16_t>(1),
              out<std::int16_t>(1), out<std::int16_t>(1)})
        .row({{0, spoilt(kHigh, &F::lag, 17, 1)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::lag, 144, 1)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::fcbGain, 24, 3)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsConcealExcitation_G723_16s),
             {number(0), number(0), number(1), out<std::int16_t>(1), out<std::int16_t>(145),
              out<std::int16_t>(240)})
        .row({{0, number(-1)}}, zspStsCodecRangeErr)
        .row({{0, number(146)}}, zspStsCodecRangeErr)
        .row({{2, number(0)}}, zspStsCodecRangeErr)
        .row({{2, number(4)}}, zspStsCodecRangeErr),
});

TEST(G723PostFilter, Traces)
{
    for (const std::string& mode : kModes) {
        const auto encoded = traced(mode, "encode"), decoded = traced(mode, "decode");
        Words all(145);
        for (std::size_t n = 0; n < decoded.size() && isActive(encoded[n]); ++n) {
            const ZspG723Frame f = fieldsOf(encoded[n]);
            const TracedFrame& t = decoded[n];
            const Words excitation = t.words("excitation");
            all.insert(all.end(), excitation.begin(), excitation.end());
            Words filtered(240);
            zspsPitchPostFilter_G723_16s(&f, all.data(), filtered.data());
            expectEqual(filtered, t.words("postfiltered_excitation"), mode);
            std::int16_t lag = -1, gain = -1, energy = -1, shift = -1;
            zspsConcealAnalysis_G723_16s(&f, all.data(), &lag, &gain, &energy, &shift);
            EXPECT_EQ(lag, t.word("interpolation_index"));
            EXPECT_EQ(gain, t.word("interpolation_gain"));
            EXPECT_EQ(energy, t.word("sid_gain")); // the reference's words for both
            EXPECT_EQ(shift, t.word("cng_gain"));

            Words normalised = all;
            zsp::g723::normalise(normalised);
            for (std::size_t k = 0; k < 4; ++k) {
                const auto p = zsp::g723::pitchPostFilterOf(
                    zsp::spanOf<385>(normalised.data()), f.lag[k / 2], k,
                    f.type == zspG723Rate63 ? std::int16_t{6144} : std::int16_t{8192});
                EXPECT_EQ(p.index, t.value("pitch_postfilter_lag", k));
                EXPECT_EQ(p.gain, t.word("pitch_postfilter_gain", k));
                EXPECT_EQ(p.scale, t.word("pitch_postfilter_scale", k));
            }
            all.erase(all.begin(), all.begin() + 240);
        }
    }
}

TEST(G723PostFilter, LostFramesRepeatThePeriodThenFallSilent)
{
    Words past(145), dst(240);
    for (std::size_t i = 0; i < past.size(); ++i)
        past[i] = static_cast<std::int16_t>(i % 50 == 0 ? 8000 : 4);
    std::int16_t seed = 0;
    for (const int size : {6000, 4500}) {
        zspsConcealExcitation_G723_16s(50, 100, size == 6000 ? 1 : 2, &seed, past.data(),
                                       dst.data());
        EXPECT_EQ(std::count(dst.begin(), dst.end(), size), size == 6000 ? 5 : 5);
        expectEqual(past, part(dst, 95, 145), "what comes next follows it");
    }
    EXPECT_EQ(seed, 0);
    zspsConcealExcitation_G723_16s(50, 100, 3, &seed, past.data(), dst.data());
    EXPECT_EQ(dst, Words(240));
    EXPECT_EQ(past, Words(145));
}

TEST(G723PostFilter, AnUnvoicedLossIsNoiseAndForgetsThePast)
{
    Words past(145, 1000), dst(240);
    std::int16_t seed = 0;
    zspsConcealExcitation_G723_16s(0, 16384, 1, &seed, past.data(), dst.data());
    EXPECT_EQ(dst[0], 259 / 2); // 0 * 521 + 259
    EXPECT_EQ(dst[1], static_cast<std::int16_t>(259 * 521 + 259) >> 1);
    EXPECT_EQ(past, Words(145));
}

} // namespace
