// Linear prediction of G.729: the reference's traces, filters that are unstable, and the fast form.

#include "codecs/g729/coder/g729_coder.hpp"

#include "tests/codecs/g729/g729_trace.hpp"

#include <array>
#include <cmath>

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;
using Longs = std::vector<std::int32_t>;

const Longs kWhite = {1 << 30, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};

/// Correlations of a tone without a floor: nothing would be left of it after two coefficients.
Longs tone()
{
    Longs corr;
    for (int i = 0; i < 11; ++i)
        corr.push_back(static_cast<std::int32_t>(2e9 * std::cos(0.5 * i)));
    return corr;
}

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsAutoCorr_G729_16s32s),
             {in<std::int16_t>(240), out<std::int32_t>(13), out<std::int16_t>(1)}),
    Contract(ZSP_NAMED(zspsLagWindow_G729_32s_I), {out<std::int32_t>(13)}),
    Contract(ZSP_NAMED(zspsLevinsonDurbin_G729_32s16s),
             {buffer(Argument::Kind::input, kWhite), out<std::int16_t>(11), out<std::int16_t>(10),
              out<std::int16_t>(1)})
        .row({{0, buffer(Argument::Kind::input, Longs(11, (1 << 30) - 1))}}, zspStsRangeErr)
        .row({{0, buffer(Argument::Kind::input, tone())}}, zspStsOverflow),
});

TEST(G729Lpc, Traces)
{
    Words history(240);
    int last = -1;
    forEachEncoded([&](const TracedFrame& t, bool, const std::string& what) {
        if (t.value("frame") == 0) std::ranges::fill(history, std::int16_t{0});
        history.erase(history.begin(), history.begin() + 80);
        const Words x = t.words("pre_processed");
        history.insert(history.end(), x.begin(), x.end());
        const bool follows = t.value("frame") == 0 || t.value("frame") == last + 1;
        last = t.value("frame");

        Longs corr(13);
        std::int16_t exponent = 0;
        if (follows && last < 60) {
            ASSERT_EQ(zspsAutoCorr_G729_16s32s(history.data(), corr.data(), &exponent), 0);
            for (auto& c : corr)
                c &= ~1;
            expectEqual(corr, joined(t.words("autocorr_high"), t.words("autocorr_low")), what);
            EXPECT_EQ(exponent, t.word("autocorr_exponent"));
        }
        corr = joined(t.words("autocorr_high"), t.words("autocorr_low"));
        ASSERT_EQ(zspsLagWindow_G729_32s_I(corr.data()), 0);
        for (auto& c : corr)
            c &= ~1;
        expectEqual(corr, joined(t.words("lag_windowed_high"), t.words("lag_windowed_low")), what);

        Words lpc(11), reflection(10);
        std::int16_t error = 0;
        ASSERT_EQ(
            zspsLevinsonDurbin_G729_32s16s(corr.data(), lpc.data(), reflection.data(), &error), 0);
        expectEqual(lpc, t.words("lpc"), what);
        expectEqual(reflection, t.words("reflection"), what);
    });
}

TEST(G729Lpc, WhiteNoiseNeedsNoFilter)
{
    Words lpc(11), reflection(10, 1);
    std::int16_t error = 0;
    ASSERT_EQ(zspsLevinsonDurbin_G729_32s16s(kWhite.data(), lpc.data(), reflection.data(), &error),
              zspStsNoErr);
    EXPECT_EQ(lpc, (Words{4096, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(reflection, Words(10));
    EXPECT_EQ(error, 16383); // 1 - 0 is 2^31 - 1
}

TEST(G729Lpc, LoudSamplesAreDividedByFourTwice)
{
    const Words full(240, 32767);
    Longs corr(13);
    std::int16_t exponent = 0;
    zspsAutoCorr_G729_16s32s(full.data(), corr.data(), &exponent);
    EXPECT_EQ(exponent, 1 + 2 * 4 - 1);
    EXPECT_GE(corr[0], 1 << 30);
    EXPECT_GT(corr[1], corr[0] / 100 * 99);
}

TEST(G729Lpc, FastEqualsDefinition)
{
    Samples samples(729);
    for (int round = 0; round < 4000; ++round) {
        const Words x = anyWords(samples, 240, round);
        std::array<std::int32_t, 13> want{}, got{};
        std::int16_t wantExponent = 0, gotExponent = 0;
        zsp::g729::autoCorrScalar(zsp::spanOf<240>(x.data()), want, wantExponent);
        zsp::g729::autoCorrAvx2(zsp::spanOf<240>(x.data()), got, gotExponent);
        expectEqual(got, want, "round " + std::to_string(round));
        ASSERT_EQ(gotExponent, wantExponent);
    }
}

} // namespace
