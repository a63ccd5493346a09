// Adaptive and fixed vectors of G.723.1: the reference's traces and the corners of the codes.

#include "codecs/g723/g723_searches.hpp"

#include "tests/codecs/g723/g723_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g723;
using F = ZspG723Frame;

const Argument kHigh = frameArgument(), kLow = frameArgument(zspG723Rate53);

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsExcitation_G723_16s),
             {in<std::int16_t>(60), in<std::int16_t>(60), out<std::int16_t>(60)}),
    Contract(ZSP_NAMED(zspsDecodeAdaptiveVector_G723_16s),
             {kHigh, number(0), in<std::int16_t>(145), out<std::int16_t>(60)})
        .row({{1, number(-1)}}, zspStsCodecRangeErr)
        .row({{1, number(4)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::type, 4)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::type, -1)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::lag, 17)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::lag, 144)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::lagOffset, -1)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(spoilt(kHigh, &F::lag, 143), &F::lagOffset, 2)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::acbGain, -1)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::acbGain, 170)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(spoilt(kHigh, &F::lag, 57), &F::acbGain, 85)}}, zspStsCodecRangeErr),
    Contract(ZSP_NAMED(zspsDecodeFixedVector_G723_16s), {kHigh, number(0), out<std::int16_t>(60)})
        .row({{1, number(-1)}}, zspStsCodecRangeErr)
        .row({{1, number(4)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::type, 2)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::lag, 17)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::fcbGain, 24)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::fcbGain, -1)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::train, 2)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::grid, 2)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::position, -1)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kLow, &F::position, 4096)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::signs, -1)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kHigh, &F::signs, 64)}}, zspStsCodecRangeErr)
        .row({{0, spoilt(kLow, &F::signs, 16)}}, zspStsCodecRangeErr),
});

TEST(G723Vectors, Traces)
{
    forEachFrame("encode", [](const TracedFrame& t, const std::string& what) {
        if (!isActive(t)) return;
        const ZspG723Frame f = fieldsOf(t);
        for (std::int32_t i = 0; i < 4; ++i) {
            const auto k = static_cast<std::size_t>(i);
            Words vector(60);
            ASSERT_EQ(zspsDecodeFixedVector_G723_16s(&f, i, vector.data()), zspStsNoErr);
            expectEqual(vector, t.words("fixed_vector", k), what);
            zspsExcitation_G723_16s(vector.data(), t.words("adaptive_vector", k).data(),
                                    vector.data());
            expectEqual(vector, t.words("excitation", k), what);
        }
    });
}

TEST(G723Vectors, CodesBeyondAllGiveNoPulses)
{
    ZspG723Frame f{};
    f.lag[0] = f.lag[1] = 20;
    f.train[0] = f.train[1] = 1;
    std::fill_n(f.lagOffset, 4, std::int16_t{1});
    for (const auto& [subframe, codes] : {std::pair{0, 593775}, {1, 142506}}) {
        for (const int code : {codes - 1, codes, codes + 65535}) {
            Words vector(60, 7);
            f.position[subframe] = code;
            ASSERT_EQ(zspsDecodeFixedVector_G723_16s(&f, subframe, vector.data()), zspStsNoErr);
            EXPECT_EQ(vector == Words(60), code >= codes) << code;
        }
    }
}

/// At 5.3 kbit/s the last places of tracks 2 and 3 lie outside of the sub-frame.
TEST(G723Vectors, PulsesOutsideFallAway)
{
    ZspG723Frame f{};
    f.type = zspG723Rate53;
    f.lag[0] = f.lag[1] = 100;
    std::fill_n(f.lagOffset, 4, std::int16_t{1});
    f.position[0] = 07777;
    f.signs[0] = 0xb;
    f.grid[0] = 1;
    Words vector(60), want(60);
    zspsDecodeFixedVector_G723_16s(&f, 0, vector.data());
    want[57] = want[59] = 1;
    EXPECT_EQ(vector, want);
}

TEST(G723Vectors, ShortLagsRepeatTheLastPeriod)
{
    ZspG723Frame f{};
    f.lag[0] = 18;
    f.lagOffset[0] = 0; // 17
    f.acbGain[0] = 20;
    Words past(145), vector(60);
    for (std::size_t i = 0; i < past.size(); ++i)
        past[i] = static_cast<std::int16_t>(1000 * (i % 17) - 8000);
    zspsDecodeAdaptiveVector_G723_16s(&f, 0, past.data(), vector.data());
    for (std::size_t i = 20; i < vector.size(); ++i)
        EXPECT_EQ(vector[i], vector[i - 17]);
    EXPECT_NE(vector, Words(60));
}

TEST(G723Vectors, FastFiltersEqualTheirDefinition)
{
    Samples samples(13);
    for (int round = 0; round < 4000; ++round) {
        const Words residual = anyWords(samples, 64, round), taps = anyWords(samples, 5, round / 8);
        Words want(60), got(60);
        zsp::g723::filterPeriodScalar(zsp::spanOf<64>(residual.data()), taps.data(),
                                      zsp::spanOf<60>(want.data()));
        zsp::g723::filterPeriodFast(zsp::spanOf<64>(residual.data()), taps.data(),
                                    zsp::spanOf<60>(got.data()));
        expectEqual(got, want, "round " + std::to_string(round));
    }
}

} // namespace
