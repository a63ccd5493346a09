// The post-filter of G.729 Annex A.

#include "codecs/g729/decoder/g729_decoder.hpp"

#include "tests/codecs/g729/g729_trace.hpp"

namespace {

using namespace zsp::test;
using namespace zsp::test::g729;
using zsp::spanOf;

const bool registered = addContracts({
    Contract(ZSP_NAMED(zspsLongTermPostFilter_G729A_16s),
             {number(144), in<std::int16_t>(183), out<std::int16_t>(40)})
        .row({{0, number(17)}}, zspStsCodecRangeErr)
        .row({{0, number(145)}}, zspStsCodecRangeErr),
    Contract(
        ZSP_NAMED(zspsTiltCompensation_G729A_16s_I),
        {in<std::int16_t>(11), in<std::int16_t>(11), out<std::int16_t>(40), out<std::int16_t>(1)}),
    Contract(
        ZSP_NAMED(zspsShortTermPostFilter_G729A_16s),
        {in<std::int16_t>(11), in<std::int16_t>(40), out<std::int16_t>(40), out<std::int16_t>(10)}),
    Contract(ZSP_NAMED(zspsGainControl_G729A_16s_I),
             {in<std::int16_t>(40), out<std::int16_t>(40), out<std::int16_t>(1)}),
});

const Words kFlat = {4096, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};

/// Two thirds and one third of two like periods; the lag may be three off.
TEST(G729APostFilter, AddsThePeriodBefore)
{
    for (const int off : {-3, 0, 3}) {
        Words x(183), dst(40);
        for (std::size_t i = 0; i < x.size(); ++i)
            x[i] = static_cast<std::int16_t>((i * 7919 % 50) * 200);
        ASSERT_EQ(zspsLongTermPostFilter_G729A_16s(50 + off, x.data(), dst.data()), 0);
        for (std::size_t i = 0; i < 40; ++i)
            EXPECT_NEAR(dst[i], (2 * x[143 + i] + x[93 + i]) / 3.0, 400) << i;
    }
}

TEST(G729APostFilter, FastFormsEqualTheirDefinitions)
{
    Samples samples(7293);
    for (int round = 0; round < 6000; ++round) {
        Words x = anyWords(samples, 183, round);
        const auto lag = static_cast<std::int16_t>(samples.uniform(18, 144));
        if (round % 3 == 0) // periods, also about where sums begin to saturate
            for (std::size_t i = static_cast<std::size_t>(lag); i < 183; ++i)
                x[i] = static_cast<std::int16_t>(
                    std::clamp<int>(x[i - static_cast<std::size_t>(lag)], -20726, 20726));
        Words want(40), got(40);
        zsp::g729::longTermPostFilterAScalar(lag, spanOf<183>(x.data()), spanOf<40>(want.data()));
        zsp::g729::longTermPostFilterAAvx2(lag, spanOf<183>(x.data()), spanOf<40>(got.data()));
        ASSERT_EQ(got, want) << "lag " << lag << ", round " << round;

        const Words before = anyWords(samples, 40, round / 5);
        want = got = anyWords(samples, 40, round);
        std::int16_t gain = samples.words(1)[0], same = gain;
        zsp::g729::gainControlAScalar(spanOf<40>(before.data()), spanOf<40>(want.data()), gain);
        zsp::g729::gainControlAFast(spanOf<40>(before.data()), spanOf<40>(got.data()), same);
        ASSERT_EQ(got, want) << "gain, round " << round;
        ASSERT_EQ(same, gain);
    }
}

TEST(G729APostFilter, LeavesAloneWhatIsNotPeriodic)
{
    Words x(183), dst(40);
    x[143] = x[150] = 8000; // nothing before them
    ASSERT_EQ(zspsLongTermPostFilter_G729A_16s(50, x.data(), dst.data()), 0);
    EXPECT_EQ(dst, Words(x.begin() + 143, x.end()));
}

TEST(G729APostFilter, TiltIsThatOfTheResponse)
{
    Words poles = kFlat, x(40, 1000);
    std::int16_t last = 400;
    ASSERT_EQ(zspsTiltCompensation_G729A_16s_I(kFlat.data(), kFlat.data(), x.data(), &last), 0);
    EXPECT_EQ(x, Words(40, 1000));
    EXPECT_EQ(last, 1000);
    poles[1] = -2048; // half of each word goes on
    x.back() = 30;
    last = 400;
    ASSERT_EQ(zspsTiltCompensation_G729A_16s_I(kFlat.data(), poles.data(), x.data(), &last), 0);
    EXPECT_NEAR(x[0], 1000 - 0.4 * 400, 2);
    EXPECT_NEAR(x[1], 1000 - 0.4 * 1000, 2);
    EXPECT_EQ(last, 30);
}

TEST(G729APostFilter, TheGainFollowsAndSilenceResetsIt)
{
    const Words before(40, 3000);
    std::int16_t gain = 4096;
    Words after(40, 1500);
    ASSERT_EQ(zspsGainControl_G729A_16s_I(before.data(), after.data(), &gain), 0);
    EXPECT_NEAR(after[39], 3000, 60);
    EXPECT_TRUE(std::ranges::is_sorted(after));
    after.assign(40, 3); // an energy of 0 after two bits less
    zspsGainControl_G729A_16s_I(before.data(), after.data(), &gain);
    EXPECT_EQ(gain, 0);
    EXPECT_EQ(after, Words(40, 3));
}

} // namespace
